// What a new file takes over from the one whose place it takes.
#pragma once

#include "platform/base/SystemError.h"

namespace kestra {

// Gives the file "to" the owner, mode and access list of "from", and its group and user attributes
// as far as the system lets us. kErrorAccessDenied where it does not let us give it the owner or
// the access list. Where the group is lost, the rights are those alone that both the group and all
// others had. So nobody gets a right by it that he does not have on "from".
SystemError TakeOverAttributes(int from, int to);

}  // namespace kestra
