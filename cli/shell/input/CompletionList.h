// Completions as the shell shows them.
#pragma once

#include <string>

#include "cli/shell/input/LineEditor.h"

namespace kestra::cli {

// What all candidates begin with, whole characters only. The spelling is the first candidate's.
std::string CommonBeginning(const Completion& completion);

// Lines for the terminal: a few candidates with what they mean, many side by side.
std::string CompletionList(const Completion& completion);

}  // namespace kestra::cli
