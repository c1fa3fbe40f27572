// The calls of a Windows system in memory. Every process is in all lists that the fake gives.
//
//   CFakeWindowsProcesses windows;
//   windows.processes.push_back({.pid = 12, .exeName = "a.exe"});
//   windows.missing.insert("NtQuerySystemInformation");      // a function
//   windows.missingLibraries.insert(ProcessLibrary::Psapi);  // a library
//   windows.plan.FailCall(3, kErrorAccessDenied, Facility::Any);
//   ... windows.calls ...
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/machine/WindowsProcesses.h"
#include "tests/support/FaultPlan.h"

namespace kestra::test {

struct FakeWindowsProcess {
  uint32_t pid = 0;
  uint32_t parentPid = 0;
  std::string exeName{};
  std::optional<uint32_t> session{};
  bool mayBeRead = true;    // opened with kProcessQueryAndRead
  bool mayBeOpened = true;  // opened with kMaximumAllowed
  bool isRedirected = false;
  std::string sid{};
  SystemError tokenError = 0;
  std::map<uint64_t, std::string> memory{};         // pieces of it, by their address
  std::map<uint32_t, std::string> information{};    // by class; as the caller sees it
  std::map<uint32_t, std::string> information64{};  // as NtWow64QueryInformationProcess64 tells it
  std::string baseName{};
  std::string moduleFileName{};
  std::string imageFileName{};
  uint64_t workingSet = 0;
  std::optional<uint32_t> handleCount{};  // of GetProcessHandleCount
  uint64_t startTime = 0;
  std::vector<OldTask> oldTasks{};
};

// Plain members, set before it is used. One thread at a time.
class CFakeWindowsProcesses final : public CWindowsProcesses {
 public:
  bool HasLibrary(ProcessLibrary library) override { return !missingLibraries.contains(library); }
  uint32_t CallerWidth() const override { return callerWidth; }
  SystemError EnablePrivilege(const std::string& name) override;
  SystemError TakeSnapshot(std::unique_ptr<CProcessSnapshot>& snapshot) override;
  SystemError EnumPids(std::vector<uint32_t>& pids) override;
  SystemError QuerySystemInformation(uint32_t informationClass, size_t size,
                                     SystemBytes& answer) override;
  SystemError OpenHandle(uint32_t pid, uint32_t access,
                         std::unique_ptr<CProcessHandle>& process) override;
  SystemError SessionOf(uint32_t pid, uint32_t& session) override;
  SystemError CallerSession(uint32_t& session) override;
  SystemError LogonSessions(std::vector<LogonSession>& sessions) override;
  SystemError AccountOfSid(const std::string& sid, std::string& account) override;
  SystemError TextOfSid(const std::string& sid, std::string& text) override;
  SystemError DeviceOfDrive(const std::string& drive, std::string& device) override;
  SystemError SearchFile(const std::string& name, bool withoutRedirection,
                         std::string& path) override;
  SystemError EnumOldTasks(uint32_t pid, std::vector<OldTask>& tasks) override;
  SystemError TerminateOldTask(uint32_t pid, uint16_t taskId) override;
  SystemError CloseThreadWindows(uint32_t threadId) override;

  // The number of a call that is counted and may be told to fail: what it answers then.
  SystemError Count(const std::string& function);
  FakeWindowsProcess* Find(uint32_t pid);

  uint32_t callerWidth = 64;
  std::vector<FakeWindowsProcess> processes;
  std::set<ProcessLibrary> missingLibraries;
  std::set<std::string> missing;  // functions that the system does not have
  std::optional<uint32_t> callerSession;
  std::vector<LogonSession> logonSessions;
  std::map<std::string, std::string> accounts;  // by SID
  std::map<std::string, std::string> sidTexts;  // likewise
  std::map<std::string, std::string> devices;   // by drive
  std::map<std::string, std::string> searched;  // paths by name
  size_t listGrowth = 0;  // bytes by which the kernel's list grows with every look at it
  CFaultPlan plan;
  std::vector<std::string> calls;        // functions, in order
  std::map<std::string, size_t> counts;  // how often each was called
  std::function<void(const std::string&)> onCall;

 private:
  size_t m_looks = 0;
};

// The kernel's list of these processes, as a caller of that width has it at address.
std::string ProcessListBytes(const std::vector<FakeWindowsProcess>& processes, uint32_t width,
                             uint64_t address);
// Puts a number into bytes, little-endian, growing them where they end before it.
void StoreLittle(std::string& bytes, uint64_t offset, size_t width, uint64_t number);
// ASCII text as UTF-16.
std::string Utf16Bytes(std::string_view text);

}  // namespace kestra::test
