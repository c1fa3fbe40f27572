// Facility "file system" of the diagnosed machine.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/base/FileTime.h"
#include "platform/base/SystemError.h"

namespace kestra {

// The attribute word's bits. Source: the Win32 page "File Attribute Constants".
inline constexpr uint32_t kFileAttributeReadOnly = 0x1;
inline constexpr uint32_t kFileAttributeHidden = 0x2;
inline constexpr uint32_t kFileAttributeSystem = 0x4;
inline constexpr uint32_t kFileAttributeDirectory = 0x10;
inline constexpr uint32_t kFileAttributeNormal = 0x80;
inline constexpr uint32_t kFileAttributeReparsePoint = 0x400;
inline constexpr uint32_t kFileAttributeCompressed = 0x800;

// What a file is, before anybody opens it. Only plain files may be opened and only plain
// directories descended into.
enum class FileKind { File, Directory, Link, Other };

// What the file system says of one file. A time of 0 ticks is not known.
struct FileInfo {
  FileKind kind = FileKind::File;
  uint32_t attributes = 0;  // the directory bit says whether it counts as a directory; a link to a
                            // directory counts as what it leads to
  uint64_t size = 0;        // bytes
  FileTime creationTime{};
  FileTime lastAccessTime{};
  FileTime lastWriteTime{};
};

// The entries of one directory, "." and ".." among them only if the system lists them. One thread
// at a time.
class CDirectoryListing {
 public:
  virtual ~CDirectoryListing() = default;
  // The next name, in the system's order. kErrorNoMoreFiles after the last one.
  virtual SystemError Next(std::string& name) = 0;
  // What the entry is that Next gave last. kErrorFileNotFound when it went away in between.
  virtual SystemError Info(FileInfo& info) = 0;
};

// All methods may be called from any thread. Paths are the machine's own, absolute, UTF-8; a
// trailing separator is allowed on directories. "Not found" is kErrorFileNotFound for the last
// part and kErrorPathNotFound for a directory on the way.
class CFileSystem {
 public:
  virtual ~CFileSystem() = default;
  virtual SystemError OpenDirectory(const std::string& path,
                                    std::unique_ptr<CDirectoryListing>& listing) = 0;
  virtual SystemError Info(const std::string& path, FileInfo& info) = 0;
  // The short (8.3) form of a path. kErrorNotSupported where the file system has none.
  virtual SystemError ShortPath(const std::string& path, std::string& shortPath) = 0;
};

}  // namespace kestra
