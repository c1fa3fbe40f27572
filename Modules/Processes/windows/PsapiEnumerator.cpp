#include <string>
#include <utility>

#include "Modules/Processes/windows/Enumerators.h"
#include "Modules/Processes/windows/SystemProcesses.h"
#include "Modules/Processes/windows/inspect/ProcessInspector.h"

namespace kestra {
namespace {

// A process's first module is its program.
void FillNames(CProcessHandle& process, ProcessRecord& record) {
  uint64_t module = 0;
  if (process.FirstModule(module) != kErrorSuccess) return;
  std::string text;
  if (process.ModuleBaseName(module, text) == kErrorSuccess) record.ImageName = text;
  if (process.ModuleFileName(module, text) == kErrorSuccess) record.FilePath = text;
}

}  // namespace

SystemError EnumByPsapi(ProcessEnumContext& context, uint32_t flags,
                        std::vector<ProcessRecord>& records, QueryMessage& message) {
  context.Windows().EnablePrivilege(kDebugPrivilege);
  std::vector<uint32_t> pids;
  const SystemError taken = context.Windows().EnumPids(pids);
  if (taken != kErrorSuccess) return taken;
  CProcessInspector inspector(context, flags);
  for (const uint32_t pid : pids) {
    if (message.IsTerminated()) return kErrorCancelled;
    if (!inspector.IsListed(pid)) continue;
    ProcessRecord record;
    record.PID = pid;
    const CProcessInspector::Opened opened = inspector.Open(pid);
    if (opened.mayRead) FillNames(*opened.handle, record);
    record.ImageName = ProcessName(pid, std::move(record.ImageName));
    inspector.Fill(opened, record);
    if (record.ImageName.empty() && record.FilePath) record.ImageName = FilePart(*record.FilePath);
    records.push_back(std::move(record));
  }
  return kErrorSuccess;
}

}  // namespace kestra
