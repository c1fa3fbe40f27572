#include "platform/os/process/Privileges.h"

#include <cstddef>

#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"

namespace kestra::os {
namespace {

CUniqueHandle OpenToken(DWORD access) {
  HANDLE token = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), access, &token)) return CUniqueHandle();
  return CUniqueHandle(token);
}

// Of the token that the thread acts with; a group that is there only to deny does not count.
bool IsInAdministrators() {
  std::byte sid[SECURITY_MAX_SID_SIZE];
  DWORD size = sizeof sid;
  BOOL isMember = FALSE;
  return CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, sid, &size) &&
         CheckTokenMembership(nullptr, sid, &isMember) && isMember;
}

}  // namespace

// An account with two tokens tells by which of them the process has. One with a single token, as
// the built-in administrator's, or with account control switched off, is judged by its groups, as
// on systems that know of no elevation.
bool IsAdmin() {
  const CUniqueHandle token = OpenToken(TOKEN_QUERY);
  TOKEN_ELEVATION_TYPE type = TokenElevationTypeDefault;
  DWORD size = 0;
  if (token && GetTokenInformation(token.get(), TokenElevationType, &type, sizeof type, &size) &&
      type != TokenElevationTypeDefault)
    return type == TokenElevationTypeFull;
  return IsInAdministrators();
}

SystemError EnablePrivilege(const std::string& name, bool on) {
  std::wstring wide;
  if (const SystemError error = WideName(name, wide)) return error;
  const CUniqueHandle token = OpenToken(TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY);
  if (!token) return LastError();
  TOKEN_PRIVILEGES wanted{};
  wanted.PrivilegeCount = 1;
  wanted.Privileges[0].Attributes = on ? SE_PRIVILEGE_ENABLED : 0;
  if (!LookupPrivilegeValueW(nullptr, wide.c_str(), &wanted.Privileges[0].Luid)) return LastError();
  if (!AdjustTokenPrivileges(token.get(), FALSE, &wanted, 0, nullptr, nullptr)) return LastError();
  // Success, too, when the token does not have it: the last error alone tells.
  return GetLastError();
}

SystemError Restart(bool force) {
  const SystemError error = EnablePrivilege("SeShutdownPrivilege", true);
  if (error != kErrorSuccess) return error;
  const UINT flags = force ? EWX_REBOOT | EWX_FORCE : EWX_REBOOT;
  constexpr DWORD kReason = SHTDN_REASON_MAJOR_OTHER | SHTDN_REASON_FLAG_PLANNED;
  return ExitWindowsEx(flags, kReason) ? kErrorSuccess : LastError();
}

}  // namespace kestra::os
