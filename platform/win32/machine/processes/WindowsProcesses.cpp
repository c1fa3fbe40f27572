#include "platform/win32/machine/processes/WindowsProcesses.h"

#include <utility>

#include "platform/os/process/Privileges.h"
#include "platform/win32/base/Optional.h"
#include "platform/win32/base/Redirection.h"
#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/machine/processes/Accounts.h"
#include "platform/win32/machine/processes/NativeCalls.h"
#include "platform/win32/machine/processes/ProcessHandle.h"
#include "platform/win32/machine/processes/Snapshot.h"
#include "platform/win32/machine/processes/ending/OldTasks.h"
#include "platform/win32/machine/processes/ending/TopWindows.h"

namespace kestra {
namespace {

class CLiveWindowsProcesses final : public CWindowsProcesses {
 public:
  bool HasLibrary(ProcessLibrary library) override {
    switch (library) {
      case ProcessLibrary::Kernel32:
        return OptionalExport(L"kernel32.dll", "OpenProcess") != nullptr;
      case ProcessLibrary::Psapi:
        return OptionalExport(L"psapi.dll", "EnumProcesses") != nullptr;
      case ProcessLibrary::Ntdll:
        return OptionalExport(L"ntdll.dll", "NtQuerySystemInformation") != nullptr;
      case ProcessLibrary::VdmDbg:
        return OptionalExport(L"vdmdbg.dll", "VDMTerminateTaskWOW") != nullptr;
    }
    return false;
  }

  uint32_t CallerWidth() const override { return 8 * sizeof(void*); }

  SystemError EnablePrivilege(const std::string& name) override {
    return os::EnablePrivilege(name, true);
  }

  SystemError TakeSnapshot(std::unique_ptr<CProcessSnapshot>& snapshot) override {
    return TakeToolhelpSnapshot(snapshot);
  }

  SystemError EnumPids(std::vector<uint32_t>& pids) override;
  SystemError QuerySystemInformation(uint32_t informationClass, size_t size,
                                     SystemBytes& answer) override;

  SystemError OpenHandle(uint32_t pid, uint32_t access,
                         std::unique_ptr<CProcessHandle>& process) override {
    CUniqueHandle handle;
    const SystemError error = OpenProcessHandle(pid, access, handle);
    if (error == kErrorSuccess) process = MakeProcessHandle(std::move(handle));
    return error;
  }

  SystemError SessionOf(uint32_t pid, uint32_t& session) override {
    static const auto pSession =
        Optional<BOOL WINAPI(DWORD, DWORD*)>(L"kernel32.dll", "ProcessIdToSessionId");
    if (!pSession) return kErrorCallNotImplemented;
    DWORD answer = 0;
    const SystemError error = ErrorOf(pSession(pid, &answer));
    session = answer;
    return error;
  }
  SystemError CallerSession(uint32_t& session) override {
    return SessionOf(GetCurrentProcessId(), session);
  }

  SystemError LogonSessions(std::vector<LogonSession>& sessions) override {
    return ListLogonSessions(sessions);
  }
  SystemError AccountOfSid(const std::string& sid, std::string& account) override {
    return LookUpAccount(sid, account);
  }
  SystemError TextOfSid(const std::string& sid, std::string& text) override {
    return kestra::TextOfSid(sid, text);
  }

  SystemError DeviceOfDrive(const std::string& drive, std::string& device) override;
  SystemError SearchFile(const std::string& name, bool withoutRedirection,
                         std::string& path) override;

  SystemError EnumOldTasks(uint32_t pid, std::vector<OldTask>& tasks) override {
    return ListOldTasks(pid, tasks);
  }
  SystemError TerminateOldTask(uint32_t pid, uint16_t taskId) override {
    return EndTaskByForce(pid, taskId);
  }
  SystemError CloseThreadWindows(uint32_t threadId) override {
    CloseWindowsOfThread(threadId);
    return kErrorSuccess;
  }
};

// It does not tell how many there are: a list that fills all its room may be cut.
SystemError CLiveWindowsProcesses::EnumPids(std::vector<uint32_t>& pids) {
  constexpr size_t kFirstCount = 1024, kGreatestCount = 1 << 20;
  static const auto pList =
      Optional<BOOL WINAPI(DWORD*, DWORD, DWORD*)>(L"psapi.dll", "EnumProcesses");
  if (!pList) return kErrorCallNotImplemented;
  for (size_t count = kFirstCount; count <= kGreatestCount; count *= 2) {
    std::vector<DWORD> found(count);
    const auto size = static_cast<DWORD>(count * sizeof(DWORD));
    DWORD filled = 0;
    const SystemError error = ErrorOf(pList(found.data(), size, &filled));
    if (error != kErrorSuccess) return error;
    if (filled >= size) continue;
    found.resize(filled / sizeof(DWORD));
    pids.assign(found.begin(), found.end());
    return kErrorSuccess;
  }
  return kErrorNotEnoughMemory;
}

SystemError CLiveWindowsProcesses::QuerySystemInformation(uint32_t informationClass, size_t size,
                                                          SystemBytes& answer) {
  static const auto pQuery =
      Optional<LONG WINAPI(ULONG, void*, ULONG, ULONG*)>(L"ntdll.dll", "NtQuerySystemInformation");
  if (!pQuery) return kErrorCallNotImplemented;
  answer.bytes.assign(size, '\0');
  answer.address = reinterpret_cast<uintptr_t>(answer.bytes.data());
  ULONG returned = 0;
  const LONG status =
      pQuery(informationClass, answer.bytes.data(), static_cast<ULONG>(size), &returned);
  if (status >= 0 && returned != 0 && returned < size) answer.bytes.resize(returned);
  return ErrorOfStatus(status);
}

// Of a drive that was mapped over and over the newest is the first of the list.
SystemError CLiveWindowsProcesses::DeviceOfDrive(const std::string& drive, std::string& device) {
  constexpr DWORD kRoom = 32768;
  const std::wstring name = Wide(drive);
  std::wstring list(kRoom, L'\0');
  if (QueryDosDeviceW(name.c_str(), list.data(), kRoom) == 0) return LastError();
  device = Narrow(list.c_str());
  return kErrorSuccess;
}

SystemError CLiveWindowsProcesses::SearchFile(const std::string& name, bool withoutRedirection,
                                              std::string& path) {
  std::wstring wide;
  if (const SystemError error = WideName(name, wide); error != kErrorSuccess) return error;
  const CNoRedirection guard(withoutRedirection);
  SetLastError(ERROR_SUCCESS);
  const std::wstring found = FetchText([&](wchar_t* pText, DWORD size) {
    return SearchPathW(nullptr, wide.c_str(), nullptr, size, pText, nullptr);
  });
  if (found.empty()) return LastError();
  path = Narrow(found);
  return kErrorSuccess;
}

}  // namespace

std::unique_ptr<CWindowsProcesses> MakeWindowsProcessCalls() {
  return std::make_unique<CLiveWindowsProcesses>();
}

}  // namespace kestra
