// What a process itself holds of how it was started: no function of the system tells its command
// line and its title. It lies in the process's memory, where its parameters hang on its environment
// block.
//
// Source of the layouts: the Win32 pages of PEB and RTL_USER_PROCESS_PARAMETERS, and the public
// symbols of ntdll.dll for both widths. The process can write there what it likes, and while it is
// read: every number is only a length of at most 65535 bytes or an address to read from.
#pragma once

#include <cstdint>
#include <string>

#include "platform/machine/WindowsProcesses.h"

namespace kestra {

// Who reads: the block of a target is found in another way by each.
struct BlockReader {
  uint32_t callerWidth = 64;  // of this program: 32 or 64
  bool isWideSystem = true;   // the system has 64 bits
};

// Empty texts are those that are empty, or could not be read.
struct ProcessBlock {
  bool isNarrow = false;  // a process of 32 bits on a system of 64
  std::string imagePath{};
  std::string commandLine{};  // only if it was wanted
  std::string windowTitle{};
};

// The first read that fails ends it: what comes behind stays empty. The handle needs
// kProcessQueryAndRead.
ProcessBlock ReadProcessBlock(CProcessHandle& process, const BlockReader& reader,
                              bool wantCommandLine);

}  // namespace kestra
