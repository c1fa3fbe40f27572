#include "platform/win32/machine/processes/ending/OldTasks.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

#include "platform/win32/base/Optional.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/machine/processes/NativeCalls.h"

namespace kestra {
namespace {

using OnTask = BOOL CALLBACK(DWORD threadId, WORD module, WORD taskId, char* pModuleName,
                             char* pFileName, LPARAM parameter);

// Such programs know the code page of the system only.
std::string FromCodePage(const char* pText) {
  if (!pText) return {};
  const int length = static_cast<int>(std::min<size_t>(std::strlen(pText), MAX_PATH * 4));
  std::wstring wide(static_cast<size_t>(length), L'\0');
  wide.resize(
      static_cast<size_t>(MultiByteToWideChar(CP_ACP, 0, pText, length, wide.data(), length)));
  return Narrow(wide);
}

struct Found {
  std::vector<OldTask>& tasks;
  SystemError error = kErrorSuccess;
};

// TRUE ends the enumeration. Nothing may be thrown through the system's library.
BOOL CALLBACK AddTask(DWORD threadId, WORD, WORD taskId, char* pModuleName, char* pFileName,
                      LPARAM parameter) noexcept {
  auto& found = *reinterpret_cast<Found*>(parameter);
  try {
    found.tasks.push_back({threadId, taskId, FromCodePage(pModuleName), FromCodePage(pFileName)});
  } catch (const std::bad_alloc&) {
    found.error = kErrorNotEnoughMemory;
    return TRUE;
  }
  return FALSE;
}

}  // namespace

// The answer is the number of tasks: none is no failure unless it has left an error.
SystemError ListOldTasks(uint32_t pid, std::vector<OldTask>& tasks) {
  static const auto pList =
      Optional<INT WINAPI(DWORD, OnTask*, LPARAM)>(L"vdmdbg.dll", "VDMEnumTaskWOWEx");
  if (!pList) return kErrorCallNotImplemented;
  Found found{tasks};
  SetLastError(ERROR_SUCCESS);
  const bool isNone = pList(pid, AddTask, reinterpret_cast<LPARAM>(&found)) == 0;
  const DWORD left = GetLastError();
  if (found.error != kErrorSuccess) return found.error;
  return isNone ? static_cast<SystemError>(left) : kErrorSuccess;
}

SystemError EndTaskByForce(uint32_t pid, uint16_t taskId) {
  static const auto pEnd = Optional<BOOL WINAPI(DWORD, WORD)>(L"vdmdbg.dll", "VDMTerminateTaskWOW");
  return pEnd ? ErrorOf(pEnd(pid, taskId)) : kErrorCallNotImplemented;
}

}  // namespace kestra
