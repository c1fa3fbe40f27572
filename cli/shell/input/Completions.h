// What may stand at the cursor of the shell's line.
#pragma once

#include "cli/shell/ShellCore.h"
#include "cli/shell/input/LineEditor.h"
#include "cli/shell/input/Statement.h"

namespace kestra::cli {

// before is what stands on the lines above; nothing is found where the session does not answer.
Completion Complete(CShellCore& core, const CStatement& before, const std::string& line,
                    size_t cursor);

}  // namespace kestra::cli
