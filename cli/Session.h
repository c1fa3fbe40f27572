// The session that the command line asks for.
#pragma once

#include <stdexcept>

#include "cli/Handles.h"
#include "cli/Options.h"

namespace kestra::cli {

// Options that ask for what there is not.
class CUsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws CUsageError and CInterfaceError.
CSessionHandle MakeSession(const Options& options);

}  // namespace kestra::cli
