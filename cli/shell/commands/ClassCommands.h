// The dot commands that tell of modules and classes.
#pragma once

#include "cli/shell/commands/DotCommands.h"

namespace kestra::cli {

bool ShowModules(CShellCore& core, const DotArguments& arguments);
bool Describe(CShellCore& core, const DotArguments& arguments);
bool ShowExamples(CShellCore& core, const DotArguments& arguments);

}  // namespace kestra::cli
