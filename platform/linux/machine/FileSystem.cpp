#include "platform/machine/FileSystem.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>

#include "platform/linux/ErrnoMap.h"
#include "platform/linux/UniqueFd.h"
#include "platform/linux/machine/Facilities.h"

namespace kestra {
namespace {

FileTime FileTimeFromStatx(const statx_timestamp& time) {
  constexpr int64_t kSecondsTo1970 = 11'644'473'600;
  constexpr int64_t kTicksPerSecond = 10'000'000;
  // Beyond what any date of the language reaches, and what the ticks hold, a time is not known.
  constexpr int64_t kLatest = int64_t{1} << 34;
  if (time.tv_sec < -kSecondsTo1970 || time.tv_sec > kLatest) return {};
  const int64_t ticks = (time.tv_sec + kSecondsTo1970) * kTicksPerSecond + time.tv_nsec / 100;
  return FileTime{ticks > 0 ? static_cast<uint64_t>(ticks) : 0};
}

FileKind KindOf(const struct statx& status) {
  if (S_ISREG(status.stx_mode)) return FileKind::File;
  if (S_ISDIR(status.stx_mode)) return FileKind::Directory;
  return S_ISLNK(status.stx_mode) ? FileKind::Link : FileKind::Other;
}

bool IsHiddenName(const std::string& path) {
  const size_t last = path.find_last_not_of('/');
  if (last == std::string::npos) return false;
  const size_t slash = path.rfind('/', last);
  const std::string name = path.substr(slash + 1, last - slash);
  return name.starts_with('.') && name != "." && name != "..";
}

// The Windows attributes that a file here can be said to have: read-only is one that nobody may
// write, hidden is a name with a leading dot, a reparse point is a symbolic link.
uint32_t AttributesOf(const struct statx& status, FileKind kind, bool isDirectory, bool isHidden) {
  uint32_t attributes = 0;
  const bool isWritable = (status.stx_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) != 0;
  if (kind != FileKind::Link && !isWritable) attributes |= kFileAttributeReadOnly;
  if (isHidden) attributes |= kFileAttributeHidden;
  if (isDirectory) attributes |= kFileAttributeDirectory;
  if (kind == FileKind::Link) attributes |= kFileAttributeReparsePoint;
  if (status.stx_attributes & STATX_ATTR_COMPRESSED) attributes |= kFileAttributeCompressed;
  return attributes == 0 ? kFileAttributeNormal : attributes;
}

// What one entry is. A link is described itself, but for the question whether it counts as a
// directory. Nothing is opened, so that a FIFO does not wait and a device does not act.
bool ReadInfo(int directory, const char* path, bool isHidden, FileInfo& info) {
  constexpr int kFlags = AT_NO_AUTOMOUNT | AT_STATX_SYNC_AS_STAT;
  constexpr unsigned kWanted = STATX_BASIC_STATS | STATX_BTIME;
  struct statx status {};
  if (statx(directory, path, kFlags | AT_SYMLINK_NOFOLLOW, kWanted, &status) != 0) return false;
  info = FileInfo();
  info.kind = KindOf(status);
  bool isDirectory = info.kind == FileKind::Directory;
  if (info.kind == FileKind::Link) {
    struct statx target {};
    isDirectory =
        statx(directory, path, kFlags, STATX_TYPE, &target) == 0 && S_ISDIR(target.stx_mode);
  }
  info.attributes = AttributesOf(status, info.kind, isDirectory, isHidden);
  info.size = status.stx_size;
  // Not every file system keeps the time of birth, and some say so by a 0.
  if ((status.stx_mask & STATX_BTIME) && status.stx_btime.tv_sec != 0)
    info.creationTime = FileTimeFromStatx(status.stx_btime);
  info.lastAccessTime = FileTimeFromStatx(status.stx_atime);
  info.lastWriteTime = FileTimeFromStatx(status.stx_mtime);
  return true;
}

class CLinuxDirectoryListing final : public CDirectoryListing {
 public:
  explicit CLinuxDirectoryListing(DIR* pDirectory) : m_pDirectory(pDirectory) {}

  SystemError Next(std::string& name) override {
    errno = 0;
    const dirent* pEntry = readdir(m_pDirectory.get());
    if (!pEntry) return errno == 0 ? kErrorNoMoreFiles : LastError();
    m_name = pEntry->d_name;
    name = m_name;
    return kErrorSuccess;
  }
  // Asked of the system only now: a listing that is filtered by name looks at no other file.
  SystemError Info(FileInfo& info) override {
    if (m_name.empty()) return kErrorInvalidParameter;
    const int directory = dirfd(m_pDirectory.get());
    return ReadInfo(directory, m_name.c_str(), IsHiddenName(m_name), info) ? kErrorSuccess
                                                                           : LastError();
  }

 private:
  CUniqueDirectory m_pDirectory;
  std::string m_name;
};

class CLinuxFileSystem final : public CFileSystem {
 public:
  SystemError OpenDirectory(const std::string& path,
                            std::unique_ptr<CDirectoryListing>& listing) override {
    if (HasNul(path)) return kErrorInvalidName;
    CUniqueFd fd(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
    if (!fd) return OpenDirectoryError(path);
    DIR* pDirectory = fdopendir(fd.get());
    if (!pDirectory) return LastError();
    fd.Release();
    listing = std::make_unique<CLinuxDirectoryListing>(pDirectory);
    return kErrorSuccess;
  }
  SystemError Info(const std::string& path, FileInfo& info) override {
    if (HasNul(path)) return kErrorInvalidName;
    return ReadInfo(AT_FDCWD, path.c_str(), IsHiddenName(path), info) ? kErrorSuccess
                                                                      : LastErrorOfPath(path);
  }
  SystemError ShortPath(const std::string&, std::string&) override { return kErrorNotSupported; }

 private:
  // Of what is there but is no directory, rather than of a file on the way to it.
  static SystemError OpenDirectoryError(const std::string& path) {
    struct stat status {};
    if (errno == ENOTDIR)
      return stat(path.c_str(), &status) == 0 ? kErrorDirectory : kErrorPathNotFound;
    return LastErrorOfPath(path);
  }
};

}  // namespace

std::unique_ptr<CFileSystem> MakeLinuxFileSystem() {
  return std::make_unique<CLinuxFileSystem>();
}

}  // namespace kestra
