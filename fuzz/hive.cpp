// Registry hives. A damaged one may be endless: so many keys are looked at, and no more.
#include "platform/image/registry/hive/HiveRepair.h"
#include "platform/image/registry/hive/HiveTree.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace kestra::image;
  constexpr size_t kMostKeys = 1000;
  std::unique_ptr<kestra::os::CMemoryFile> file;
  if (kestra::os::MakeMemoryFile(file) != kestra::kErrorSuccess) return 0;
  std::string bytes(reinterpret_cast<const char*>(data), size);
  RepairHeaderChecksum(bytes);
  file->Write(bytes);
  if (file->Seal() != kestra::kErrorSuccess) return 0;
  std::shared_ptr<CKeyTree> tree;
  if (OpenHive(
          std::move(file), [](HiveFault) {}, tree) != kestra::kErrorSuccess)
    return 0;
  std::vector<TreeEntry> entries{{"", tree->Root()}};
  std::vector<TreeEntry> keys = entries;
  for (size_t next = 0; next < keys.size() && next < kMostKeys; ++next) {
    KeyFacts facts;
    tree->Facts(keys[next].id, facts);
    tree->IsLink(keys[next].id);
    tree->Name(keys[next].id);
    tree->SubKeys(keys[next].id, entries);
    if (keys.size() < kMostKeys) keys.insert(keys.end(), entries.begin(), entries.end());
    tree->Values(keys[next].id, entries);
    for (size_t i = 0; i < entries.size() && i < kMostKeys; ++i) {
      uint32_t type = 0;
      tree->ReadValue(entries[i].id, type, bytes);
    }
  }
  return 0;
}
