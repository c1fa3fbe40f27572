// Paths of a volume that stands for the drive C:.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/base/SystemError.h"

namespace kestra::image {

// Takes a path such as "C:\Windows\System32\" apart into the names below the root. "." and ".." are
// settled by the text alone, as Windows does it, and there is nothing above the root. A period at
// the end of a name does not count, and at the end of the path no period and no blank.
// "/" separates names as "\" does, and "\\?\" may stand before the drive. kErrorPathNotFound for
// another drive, a network path and one that does not begin with a drive; kErrorInvalidName for a
// NUL.
SystemError SplitVolumePath(std::string_view path, std::vector<std::string>& names);

}  // namespace kestra::image
