// Reads what /proc says of single processes. One thread at a time.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

#include "platform/base/SystemError.h"
#include "platform/linux/UniqueFd.h"
#include "platform/linux/machine/ProcDecode.h"
#include "platform/machine/Processes.h"

namespace kestra {

class CProcReader {
 public:
  // procFd is the directory where the proc file system is mounted; it must outlive the reader.
  CProcReader(int procFd, uint32_t wanted);

  // Everything that is wanted of one process. kErrorInvalidHandle if there is none or it ended
  // meanwhile. What may not be read stays without value.
  SystemError Read(uint32_t pid, ProcessRecord& record);

  // What tells two processes with one PID apart. kErrorInvalidHandle if there is none.
  SystemError ReadStartTime(uint32_t pid, uint64_t& startTime);

 private:
  SystemError OpenProcess(uint32_t pid);
  SystemError ReadStat(ProcStat& stat);
  void ReadExecutable(ProcessRecord& record);
  void ReadHandleCount(ProcessRecord& record);
  SystemError ReadArguments(const ProcStat& stat, ProcessRecord& record);
  SystemError ReadUser(ProcessRecord& record);
  SystemError ReadEffectiveUid(std::optional<uint32_t>& uid);
  uint32_t WidthOfExecutable();
  const std::string& UserName(uint32_t uid);
  // The content of a file of the open process, at most limit bytes, in m_buffer.
  SystemError ReadFile(const char* name, size_t limit);

  int m_procFd;
  uint32_t m_wanted;
  uint64_t m_pageKB;
  bool m_kernelCountsHandles;
  bool m_ownersAreEffectiveUsers;
  CUniqueFd m_process;
  std::string m_buffer;
  std::map<std::pair<dev_t, ino_t>, uint32_t> m_widths;  // of executables, by file
  std::unordered_map<uint32_t, std::string> m_userNames;
};

}  // namespace kestra
