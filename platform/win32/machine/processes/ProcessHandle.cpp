#include "platform/win32/machine/processes/ProcessHandle.h"

#include <psapi.h>

#include <utility>

#include "platform/win32/base/Optional.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/machine/processes/Accounts.h"
#include "platform/win32/machine/processes/NativeCalls.h"

namespace kestra {
namespace {

using QueryProcess = LONG WINAPI(HANDLE, ULONG, void*, ULONG, ULONG*);
using ReadMemoryAcross = LONG WINAPI(HANDLE, uint64_t, void*, uint64_t, uint64_t*);
using NameOfModule = DWORD WINAPI(HANDLE, HMODULE, wchar_t*, DWORD);

constexpr SystemError kErrorPartialCopy = ERROR_PARTIAL_COPY;

SystemError Query(QueryProcess* pQuery, HANDLE process, uint32_t informationClass, size_t size,
                  std::string& bytes) {
  if (!pQuery) return kErrorCallNotImplemented;
  bytes.assign(size, '\0');
  ULONG returned = 0;
  const LONG status =
      pQuery(process, informationClass, bytes.data(), static_cast<ULONG>(size), &returned);
  if (status < 0) return ErrorOfStatus(status);
  return returned != 0 && returned < size ? kErrorBadLength : kErrorSuccess;
}

// What came, if anything did, is what the caller may have.
SystemError Arrived(SystemError error, uint64_t count, std::string& bytes) {
  if (error != kErrorSuccess && error != kErrorPartialCopy) return error;
  if (count == 0) return kErrorPartialCopy;
  if (count < bytes.size()) bytes.resize(static_cast<size_t>(count));
  return kErrorSuccess;
}

// The text that a function gives, which tells a text that was cut by filling all the room.
template <class Fetch>
SystemError TextOf(Fetch fetch, std::string& text) {
  SetLastError(ERROR_SUCCESS);
  const std::wstring wide = FetchText(fetch);
  if (wide.empty()) return LastError();
  text = Narrow(wide);
  return kErrorSuccess;
}

class CWindowsProcessHandle final : public CProcessHandle {
 public:
  explicit CWindowsProcessHandle(CUniqueHandle handle) : m_handle(std::move(handle)) {}

  SystemError IsRedirected(bool& isRedirected) override {
    static const auto pIsWow64 =
        Optional<BOOL WINAPI(HANDLE, BOOL*)>(L"kernel32.dll", "IsWow64Process");
    if (!pIsWow64) return kErrorCallNotImplemented;
    BOOL answer = FALSE;
    const SystemError error = ErrorOf(pIsWow64(m_handle.get(), &answer));
    isRedirected = answer != FALSE;
    return error;
  }

  SystemError QueryInformation(uint32_t informationClass, size_t size,
                               std::string& bytes) override {
    static const auto pQuery = Optional<QueryProcess>(L"ntdll.dll", "NtQueryInformationProcess");
    return Query(pQuery, m_handle.get(), informationClass, size, bytes);
  }

  SystemError QueryInformation64(uint32_t informationClass, size_t size,
                                 std::string& bytes) override {
    static const auto pQuery =
        Optional<QueryProcess>(L"ntdll.dll", "NtWow64QueryInformationProcess64");
    return Query(pQuery, m_handle.get(), informationClass, size, bytes);
  }

  SystemError ReadMemory(uint64_t address, size_t size, std::string& bytes) override {
    if (address > UINTPTR_MAX) return kErrorInvalidParameter;
    bytes.assign(size, '\0');
    SIZE_T count = 0;
    const void* pFrom = reinterpret_cast<const void*>(static_cast<uintptr_t>(address));
    const SystemError error =
        ErrorOf(ReadProcessMemory(m_handle.get(), pFrom, bytes.data(), size, &count));
    return Arrived(error, count, bytes);
  }

  SystemError ReadMemory64(uint64_t address, size_t size, std::string& bytes) override {
    static const auto pRead =
        Optional<ReadMemoryAcross>(L"ntdll.dll", "NtWow64ReadVirtualMemory64");
    if (!pRead) return kErrorCallNotImplemented;
    bytes.assign(size, '\0');
    uint64_t count = 0;
    const LONG status = pRead(m_handle.get(), address, bytes.data(), size, &count);
    return Arrived(ErrorOfStatus(status), count, bytes);
  }

  SystemError FirstModule(uint64_t& module) override {
    static const auto pModules =
        Optional<BOOL WINAPI(HANDLE, HMODULE*, DWORD, DWORD*)>(L"psapi.dll", "EnumProcessModules");
    if (!pModules) return kErrorCallNotImplemented;
    HMODULE first = nullptr;
    DWORD needed = 0;
    const SystemError error = ErrorOf(pModules(m_handle.get(), &first, sizeof(first), &needed));
    module = reinterpret_cast<uintptr_t>(first);
    return error == kErrorSuccess && !first ? kErrorInvalidData : error;
  }

  SystemError ModuleBaseName(uint64_t module, std::string& name) override {
    static const auto pName = Optional<NameOfModule>(L"psapi.dll", "GetModuleBaseNameW");
    return NameOf(pName, module, name);
  }

  SystemError ModuleFileName(uint64_t module, std::string& path) override {
    static const auto pName = Optional<NameOfModule>(L"psapi.dll", "GetModuleFileNameExW");
    return NameOf(pName, module, path);
  }

  SystemError ImageFileName(std::string& path) override {
    static const auto pName =
        Optional<DWORD WINAPI(HANDLE, wchar_t*, DWORD)>(L"psapi.dll", "GetProcessImageFileNameW");
    if (!pName) return kErrorCallNotImplemented;
    return TextOf([&](wchar_t* pText, DWORD size) { return NameOrRoom(pText, size, pName); }, path);
  }

  SystemError WorkingSet(uint64_t& bytes) override {
    static const auto pMemory = Optional<BOOL WINAPI(HANDLE, PROCESS_MEMORY_COUNTERS*, DWORD)>(
        L"psapi.dll", "GetProcessMemoryInfo");
    if (!pMemory) return kErrorCallNotImplemented;
    PROCESS_MEMORY_COUNTERS counters = {};
    const SystemError error = ErrorOf(pMemory(m_handle.get(), &counters, sizeof(counters)));
    bytes = counters.WorkingSetSize;
    return error;
  }

  SystemError HandleCount(uint32_t& count) override {
    static const auto pCount =
        Optional<BOOL WINAPI(HANDLE, DWORD*)>(L"kernel32.dll", "GetProcessHandleCount");
    if (!pCount) return kErrorCallNotImplemented;
    DWORD answer = 0;
    const SystemError error = ErrorOf(pCount(m_handle.get(), &answer));
    count = answer;
    return error;
  }

  SystemError StartTime(uint64_t& ticks) override { return StartTimeOf(m_handle.get(), ticks); }
  SystemError UserSid(std::string& sid) override { return SidOfProcess(m_handle.get(), sid); }

 private:
  // This one refuses a text that does not fit, and does not tell how much room it needs.
  template <class GetName>
  DWORD NameOrRoom(wchar_t* pText, DWORD size, GetName pName) {
    const DWORD length = pName(m_handle.get(), pText, size);
    return length == 0 && GetLastError() == ERROR_INSUFFICIENT_BUFFER ? size : length;
  }

  SystemError NameOf(NameOfModule* pName, uint64_t module, std::string& name) {
    if (!pName) return kErrorCallNotImplemented;
    const auto handle = reinterpret_cast<HMODULE>(static_cast<uintptr_t>(module));
    return TextOf(
        [&](wchar_t* pText, DWORD size) { return pName(m_handle.get(), handle, pText, size); },
        name);
  }

  CUniqueHandle m_handle;
};

}  // namespace

SystemError OpenProcessHandle(uint32_t pid, uint32_t access, CUniqueHandle& handle) {
  static const auto pOpen =
      Optional<HANDLE WINAPI(DWORD, BOOL, DWORD)>(L"kernel32.dll", "OpenProcess");
  if (!pOpen) return kErrorCallNotImplemented;
  handle = CUniqueHandle(pOpen(access, FALSE, pid));
  return handle ? kErrorSuccess : LastError();
}

SystemError StartTimeOf(HANDLE process, uint64_t& ticks) {
  FILETIME created = {}, exited = {}, kernel = {}, user = {};
  const SystemError error = ErrorOf(GetProcessTimes(process, &created, &exited, &kernel, &user));
  ticks = uint64_t{created.dwHighDateTime} << 32 | created.dwLowDateTime;
  return error;
}

std::unique_ptr<CProcessHandle> MakeProcessHandle(CUniqueHandle handle) {
  return std::make_unique<CWindowsProcessHandle>(std::move(handle));
}

}  // namespace kestra
