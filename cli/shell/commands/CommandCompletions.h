// What may stand at the cursor behind the name of a dot command.
#pragma once

#include <string>

#include "cli/shell/commands/DotCommands.h"
#include "cli/shell/input/LineEditor.h"

namespace kestra::cli {

// begun is what stands before the cursor, from the dot on; the place in the answer counts from
// there. Not for a command that takes a query, once its name is written.
Completion CompleteCommand(CShellCore& core, const std::string& begun);

// The paths that begin with what is begun; ending is what follows a file. The place in the answer
// counts from where the path begins.
Completion CompletePath(const std::string& begun, const std::string& ending, bool onlyDirectories);

}  // namespace kestra::cli
