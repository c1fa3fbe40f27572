#include "platform/os/process/Privileges.h"

#include <unistd.h>

namespace kestra::os {

bool IsAdmin() {
  return geteuid() == 0;
}

SystemError EnablePrivilege(const std::string& /*name*/, bool /*on*/) {
  return kErrorCallNotImplemented;
}

SystemError Restart(bool /*force*/) {
  return kErrorCallNotImplemented;
}

}  // namespace kestra::os
