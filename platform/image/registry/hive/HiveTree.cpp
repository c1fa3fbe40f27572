#include "platform/image/registry/hive/HiveTree.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "platform/base/ByteSource.h"
#include "platform/image/registry/hive/HiveCells.h"
#include "platform/image/registry/hive/HiveRepair.h"
#include "platform/image/registry/hive/HivexLibrary.h"
#include "platform/os/CurrentTermination.h"

namespace kestra::image {
namespace {

struct Freed {
  void operator()(void* pMemory) const { std::free(pMemory); }
};

struct HiveCloser {
  const HivexLibrary* pHivex = nullptr;
  void operator()(hive_h* pHive) const { pHivex->close(pHive); }
};
using HiveHandle = std::unique_ptr<hive_h, HiveCloser>;

HiveHandle OpenHandle(const HivexLibrary& hivex, const os::CMemoryFile& file, int flags) {
  return HiveHandle(hivex.open(file.Path().c_str(), flags), HiveCloser{&hivex});
}

// The file ends before the cells that its header promises.
bool IsCut(std::string_view bytes) {
  constexpr uint64_t kHeaderSize = 0x1000;
  uint32_t length = 0;
  return !LoadLittle(bytes, 40, length) || bytes.size() < kHeaderSize + length;
}

// Most that hivex answers by errno means that the file is not as it must be.
SystemError ErrorFromHivex() {
  switch (errno) {
    case ENOMEM:
      return kErrorNotEnoughMemory;
    case EMFILE:
    case ENFILE:
      return kErrorTooManyOpenFiles;
    case ENOENT:
    case EACCES:
      return kErrorGenFailure;  // there is no /proc to open the copy by
    default:
      return kErrorRegistryCorrupt;
  }
}

// Ids are hivex's handles, which are offsets in the file. A hive is read strictly, and what fails
// so is tried again with the library's heuristics, which leave out what makes no sense.
class CHiveTree final : public CKeyTree {
 public:
  CHiveTree(const HivexLibrary& hivex, std::unique_ptr<os::CMemoryFile> file,
            HiveFaultHandler onFault)
      : m_hivex(hivex), m_file(std::move(file)), m_onFault(std::move(onFault)) {}

  SystemError Open();
  std::string_view Bytes() const { return m_file->Bytes(); }

  TreeId Root() const override { return m_root; }
  // A root that says it is one is damaged: nothing leads on from there.
  bool IsLink(TreeId key) const override {
    return key != m_root && IsLinkCell(m_file->Bytes(), key);
  }
  SystemError Facts(TreeId key, KeyFacts& facts) const override {
    bool isWhole = false;
    const bool isRead = ReadKeyFacts(m_file->Bytes(), key, facts, isWhole);
    if (!isRead || !isWhole) m_onFault(HiveFault::Damage);
    return isRead ? kErrorSuccess : kErrorRegistryCorrupt;
  }
  std::string Name(TreeId key) const override {
    std::string name;
    return ReadKeyName(m_file->Bytes(), key, name) ? name : std::string();
  }
  SystemError SubKeys(TreeId key, std::vector<TreeEntry>& entries) const override {
    return List(m_hivex.nodeChildren, ReadKeyName, key, entries);
  }
  SystemError Values(TreeId key, std::vector<TreeEntry>& entries) const override {
    return List(m_hivex.nodeValues, ReadValueName, key, entries);
  }
  SystemError ReadValue(TreeId value, uint32_t& type, std::string& data) const override;

 private:
  // Whether what the record says of its size can be true.
  using SizeCheck = bool (CHiveTree::*)(TreeId record) const;

  bool HasPossibleCounts(TreeId key) const {
    KeyFacts facts;
    bool isWhole = false;
    return ReadKeyFacts(m_file->Bytes(), key, facts, isWhole) && facts.subKeyCount &&
           facts.valueCount;
  }
  bool HasPossibleLength(TreeId value) const {
    uint32_t length = 0;
    return ReadValueLength(m_file->Bytes(), value, length) && length <= m_file->Bytes().size();
  }
  template <class Result, class Call>
  SystemError Ask(TreeId record, SizeCheck isPossible, Call call, Result& result) const;
  template <class Lister, class NameReader>
  SystemError List(Lister lister, NameReader readName, TreeId key,
                   std::vector<TreeEntry>& entries) const;

  const HivexLibrary& m_hivex;
  const std::unique_ptr<os::CMemoryFile> m_file;
  const HiveFaultHandler m_onFault;
  TreeId m_root = 0;
  mutable std::mutex m_lock;       // guards the handles: each is for one thread at a time
  mutable HiveHandle m_strict;     // null if the file is too damaged for it
  mutable HiveHandle m_heuristic;  // made when it is needed first
};

SystemError CHiveTree::Open() {
  m_strict = OpenHandle(m_hivex, *m_file, 0);
  if (m_strict) m_root = m_hivex.root(m_strict.get());
  if (m_root != 0) {
    if (IsCut(m_file->Bytes())) m_onFault(HiveFault::Damage);
    return kErrorSuccess;
  }
  m_strict.reset();
  m_heuristic = OpenHandle(m_hivex, *m_file, HIVEX_OPEN_UNSAFE);
  if (m_heuristic) m_root = m_hivex.root(m_heuristic.get());
  if (m_root == 0) return ErrorFromHivex();
  m_onFault(HiveFault::Damage);
  return kErrorSuccess;
}

// call is given a handle and answers a pointer that is the caller's to free, or null with errno:
// ERANGE at the library's own limits, which a size that is damaged passes as well.
template <class Result, class Call>
SystemError CHiveTree::Ask(TreeId record, SizeCheck isPossible, Call call, Result& result) const {
  bool isTooLarge = false;
  {
    std::lock_guard guard(m_lock);
    errno = 0;
    if (m_strict) result.reset(call(m_strict.get()));
    if (result || (m_strict && errno == 0)) return kErrorSuccess;
    if (!m_heuristic) m_heuristic = OpenHandle(m_hivex, *m_file, HIVEX_OPEN_UNSAFE);
    errno = 0;
    if (m_heuristic) result.reset(call(m_heuristic.get()));
    if (!result && (!m_heuristic || errno != 0)) {
      isTooLarge = errno == ERANGE;
      const SystemError error = ErrorFromHivex();
      if (error != kErrorRegistryCorrupt) return error;
    }
  }
  isTooLarge = isTooLarge && (this->*isPossible)(record);
  m_onFault(isTooLarge ? HiveFault::Limit : HiveFault::Damage);
  return result ? kErrorSuccess : kErrorRegistryCorrupt;
}

template <class Lister, class NameReader>
SystemError CHiveTree::List(Lister lister, NameReader readName, TreeId key,
                            std::vector<TreeEntry>& entries) const {
  entries.clear();
  std::unique_ptr<size_t, Freed> list;
  const auto call = [&](hive_h* pHive) { return lister(pHive, static_cast<size_t>(key)); };
  const SystemError error = Ask(key, &CHiveTree::HasPossibleCounts, call, list);
  if (error != kErrorSuccess || !list) return error;
  bool isWhole = true;
  os::CPacedTermination termination;
  for (const size_t* pHandle = list.get(); *pHandle != 0; ++pHandle) {
    if (termination.IsOver()) return kErrorCancelled;
    TreeEntry entry{{}, *pHandle};
    if (readName(m_file->Bytes(), *pHandle, entry.name)) {
      entries.push_back(std::move(entry));
    } else {
      isWhole = false;
    }
  }
  if (!isWhole) m_onFault(HiveFault::Damage);
  return kErrorSuccess;
}

SystemError CHiveTree::ReadValue(TreeId value, uint32_t& type, std::string& data) const {
  hive_type hiveType = hive_t_REG_NONE;
  size_t length = 0;
  std::unique_ptr<char, Freed> bytes;
  const auto call = [&](hive_h* pHive) {
    return m_hivex.valueValue(pHive, static_cast<size_t>(value), &hiveType, &length);
  };
  const SystemError error = Ask(value, &CHiveTree::HasPossibleLength, call, bytes);
  if (error != kErrorSuccess) return error;
  // Types are any 32 bits, and the enumeration has no room for that.
  static_assert(sizeof hiveType == sizeof type);
  std::memcpy(&type, &hiveType, sizeof type);
  data = bytes ? DataFromStored(type, {bytes.get(), length}) : std::string();
  return kErrorSuccess;
}

// A copy in which hivex finds more; false if there is nothing to put right.
bool RepairedCopy(std::string_view bytes, std::unique_ptr<os::CMemoryFile>& copy) {
  std::string hive(bytes);
  return RepairBins(hive) && !os::IsWorkTerminated() && os::MakeMemoryFile(copy) == kErrorSuccess &&
         copy->Write(hive) == kErrorSuccess && copy->Seal() == kErrorSuccess;
}

}  // namespace

bool IsDirtyHive(std::string_view bytes) {
  // The header's two sequence numbers are equal once all changes are in the file.
  uint32_t first = 0;
  uint32_t second = 0;
  return LoadLittle(bytes, 4, first) && LoadLittle(bytes, 8, second) && first != second;
}

SystemError OpenHive(std::unique_ptr<os::CMemoryFile> file, HiveFaultHandler onFault,
                     std::shared_ptr<CKeyTree>& tree) {
  if (file->Bytes().substr(0, 4) != "regf") return kErrorRegistryCorrupt;
  const HivexLibrary* pHivex = LoadHivex();
  if (!pHivex) return kErrorCallNotImplemented;
  auto hive = std::make_shared<CHiveTree>(*pHivex, std::move(file), onFault);
  SystemError error = hive->Open();
  std::unique_ptr<os::CMemoryFile> repaired;
  if (error == kErrorRegistryCorrupt && RepairedCopy(hive->Bytes(), repaired)) {
    hive = std::make_shared<CHiveTree>(*pHivex, std::move(repaired), onFault);
    error = hive->Open();
    if (error == kErrorSuccess) onFault(HiveFault::Damage);
  }
  if (os::IsWorkTerminated()) return kErrorCancelled;
  if (error == kErrorSuccess) tree = std::move(hive);
  return error;
}

}  // namespace kestra::image
