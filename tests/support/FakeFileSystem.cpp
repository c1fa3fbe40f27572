#include "tests/support/FakeFileSystem.h"

#include <algorithm>

#include "VLib/src/text/Text.h"

namespace kestra::test {
namespace {

FileInfo InfoOf(const FakeFile& file) {
  return {file.kind,         file.attributes,     file.size,
          file.creationTime, file.lastAccessTime, file.lastWriteTime};
}

struct ListedFile {
  std::string name;
  FakeFile file;
};

class CFakeListing final : public CDirectoryListing {
 public:
  explicit CFakeListing(std::vector<ListedFile> files) : m_files(std::move(files)) {}

  SystemError Next(std::string& name) override {
    if (m_next >= m_files.size()) return kErrorNoMoreFiles;
    name = m_files[m_next++].name;
    return kErrorSuccess;
  }
  SystemError Info(FileInfo& info) override {
    if (m_next == 0) return kErrorInvalidParameter;
    const FakeFile& file = m_files[m_next - 1].file;
    if (file.vanishes) return kErrorFileNotFound;
    if (file.error != kErrorSuccess) return file.error;
    info = InfoOf(file);
    return kErrorSuccess;
  }

 private:
  std::vector<ListedFile> m_files;
  size_t m_next = 0;
};

}  // namespace

SystemError CFakeFileSystem::OpenDirectory(const std::string& path,
                                           std::unique_ptr<CDirectoryListing>& listing) {
  std::lock_guard guard(m_lock);
  const Entry* pEntry = nullptr;
  const SystemError error = Find(path, pEntry);
  if (error != kErrorSuccess) return error;
  if ((pEntry->file.attributes & kFileAttributeDirectory) == 0) return kErrorDirectory;
  const std::string key = KeyOf(path);
  std::vector<ListedFile> files;
  for (const std::string& child : m_order) {
    const Entry& entry = m_entries.at(child);
    if (child != key && entry.parent == key) files.push_back({entry.name, entry.file});
  }
  listing = std::make_unique<CFakeListing>(std::move(files));
  return kErrorSuccess;
}

SystemError CFakeFileSystem::Info(const std::string& path, FileInfo& info) {
  std::lock_guard guard(m_lock);
  const Entry* pEntry = nullptr;
  const SystemError error = Find(path, pEntry);
  if (error == kErrorSuccess) info = InfoOf(pEntry->file);
  return error;
}

SystemError CFakeFileSystem::ShortPath(const std::string& path, std::string& shortPath) {
  std::lock_guard guard(m_lock);
  const Entry* pEntry = nullptr;
  const SystemError error = Find(path, pEntry);
  if (error != kErrorSuccess) return error;
  if (pEntry->file.shortPath.empty()) return kErrorNotSupported;
  shortPath = pEntry->file.shortPath;
  return kErrorSuccess;
}

void CFakeFileSystem::Add(const std::string& path, FakeFile file) {
  const size_t last = path.rfind(m_separator);
  if (last != std::string::npos && last + 1 < path.size()) AddDirectory(path.substr(0, last + 1));
  std::lock_guard guard(m_lock);
  const std::string key = KeyOf(path);
  if (!m_entries.count(key)) m_order.push_back(key);
  const std::string name(TrimRight(path.substr(last + 1), std::string_view(&m_separator, 1)));
  m_entries[key] = {name, std::move(file), ParentKeyOf(key)};
}

void CFakeFileSystem::AddDirectory(const std::string& path) {
  {
    std::lock_guard guard(m_lock);
    if (m_entries.count(KeyOf(path))) return;
  }
  const std::string trimmed(TrimRight(path, std::string_view(&m_separator, 1)));
  const FakeFile directory{.kind = FileKind::Directory, .attributes = kFileAttributeDirectory};
  if (trimmed.find(m_separator) != std::string::npos) {
    Add(trimmed, directory);
    return;
  }
  std::lock_guard guard(m_lock);
  m_order.push_back(KeyOf(path));
  m_entries[KeyOf(path)] = {trimmed, directory, std::string()};
}

void CFakeFileSystem::Remove(const std::string& path) {
  std::lock_guard guard(m_lock);
  const std::string key = KeyOf(path);
  m_entries.erase(key);
  std::erase(m_order, key);
}

// Without the trailing separator: "C:\" has the key "c:". Linux paths get one more in front, so
// that
// "/" has the key "/" and stands above all others.
std::string CFakeFileSystem::KeyOf(const std::string& path) const {
  std::string key(TrimRight(path, std::string_view(&m_separator, 1)));
  if (m_separator == '/') return "/" + key;
  std::transform(key.begin(), key.end(), key.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
  });
  return key;
}

std::string CFakeFileSystem::ParentKeyOf(const std::string& key) const {
  const size_t last = key.rfind(m_separator);
  if (last == std::string::npos) return std::string();
  return last == 0 ? std::string("/") : key.substr(0, last);
}

SystemError CFakeFileSystem::Find(const std::string& path, const Entry*& pEntry) const {
  const std::string key = KeyOf(path);
  const auto found = m_entries.find(key);
  if (found != m_entries.end()) {
    pEntry = &found->second;
    return found->second.file.error;
  }
  return m_entries.count(ParentKeyOf(key)) ? kErrorFileNotFound : kErrorPathNotFound;
}

}  // namespace kestra::test
