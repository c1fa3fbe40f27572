// The text of a file, as if it had been typed; a query ends with ";" at the end of a line.
#pragma once

#include <string>

#include "cli/shell/ShellCore.h"

namespace kestra::cli {

// The first thing that fails ends it, and false is the answer.
bool RunScript(CShellCore& core, const std::string& text);

}  // namespace kestra::cli
