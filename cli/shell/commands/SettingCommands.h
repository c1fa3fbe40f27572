// The dot commands that change how queries are run and shown. Without an argument each tells how
// it stands.
#pragma once

#include "cli/shell/commands/DotCommands.h"

namespace kestra::cli {

bool SetFormat(CShellCore& core, const DotArguments& arguments);
bool SetWide(CShellCore& core, const DotArguments& arguments);
bool SetSort(CShellCore& core, const DotArguments& arguments);
bool SetLimit(CShellCore& core, const DotArguments& arguments);
bool SetTiming(CShellCore& core, const DotArguments& arguments);
bool SetTimeOut(CShellCore& core, const DotArguments& arguments);
bool SetActive(CShellCore& core, const DotArguments& arguments);
bool SetOutput(CShellCore& core, const DotArguments& arguments);
bool SetCache(CShellCore& core, const DotArguments& arguments);
bool SetPlugins(CShellCore& core, const DotArguments& arguments);

}  // namespace kestra::cli
