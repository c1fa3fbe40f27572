#include "platform/linux/os/named/NamedObjects.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "platform/base/text/NameCode.h"
#include "platform/linux/ErrnoMap.h"
#include "platform/os/Clock.h"

namespace kestra::os {
namespace {

// Longest file name of Linux file systems is 255 bytes.
constexpr size_t kLongestEncodedName = 200;
constexpr size_t kReadableBytesOfLongName = 20;

// Others must not be able to put something else in the place of the user's directory.
bool KeepsWhatIsInIt(int base) {
  struct stat status {};
  if (fstat(base, &status) != 0) return false;
  return (status.st_mode & (S_IWGRP | S_IWOTH)) == 0 || (status.st_mode & S_ISVTX) != 0;
}

bool IsUsersAlone(int directory) {
  struct stat status {};
  return fstat(directory, &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
         (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

// What opening without following links says of a link or of what is no directory.
SystemError OpenError() {
  return errno == ELOOP || errno == ENOTDIR ? kErrorAccessDenied : LastError();
}

}  // namespace

SystemError OpenOwnDirectory(const std::string& base, const std::string& name,
                             CUniqueFd& directory) {
  const CUniqueFd baseFd(open(base.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!baseFd) return LastError();
  if (!KeepsWhatIsInIt(baseFd.get())) return kErrorAccessDenied;
  if (mkdirat(baseFd.get(), name.c_str(), S_IRWXU) != 0 && errno != EEXIST) return LastError();
  CUniqueFd fd(openat(baseFd.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!fd) return OpenError();
  if (!IsUsersAlone(fd.get())) return kErrorAccessDenied;
  directory = std::move(fd);
  return kErrorSuccess;
}

SystemError OpenNamedObjectDirectory(CUniqueFd& directory) {
  const std::string user = std::to_string(geteuid());
  const SystemError error = OpenOwnDirectory("/dev/shm", "kestra-" + user, directory);
  const bool hasSharedMemory = error != kErrorFileNotFound && error != kErrorPathNotFound;
  return hasSharedMemory ? error : OpenOwnDirectory("/tmp", "kestra-locks-" + user, directory);
}

std::string NamedObjectFileName(std::string_view kind, std::string_view name) {
  if (name.size() <= kLongestEncodedName) {
    const std::string escaped = EscapeName(name);
    if (escaped.size() <= kLongestEncodedName) return std::string(kind) + "-" + escaped;
  }
  // A kind has no "+", so this is no name of the other form.
  return std::string(kind) + "+" + std::to_string(name.size()) + "+" + HashName(name) + "+" +
         EscapeName(name.substr(0, kReadableBytesOfLongName));
}

SystemError OpenNamedFile(int directory, const std::string& fileName, CUniqueFd& file) {
  // O_NONBLOCK is for a FIFO or a device that somebody put there.
  CUniqueFd fd(openat(directory, fileName.c_str(),
                      O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC,
                      S_IRUSR | S_IWUSR));
  if (!fd) return OpenError();
  struct stat status {};
  if (fstat(fd.get(), &status) != 0) return LastError();
  if (!S_ISREG(status.st_mode) || status.st_uid != geteuid()) return kErrorAccessDenied;
  file = std::move(fd);
  return kErrorSuccess;
}

SystemError LockWithin(int file, std::span<const CWaitable* const> stops, uint32_t timeOutMs,
                       uint32_t maximumStepMs) {
  const uint32_t start = TickCount();
  for (uint32_t step = 1;; step = std::min(step * 2, maximumStepMs)) {
    if (flock(file, LOCK_EX | LOCK_NB) == 0) return kErrorSuccess;
    if (errno != EWOULDBLOCK && errno != EINTR) return LastError();
    const uint32_t passed = TickCount() - start;
    if (timeOutMs != kInfinite && passed >= timeOutMs) return kErrorTimeout;
    const uint32_t wait = timeOutMs == kInfinite ? step : std::min(step, timeOutMs - passed);
    const int result = WaitAny(stops, wait);
    if (result >= 0) return kErrorCancelled;
    if (result != kWaitTimeOut) return kErrorInvalidHandle;
  }
}

}  // namespace kestra::os
