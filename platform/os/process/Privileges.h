// What this process may do, and what only an administrator may.
#pragma once

#include <string>

#include "platform/base/SystemError.h"

namespace kestra::os {

// Whether this process runs with the rights of an administrator: on Linux as root.
bool IsAdmin();

// Switches a privilege of the process's token on or off, by its name ("SeShutdownPrivilege").
// kErrorCallNotImplemented where there are none such (Linux).
SystemError EnablePrivilege(const std::string& name, bool on);

// Restarts the machine, without asking the programs that run with force. kErrorCallNotImplemented
// on Linux: nothing here restarts a Linux machine.
SystemError Restart(bool force);

}  // namespace kestra::os
