#include "Modules/Processes/windows/WindowsProcessList.h"

#include "Modules/Processes/windows/Enumerators.h"
#include "VLib/src/system/OsKind.h"
#include "platform/machine/SystemFacts.h"

namespace kestra {
namespace {

// Systems whose snapshot goes with rights to look into the processes, and tells of all of them.
bool IsAskedByToolhelp(uint32_t systemClass) {
  return systemClass == 8 || systemClass == 9 || systemClass == 11 || systemClass == 12;
}

}  // namespace

bool IsNtFamily(CMachine& machine) {
  constexpr uint32_t kPlatformNt = 2;
  const auto version = machine.System().Windows();
  return version && version->platformId == kPlatformNt;
}

SystemError EnumWindowsProcesses(CMachine& machine, CWindowsProcesses& windows,
                                 std::vector<ProcessRecord>& records, bool wantUserAndCommandLine,
                                 bool allSessions, QueryMessage& message) {
  if (!windows.HasLibrary(ProcessLibrary::Kernel32)) return kErrorCallNotImplemented;
  ProcessEnumContext context(machine, windows);
  const uint32_t flags = (wantUserAndCommandLine ? kProcessWantUser | kProcessWantCommandLine : 0) |
                         (allSessions ? kProcessAllSessions : 0);
  if (IsAskedByToolhelp(GetOsKind(machine))) {
    return EnumByToolhelp(context, flags | kProcessRepairPath, records, message);
  }
  if (!IsNtFamily(machine)) return EnumByToolhelpOnly(context, records, message);
  if (context.IsWide()) {
    return windows.HasLibrary(ProcessLibrary::Ntdll)
               ? EnumBySystemInformation(context, flags, records, message)
               : kErrorCallNotImplemented;
  }
  if (!windows.HasLibrary(ProcessLibrary::Psapi)) {
    return EnumByToolhelpOnly(context, records, message);
  }
  const SystemError error = EnumByPsapi(context, flags, records, message);
  return error == kErrorCancelled ? error : kErrorSuccess;
}

}  // namespace kestra
