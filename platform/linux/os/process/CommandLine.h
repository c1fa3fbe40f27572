// Takes a command line apart, by the rules that platform/os/process/ChildProcess.h tells.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestra::os {

// False for a quote that is not closed, a backslash at the end, or a NUL.
bool SplitCommandLine(std::string_view commandLine, std::vector<std::string>& words);

}  // namespace kestra::os
