#include "platform/linux/ErrnoMap.h"

#include <sys/stat.h>

#include <cerrno>

namespace kestra {

SystemError ErrorFromErrno(int number) {
  switch (number) {
    case 0:
      return kErrorSuccess;
    case ENOENT:
      return kErrorFileNotFound;
    case ENOTDIR:
      return kErrorPathNotFound;
    case EMFILE:
    case ENFILE:
      return kErrorTooManyOpenFiles;
    case EPERM:
    case EACCES:
    case EISDIR:
      return kErrorAccessDenied;
    case EBADF:
    case ESRCH:
      return kErrorInvalidHandle;
    case ENOMEM:
      return kErrorNotEnoughMemory;
    case EXDEV:
      return kErrorNotSameDevice;
    case EROFS:
      return kErrorWriteProtect;
    case ENODEV:
    case ENXIO:
      return kErrorNotReady;
    case EWOULDBLOCK:
    case ETXTBSY:
      return kErrorSharingViolation;
    case EOPNOTSUPP:
      return kErrorNotSupported;
    case EINVAL:
      return kErrorInvalidParameter;
    case EPIPE:
      return kErrorBrokenPipe;
    case ENOSPC:
    case EDQUOT:
      return kErrorDiskFull;
    case ENOSYS:
      return kErrorCallNotImplemented;
    case ENOTEMPTY:
      return kErrorDirNotEmpty;
    case E2BIG:
      return kErrorBadArguments;
    case EBUSY:
      return kErrorBusy;
    case EEXIST:
      return kErrorAlreadyExists;
    case ENOEXEC:
      return kErrorBadExeFormat;
    case ENAMETOOLONG:
      return kErrorFilenameExceedsRange;
    case EFBIG:
      return kErrorFileTooLarge;
    case EIO:
      return kErrorIoDevice;
    case ECANCELED:
      return kErrorCancelled;
    case ETIMEDOUT:
      return kErrorTimeout;
    case ELOOP:
      return kErrorCannotResolveFilename;
    default:
      return kErrorGenFailure;
  }
}

SystemError LastError() {
  return ErrorFromErrno(errno);
}

SystemError LastErrorOfPath(const std::string& path) {
  const SystemError error = LastError();
  if (error != kErrorFileNotFound) return error;
  const size_t last = path.find_last_not_of('/');
  const size_t slash = last == std::string::npos ? last : path.rfind('/', last);
  if (slash == std::string::npos) return path.empty() ? kErrorPathNotFound : error;
  struct stat status {};
  const std::string parent = path.substr(0, slash + 1);
  return stat(parent.c_str(), &status) == 0 ? error : kErrorPathNotFound;
}

}  // namespace kestra
