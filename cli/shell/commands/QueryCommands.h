// The dot commands that run something.
#pragma once

#include "cli/shell/commands/DotCommands.h"

namespace kestra::cli {

bool Explain(CShellCore& core, const DotArguments& arguments);
bool Dump(CShellCore& core, const DotArguments& arguments);
bool Read(CShellCore& core, const DotArguments& arguments);

}  // namespace kestra::cli
