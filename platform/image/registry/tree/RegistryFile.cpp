#include "platform/image/registry/tree/RegistryFile.h"

#include "platform/image/registry/hive/HiveRepair.h"
#include "platform/image/registry/hive/HiveTree.h"
#include "platform/image/registry/wine/WineRegistry.h"
#include "platform/os/CurrentTermination.h"
#include "platform/os/MemoryFile.h"

namespace kestra::image {
namespace {

constexpr size_t kHeaderSize = 4096;
constexpr size_t kReadStep = size_t{1} << 20;
// Windows itself allows a hive half of that; a text of a tenth of the limit is a large one.
constexpr uint64_t kLargestHive = uint64_t{1} << 30;
constexpr uint64_t kLargestText = uint64_t{1} << 27;

bool IsMissing(SystemError error) {
  return error == kErrorFileNotFound || error == kErrorPathNotFound;
}

// Gives each piece of the file to take, a function of (text) that answers an error. More than the
// file had at first is not read: a file that grows has no end.
template <class Taker>
SystemError ReadAll(CFileReader& reader, uint64_t size, Taker take) {
  std::string bytes;
  while (size != 0) {
    if (os::IsWorkTerminated()) return kErrorCancelled;
    bytes.clear();
    const auto step = static_cast<size_t>(std::min<uint64_t>(size, kReadStep));
    if (const SystemError error = reader.Read(step, bytes)) return error;
    if (bytes.empty()) return kErrorSuccess;
    size -= std::min<uint64_t>(size, bytes.size());
    if (const SystemError error = take(bytes)) return error;
  }
  return kErrorSuccess;
}

}  // namespace

SystemError CRegistryFile::Open(std::unique_ptr<CFileReader>& reader) {
  const SystemError error = m_open(m_name, reader);
  return IsMissing(error) ? kErrorFileNotFound : error;
}

bool CRegistryFile::IsThere() {
  m_existence.Do([this] {
    std::unique_ptr<CFileReader> reader;
    m_isThere = Open(reader) != kErrorFileNotFound;
  });
  return m_isThere;
}

SystemError CRegistryFile::Load() {
  return m_load.Run([this] {
    const SystemError error = Read();
    if (error != kErrorSuccess) TellOfFailure(error);
    return error;
  });
}

void CRegistryFile::TellOfFailure(SystemError error) const {
  switch (error) {
    case kErrorFileNotFound:
      return Tell(" is missing");
    case kErrorRegistryCorrupt:
      return Tell(" is no registry file, or is damaged beyond use");
    case kErrorCallNotImplemented:
      return Tell(" cannot be read, since the library libhivex is not installed");
    case kErrorFileTooLarge:
      return Tell(" is larger than any registry file");
    case kErrorCancelled:
      return;
    default:
      if (m_isBeyondBudget) {
        return Tell(" is not read: with it the volume's registry would take more than 2 GiB");
      }
      return Tell(" cannot be read: system error " + std::to_string(error));
  }
}

SystemError CRegistryFile::Read() {
  std::unique_ptr<CFileReader> reader;
  if (const SystemError error = Open(reader)) return error;
  FileInfo info;
  if (const SystemError error = reader->Info(info)) return error;
  const bool isHive = m_form == RegistryFileForm::Hive;
  if (info.size > (isHive ? kLargestHive : kLargestText)) return kErrorFileTooLarge;
  m_isBeyondBudget = !m_budget.Take(info.size);
  if (m_isBeyondBudget) return kErrorNotEnoughMemory;
  SystemError error = kErrorSuccess;
  try {
    error = ReadFrom(*reader, info.size);
  } catch (...) {
    m_budget.GiveBack(info.size);
    throw;
  }
  if (error != kErrorSuccess) m_budget.GiveBack(info.size);
  return error;
}

SystemError CRegistryFile::ReadFrom(CFileReader& reader, uint64_t size) {
  return m_form == RegistryFileForm::Hive ? ReadHive(reader, size) : ReadText(reader, size);
}

SystemError CRegistryFile::ReadHive(CFileReader& reader, uint64_t size) {
  std::unique_ptr<os::CMemoryFile> file;
  if (const SystemError error = os::MakeMemoryFile(file)) return error;
  // The header's bytes come whole, and are looked at before they are written.
  std::string head;
  bool isRepaired = false;
  const auto take = [&](const std::string& bytes) {
    if (file->Size() != 0) return file->Write(bytes);
    head += bytes;
    if (head.size() < kHeaderSize) return kErrorSuccess;
    isRepaired = RepairHeaderChecksum(head);
    return file->Write(head);
  };
  if (const SystemError error = ReadAll(reader, size, take)) return error;
  if (const SystemError error = file->Seal()) return error;
  const bool isShort = file->Bytes().size() < size;
  const bool isDirty = IsDirtyHive(file->Bytes());
  const auto onFault = [this](HiveFault fault) {
    if (fault == HiveFault::Damage) return TellOfDamage();
    TellOnce(m_isLimitTold, " holds a key or value that is larger than can be read");
  };
  const SystemError error = OpenHive(std::move(file), onFault, m_tree);
  if (error != kErrorSuccess) return error;
  if (isShort || isRepaired) TellOfDamage();
  if (isDirty) {
    Tell(" was not closed properly: its latest changes are in its transaction logs and not shown");
  }
  return kErrorSuccess;
}

SystemError CRegistryFile::ReadText(CFileReader& reader, uint64_t size) {
  std::string text;
  text.reserve(static_cast<size_t>(size));
  const auto take = [&](const std::string& bytes) {
    text += bytes;
    return kErrorSuccess;
  };
  if (const SystemError error = ReadAll(reader, size, take)) return error;
  WineRegistry registry;
  if (const SystemError error = DecodeWineRegistry(text, registry)) return error;
  m_tree = std::move(registry.tree);
  m_isWide = registry.isWide;
  m_relativeTo = std::move(registry.relativeTo);
  if (text.size() < size) TellOfDamage();
  if (registry.damagedLines != 0) {
    Tell(" is damaged: " + std::to_string(registry.damagedLines) + " lines were passed over");
  }
  return kErrorSuccess;
}

SystemError CRegistryFile::SubKeys(TreeId key, Listing& listing) {
  return List(key, m_subKeys, &CKeyTree::SubKeys, NameRule::Path, listing);
}

SystemError CRegistryFile::Values(TreeId key, Listing& listing) {
  return List(key, m_values, &CKeyTree::Values, NameRule::Any, listing);
}

SystemError CRegistryFile::List(TreeId key, CListingCache& cache, Lister lister, NameRule rule,
                                Listing& listing) {
  listing = cache.Find(key);
  if (listing) return kErrorSuccess;
  std::vector<TreeEntry> entries;
  if (const SystemError error = ((*m_tree).*lister)(key, entries)) return error;
  LeftOut leftOut;
  const SystemError error = CKeyListing::Make(std::move(entries), rule, listing, leftOut);
  if (error != kErrorSuccess) return error;
  cache.Keep(key, listing);
  TellOfLeftOut(key, leftOut);
  return kErrorSuccess;
}

void CRegistryFile::TellOfLeftOut(TreeId key, const LeftOut& leftOut) {
  const auto tell = [&](std::atomic<bool>& isTold, size_t count, const char* reason) {
    if (count == 0) return;
    TellOnce(isTold, " has " + std::to_string(count) + reason + " below its key \"" +
                         m_tree->Name(key) + "\", and does not show the like");
  };
  tell(m_isUnnameableTold, leftOut.unnameable, " keys that no path can name");
  tell(m_isRepeatedTold, leftOut.repeated, " keys or values with the name of another one");
}

void CRegistryFile::TellOnce(std::atomic<bool>& isTold, const std::string& sentence) const {
  if (!isTold.exchange(true)) Tell(sentence);
}

void CRegistryFile::Tell(const std::string& sentence) const {
  if (m_notice) m_notice(m_name + sentence);
}

}  // namespace kestra::image
