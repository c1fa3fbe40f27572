#include "VLib/src/process/RunProcess.h"

namespace kestra {
namespace {

std::string CommandLine(const std::string& file, const std::string& arguments) {
  const std::string program = os::QuotedProgram(file);
  return arguments.empty() ? program : program + " " + arguments;
}

}  // namespace

bool RunProcess(const std::string& file, const std::string& directory, const std::string& arguments,
                bool useShell, uint32_t shellMask, uint32_t showWindow, uint32_t waitMs,
                const os::CWaitable* stopEvent, uint32_t* exitCode,
                std::unique_ptr<os::CChildProcess>* processOut) {
  if (file.empty()) return false;
  std::unique_ptr<os::CChildProcess> process;
  const os::ChildWindow window{showWindow, false};
  const bool isStarted = !useShell && os::StartChild(CommandLine(file, arguments), directory,
                                                     window, process) == kErrorSuccess;
  if (!isStarted &&
      os::OpenByShell(file, arguments, directory, shellMask, showWindow, process) != kErrorSuccess)
    return false;
  if (waitMs != 0) {
    if (!process || os::WaitAnyDispatching({process.get(), stopEvent}, waitMs) != 0) return false;
    if (exitCode) process->ExitCode(*exitCode);
  }
  if (processOut) *processOut = std::move(process);
  return true;
}

}  // namespace kestra
