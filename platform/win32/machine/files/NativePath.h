// A path as the system's functions take it, out of one as the machine's users write it.
#pragma once

#include <string>
#include <string_view>

#include "platform/base/SystemError.h"

namespace kestra {

// Made whole by the system's rules, with "\\?\" before it: not limited to 260 characters, and read
// by the system as it stands. Never that of a device or a pipe, whose opening alone may wait or
// act. Source: the Win32 page "Naming Files, Paths, and Namespaces".
struct NativePath {
  std::wstring text;             // without a separator at the end, but for a root
  bool isRoot = false;           // "\\?\C:\"
  bool isDirectoryOnly = false;  // there was a separator at the end

  // The directory that the last part is in, with its separator.
  std::wstring Directory() const { return text.substr(0, text.rfind(L'\\') + 1); }
};

// kErrorPathNotFound for an empty path, kErrorInvalidName for one with a NUL or with the name of a
// stream, kErrorAccessDenied for that of a device ("C:\x\NUL", "\\.\COM1") or of a pipe.
SystemError ReadNativePath(const std::string& path, NativePath& native);

// The other way round: without what stands before a native path.
std::string PlainPath(std::wstring_view native);

}  // namespace kestra
