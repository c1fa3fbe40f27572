// Paths that stand for one place wherever the process stands.
#pragma once

#include <string_view>

#include "VLib/src/text/Text.h"

namespace kestra {

// "/..." with the separator "/"; "C:\..." or "\\server..." with the other one.
inline bool IsAbsolutePath(std::string_view path, char separator) {
  if (separator == '/') return path.starts_with('/');
  const bool hasDrive =
      path.size() >= 3 && IsAsciiLetter(path[0]) && path[1] == ':' && path[2] == separator;
  return hasDrive || path.starts_with("\\\\");
}

}  // namespace kestra
