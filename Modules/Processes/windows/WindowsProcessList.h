// The process list of a Windows machine: which of its interfaces is asked.
#pragma once

#include <vector>

#include "model/items/QueryMessage.h"
#include "platform/machine/Machine.h"
#include "platform/machine/Processes.h"
#include "platform/machine/WindowsProcesses.h"

namespace kestra {

// Appends to records; windows are the calls of this machine. For the other arguments see
// EnumProcessList in Modules/Processes/ProcessList.h.
//
// By system class (GetOsKind): 8, 9, 11 and 12 are asked for a snapshot, whose processes are then
// opened; other systems of the NT family for numbers by the PSAPI library, or for a mere snapshot
// where that is missing, if they have 32 bits, and for the kernel's list if they have 64; the rest
// has the mere snapshot.
//
// Fails when the list cannot be taken (kErrorCallNotImplemented where a library is missing that
// nothing stands for), or with kErrorCancelled. Numbers that PSAPI cannot give are none.
SystemError EnumWindowsProcesses(CMachine& machine, CWindowsProcesses& windows,
                                 std::vector<ProcessRecord>& records, bool wantUserAndCommandLine,
                                 bool allSessions, QueryMessage& message);

// Whether the machine is of the NT family.
bool IsNtFamily(CMachine& machine);

}  // namespace kestra
