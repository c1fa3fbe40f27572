// A file of the volume's registry: read when it is first asked for, and once.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <string_view>

#include "platform/base/Once.h"
#include "platform/image/registry/VolumeRegistry.h"
#include "platform/image/registry/tree/ListingCache.h"
#include "platform/image/registry/tree/LoadBudget.h"
#include "platform/image/registry/tree/LoadOnce.h"

namespace kestra::image {

enum class RegistryFileForm { Hive, WineText };

// All methods may be called from any thread.
class CRegistryFile {
 public:
  using Listing = CListingCache::Listing;

  // All that is borrowed must outlive the file.
  CRegistryFile(std::string name, RegistryFileForm form, const OpenRegistryFile& open,
                const Notice& notice, CLoadBudget& budget)
      : m_name(std::move(name)), m_form(form), m_open(open), m_notice(notice), m_budget(budget) {}

  const std::string& Name() const { return m_name; }
  // Whether there is such a file, without reading it. One that cannot be opened is there.
  bool IsThere();
  // Reads the file, at the first call; the answer stays the same. kErrorFileNotFound if there is
  // none, kErrorNotEnoughMemory when the budget is used up. A notice tells of any failure.
  // kErrorCancelled, of which none tells, when the thread's work is terminated: the next call reads
  // it anew.
  SystemError Load();

  // The following are for files whose Load succeeded. A listing has no two entries of one name, and
  // keys only that a path can name; a notice tells what it lacks for that. kErrorCancelled when the
  // thread's work is terminated.
  const CKeyTree& Tree() const { return *m_tree; }
  SystemError SubKeys(TreeId key, Listing& listing);
  SystemError Values(TreeId key, Listing& listing);
  // Of a text: what its head says.
  bool IsWide() const { return m_isWide; }
  const std::string& RelativeTo() const { return m_relativeTo; }

 private:
  using Lister = SystemError (CKeyTree::*)(TreeId, std::vector<TreeEntry>&) const;

  SystemError Open(std::unique_ptr<CFileReader>& reader);
  SystemError Read();
  SystemError ReadFrom(CFileReader& reader, uint64_t size);
  SystemError ReadHive(CFileReader& reader, uint64_t size);
  SystemError ReadText(CFileReader& reader, uint64_t size);
  SystemError List(TreeId key, CListingCache& cache, Lister lister, NameRule rule,
                   Listing& listing);
  void TellOfLeftOut(TreeId key, const LeftOut& leftOut);
  void TellOfDamage() {
    TellOnce(m_isDamageTold, " is damaged: what cannot be read of it is not shown");
  }
  void TellOnce(std::atomic<bool>& isTold, const std::string& sentence) const;
  void TellOfFailure(SystemError error) const;
  void Tell(const std::string& sentence) const;

  const std::string m_name;
  const RegistryFileForm m_form;
  const OpenRegistryFile& m_open;
  const Notice& m_notice;
  CLoadBudget& m_budget;
  COnce m_existence;
  bool m_isThere = false;  // written under m_existence
  CLoadOnce m_load;
  std::shared_ptr<CKeyTree> m_tree;  // written under m_load, like the next three
  bool m_isWide = false;
  std::string m_relativeTo;
  bool m_isBeyondBudget = false;
  std::atomic<bool> m_isDamageTold = false;
  std::atomic<bool> m_isLimitTold = false;
  std::atomic<bool> m_isUnnameableTold = false;
  std::atomic<bool> m_isRepeatedTold = false;
  CListingCache m_subKeys;
  CListingCache m_values;
};

}  // namespace kestra::image
