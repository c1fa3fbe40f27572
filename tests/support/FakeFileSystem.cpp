#include "tests/support/FakeFileSystem.h"

#include <algorithm>

#include "VLib/src/text/Text.h"

namespace kestra::test {
namespace {

FileInfo InfoOf(const FakeFile& file) {
  return {.kind = file.kind,
          .attributes = file.attributes,
          .size = file.size,
          .creationTime = file.creationTime,
          .lastAccessTime = file.lastAccessTime,
          .lastWriteTime = file.lastWriteTime,
          .isTrusted = file.isTrusted,
          .identity = {1, file.number},
          .changeStamp = file.state};
}

struct ListedFile {
  std::string name;
  FakeFile file;
};

class CFakeListing final : public CDirectoryListing {
 public:
  CFakeListing(const FileInfo& own, std::vector<ListedFile> files)
      : m_own(own), m_files(std::move(files)) {}

  SystemError OwnInfo(FileInfo& info) override {
    info = m_own;
    return kErrorSuccess;
  }

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
  FileInfo m_own;
  std::vector<ListedFile> m_files;
  size_t m_next = 0;
};

class CFakeReader final : public CFileReader {
 public:
  explicit CFakeReader(FakeFile file) : m_file(std::move(file)) {}

  SystemError Info(FileInfo& info) override {
    info = InfoOf(m_file);
    return kErrorSuccess;
  }
  SystemError Read(size_t limit, std::string& bytes) override {
    const size_t from = std::min<uint64_t>(m_position, m_file.content.size());
    const std::string_view piece = std::string_view(m_file.content).substr(from, limit);
    bytes += piece;
    m_position += piece.size();
    return kErrorSuccess;
  }
  SystemError Seek(uint64_t offset) override {
    m_position = offset;
    return kErrorSuccess;
  }

 private:
  FakeFile m_file;
  uint64_t m_position = 0;
};

}  // namespace

class CFakeWriter final : public CFileWriter {
 public:
  CFakeWriter(CFakeFileSystem& files, std::string path, Existing existing)
      : m_files(files), m_path(std::move(path)), m_existing(existing) {}

  SystemError Write(std::string_view bytes) override {
    if (m_isOver) return kErrorInvalidHandle;
    m_content += bytes;
    return kErrorSuccess;
  }
  void ExpectUnchanged(const FileInfo& read) override { m_expected = read; }
  SystemError Commit() override {
    if (m_isOver) return kErrorInvalidHandle;
    m_isOver = true;
    if (m_files.beforeCommit) m_files.beforeCommit();
    return m_files.Put(m_path, m_existing, m_content, m_expected);
  }

 private:
  CFakeFileSystem& m_files;
  std::string m_path;
  Existing m_existing;
  std::string m_content;
  std::optional<FileInfo> m_expected;
  bool m_isOver = false;
};

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
  listing = std::make_unique<CFakeListing>(InfoOf(pEntry->file), std::move(files));
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

SystemError CFakeFileSystem::OpenFile(const std::string& path, LastLink lastLink,
                                      std::unique_ptr<CFileReader>& reader) {
  std::lock_guard guard(m_lock);
  std::string target = path;
  const Entry* pEntry = nullptr;
  const SystemError error = FindFile(target, lastLink, pEntry);
  if (error == kErrorSuccess) reader = std::make_unique<CFakeReader>(pEntry->file);
  return error;
}

SystemError CFakeFileSystem::BeginWrite(const std::string& path, LastLink lastLink,
                                        Existing existing, NewRights,
                                        std::unique_ptr<CFileWriter>& writer) {
  std::lock_guard guard(m_lock);
  std::string target = path;
  const SystemError error = CheckReplacement(target, lastLink, existing);
  if (error == kErrorSuccess) writer = std::make_unique<CFakeWriter>(*this, target, existing);
  return error;
}

SystemError CFakeFileSystem::RemoveFile(const std::string& path) {
  std::lock_guard guard(m_lock);
  const Entry* pEntry = nullptr;
  const SystemError error = Find(path, pEntry);
  if (isReadOnly) return kErrorWriteProtect;
  if (error != kErrorSuccess) return error;
  if (pEntry->file.kind == FileKind::Directory ||
      (pEntry->file.attributes & kFileAttributeReadOnly))
    return kErrorAccessDenied;
  const std::string key = KeyOf(path);
  m_entries.erase(key);
  std::erase(m_order, key);
  return kErrorSuccess;
}

SystemError CFakeFileSystem::MakeDirectory(const std::string& path, NewRights) {
  std::lock_guard guard(m_lock);
  const Entry* pEntry = nullptr;
  const SystemError error = Find(path, pEntry);
  if (isReadOnly) return kErrorWriteProtect;
  if (error == kErrorSuccess) return kErrorAlreadyExists;
  if (error != kErrorFileNotFound) return error;
  Insert(path, {.kind = FileKind::Directory,
                .attributes = kFileAttributeDirectory,
                .creationTime = now,
                .lastWriteTime = now});
  return kErrorSuccess;
}

SystemError CFakeFileSystem::VolumeFlags(const std::string&, uint32_t& flags) {
  flags = volumeFlags;
  return kErrorSuccess;
}

SystemError CFakeFileSystem::GrantEveryone(const std::string& path) {
  std::lock_guard guard(m_lock);
  if (isReadOnly) return kErrorWriteProtect;
  m_granted.push_back(path);
  return kErrorSuccess;
}

SystemError CFakeFileSystem::MoveAtBoot(const std::string& from, const std::string& to) {
  std::lock_guard guard(m_lock);
  if (m_separator == '/') return kErrorCallNotImplemented;
  if (isReadOnly) return kErrorWriteProtect;
  m_movesAtBoot.emplace_back(from, to);
  return kErrorSuccess;
}

std::string CFakeFileSystem::Content(const std::string& path) const {
  std::lock_guard guard(m_lock);
  const auto found = m_entries.find(KeyOf(path));
  return found == m_entries.end() ? std::string() : found->second.file.content;
}

std::vector<std::string> CFakeFileSystem::Granted() const {
  std::lock_guard guard(m_lock);
  return m_granted;
}

std::vector<std::pair<std::string, std::string>> CFakeFileSystem::MovesAtBoot() const {
  std::lock_guard guard(m_lock);
  return m_movesAtBoot;
}

void CFakeFileSystem::Add(const std::string& path, FakeFile file) {
  const size_t last = path.rfind(m_separator);
  if (last != std::string::npos && last + 1 < path.size()) AddDirectory(path.substr(0, last + 1));
  if (!file.content.empty()) file.size = file.content.size();
  std::lock_guard guard(m_lock);
  Insert(path, std::move(file));
}

void CFakeFileSystem::Insert(const std::string& path, FakeFile file) {
  const std::string key = KeyOf(path);
  if (!m_entries.count(key)) m_order.push_back(key);
  file.number = file.state = ++m_states;
  const std::string trimmed(TrimRight(path, std::string_view(&m_separator, 1)));
  m_entries[key] = {trimmed.substr(trimmed.rfind(m_separator) + 1), std::move(file),
                    ParentKeyOf(key)};
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
  const auto parent = m_entries.find(ParentKeyOf(key));
  const bool isInDirectory =
      parent != m_entries.end() && (parent->second.file.attributes & kFileAttributeDirectory) != 0;
  return isInDirectory ? kErrorFileNotFound : kErrorPathNotFound;
}

SystemError CFakeFileSystem::FindFile(std::string& path, LastLink lastLink,
                                      const Entry*& pEntry) const {
  constexpr int kMostLinks = 40;
  for (int i = 0; i < kMostLinks; ++i) {
    const SystemError error = Find(path, pEntry);
    // Behind a link all that is missing is a file.
    if (error != kErrorSuccess)
      return i > 0 && error == kErrorPathNotFound ? kErrorFileNotFound : error;
    if (pEntry->file.kind != FileKind::Link)
      return pEntry->file.kind == FileKind::File ? kErrorSuccess : kErrorAccessDenied;
    if (lastLink == LastLink::Refuse) return kErrorAccessDenied;
    if (pEntry->file.linkTarget.empty()) return kErrorFileNotFound;
    path = pEntry->file.linkTarget;
  }
  return kErrorCannotResolveFilename;
}

SystemError CFakeFileSystem::CheckReplacement(std::string& path, LastLink lastLink,
                                              Existing existing) const {
  if (isReadOnly) return kErrorWriteProtect;
  const Entry* pEntry = nullptr;
  SystemError error = Find(path, pEntry);
  if (error == kErrorFileNotFound && !pEntry) return kErrorSuccess;  // a new file
  if (error != kErrorSuccess) return error;
  if (existing == Existing::Refuse) return kErrorFileExists;
  error = FindFile(path, lastLink, pEntry);
  const bool isOpen = error != kErrorSuccess || !(pEntry->file.attributes & kFileAttributeReadOnly);
  return isOpen ? error : kErrorAccessDenied;
}

SystemError CFakeFileSystem::Put(const std::string& path, Existing existing,
                                 const std::string& content,
                                 const std::optional<FileInfo>& expected) {
  std::lock_guard guard(m_lock);
  std::string target = path;
  const SystemError error = CheckReplacement(target, LastLink::Refuse, existing);
  if (error != kErrorSuccess) return error;
  const auto found = m_entries.find(KeyOf(target));
  const bool isNew = found == m_entries.end();
  if (expected && (isNew || !IsSameState(InfoOf(found->second.file), *expected)))
    return kErrorSharingViolation;
  FakeFile file = isNew ? FakeFile{.creationTime = now} : found->second.file;
  const std::string name = target.substr(target.rfind(m_separator) + 1);
  if (isNew && m_separator == '/' && name.starts_with('.')) file.attributes = kFileAttributeHidden;
  file.content = content;
  file.size = content.size();
  file.lastWriteTime = now;
  Insert(target, std::move(file));
  return kErrorSuccess;
}

}  // namespace kestra::test
