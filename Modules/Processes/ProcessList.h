// What runs on a machine, whichever machine it is: the list that the module Processes shows and
// that other modules look into.
#pragma once

#include <vector>

#include "model/items/QueryMessage.h"
#include "platform/machine/Machine.h"
#include "platform/machine/Processes.h"

namespace kestra {

// Puts a record for each process, and for each task of 16 bits, into records, in the machine's
// order. What may not be read of a process stays without value. User and CommandLine are filled
// only if they are wanted: they cost opening every process; what could not be read is noted in
// message. Unless allSessions, a Windows machine gives the processes of the caller's session and of
// the services' only, as far as it has sessions.
//
// False, with the reason in message and no records, when no list can be taken or the query is
// cancelled. A machine without processes to show has none, and that is a success.
bool EnumProcessList(CMachine& machine, std::vector<ProcessRecord>& records,
                     bool wantUserAndCommandLine, bool allSessions, QueryMessage& message);

}  // namespace kestra
