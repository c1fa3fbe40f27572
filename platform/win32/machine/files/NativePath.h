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
  size_t rootLength = 0;         // characters up to the separator behind the drive or the share
  bool isRoot = false;           // "\\?\C:\"
  bool isDirectoryOnly = false;  // there was a separator at the end

  // The directory that the last part is in, with its separator.
  std::wstring Directory() const { return text.substr(0, text.rfind(L'\\') + 1); }
};

// kErrorPathNotFound for an empty path, kErrorInvalidName for one with a NUL or with the name of a
// stream, kErrorAccessDenied for that of a device ("C:\x\NUL", "\\.\COM1") or of a pipe.
// The dots and blanks at the end of a part are left out, as for every program, except in a path
// that came with "\\?\" already: there they mean another file, and it is kErrorInvalidName.
SystemError ReadNativePath(const std::string& path, NativePath& native);

// The same for what is to be changed, with kErrorInvalidName for every part that ends in a dot or a
// blank: a directory can list "a." besides "a", and to make the one whole would be to change the
// other.
SystemError ReadPathToChange(const std::string& path, NativePath& native);

// The other way round: without what stands before a native path.
std::string PlainPath(std::wstring_view native);

}  // namespace kestra
