// Running the queries of a text, one after the other.
#pragma once

#include <stdexcept>
#include <string_view>
#include <vector>

#include "cli/Options.h"

namespace kestra::cli {

// Options that ask for what there is not.
class CUsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Answers the exit status. Results go to standard output, errors to standard error; the first Error
// ends it. Throws COutputError, CInterfaceError, CUsageError and
// std::bad_alloc.
int RunQueries(const Options& options, const std::vector<std::string_view>& queries);

}  // namespace kestra::cli
