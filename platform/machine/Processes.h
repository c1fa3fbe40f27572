// Facility "processes" of the diagnosed machine.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/SystemError.h"
#include "platform/os/Wait.h"

namespace kestra {

class CWindowsProcesses;

// What is known of one process. A field without value could not be read, or does not apply.
struct ProcessRecord {
  uint32_t PID = 0;
  std::optional<uint32_t> ParentPID{};
  std::optional<uint32_t> ThreadID{};  // 16-bit tasks only
  uint16_t TaskId = 0;                 // 16-bit tasks only
  std::string ImageName{};             // file name without folder
  std::optional<std::string> FilePath{};
  std::optional<std::string> CommandLine{};
  uint32_t Width = 0;  // 16, 32 or 64; 0 not known
  std::optional<std::string> WindowTitle{};
  std::optional<std::string> User{};
  std::optional<uint32_t> WorkingSetKB{};
  std::optional<uint32_t> HandleCount{};
  // Why something of it could not be read, of what was wanted: the first error. kErrorSuccess too
  // for one that has ended meanwhile.
  SystemError Unread = kErrorSuccess;
  uint64_t StartTime = 0;  // tells two processes with one PID apart; unit of the machine's
                           // own; 0 not known
};

// What a caller wants beyond the plain list. Each costs opening every process.
inline constexpr uint32_t kProcessWantUser = 1;
inline constexpr uint32_t kProcessWantCommandLine = 2;

// One process, held so that its PID cannot come to mean another one. As a CWaitable it is signalled
// when the process has ended.
class CProcess : public os::CWaitable {
 public:
  // Asks politely: a close message to its windows on Windows, where one without any is asked
  // nothing; SIGTERM on Linux.
  virtual SystemError RequestClose() = 0;
  // Ends it by force. Success if it had ended already.
  virtual SystemError Terminate() = 0;
};

// Walks a process list that was taken at one moment. One thread at a time.
class CProcessList {
 public:
  virtual ~CProcessList() = default;
  // Reads the next process. kErrorNoMoreItems after the last one. A process that has ended since
  // the list was taken is passed over; what may not be read of one stays without value.
  virtual SystemError Next(ProcessRecord& record) = 0;
};

// All methods may be called from any thread.
class CProcesses {
 public:
  virtual ~CProcesses() = default;
  // Takes the list of all processes of the machine, in rising order of PID on Linux. On Windows no
  // single call gives it: kErrorCallNotImplemented, and Windows() is what tells. Whoever wants the
  // list of any machine asks Modules/Processes/ProcessList.h.
  virtual SystemError Enumerate(uint32_t wanted, std::unique_ptr<CProcessList>& list) = 0;
  // Opens a process to end it. With a startTime other than 0, kErrorInvalidHandle when the PID now
  // belongs to another process; also when there is none.
  virtual SystemError Open(uint32_t pid, uint64_t startTime,
                           std::unique_ptr<CProcess>& process) = 0;
  // The calls of a Windows system; null on every other machine. Lives as long as this object.
  virtual CWindowsProcesses* Windows() { return nullptr; }
};

}  // namespace kestra
