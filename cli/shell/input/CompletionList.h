// Completions as the shell shows them.
#pragma once

#include <optional>
#include <string>

#include "cli/shell/input/LineEditor.h"

namespace kestra::cli {

// What all candidates begin with, whole characters only. The spelling is the first candidate's.
std::string CommonBeginning(const Completion& completion);

// Whether there is something to put in, at a place that the line has.
bool IsUsable(const Completion& completion, const std::string& line);

// What takes the place of what is begun in the line: the only candidate with its ending, unless
// that follows already, or what several have in common. Nothing where that is no more than what is
// begun: the list is to be shown then.
std::optional<std::string> TextToPutIn(const Completion& completion, const std::string& line);

// Lines for the terminal: a few candidates with what they mean, many side by side.
std::string CompletionList(const Completion& completion);

}  // namespace kestra::cli
