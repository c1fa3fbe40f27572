// What is said on standard error of a query, beside its result.
#pragma once

#include "cli/Handles.h"
#include "cli/QueryText.h"
#include "cli/Settings.h"

namespace kestra::cli {

// The Error's text on one line, the first, and what can be said of it on the next ones: what a
// message means that has only a number, where in the query the fault is, and what the command has
// instead; for an Error without a text, whether the query's time was over. Lines and columns are
// those of the text that the query stands in.
void TellError(kestra_session* session, const QueryPiece& query, kestra_value* error,
               const Settings& settings);

// Behind a result that is nothing, or a count of nothing: what in the query may not have been meant
// (an unknown class, a "%" in LIKE).
void TellDoubts(kestra_session* session, const QueryPiece& query, kestra_value* value);

// What there is to say of the machine, beside the answer.
void TellNotices(kestra_session* session);

}  // namespace kestra::cli
