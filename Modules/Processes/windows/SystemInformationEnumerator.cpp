#include <utility>

#include "Modules/Processes/windows/Enumerators.h"
#include "Modules/Processes/windows/SystemInformationList.h"
#include "Modules/Processes/windows/SystemProcesses.h"
#include "Modules/Processes/windows/inspect/ProcessInspector.h"

namespace kestra {
namespace {

// The list may grow while it is asked for; one of this size would be of some 100000 processes.
constexpr size_t kFirstSize = 0x8000;
constexpr size_t kGreatestSize = 0x8000000;

SystemError FetchList(CWindowsProcesses& windows, QueryMessage& message, SystemBytes& list) {
  for (size_t size = kFirstSize; size <= kGreatestSize; size *= 2) {
    if (message.IsTerminated()) return kErrorCancelled;
    const SystemError error = windows.QuerySystemInformation(kSystemProcessInformation, size, list);
    if (error != kErrorBadLength) return error;
  }
  return kErrorNotEnoughMemory;
}

ProcessRecord RecordOf(ListedProcess&& listed) {
  ProcessRecord record;
  record.PID = listed.pid;
  record.ParentPID = listed.parentPid;
  record.ImageName = ProcessName(listed.pid, std::move(listed.imageName));
  record.WorkingSetKB = KilobytesOf(listed.workingSet);
  record.HandleCount = listed.handleCount;
  record.StartTime = listed.startTime;
  return record;
}

}  // namespace

SystemError EnumBySystemInformation(ProcessEnumContext& context, uint32_t flags,
                                    std::vector<ProcessRecord>& records, QueryMessage& message) {
  CWindowsProcesses& windows = context.Windows();
  windows.EnablePrivilege(kDebugPrivilege);
  SystemBytes list;
  std::vector<ListedProcess> listed;
  SystemError error = FetchList(windows, message, list);
  if (error == kErrorSuccess) error = DecodeProcessList(list, windows.CallerWidth(), listed);
  if (error != kErrorSuccess) return error;
  CProcessInspector inspector(context, flags);
  for (ListedProcess& process : listed) {
    if (message.IsTerminated()) return kErrorCancelled;
    if (!inspector.IsListed(process.pid)) continue;
    ProcessRecord record = RecordOf(std::move(process));
    inspector.Inspect(record);
    records.push_back(std::move(record));
  }
  return kErrorSuccess;
}

}  // namespace kestra
