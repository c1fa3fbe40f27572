// What changes files that are there, in the file system in memory.
#include <algorithm>

#include "VLib/src/text/Text.h"
#include "tests/support/FakeFileSystem.h"

namespace kestra::test {

SystemError CFakeFileSystem::RemoveEmptyDirectory(const std::string& path) {
  std::lock_guard guard(m_lock);
  const Entry* pEntry = nullptr;
  const SystemError error = Find(path, pEntry);
  if (isReadOnly) return kErrorWriteProtect;
  if (error != kErrorSuccess) return error;
  if (pEntry->file.kind != FileKind::Directory) return kErrorDirectory;
  const std::string key = KeyOf(path);
  for (const auto& [child, entry] : m_entries)
    if (entry.parent == key && child != key) return kErrorDirNotEmpty;
  m_entries.erase(key);
  std::erase(m_order, key);
  return kErrorSuccess;
}

SystemError CFakeFileSystem::Rename(const std::string& from, const std::string& to) {
  std::lock_guard guard(m_lock);
  const Entry* pEntry = nullptr;
  SystemError error = Find(from, pEntry);
  if (isReadOnly) return kErrorWriteProtect;
  if (error != kErrorSuccess) return error;
  const Entry* pTarget = nullptr;
  error = Find(to, pTarget);
  if (pTarget) return kErrorAlreadyExists;
  if (error != kErrorFileNotFound) return error;
  const std::string old = KeyOf(from), fresh = KeyOf(to);
  std::vector<std::string> moved;
  for (const std::string& key : m_order)
    if (key == old || key.starts_with(old + m_separator)) moved.push_back(key);
  for (const std::string& key : moved) {
    Entry entry = std::move(m_entries.at(key));
    m_entries.erase(key);
    const std::string target = fresh + key.substr(old.size());
    entry.parent = ParentKeyOf(target);
    if (key == old) {
      const std::string trimmed(TrimRight(to, std::string_view(&m_separator, 1)));
      entry.name = trimmed.substr(trimmed.rfind(m_separator) + 1);
    }
    m_entries[target] = std::move(entry);
    *std::find(m_order.begin(), m_order.end(), key) = target;
  }
  return kErrorSuccess;
}

SystemError CFakeFileSystem::CopyPlainFile(const std::string& from, const std::string& to,
                                           const os::CWaitable* pTermination) {
  std::lock_guard guard(m_lock);
  if (isReadOnly) return kErrorWriteProtect;
  std::string source = from;
  const Entry* pEntry = nullptr;
  SystemError error = FindFile(source, LastLink::Follow, pEntry);
  if (error != kErrorSuccess) return error;
  std::string target = to;
  error = CheckReplacement(target, LastLink::Refuse, Existing::Refuse);
  if (error != kErrorSuccess) return error;
  if (pTermination && os::WaitAny({pTermination}, 0) == 0) return kErrorCancelled;
  FakeFile file = pEntry->file;
  file.creationTime = now;
  Insert(target, std::move(file));
  return kErrorSuccess;
}

SystemError CFakeFileSystem::SetAttributes(const std::string& path, uint32_t attributes) {
  std::lock_guard guard(m_lock);
  const Entry* pEntry = nullptr;
  const SystemError error = Find(path, pEntry);
  if (isReadOnly) return kErrorWriteProtect;
  if (error != kErrorSuccess) return error;
  constexpr uint32_t kSettable =
      kFileAttributeReadOnly | kFileAttributeHidden | kFileAttributeSystem;
  uint32_t& own = m_entries.at(KeyOf(path)).file.attributes;
  const uint32_t changed = (own ^ attributes) & kSettable;
  if (m_separator == '/' && (changed & ~kFileAttributeReadOnly)) return kErrorNotSupported;
  own ^= changed;
  m_entries.at(KeyOf(path)).file.state = ++m_states;
  return kErrorSuccess;
}

}  // namespace kestra::test
