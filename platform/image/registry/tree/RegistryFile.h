// A file of the volume's registry: read when it is first asked for, and once.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/image/registry/VolumeRegistry.h"
#include "platform/image/registry/tree/KeyListing.h"

namespace kestra::image {

enum class RegistryFileForm { Hive, WineText };

// All methods may be called from any thread.
class CRegistryFile {
 public:
  using Listing = std::shared_ptr<const CKeyListing>;

  CRegistryFile(std::string name, RegistryFileForm form, const OpenRegistryFile& open,
                const Notice& notice)
      : m_name(std::move(name)), m_form(form), m_open(open), m_notice(notice) {}

  const std::string& Name() const { return m_name; }
  // Whether there is such a file, without reading it. One that cannot be opened is there.
  bool IsThere();
  // Reads the file, at the first call; the answer stays the same. kErrorFileNotFound if there is
  // none. A notice tells of any failure.
  SystemError Load();

  // The following are for files whose Load succeeded.
  const CKeyTree& Tree() const { return *m_tree; }
  SystemError SubKeys(TreeId key, Listing& listing) { return List(key, m_subKeys, listing); }
  SystemError Values(TreeId key, Listing& listing) { return List(key, m_values, listing); }
  // Of a text: what its head says.
  bool IsWide() const { return m_isWide; }
  const std::string& RelativeTo() const { return m_relativeTo; }

 private:
  // Listings that were made, by key; emptied when they hold too many names.
  struct Cache {
    SystemError (CKeyTree::*pList)(TreeId, std::vector<TreeEntry>&) const;
    std::mutex lock;
    std::unordered_map<TreeId, Listing> listings{};  // guarded by lock
    size_t entryCount = 0;                           // guarded by lock
  };

  SystemError Open(std::unique_ptr<CFileReader>& reader);
  SystemError Read();
  SystemError ReadHive(CFileReader& reader, uint64_t size);
  SystemError ReadText(CFileReader& reader, uint64_t size);
  SystemError List(TreeId key, Cache& cache, Listing& listing);
  void TellOfDamage();
  void TellOfFailure(SystemError error) const;
  void Tell(const std::string& sentence) const;

  const std::string m_name;
  const RegistryFileForm m_form;
  const OpenRegistryFile& m_open;
  const Notice& m_notice;
  std::once_flag m_existence;
  bool m_isThere = false;  // written under m_existence
  std::once_flag m_load;
  SystemError m_error = kErrorSuccess;  // this and the rest are written under m_load
  std::shared_ptr<CKeyTree> m_tree;
  bool m_isWide = false;
  std::string m_relativeTo;
  std::atomic<bool> m_isDamageTold = false;
  Cache m_subKeys{&CKeyTree::SubKeys, {}};
  Cache m_values{&CKeyTree::Values, {}};
};

}  // namespace kestra::image
