#include "Modules/Processes/windows/OldTasks.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

constexpr uint32_t kOldTaskWidth = 16;

// Whether the process that was the tasks' is there, and still is what it was.
SystemError FindHost(CWindowsProcesses& windows, uint32_t hostPid, bool& isThere) {
  isThere = false;
  std::unique_ptr<CProcessSnapshot> snapshot;
  SystemError error = windows.TakeSnapshot(snapshot);
  while (error == kErrorSuccess) {
    SnapshotEntry entry;
    error = snapshot->Next(entry);
    if (error != kErrorSuccess) break;
    if (entry.pid == hostPid && IsOldTaskHost(entry.exeName)) {
      isThere = true;
      return kErrorSuccess;
    }
  }
  return error == kErrorNoMoreFiles ? kErrorSuccess : error;
}

// Whether the task still runs: its thread and its number may mean others once it has gone.
SystemError FindTask(CWindowsProcesses& windows, const OldTaskId& task, bool& isThere) {
  SystemError error = FindHost(windows, task.hostPid, isThere);
  if (error != kErrorSuccess || !isThere) return error;
  std::vector<OldTask> tasks;
  error = windows.EnumOldTasks(task.hostPid, tasks);
  isThere = std::any_of(tasks.begin(), tasks.end(), [&](const OldTask& other) {
    return other.threadId == task.threadId && other.taskId == task.taskId;
  });
  return error;
}

SystemError EndByForce(CWindowsProcesses& windows, const OldTaskId& task) {
  bool isThere = false;
  const SystemError error = FindTask(windows, task, isThere);
  if (error != kErrorSuccess || !isThere) return error;
  return windows.TerminateOldTask(task.hostPid, task.taskId);
}

}  // namespace

bool IsOldTaskHost(const std::string& imageName) {
  return EqualsNoCase(imageName, "NTVDM.EXE");
}

void AppendOldTasks(ProcessEnumContext& context, uint32_t hostPid,
                    std::vector<ProcessRecord>& records) {
  CWindowsProcesses& windows = context.Windows();
  std::vector<OldTask> tasks;
  if (!windows.HasLibrary(ProcessLibrary::VdmDbg) ||
      windows.EnumOldTasks(hostPid, tasks) != kErrorSuccess) {
    return;
  }
  for (OldTask& task : tasks) {
    ProcessRecord record;
    record.PID = hostPid;
    record.ThreadID = task.threadId;
    record.TaskId = task.taskId;
    record.Width = kOldTaskWidth;
    record.ImageName = FilePart(task.fileName);
    record.FilePath = HasFolder(task.fileName) ? std::move(task.fileName)
                                               : context.Searched(task.fileName, kOldTaskWidth);
    if (record.ImageName.empty()) record.ImageName = std::move(task.moduleName);
    records.push_back(std::move(record));
  }
}

SystemError EndOldTask(CWindowsProcesses& windows, const OldTaskId& task, uint32_t timeOutMs,
                       const os::CWaitable* pTermination) {
  if (!windows.HasLibrary(ProcessLibrary::VdmDbg)) return kErrorInvalidFunction;
  bool isThere = false;
  SystemError error = FindTask(windows, task, isThere);
  if (error == kErrorSuccess && !isThere) error = kErrorInvalidHandle;
  if (error == kErrorSuccess) error = windows.CloseThreadWindows(task.threadId);
  if (error != kErrorSuccess) return error;
  // A task is no object that can be waited for: it has its time, however soon it goes.
  switch (os::WaitAny({pTermination}, timeOutMs)) {
    case os::kWaitTimeOut:
      return EndByForce(windows, task);
    case 0:
      return kErrorCancelled;
    default:
      return kErrorInvalidHandle;
  }
}

}  // namespace kestra
