#include <memory>
#include <string>
#include <utility>

#include "Modules/Processes/windows/Enumerators.h"
#include "Modules/Processes/windows/OldTasks.h"
#include "Modules/Processes/windows/SystemProcesses.h"
#include "Modules/Processes/windows/inspect/ProcessInspector.h"
#include "platform/os/Clock.h"

namespace kestra {
namespace {

// Calls give(entry) for each process of a snapshot.
template <class Give>
SystemError WalkSnapshot(CWindowsProcesses& windows, QueryMessage& message, Give give) {
  std::unique_ptr<CProcessSnapshot> snapshot;
  const SystemError taken = windows.TakeSnapshot(snapshot);
  if (taken != kErrorSuccess) return taken;
  for (;;) {
    if (message.IsTerminated()) return kErrorCancelled;
    SnapshotEntry entry;
    const SystemError error = snapshot->Next(entry);
    if (error == kErrorNoMoreFiles) return kErrorSuccess;
    if (error != kErrorSuccess) return error;
    give(std::move(entry));
  }
}

ProcessRecord RecordOf(SnapshotEntry&& entry) {
  ProcessRecord record;
  record.PID = entry.pid;
  record.ParentPID = entry.parentPid;
  record.ImageName = std::move(entry.exeName);
  return record;
}

}  // namespace

SystemError EnumByToolhelp(ProcessEnumContext& context, uint32_t flags,
                           std::vector<ProcessRecord>& records, QueryMessage& message) {
  context.Windows().EnablePrivilege(kDebugPrivilege);
  CProcessInspector inspector(context, flags, os::SystemTimeAsFileTime().ticks);
  return WalkSnapshot(context.Windows(), message, [&](SnapshotEntry&& entry) {
    if (!inspector.IsListed(entry.pid)) return;
    ProcessRecord record = RecordOf(std::move(entry));
    record.ImageName = ProcessName(record.PID, std::move(record.ImageName));
    inspector.Inspect(record);
    const bool hasTasks = IsOldTaskHost(record.ImageName);
    const uint32_t pid = record.PID;
    records.push_back(std::move(record));
    if (hasTasks) AppendOldTasks(context, pid, records);
  });
}

SystemError EnumByToolhelpOnly(ProcessEnumContext& context, std::vector<ProcessRecord>& records,
                               QueryMessage& message) {
  return WalkSnapshot(context.Windows(), message, [&](SnapshotEntry&& entry) {
    ProcessRecord record = RecordOf(std::move(entry));
    if (HasFolder(record.ImageName)) {
      record.FilePath = record.ImageName;
      record.ImageName = FilePart(record.ImageName);
    } else {
      record.FilePath = context.Searched(record.ImageName, 32);
    }
    records.push_back(std::move(record));
  });
}

}  // namespace kestra
