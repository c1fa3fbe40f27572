// What is said on standard error of a query, beside its result.
#pragma once

#include <string_view>

#include "cli/Handles.h"

namespace kestra::cli {

// The Error's text on one line, the first, and what can be said of it on the next ones.
void TellError(kestra_session* session, std::string_view query, kestra_value* error);

// What there is to say of the machine, beside the answer.
void TellNotices(kestra_session* session);

}  // namespace kestra::cli
