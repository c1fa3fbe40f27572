// Tasks of 16 bits, by the library VDMDBG.DLL: systems of 64 bits do not have it.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/machine/WindowsProcesses.h"

namespace kestra {

SystemError ListOldTasks(uint32_t pid, std::vector<OldTask>& tasks);
SystemError EndTaskByForce(uint32_t pid, uint16_t taskId);

}  // namespace kestra
