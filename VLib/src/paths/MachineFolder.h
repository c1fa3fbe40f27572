// Where a machine's well-known folders are: what its own functions say, else what its registry
// says, else the usual place.
#pragma once

#include <optional>
#include <string>

#include "platform/machine/SystemFacts.h"

namespace kestra {

class CMachine;

// Without trailing separator. Nothing if the machine has no such folder. On a Windows machine:
// - the Windows, system and temporary folders are "C:" where the system does not tell them;
// - the user's folders, and the settings for all users, are asked for, then looked up under "Shell
//   Folders", and then supposed below the Windows folder. The desktop is never asked for. There are
//   none where nobody knows which user is meant;
// - those for programs of one width are looked up in that width's view of the registry on a system
//   of 64 bits. On one of 32 bits the first is the only one and the second is missing;
// - the first optical drive is "D:" if there is none.
std::optional<std::string> MachineFolder(Folder folder, CMachine& machine);

}  // namespace kestra
