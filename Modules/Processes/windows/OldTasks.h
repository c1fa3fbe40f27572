// Programs of 16 bits: on systems of 32 bits they run as tasks within a process that the system
// has for them, each in a thread of its own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Modules/Processes/windows/inspect/ProcessEnumContext.h"
#include "platform/machine/Processes.h"
#include "platform/os/Wait.h"

namespace kestra {

// Whether a process with this image name runs such tasks.
bool IsOldTaskHost(const std::string& imageName);

// Adds the tasks of the process hostPid; none where they cannot be listed. Their PID is hostPid.
void AppendOldTasks(ProcessEnumContext& context, uint32_t hostPid,
                    std::vector<ProcessRecord>& records);

struct OldTaskId {
  uint32_t hostPid = 0;
  uint32_t threadId = 0;
  uint16_t taskId = 0;
};

// Asks the task's windows to close, waits for timeOutMs, and ends the task then, unless it has
// gone. kErrorInvalidFunction where the system has no means to; kErrorInvalidHandle if it, or the
// process that it was listed in, is not there any more; the list's error when nobody can tell, and
// the task is not ended then; kErrorCancelled, with the task left alone, when
// pTermination (may be null) is signalled meanwhile.
SystemError EndOldTask(CWindowsProcesses& windows, const OldTaskId& task, uint32_t timeOutMs,
                       const os::CWaitable* pTermination);

}  // namespace kestra
