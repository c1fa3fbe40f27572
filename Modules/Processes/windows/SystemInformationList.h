// Decodes the list of processes that NtQuerySystemInformation gives: entries of the structure
// SYSTEM_PROCESS_INFORMATION (its Win32 page, and the public symbols of ntdll.dll), each with the
// offset of the next one.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/SystemError.h"
#include "platform/machine/WindowsProcesses.h"

namespace kestra {

struct ListedProcess {
  uint32_t pid = 0;
  uint32_t parentPid = 0;
  uint32_t handleCount = 0;
  uint64_t startTime = 0;   // 100 ns since 1601
  uint64_t workingSet = 0;  // bytes
  std::string imageName{};  // empty for the idle process
};

// width is that of the program that asked, 32 or 64. kErrorInvalidData for a list that is cut off,
// whose offsets lead out of it or do not lead on, or whose names lie over each other, so that they
// would take more than it does; what was read before is in processes then.
// A name that does not lie in the list is empty.
SystemError DecodeProcessList(const SystemBytes& list, uint32_t width,
                              std::vector<ListedProcess>& processes);

}  // namespace kestra
