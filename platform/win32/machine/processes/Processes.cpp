#include "platform/machine/Processes.h"

#include <utility>

#include "platform/win32/machine/Facilities.h"
#include "platform/win32/machine/processes/NativeCalls.h"
#include "platform/win32/machine/processes/ProcessHandle.h"
#include "platform/win32/machine/processes/WindowsProcesses.h"
#include "platform/win32/machine/processes/ending/TopWindows.h"

namespace kestra {
namespace {

class CWindowsProcess final : public CProcess {
 public:
  CWindowsProcess(CUniqueHandle handle, uint32_t pid) : m_handle(std::move(handle)), m_pid(pid) {}

  os::NativeHandle Native() const override {
    return reinterpret_cast<os::NativeHandle>(m_handle.get());
  }

  // The number is this process's own while it is held open, ended or not.
  SystemError RequestClose() override {
    CloseWindowsOfProcess(m_pid);
    return kErrorSuccess;
  }

  // The system refuses to end one that has ended.
  SystemError Terminate() override {
    const SystemError error = ErrorOf(TerminateProcess(m_handle.get(), 0));
    const bool hasEnded = WaitForSingleObject(m_handle.get(), 0) == WAIT_OBJECT_0;
    return hasEnded ? kErrorSuccess : error;
  }

 private:
  CUniqueHandle m_handle;
  const uint32_t m_pid;
};

// Whether the number still means the process that started then. Who may end a process need not have
// the right to look at it; without that nobody can tell, and it is none.
bool HasStartedAt(uint32_t pid, uint64_t startTime) {
  constexpr uint32_t kRights[] = {PROCESS_QUERY_LIMITED_INFORMATION, PROCESS_QUERY_INFORMATION};
  for (const uint32_t right : kRights) {  // systems before Vista know only the second
    CUniqueHandle handle;
    uint64_t found = 0;
    if (OpenProcessHandle(pid, right, handle) == kErrorSuccess &&
        StartTimeOf(handle.get(), found) == kErrorSuccess) {
      return found == startTime;
    }
  }
  return false;
}

class CLiveProcesses final : public CProcesses {
 public:
  SystemError Enumerate(uint32_t, std::unique_ptr<CProcessList>&) override {
    return kErrorCallNotImplemented;
  }

  // The start time is looked at while the process is held: from then on the number stays its own.
  SystemError Open(uint32_t pid, uint64_t startTime, std::unique_ptr<CProcess>& process) override {
    CUniqueHandle handle;
    const SystemError error = OpenProcessHandle(pid, PROCESS_TERMINATE | SYNCHRONIZE, handle);
    if (error != kErrorSuccess) return error;
    if (startTime != 0 && !HasStartedAt(pid, startTime)) return kErrorInvalidHandle;
    process = std::make_unique<CWindowsProcess>(std::move(handle), pid);
    return kErrorSuccess;
  }

  CWindowsProcesses* Windows() override { return m_pWindows.get(); }

 private:
  const std::unique_ptr<CWindowsProcesses> m_pWindows = MakeWindowsProcessCalls();
};

}  // namespace

std::unique_ptr<CProcesses> MakeWindowsProcesses() {
  return std::make_unique<CLiveProcesses>();
}

}  // namespace kestra
