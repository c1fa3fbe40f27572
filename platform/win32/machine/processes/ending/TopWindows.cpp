#include "platform/win32/machine/processes/ending/TopWindows.h"

#include <optional>

#include "platform/win32/base/Windows.h"

namespace kestra {
namespace {

struct Owner {
  std::optional<DWORD> pid{};
  std::optional<DWORD> threadId{};
};

BOOL CALLBACK CloseIfOwned(HWND window, LPARAM parameter) {
  const Owner& owner = *reinterpret_cast<const Owner*>(parameter);
  DWORD pid = 0;
  const DWORD threadId = GetWindowThreadProcessId(window, &pid);
  if (threadId == 0) return TRUE;  // it has gone
  if (owner.pid.value_or(pid) == pid && owner.threadId.value_or(threadId) == threadId) {
    PostMessageW(window, WM_CLOSE, 0, 0);
  }
  return TRUE;
}

}  // namespace

void CloseWindowsOfProcess(uint32_t pid) {
  const Owner owner{.pid = pid};
  EnumWindows(CloseIfOwned, reinterpret_cast<LPARAM>(&owner));
}

void CloseWindowsOfThread(uint32_t threadId) {
  const Owner owner{.threadId = threadId};
  EnumWindows(CloseIfOwned, reinterpret_cast<LPARAM>(&owner));
}

}  // namespace kestra
