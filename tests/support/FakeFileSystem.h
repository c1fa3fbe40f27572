// A file system in memory, with the paths of either family.
//
//   CFakeFileSystem files('\\');
//   files.Add("C:\\Windows\\win.ini", {.content = "[fonts]\r\n"});
//
// Windows paths compare without regard to the case of ASCII letters. All methods may be called from
// any thread; a listing shows the directory as it was when it was opened, and a reader the file.
// The public members are set before threads come to use it.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
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
  bool isTrusted = true;
  std::string linkTarget{};  // where a link leads, an absolute path; empty: nowhere
  std::string content{};     // size follows it when there is any
  uint64_t number = 0;       // which file it is; the file system's own, as the next one
  uint64_t state = 0;        // another number after each change
};

class CFakeFileSystem final : public CFileSystem {
 public:
  explicit CFakeFileSystem(char separator) : m_separator(separator) {}

  SystemError OpenDirectory(const std::string& path,
                            std::unique_ptr<CDirectoryListing>& listing) override;
  SystemError Info(const std::string& path, FileInfo& info) override;
  SystemError ShortPath(const std::string& path, std::string& shortPath) override;
  SystemError OpenFile(const std::string& path, LastLink lastLink,
                       std::unique_ptr<CFileReader>& reader) override;
  SystemError BeginWrite(const std::string& path, LastLink lastLink, Existing existing,
                         NewRights rights, std::unique_ptr<CFileWriter>& writer) override;
  SystemError RemoveFile(const std::string& path) override;
  SystemError MakeDirectory(const std::string& path, NewRights rights) override;
  SystemError RemoveEmptyDirectory(const std::string& path) override;
  SystemError Rename(const std::string& from, const std::string& to) override;
  SystemError CopyPlainFile(const std::string& from, const std::string& to,
                            const os::CWaitable* pTermination) override;
  SystemError SetAttributes(const std::string& path, uint32_t attributes) override;
  SystemError VolumeFlags(const std::string& path, uint32_t& flags) override;
  SystemError GrantEveryone(const std::string& path) override;
  SystemError MoveAtBoot(const std::string& from, const std::string& to) override;

  // For the script. The directories on the way are made.
  void Add(const std::string& path, FakeFile file);
  void AddDirectory(const std::string& path);
  void Remove(const std::string& path);
  // What a file holds; empty if there is no such file.
  std::string Content(const std::string& path) const;
  // What GrantEveryone and MoveAtBoot were called with, in order.
  std::vector<std::string> Granted() const;
  std::vector<std::pair<std::string, std::string>> MovesAtBoot() const;

  FileTime now{133'485'408'000'000'000};  // the write time of what is written: 2024-01-01
  uint32_t volumeFlags = 0;
  bool isReadOnly = false;  // every change is kErrorWriteProtect
  // Called at the beginning of each Commit, for what happens between reading and writing.
  std::function<void()> beforeCommit;

 private:
  friend class CFakeWriter;

  struct Entry {
    std::string name;
    FakeFile file;
    std::string parent;  // key of the directory; empty for a root
  };
  std::string KeyOf(const std::string& path) const;
  std::string ParentKeyOf(const std::string& key) const;
  // kErrorFileNotFound or kErrorPathNotFound, or what the file is scripted to answer.
  SystemError Find(const std::string& path, const Entry*& pEntry) const;

  // The same behind the links in the last place.
  SystemError FindFile(std::string& path, LastLink lastLink, const Entry*& pEntry) const;
  SystemError CheckReplacement(std::string& path, LastLink lastLink, Existing existing) const;
  // What a writer does at its end.
  SystemError Put(const std::string& path, Existing existing, const std::string& content,
                  const std::optional<FileInfo>& expected);
  void Insert(const std::string& path, FakeFile file);

  char m_separator;
  mutable std::mutex m_lock;               // guards all that follows
  uint64_t m_states = 0;                   // how many were given to files
  std::map<std::string, Entry> m_entries;  // by normalised path
  std::vector<std::string> m_order;        // the keys as they were added
  std::vector<std::string> m_granted;
  std::vector<std::pair<std::string, std::string>> m_movesAtBoot;
};

}  // namespace kestra::test
