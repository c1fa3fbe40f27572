// The one translation of errno into the error numbers that the seam speaks.
#pragma once

#include <string>

#include "platform/base/SystemError.h"

namespace kestra {

// kErrorGenFailure for a number that has no counterpart.
SystemError ErrorFromErrno(int number);
// The same of the calling thread's errno.
SystemError LastError();
// After a failed operation on path: tells a missing last part (kErrorFileNotFound) from a missing
// directory on the way (kErrorPathNotFound), which errno does not.
SystemError LastErrorOfPath(const std::string& path);
// A path that the system's functions would read otherwise than it is written: one with a NUL.
inline bool HasNul(const std::string& path) {
  return path.find('\0') != std::string::npos;
}

}  // namespace kestra
