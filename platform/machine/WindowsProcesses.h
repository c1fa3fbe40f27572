// What a Windows system tells of its processes, call by call. No interface of it tells everything
// on every system: which ones are asked, in which order, and what stands for what they do not tell
// is decided in Modules/Processes/windows/.
//
// Every operation stands for the function in its comment, whose Win32 page tells the rest, and
// answers with what that gave or with its error number: kErrorCallNotImplemented where the system
// does not have the function. What it answers into has a meaning only with success. Text is UTF-8.
// All methods of CWindowsProcesses may be called from any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/base/SystemError.h"

namespace kestra {

// The libraries that the functions are in. On some systems one is missing as a whole.
enum class ProcessLibrary { Kernel32, Psapi, Ntdll, VdmDbg };

// Access rights to a process. Source: the Win32 page "Process Security and Access Rights".
inline constexpr uint32_t kProcessQueryAndRead = 0x410;
inline constexpr uint32_t kMaximumAllowed = 0x2000000;

// What QueryInformation and QuerySystemInformation are asked for. Source: the Win32 pages of
// NtQueryInformationProcess and NtQuerySystemInformation.
inline constexpr uint32_t kProcessBasicInformation = 0;
inline constexpr uint32_t kProcessHandleCount = 0x14;
inline constexpr uint32_t kProcessWow64Information = 26;
inline constexpr uint32_t kSystemProcessInformation = 5;

// A process that is held open with the rights that were asked for. One thread at a time.
class CProcessHandle {
 public:
  virtual ~CProcessHandle() = default;
  // IsWow64Process: whether it is one of 32 bits on a system of 64.
  virtual SystemError IsRedirected(bool& isRedirected) = 0;
  // NtQueryInformationProcess, with room for exactly size bytes. Fewer are no success.
  virtual SystemError QueryInformation(uint32_t informationClass, size_t size,
                                       std::string& bytes) = 0;
  // ReadProcessMemory. Fewer bytes than size come, with success, where the rest cannot be read;
  // none is an error.
  virtual SystemError ReadMemory(uint64_t address, size_t size, std::string& bytes) = 0;
  // NtWow64QueryInformationProcess64 and NtWow64ReadVirtualMemory64, for a caller of 32 bits on a
  // system of 64; otherwise as the two above.
  virtual SystemError QueryInformation64(uint32_t informationClass, size_t size,
                                         std::string& bytes) = 0;
  virtual SystemError ReadMemory64(uint64_t address, size_t size, std::string& bytes) = 0;
  // EnumProcessModules and then GetModuleBaseName and GetModuleFileNameEx of the first one.
  virtual SystemError FirstModule(uint64_t& module) = 0;
  virtual SystemError ModuleBaseName(uint64_t module, std::string& name) = 0;
  virtual SystemError ModuleFileName(uint64_t module, std::string& path) = 0;
  // GetProcessImageFileName: "\Device\HarddiskVolume1\...".
  virtual SystemError ImageFileName(std::string& path) = 0;
  // GetProcessMemoryInfo: the working set in bytes.
  virtual SystemError WorkingSet(uint64_t& bytes) = 0;
  // GetProcessHandleCount.
  virtual SystemError HandleCount(uint32_t& count) = 0;
  // GetProcessTimes: when it was created, in 100 ns since 1601.
  virtual SystemError StartTime(uint64_t& ticks) = 0;
  // OpenProcessToken and GetTokenInformation: the bytes of the user's SID.
  virtual SystemError UserSid(std::string& sid) = 0;
};

struct SnapshotEntry {
  uint32_t pid = 0;
  uint32_t parentPid = 0;
  std::string exeName{};  // a file name; on the 9x family with its folder
};

// One thread at a time.
class CProcessSnapshot {
 public:
  virtual ~CProcessSnapshot() = default;
  // Process32First and Process32Next. kErrorNoMoreFiles after the last one.
  virtual SystemError Next(SnapshotEntry& entry) = 0;
};

// What the system answered, and where it wrote it: the pointers in the bytes are of this address.
struct SystemBytes {
  std::string bytes{};
  uint64_t address = 0;
};

// Somebody's being logged on. Source: the Win32 page of SECURITY_LOGON_SESSION_DATA.
struct LogonSession {
  uint32_t session = 0;
  uint32_t logonType = 0;
  std::string sid{};  // its bytes
};

// A program of 16 bits that runs in a process of the system's for such.
struct OldTask {
  uint32_t threadId = 0;
  uint16_t taskId = 0;
  std::string moduleName{};
  std::string fileName{};
};

class CWindowsProcesses {
 public:
  virtual ~CWindowsProcesses() = default;
  virtual bool HasLibrary(ProcessLibrary library) = 0;
  // The width of this program, 32 or 64, and with it that of the layouts that it is answered in.
  virtual uint32_t CallerWidth() const = 0;
  // AdjustTokenPrivileges, for this program. It is not taken back.
  virtual SystemError EnablePrivilege(const std::string& name) = 0;

  // CreateToolhelp32Snapshot of all processes.
  virtual SystemError TakeSnapshot(std::unique_ptr<CProcessSnapshot>& snapshot) = 0;
  // EnumProcesses.
  virtual SystemError EnumPids(std::vector<uint32_t>& pids) = 0;
  // NtQuerySystemInformation, with room for size bytes. kErrorBadLength when that is too little.
  virtual SystemError QuerySystemInformation(uint32_t informationClass, size_t size,
                                             SystemBytes& answer) = 0;
  // OpenProcess.
  virtual SystemError OpenHandle(uint32_t pid, uint32_t access,
                                 std::unique_ptr<CProcessHandle>& process) = 0;

  // ProcessIdToSessionId, of a process and of this program.
  virtual SystemError SessionOf(uint32_t pid, uint32_t& session) = 0;
  virtual SystemError CallerSession(uint32_t& session) = 0;
  // LsaEnumerateLogonSessions and LsaGetLogonSessionData. One that may not be read is left out.
  virtual SystemError LogonSessions(std::vector<LogonSession>& sessions) = 0;
  // LookupAccountSid: "DOMAIN\account", or the account alone where it has no domain.
  virtual SystemError AccountOfSid(const std::string& sid, std::string& account) = 0;
  // ConvertSidToStringSid: "S-1-5-...".
  virtual SystemError TextOfSid(const std::string& sid, std::string& text) = 0;

  // QueryDosDevice: what a drive ("C:") stands for, "\Device\HarddiskVolume1". kErrorFileNotFound
  // for a letter that is no drive.
  virtual SystemError DeviceOfDrive(const std::string& drive, std::string& device) = 0;
  // SearchPath: the full path of a file name, found as the system finds programs. Without
  // redirection a caller of 32 bits on a system of 64 searches the system's own folder and not the
  // one for programs of 32 bits. kErrorFileNotFound if it is nowhere.
  virtual SystemError SearchFile(const std::string& name, bool withoutRedirection,
                                 std::string& path) = 0;

  // VDMEnumTaskWOWEx: the tasks of the process pid.
  virtual SystemError EnumOldTasks(uint32_t pid, std::vector<OldTask>& tasks) = 0;
  // VDMTerminateTaskWOW.
  virtual SystemError TerminateOldTask(uint32_t pid, uint16_t taskId) = 0;
  // Posts WM_CLOSE to every top-level window of the thread. None is a success too.
  virtual SystemError CloseThreadWindows(uint32_t threadId) = 0;
};

}  // namespace kestra
