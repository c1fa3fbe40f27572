#include "platform/image/registry/VolumeKey.h"

#include <algorithm>
#include <unordered_set>

#include "platform/image/registry/KeyResolver.h"
#include "platform/image/registry/tree/FoldedName.h"
#include "platform/os/CurrentTermination.h"

namespace kestra::image {
namespace {

using Listing = CRegistryFile::Listing;

// False when the thread's work is terminated. std::sort and its like end early by exceptions only.
bool SortByName(std::vector<TreeEntry>& entries) {
  struct CTerminated {};
  os::CPacedTermination termination;
  try {
    std::stable_sort(entries.begin(), entries.end(), [&](const TreeEntry& a, const TreeEntry& b) {
      if (termination.IsOver()) throw CTerminated();
      return CompareNoCase(a.name, b.name) < 0;
    });
  } catch (const CTerminated&) {
    return false;
  }
  return true;
}

// Of names of which no two are alike.
SystemError MakeListing(std::vector<TreeEntry> entries, Listing& listing) {
  LeftOut none;
  return CKeyListing::Make(std::move(entries), NameRule::Any, listing, none);
}

bool HasMounts(Zone zone) {
  return zone == Zone::Machine || zone == Zone::Users || zone == Zone::System ||
         zone == Zone::UserSoftware;
}

// One thread at a time, as every CRegistryKey.
class CVolumeKey final : public CRegistryKey {
 public:
  CVolumeKey(std::shared_ptr<CVolumeLayout> layout, VolumeNode node)
      : m_layout(std::move(layout)), m_node(std::move(node)) {}

  SystemError OpenSubKey(const std::string& path, uint32_t access,
                         std::unique_ptr<CRegistryKey>& key) override {
    return Open(path, access, LastKey::FollowLink, key);
  }
  SystemError OpenLinkItself(const std::string& path, uint32_t access,
                             std::unique_ptr<CRegistryKey>& key) override {
    return Open(path, access, LastKey::KeepLink, key);
  }
  SystemError QueryInfo(RegistryKeyInfo& info) override;
  SystemError EnumSubKey(uint32_t index, std::string& name) override {
    if (const SystemError error = ListSubKeys()) return error;
    return NameAt(*m_subKeys, index, name);
  }
  SystemError EnumValue(uint32_t index, std::string& name) override {
    if (const SystemError error = ListValues()) return error;
    return NameAt(*m_values, index, name);
  }
  SystemError QueryValue(const std::string& name, uint32_t& type, std::string& data) override {
    return FindValue(m_node, name, type, data);
  }

  SystemError CreateSubKey(const std::string&, uint32_t, std::unique_ptr<CRegistryKey>&) override {
    return kErrorWriteProtect;
  }
  SystemError DeleteSubKey(const std::string&, uint32_t) override { return kErrorWriteProtect; }
  SystemError SetValue(const std::string&, uint32_t, const std::string&) override {
    return kErrorWriteProtect;
  }
  SystemError DeleteValue(const std::string&) override { return kErrorWriteProtect; }

 private:
  SystemError Open(const std::string& path, uint32_t access, LastKey lastKey,
                   std::unique_ptr<CRegistryKey>& key) const {
    const bool isNarrow = (access & kKeyWow64Key32) != 0;
    if (isNarrow && (access & kKeyWow64Key64) != 0) return kErrorInvalidParameter;
    VolumeNode node;
    const SystemError error = ResolveKey(*m_layout, m_node, path, isNarrow, node, lastKey);
    if (error == kErrorSuccess) key = std::make_unique<CVolumeKey>(m_layout, std::move(node));
    return error;
  }

  using FileList = SystemError (CRegistryFile::*)(TreeId, Listing&);

  static SystemError NameAt(const CKeyListing& listing, uint32_t index, std::string& name) {
    if (index >= listing.Entries().size()) return kErrorNoMoreItems;
    name = listing.Entries()[index].name;
    return kErrorSuccess;
  }
  SystemError CountOf(SystemError (CVolumeKey::*list)(), const Listing& listing,
                      const std::optional<uint32_t>& told, uint32_t& count);
  SystemError ListSubKeys();
  SystemError ListValues();
  SystemError ListLayers(FileList list, Listing& joined) const;

  const std::shared_ptr<CVolumeLayout> m_layout;
  const VolumeNode m_node;
  Listing m_subKeys;  // null until it is asked for, like the next
  Listing m_values;
};

// What is damaged of these facts costs the others nothing.
SystemError CVolumeKey::QueryInfo(RegistryKeyInfo& info) {
  KeyFacts facts;
  if (!m_node.layers.empty()) {
    const KeyLayer& layer = m_node.layers.front();
    if (const SystemError error = layer.pFile->Tree().Facts(layer.key, facts)) return error;
  }
  if (m_node.layers.size() != 1) facts.subKeyCount = facts.valueCount = std::nullopt;
  if (HasMounts(m_node.zone)) facts.subKeyCount = std::nullopt;
  info = {facts.className, 0, 0, facts.lastWriteTime};
  SystemError error =
      CountOf(&CVolumeKey::ListSubKeys, m_subKeys, facts.subKeyCount, info.subKeyCount);
  if (error == kErrorSuccess) {
    error = CountOf(&CVolumeKey::ListValues, m_values, facts.valueCount, info.valueCount);
  }
  return error;
}

// Listing a key to know how many entries it has is dear; one that cannot be listed has none to
// show.
SystemError CVolumeKey::CountOf(SystemError (CVolumeKey::*list)(), const Listing& listing,
                                const std::optional<uint32_t>& told, uint32_t& count) {
  if (!listing && told) {
    count = *told;
    return kErrorSuccess;
  }
  const SystemError error = (this->*list)();
  if (listing) count = static_cast<uint32_t>(listing->Entries().size());
  return error == kErrorRegistryCorrupt ? kErrorSuccess : error;
}

SystemError CVolumeKey::ListValues() {
  return m_values ? kErrorSuccess : ListLayers(&CRegistryFile::Values, m_values);
}

SystemError CVolumeKey::ListSubKeys() {
  if (m_subKeys) return kErrorSuccess;
  std::vector<std::string> mounts;
  if (const SystemError error = m_layout->MountNames(m_node, mounts)) return error;
  Listing listing;
  if (const SystemError error = ListLayers(&CRegistryFile::SubKeys, listing)) return error;
  std::erase_if(mounts, [&](const std::string& name) { return listing->Find(name) != nullptr; });
  if (!mounts.empty()) {
    std::vector<TreeEntry> entries = listing->Entries();
    for (std::string& name : mounts) entries.push_back({std::move(name), 0});
    if (const SystemError error = MakeListing(std::move(entries), listing)) return error;
  }
  m_subKeys = std::move(listing);
  return kErrorSuccess;
}

// What several layers have is given once, and all of it in order. A layer that cannot be read is
// left out if there is another: a notice has told of it.
SystemError CVolumeKey::ListLayers(FileList list, Listing& joined) const {
  std::vector<Listing> listings;
  SystemError error = kErrorSuccess;
  for (const KeyLayer& layer : m_node.layers) {
    Listing listing;
    const SystemError failure = (layer.pFile->*list)(layer.key, listing);
    if (failure == kErrorCancelled) return failure;
    if (failure == kErrorSuccess) {
      listings.push_back(std::move(listing));
    } else {
      error = failure;
    }
  }
  if (listings.empty() && error != kErrorSuccess) return error;
  if (listings.size() == 1) {
    joined = std::move(listings.front());
    return kErrorSuccess;
  }
  std::vector<TreeEntry> entries;
  std::unordered_set<std::string> names;
  os::CPacedTermination termination;
  for (const Listing& listing : listings) {
    for (const TreeEntry& entry : listing->Entries()) {
      if (termination.IsOver()) return kErrorCancelled;
      if (names.insert(FoldedName(entry.name)).second) entries.push_back(entry);
    }
  }
  if (!SortByName(entries)) return kErrorCancelled;
  return MakeListing(std::move(entries), joined);
}

}  // namespace

std::unique_ptr<CRegistryKey> MakeVolumeKey(std::shared_ptr<CVolumeLayout> layout,
                                            VolumeNode node) {
  return std::make_unique<CVolumeKey>(std::move(layout), std::move(node));
}

}  // namespace kestra::image
