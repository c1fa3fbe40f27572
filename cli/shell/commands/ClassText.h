// What the shell says of one class.
#pragma once

#include <string>

#include "cli/shell/commands/ClassTree.h"

namespace kestra::cli {

// path is how a query names the class: "Files.Directory", or "Files" for the module. Lines that are
// not wider than width, as far as their columns can help it.
std::string DescribeClass(const CClassHandle& diagClass, const std::string& path, size_t width);

}  // namespace kestra::cli
