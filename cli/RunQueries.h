// Running the queries of a text, one after the other.
#pragma once

#include <string_view>
#include <vector>

#include "cli/Options.h"

namespace kestra::cli {

// Answers the exit status. Results go to standard output, errors to standard error; the first Error
// ends it. Throws COutputError, CInterfaceError and std::bad_alloc.
int RunQueries(const Options& options, const std::vector<std::string_view>& queries);

}  // namespace kestra::cli
