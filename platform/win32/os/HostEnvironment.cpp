#include "platform/os/HostEnvironment.h"

#include <algorithm>

#include "platform/machine/Registry.h"
#include "platform/win32/base/Optional.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/machine/Facilities.h"

namespace kestra::os {
namespace {

// The module that this code is in.
HMODULE ThisModule() {
  HMODULE module = nullptr;
  constexpr DWORD kFlags =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  GetModuleHandleExW(kFlags, reinterpret_cast<LPCWSTR>(&ThisModule), &module);
  return module;
}

std::string PathOf(HMODULE module) {
  return Narrow(FetchText(
      [&](wchar_t* buffer, DWORD size) { return GetModuleFileNameW(module, buffer, size); }));
}

bool IsSeparator(char c) {
  return c == '\\' || c == '/';
}

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Index behind the next separator at or after start; 0 if there is none, or nothing before it.
size_t BehindPart(const std::string& path, size_t start) {
  const auto begin = path.begin() + static_cast<std::ptrdiff_t>(start);
  const auto end = std::find_if(begin, path.end(), IsSeparator);
  if (end == begin || end == path.end()) return 0;
  return static_cast<size_t>(end - path.begin()) + 1;
}

}  // namespace

// An empty variable is there, which the length 0 does not tell from one that is missing.
std::optional<std::string> ReadEnvironment(const std::string& name) {
  std::wstring wide;
  if (WideName(name, wide) != kErrorSuccess) return std::nullopt;
  SetLastError(ERROR_SUCCESS);
  const std::wstring value = FetchText([&](wchar_t* buffer, DWORD size) {
    return GetEnvironmentVariableW(wide.c_str(), buffer, size);
  });
  if (value.empty() && GetLastError() != ERROR_SUCCESS) return std::nullopt;
  return Narrow(value);
}

// The thread's user, where it acts for another one than the process's. Not every Windows has the
// library for it.
std::optional<std::string> CurrentUserName() {
  static const auto pGetUserName =
      Optional<BOOLEAN WINAPI(int, LPWSTR, PULONG)>(L"secur32.dll", "GetUserNameExW");
  constexpr int kNameSamCompatible = 2;  // EXTENDED_NAME_FORMAT of secext.h: domain\user
  if (!pGetUserName) return std::nullopt;
  const std::wstring name = FetchText([&](wchar_t* buffer, DWORD size) -> ULONG {
    ULONG length = size;
    if (pGetUserName(kNameSamCompatible, buffer, &length)) return length;
    return GetLastError() == ERROR_MORE_DATA ? length : 0;
  });
  if (name.empty()) return std::nullopt;
  return Narrow(name);
}

uint32_t CurrentProcessId() {
  return GetCurrentProcessId();
}

std::string ExecutablePath() {
  return PathOf(nullptr);
}

std::string LibraryPath() {
  const HMODULE module = ThisModule();
  return module ? PathOf(module) : std::string();
}

uintptr_t LibraryLoadAddress() {
  return reinterpret_cast<uintptr_t>(ThisModule());
}

CRegistry* HostRegistry() {
  static CRegistry* const pRegistry = MakeWindowsRegistry().release();
  return pRegistry;
}

char PathSeparator() {
  return '\\';
}

// "C:\" and "\\server\share\", the latter of which also covers the prefixes "\\?\C:\" and
// "\\.\C:\".
size_t RootLength(const std::string& path) {
  if (path.size() >= 3 && IsLetter(path[0]) && path[1] == ':' && IsSeparator(path[2])) return 3;
  if (path.size() < 3 || !IsSeparator(path[0]) || !IsSeparator(path[1])) return 0;
  const size_t share = BehindPart(path, 2);
  return share == 0 ? 0 : BehindPart(path, share);
}

}  // namespace kestra::os
