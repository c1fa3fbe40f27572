#include "Modules/Processes/ProcessList.h"

#include <memory>
#include <string>
#include <utility>

#include "Modules/Processes/windows/WindowsProcessList.h"

namespace kestra {
namespace {

// The machine has one call that gives them all.
SystemError ReadWholeList(CProcesses& processes, uint32_t wanted,
                          std::vector<ProcessRecord>& records, QueryMessage& message) {
  std::unique_ptr<CProcessList> list;
  SystemError error = processes.Enumerate(wanted, list);
  while (error == kErrorSuccess) {
    if (message.IsTerminatedInLoop()) return kErrorCancelled;
    ProcessRecord record;
    error = list->Next(record);
    if (error == kErrorSuccess) records.push_back(std::move(record));
  }
  return error == kErrorNoMoreItems ? kErrorSuccess : error;
}

void NoteUnread(const std::vector<ProcessRecord>& records, QueryMessage& message) {
  if (!message.Notes) return;
  for (const ProcessRecord& record : records) {
    if (record.Unread == kErrorSuccess) continue;
    std::string subject = std::to_string(record.PID);
    if (!record.ImageName.empty()) subject += ' ' + record.ImageName;
    message.NoteProblem(subject, record.Unread, Missing::Properties);
  }
}

}  // namespace

bool EnumProcessList(CMachine& machine, std::vector<ProcessRecord>& records,
                     bool wantUserAndCommandLine, bool allSessions, QueryMessage& message) {
  records.clear();
  CProcesses* pProcesses = machine.Processes();
  if (!pProcesses) return true;
  const uint32_t wanted = wantUserAndCommandLine ? kProcessWantUser | kProcessWantCommandLine : 0;
  CWindowsProcesses* pWindows = pProcesses->Windows();
  const SystemError error = pWindows
                                ? EnumWindowsProcesses(machine, *pWindows, records,
                                                       wantUserAndCommandLine, allSessions, message)
                                : ReadWholeList(*pProcesses, wanted, records, message);
  if (error == kErrorSuccess) {
    NoteUnread(records, message);
    return true;
  }
  records.clear();
  return message.Fail(error);
}

}  // namespace kestra
