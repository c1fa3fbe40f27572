#include "platform/linux/machine/files/FileStatus.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/linux/Trust.h"

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

// All but the attribute word.
FileInfo InfoOf(const struct statx& status) {
  FileInfo info;
  info.kind = KindOf(status);
  info.size = status.stx_size;
  // Not every file system keeps the time of birth, and some say so by a 0.
  if ((status.stx_mask & STATX_BTIME) && status.stx_btime.tv_sec != 0)
    info.creationTime = FileTimeFromStatx(status.stx_btime);
  info.lastAccessTime = FileTimeFromStatx(status.stx_atime);
  info.lastWriteTime = FileTimeFromStatx(status.stx_mtime);
  // A link says nothing about what it leads to.
  info.isTrusted = info.kind != FileKind::Link &&
                   !OthersCanChange(status.stx_uid, status.stx_gid, status.stx_mode);
  // A file system without a device of its own makes up its files, unless it says where their bytes
  // are.
  info.isStored = status.stx_blocks > 0 || status.stx_dev_major != 0;
  info.identity = {uint64_t{status.stx_dev_major} << 32 | status.stx_dev_minor, status.stx_ino};
  constexpr uint64_t kNanoseconds = 1'000'000'000;
  info.changeStamp =
      static_cast<uint64_t>(status.stx_ctime.tv_sec) * kNanoseconds + status.stx_ctime.tv_nsec;
  return info;
}

constexpr int kStatxFlags = AT_NO_AUTOMOUNT | AT_STATX_SYNC_AS_STAT;
constexpr unsigned kWanted = STATX_BASIC_STATS | STATX_BTIME;

}  // namespace

bool IsHiddenName(const std::string& path) {
  const size_t last = path.find_last_not_of('/');
  if (last == std::string::npos) return false;
  const size_t slash = path.rfind('/', last);
  const std::string name = path.substr(slash + 1, last - slash);
  return name.starts_with('.') && name != "." && name != "..";
}

bool ReadFileInfo(int directory, const char* path, bool isHidden, FileInfo& info,
                  LinkTarget target) {
  struct statx status {};
  if (statx(directory, path, kStatxFlags | AT_SYMLINK_NOFOLLOW, kWanted, &status) != 0)
    return false;
  info = InfoOf(status);
  bool isDirectory = info.kind == FileKind::Directory;
  if (info.kind == FileKind::Link && target == LinkTarget::Look) {
    struct statx end {};
    isDirectory =
        statx(directory, path, kStatxFlags, STATX_TYPE, &end) == 0 && S_ISDIR(end.stx_mode);
  }
  info.attributes = AttributesOf(status, info.kind, isDirectory, isHidden);
  return true;
}

bool ReadFileInfo(int file, bool isHidden, FileInfo& info) {
  struct statx status {};
  if (statx(file, "", kStatxFlags | AT_EMPTY_PATH, kWanted, &status) != 0) return false;
  info = InfoOf(status);
  const bool isDirectory = info.kind == FileKind::Directory;
  info.attributes = AttributesOf(status, info.kind, isDirectory, isHidden);
  return true;
}

}  // namespace kestra
