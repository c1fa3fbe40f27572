// Who may do what with a file.
#pragma once

#include <string>

#include "platform/base/SystemError.h"
#include "platform/win32/base/Windows.h"

namespace kestra {

// Gives everybody full access to a file or a directory, and to what will be in it, and takes away
// every other entry of its list that is its own. kErrorAccessDenied for a link, and for a file that
// has a second name.
SystemError GrantEveryoneAccess(const std::string& path);

// Gives the file "to" the access list of "from". Both are open, with READ_CONTROL and WRITE_DAC.
// Does nothing where the volume keeps no lists.
SystemError CopyAccessList(HANDLE from, HANDLE to);

}  // namespace kestra
