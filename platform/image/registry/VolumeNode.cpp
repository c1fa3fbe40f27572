#include "platform/image/registry/VolumeNode.h"

#include "platform/base/ByteSource.h"

namespace kestra::image {

SystemError RootNode(CRegistryFile& file, Zone zone, VolumeNode& node) {
  if (const SystemError error = file.Load()) return error;
  node = {zone, {{&file, file.Tree().Root()}}};
  return kErrorSuccess;
}

SystemError FindChild(const VolumeNode& node, std::string_view name, VolumeNode& child) {
  VolumeNode found;
  SystemError error = kErrorFileNotFound;
  for (const KeyLayer& layer : node.layers) {
    CRegistryFile::Listing listing;
    if (const SystemError failure = layer.pFile->SubKeys(layer.key, listing)) {
      if (failure == kErrorCancelled) return failure;
      error = failure;
    } else if (const TreeEntry* pEntry = listing->Find(name)) {
      found.layers.push_back({layer.pFile, pEntry->id});
    }
  }
  if (found.layers.empty()) return error;
  child = std::move(found);
  return kErrorSuccess;
}

SystemError FindValue(const VolumeNode& node, std::string_view name, uint32_t& type,
                      std::string& data) {
  SystemError error = kErrorFileNotFound;
  for (const KeyLayer& layer : node.layers) {
    CRegistryFile::Listing listing;
    if (const SystemError failure = layer.pFile->Values(layer.key, listing)) {
      if (failure == kErrorCancelled) return failure;
      error = failure;
    } else if (const TreeEntry* pEntry = listing->Find(name)) {
      return layer.pFile->Tree().ReadValue(pEntry->id, type, data);
    }
  }
  return error;
}

SystemError FindText(const VolumeNode& node, std::string_view name, std::string& text) {
  uint32_t type = 0;
  std::string data;
  if (const SystemError error = FindValue(node, name, type, data)) return error;
  if (type != kRegSz && type != kRegExpandSz) return kErrorInvalidData;
  text = data.substr(0, data.find('\0'));
  return kErrorSuccess;
}

SystemError FindNumber(const VolumeNode& node, std::string_view name, uint32_t& number) {
  uint32_t type = 0;
  std::string data;
  if (const SystemError error = FindValue(node, name, type, data)) return error;
  return type == kRegDword && LoadLittle(data, 0, number) ? kErrorSuccess : kErrorInvalidData;
}

}  // namespace kestra::image
