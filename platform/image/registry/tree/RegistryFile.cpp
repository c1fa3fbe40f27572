#include "platform/image/registry/tree/RegistryFile.h"

#include "platform/image/registry/hive/HiveRepair.h"
#include "platform/image/registry/hive/HiveTree.h"
#include "platform/image/registry/wine/WineRegistry.h"
#include "platform/os/MemoryFile.h"

namespace kestra::image {
namespace {

constexpr size_t kHeaderSize = 4096;
constexpr size_t kReadStep = size_t{1} << 20;
// Windows itself allows a hive half of that; a text of a tenth of the limit is a large one.
constexpr uint64_t kLargestHive = uint64_t{1} << 30;
constexpr uint64_t kLargestText = uint64_t{1} << 27;
constexpr size_t kMostCachedNames = size_t{1} << 16;

bool IsMissing(SystemError error) {
  return error == kErrorFileNotFound || error == kErrorPathNotFound;
}

// Gives each piece of the file to take, a function of (text) that answers an error. More than the
// file had at first is not read: a file that grows has no end.
template <class Taker>
SystemError ReadAll(CFileReader& reader, uint64_t size, Taker take) {
  std::string bytes;
  while (size != 0) {
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
  std::call_once(m_existence, [this] {
    std::unique_ptr<CFileReader> reader;
    m_isThere = Open(reader) != kErrorFileNotFound;
  });
  return m_isThere;
}

SystemError CRegistryFile::Load() {
  std::call_once(m_load, [this] {
    m_error = Read();
    if (m_error != kErrorSuccess) TellOfFailure(m_error);
  });
  return m_error;
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
    default:
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
  return isHive ? ReadHive(*reader, info.size) : ReadText(*reader, info.size);
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
  const SystemError error = OpenHive(
      std::move(file), [this] { TellOfDamage(); }, m_tree);
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

SystemError CRegistryFile::List(TreeId key, Cache& cache, Listing& listing) {
  {
    std::lock_guard guard(cache.lock);
    const auto found = cache.listings.find(key);
    if (found != cache.listings.end()) {
      listing = found->second;
      return kErrorSuccess;
    }
  }
  std::vector<TreeEntry> entries;
  if (const SystemError error = ((*m_tree).*cache.pList)(key, entries)) return error;
  listing = std::make_shared<const CKeyListing>(std::move(entries));
  const size_t count = listing->Entries().size() + 1;
  std::lock_guard guard(cache.lock);
  if (cache.entryCount + count > kMostCachedNames) {
    cache.listings.clear();
    cache.entryCount = 0;
  }
  if (cache.listings.try_emplace(key, listing).second) cache.entryCount += count;
  return kErrorSuccess;
}

void CRegistryFile::TellOfDamage() {
  if (!m_isDamageTold.exchange(true)) {
    Tell(" is damaged: what cannot be read of it is not shown");
  }
}

void CRegistryFile::Tell(const std::string& sentence) const {
  if (m_notice) m_notice(m_name + sentence);
}

}  // namespace kestra::image
