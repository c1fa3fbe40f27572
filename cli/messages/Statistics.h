// What is said on standard error of what a query has read.
#pragma once

#include "cli/Handles.h"
#include "cli/Settings.h"

namespace kestra::cli {

// Of the session's last query, whose outcome is value. Always: that a module is not built yet, or
// that the machine has nothing for it. With showStatistics of settings a line per source, what
// could not be read, and the totals; without, and only on a terminal, that there is something of
// that kind.
void TellWhatHappened(kestra_session* session, kestra_value* value, const Settings& settings);

}  // namespace kestra::cli
