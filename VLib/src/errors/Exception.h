// Exceptions of the code below the module level. None of them leaves a module or a public entry.
#pragma once

#include <exception>
#include <string>

#include "platform/base/SystemError.h"

namespace kestra {

class CVException : public std::exception {
 public:
  explicit CVException(std::string text) : Text(std::move(text)) {}
  const char* what() const noexcept override { return Text.c_str(); }
  std::string Text;
};

// Carries a system error number. Text is the system's text for it, line end included, and empty if
// the system knows none.
class CVSystemException : public CVException {
 public:
  explicit CVSystemException(SystemError code);
  SystemError ErrorCode;
  std::string Context;  // what was being done; empty as constructed
};

// The system's text for an error number as it gives it; on Linux out of a table of the numbers that
// this library itself gives. Empty for a number that has no text.
std::string GetSystemErrorText(SystemError code);

}  // namespace kestra
