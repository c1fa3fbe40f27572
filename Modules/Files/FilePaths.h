// Paths as the machine writes them, taken apart and put together.
#pragma once

#include <string>
#include <string_view>

#include "platform/machine/Machine.h"
#include "platform/machine/SystemFacts.h"

namespace kestra {

std::string JoinPath(std::string directory, std::string_view name, char separator);
// Without separators at the end, unless nothing but the root is left.
std::string TrimSeparators(std::string path, char separator);
// What stands behind the last separator; the whole text without one.
std::string_view LastPart(std::string_view path, char separator);
// What stands before it; the separator stays behind a root. Empty without one.
std::string ParentPath(const std::string& path, char separator);
// Whether a text that a user gave names more than the last part of a path: it holds a separator, in
// either form that is understood on the machine.
bool HasSeparator(std::string_view text, char separator);

}  // namespace kestra
