// How a query would be run, for a reader.
#pragma once

#include <string>

#include "model/root/Root.h"

namespace kestra {

// Puts the plan of a text into plan, as lines that end with LF: what is done, the sources with
// their arguments and how old their content may be, how joins find their rows, and which condition
// is tested where. What stands below a line belongs to it. Nothing is run, and no module is made.
// False for a text that does not parse.
bool ExplainQuery(const std::string& text, const Ref<DiagRoot>& root, std::string& plan);

}  // namespace kestra
