// What a new file takes over from the one whose place it takes.
#pragma once

#include "platform/base/SystemError.h"

namespace kestra {

// Gives the file "to" the owner, group, mode, access list and user attributes of "from", as far as
// the system lets us. Nobody gets a right by it that he does not have on "from".
SystemError TakeOverAttributes(int from, int to);

}  // namespace kestra
