// Whose registry HKEY_CURRENT_USER is on a volume where nobody is logged on.
#pragma once

#include <string>
#include <vector>

#include "platform/image/registry/layout/VolumeLayout.h"

namespace kestra::image {

// The profile of that user name or SID, in any case; for an empty name that of the only person who
// has a part of the registry there. A person goes before an account of that name that services run
// under. kErrorNoSuchUser, with a sentence for the user in reason, if there is none or more than
// one.
SystemError ChooseUser(const std::vector<Profile>& profiles, const std::string& name,
                       VolumeUser& user, std::string& reason);

}  // namespace kestra::image
