#include "platform/linux/machine/files/FileChange.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "platform/linux/ErrnoMap.h"
#include "platform/linux/UniqueFd.h"
#include "platform/linux/machine/files/FileReader.h"
#include "platform/linux/machine/files/FileStatus.h"
#include "platform/linux/machine/files/FileWriter.h"
#include "platform/linux/machine/files/Place.h"

namespace kestra {
namespace {

constexpr mode_t kAllRights = S_IRWXU | S_IRWXG | S_IRWXO;
constexpr mode_t kWriteRights = S_IWUSR | S_IWGRP | S_IWOTH;

// For a file system that cannot tell whether a rename would replace: a link never does.
SystemError RenameByLink(const Place& from, const Place& to) {
  const int source = from.directory.get(), target = to.directory.get();
  if (linkat(source, from.name.c_str(), target, to.name.c_str(), 0) != 0)
    return errno == EPERM || errno == EOPNOTSUPP ? kErrorNotSupported : LastError();
  if (unlinkat(source, from.name.c_str(), 0) == 0) return kErrorSuccess;
  const SystemError error = LastError();
  unlinkat(target, to.name.c_str(), 0);
  return error;
}

SystemError CopyBytes(int source, CFileWriter& writer, const os::CWaitable* pTermination) {
  constexpr size_t kPiece = 1 << 18;
  std::string bytes(kPiece, '\0');
  for (;;) {
    if (pTermination && os::WaitAny({pTermination}, 0) != os::kWaitTimeOut) return kErrorCancelled;
    const ssize_t count = read(source, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return LastError();
    if (count == 0) return kErrorSuccess;
    const SystemError error =
        writer.Write(std::string_view(bytes).substr(0, static_cast<size_t>(count)));
    if (error != kErrorSuccess) return error;
  }
}

// Whether a file was written to since: what was copied is then neither the old nor the new. The
// files of /proc and the like have no size, and change their time at every look.
bool HasChanged(int fd, const struct stat& before) {
  struct stat now {};
  if (fstat(fd, &now) != 0) return true;
  const bool isSameTime =
      now.st_mtim.tv_sec == before.st_mtim.tv_sec && now.st_mtim.tv_nsec == before.st_mtim.tv_nsec;
  return now.st_size != before.st_size || (before.st_size > 0 && !isSameTime);
}

}  // namespace

SystemError RenameLinuxPath(const std::string& from, const std::string& to) {
  if (HasNul(from) || HasNul(to)) return kErrorInvalidName;
  Place source, target;
  SystemError error = OpenPlaceToChange(from, source);
  if (error == kErrorSuccess) error = OpenPlaceToChange(to, target);
  if (error != kErrorSuccess) return error;
  if (renameat2(source.directory.get(), source.name.c_str(), target.directory.get(),
                target.name.c_str(), RENAME_NOREPLACE) == 0)
    return kErrorSuccess;
  const int number = errno;
  struct stat status {};
  if (fstatat(source.directory.get(), source.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
    return LastError();
  if (number == ENOENT) return kErrorPathNotFound;
  if (number != EINVAL && number != ENOSYS) return ErrorFromErrno(number);
  // A directory into itself is EINVAL too.
  return S_ISDIR(status.st_mode) ? kErrorNotSupported : RenameByLink(source, target);
}

SystemError CopyLinuxFile(const std::string& from, const std::string& to,
                          const os::CWaitable* pTermination) {
  CUniqueFd source;
  SystemError error = OpenPlainFile(from, LastLink::Follow, source);
  if (error != kErrorSuccess) return error;
  struct stat status {};
  if (fstat(source.get(), &status) != 0) return LastError();
  std::unique_ptr<CFileWriter> writer;
  error = BeginLinuxCopy(to, status.st_mode & kAllRights, status.st_mtim, writer);
  if (error == kErrorSuccess) error = CopyBytes(source.get(), *writer, pTermination);
  if (error == kErrorSuccess && HasChanged(source.get(), status)) error = kErrorSharingViolation;
  return error == kErrorSuccess ? writer->Commit() : error;
}

SystemError SetLinuxAttributes(const std::string& path, uint32_t attributes) {
  if (HasNul(path)) return kErrorInvalidName;
  Place place;
  const SystemError error = OpenPlaceToChange(path, place);
  if (error != kErrorSuccess) return error;
  // Neither opens it, nor follows a link that came in between.
  const CUniqueFd fd(
      openat(place.directory.get(), place.name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!fd) return LastError();
  struct stat status {};
  FileInfo info;
  if (fstat(fd.get(), &status) != 0 || !ReadFileInfo(fd.get(), IsHiddenName(path), info))
    return LastError();
  if (info.kind == FileKind::Link) return kErrorNotSupported;
  const uint32_t changed = info.attributes ^ attributes;
  if (changed & (kFileAttributeHidden | kFileAttributeSystem)) return kErrorNotSupported;
  if (!(changed & kFileAttributeReadOnly)) return kErrorSuccess;
  const mode_t mode = status.st_mode & (kAllRights | S_ISUID | S_ISGID | S_ISVTX);
  const bool isReadOnly = attributes & kFileAttributeReadOnly;
  // fchmod(2) takes no descriptor of this kind; its name below /proc stands for the same file.
  const std::string name = "/proc/self/fd/" + std::to_string(fd.get());
  const mode_t changedMode = isReadOnly ? mode & ~kWriteRights : mode | S_IWUSR;
  return chmod(name.c_str(), changedMode) == 0 ? kErrorSuccess : LastError();
}

}  // namespace kestra
