// Who a process runs for, and who is logged on. A SID is the bytes that the system gives for it.
#pragma once

#include <string>
#include <vector>

#include "platform/machine/WindowsProcesses.h"
#include "platform/win32/base/Windows.h"

namespace kestra {

SystemError SidOfProcess(HANDLE process, std::string& sid);
SystemError LookUpAccount(const std::string& sid, std::string& account);
SystemError TextOfSid(const std::string& sid, std::string& text);
SystemError ListLogonSessions(std::vector<LogonSession>& sessions);

}  // namespace kestra
