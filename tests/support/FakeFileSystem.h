// A file system in memory, with the paths of either family.
//
//   CFakeFileSystem files('\\');
//   files.Add("C:\\Windows\\win.ini", {.size = 92});
//
// Windows paths compare without regard to the case of ASCII letters. All methods may be called from
// any thread; a listing shows the directory as it was when it was opened.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/machine/FileSystem.h"

namespace kestra::test {

struct FakeFile {
  FileKind kind = FileKind::File;
  uint32_t attributes = kFileAttributeNormal;
  uint64_t size = 0;
  FileTime creationTime{};
  FileTime lastAccessTime{};
  FileTime lastWriteTime{};
  std::string shortPath{};  // empty: kErrorNotSupported
  bool vanishes = false;    // listed, but gone when it is asked for
  SystemError error = 0;    // given for every question about this file, by OpenDirectory too
};

class CFakeFileSystem final : public CFileSystem {
 public:
  explicit CFakeFileSystem(char separator) : m_separator(separator) {}

  SystemError OpenDirectory(const std::string& path,
                            std::unique_ptr<CDirectoryListing>& listing) override;
  SystemError Info(const std::string& path, FileInfo& info) override;
  SystemError ShortPath(const std::string& path, std::string& shortPath) override;

  // For the script. The directories on the way are made.
  void Add(const std::string& path, FakeFile file);
  void AddDirectory(const std::string& path);
  void Remove(const std::string& path);

 private:
  struct Entry {
    std::string name;
    FakeFile file;
    std::string parent;  // key of the directory; empty for a root
  };
  std::string KeyOf(const std::string& path) const;
  std::string ParentKeyOf(const std::string& key) const;
  // kErrorFileNotFound or kErrorPathNotFound, or what the file is scripted to answer.
  SystemError Find(const std::string& path, const Entry*& pEntry) const;

  char m_separator;
  std::mutex m_lock;                       // guards the entries
  std::map<std::string, Entry> m_entries;  // by normalised path
  std::vector<std::string> m_order;        // the keys as they were added
};

}  // namespace kestra::test
