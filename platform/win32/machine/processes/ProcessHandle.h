// A process that is held open, and what the system's libraries tell of it. Every function is looked
// up at run time: none of them is in all systems.
#pragma once

#include <memory>

#include "platform/machine/WindowsProcesses.h"
#include "platform/win32/base/UniqueHandle.h"

namespace kestra {

SystemError OpenProcessHandle(uint32_t pid, uint32_t access, CUniqueHandle& handle);

// When the process was created, in 100 ns since 1601.
SystemError StartTimeOf(HANDLE process, uint64_t& ticks);

std::unique_ptr<CProcessHandle> MakeProcessHandle(CUniqueHandle handle);

}  // namespace kestra
