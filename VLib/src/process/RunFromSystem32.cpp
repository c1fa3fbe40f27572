#include <new>
#include <optional>

#include "VLib/src/log/Log.h"
#include "VLib/src/process/RunProcess.h"
#include "platform/machine/SystemFacts.h"

#define LOG_PREFIX "runFromSystem32NoConsole - "

namespace kestra {
namespace {

int Number(uint32_t code) {
  return static_cast<int>(code);
}

uint32_t WaitForEnd(os::CChildProcess& process, const os::CWaitable* stopEvent,
                    uint32_t timeOutMs) {
  const int result = os::WaitAny({&process, stopEvent}, timeOutMs);
  if (result == 1) return kErrorCancelled;
  if (result != 0) {
    const SystemError error = result == os::kWaitTimeOut ? kErrorWaitTimeout : kErrorInvalidHandle;
    g_Log.Error(LOG_PREFIX "WaitForMultipleObjects(targetProcess) failed with code %d",
                Number(error));
    return error;
  }
  uint32_t exitCode = 0;
  const SystemError error = process.ExitCode(exitCode);
  if (error != kErrorSuccess) {
    g_Log.Error(LOG_PREFIX "GetExitCodeProcess failed with code %d", Number(error));
    return error;
  }
  g_Log.Info(LOG_PREFIX "target process ended with code %d", Number(exitCode));
  return exitCode;
}

uint32_t Run(CMachine& machine, const std::string& program, const std::string& arguments,
             const os::CWaitable* stopEvent, uint32_t timeOutMs) {
  const std::optional<std::string> folder = machine.System().FolderPath(Folder::System);
  if (!folder) return kErrorPathNotFound;
  const std::string commandLine = *folder + program + arguments;
  g_Log.Info(LOG_PREFIX "executing %s", commandLine.c_str());
  std::unique_ptr<os::CChildProcess> process;
  const SystemError error = os::StartChild(commandLine, "", {.isHidden = true}, process);
  if (error != kErrorSuccess) {
    g_Log.Error(LOG_PREFIX "CreateProcess failed with code %d", Number(error));
    return error;
  }
  return WaitForEnd(*process, stopEvent, timeOutMs);
}

}  // namespace

uint32_t runFromSystem32NoConsole(CMachine& machine, const std::string& program,
                                  const std::string& arguments, const os::CWaitable* stopEvent,
                                  uint32_t timeOutMs) {
  try {
    return Run(machine, program, arguments, stopEvent, timeOutMs);
  } catch (const std::bad_alloc&) {
    g_Log.Error(LOG_PREFIX "OutOfMemory");
    return kErrorOutOfMemory;
  }
}

}  // namespace kestra
