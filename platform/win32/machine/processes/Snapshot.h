// The list of processes out of a snapshot of the system.
#pragma once

#include <memory>

#include "platform/machine/WindowsProcesses.h"
#include "platform/win32/base/Windows.h"  // before <tlhelp32.h>, which does not bring it

namespace kestra {

SystemError TakeToolhelpSnapshot(std::unique_ptr<CProcessSnapshot>& snapshot);

}  // namespace kestra
