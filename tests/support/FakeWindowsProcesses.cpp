#include "tests/support/FakeWindowsProcesses.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace kestra::test {
namespace {

constexpr uint64_t kListAddress = 0x7FF000001000;
constexpr uint64_t kNarrowListAddress = 0x7F001000;
constexpr uint64_t kModule = 0x400000;

template <class Map, class Key, class Value>
SystemError LookUp(const Map& map, const Key& key, Value& value) {
  const auto found = map.find(key);
  if (found == map.end()) return kErrorFileNotFound;
  value = found->second;
  return kErrorSuccess;
}

class CFakeHandle final : public CProcessHandle {
 public:
  CFakeHandle(CFakeWindowsProcesses& owner, FakeWindowsProcess process, bool mayRead)
      : m_owner(owner), m_process(std::move(process)), m_mayRead(mayRead) {}

  SystemError IsRedirected(bool& isRedirected) override {
    const SystemError error = m_owner.Count("IsWow64Process");
    isRedirected = m_process.isRedirected;
    return error;
  }
  SystemError QueryInformation(uint32_t informationClass, size_t size,
                               std::string& bytes) override {
    return Information("NtQueryInformationProcess", m_process.information, informationClass, size,
                       bytes);
  }
  SystemError QueryInformation64(uint32_t informationClass, size_t size,
                                 std::string& bytes) override {
    return Information("NtWow64QueryInformationProcess64", m_process.information64,
                       informationClass, size, bytes);
  }
  SystemError ReadMemory(uint64_t address, size_t size, std::string& bytes) override {
    return Read("ReadProcessMemory", address, size, bytes);
  }
  SystemError ReadMemory64(uint64_t address, size_t size, std::string& bytes) override {
    return Read("NtWow64ReadVirtualMemory64", address, size, bytes);
  }
  SystemError FirstModule(uint64_t& module) override {
    module = kModule;
    return Text("EnumProcessModules", m_process.baseName, m_unused);
  }
  SystemError ModuleBaseName(uint64_t module, std::string& name) override {
    return module == kModule ? Text("GetModuleBaseName", m_process.baseName, name)
                             : kErrorInvalidHandle;
  }
  SystemError ModuleFileName(uint64_t module, std::string& path) override {
    return module == kModule ? Text("GetModuleFileNameEx", m_process.moduleFileName, path)
                             : kErrorInvalidHandle;
  }
  SystemError ImageFileName(std::string& path) override {
    return Text("GetProcessImageFileName", m_process.imageFileName, path);
  }
  SystemError WorkingSet(uint64_t& bytes) override {
    bytes = m_process.workingSet;
    return m_owner.Count("GetProcessMemoryInfo");
  }
  SystemError HandleCount(uint32_t& count) override {
    const SystemError error = m_owner.Count("GetProcessHandleCount");
    count = m_process.handleCount.value_or(0);
    return error == kErrorSuccess && !m_process.handleCount ? kErrorAccessDenied : error;
  }
  SystemError StartTime(uint64_t& ticks) override {
    ticks = m_process.startTime;
    return m_owner.Count("GetProcessTimes");
  }
  SystemError UserSid(std::string& sid) override {
    const SystemError error = m_owner.Count("OpenProcessToken");
    sid = m_process.sid;
    return error == kErrorSuccess ? m_process.tokenError : error;
  }

 private:
  SystemError Text(const char* function, const std::string& text, std::string& answer) {
    const SystemError error = m_owner.Count(function);
    if (error != kErrorSuccess) return error;
    if (text.empty() || !m_mayRead) return kErrorAccessDenied;
    answer = text;
    return kErrorSuccess;
  }
  SystemError Information(const char* function, const std::map<uint32_t, std::string>& information,
                          uint32_t informationClass, size_t size, std::string& bytes) {
    SystemError error = m_owner.Count(function);
    if (error == kErrorSuccess) error = LookUp(information, informationClass, bytes);
    return error == kErrorSuccess && bytes.size() != size ? kErrorBadLength : error;
  }
  SystemError Read(const char* function, uint64_t address, size_t size, std::string& bytes) {
    const SystemError error = m_owner.Count(function);
    if (error != kErrorSuccess) return error;
    if (!m_mayRead) return kErrorAccessDenied;
    for (const auto& [start, piece] : m_process.memory) {
      if (address < start || address - start >= piece.size()) continue;
      bytes = piece.substr(static_cast<size_t>(address - start), size);
      return kErrorSuccess;
    }
    return kErrorInvalidParameter;
  }

  CFakeWindowsProcesses& m_owner;
  const FakeWindowsProcess m_process;
  const bool m_mayRead;
  std::string m_unused;
};

class CFakeSnapshot final : public CProcessSnapshot {
 public:
  explicit CFakeSnapshot(CFakeWindowsProcesses& owner)
      : m_owner(owner), m_processes(owner.processes) {}
  SystemError Next(SnapshotEntry& entry) override {
    const SystemError error = m_owner.Count("Process32Next");
    if (error != kErrorSuccess) return error;
    if (m_next == m_processes.size()) return kErrorNoMoreFiles;
    const FakeWindowsProcess& process = m_processes[m_next++];
    entry = {process.pid, process.parentPid, process.exeName};
    return kErrorSuccess;
  }

 private:
  CFakeWindowsProcesses& m_owner;
  const std::vector<FakeWindowsProcess> m_processes;
  size_t m_next = 0;
};

}  // namespace

SystemError CFakeWindowsProcesses::Count(const std::string& function) {
  calls.push_back(function);
  ++counts[function];
  if (onCall) onCall(function);
  if (missing.contains(function)) return kErrorCallNotImplemented;
  return plan.Count(Facility::Any);
}

FakeWindowsProcess* CFakeWindowsProcesses::Find(uint32_t pid) {
  const auto found = std::find_if(processes.begin(), processes.end(),
                                  [&](const auto& process) { return process.pid == pid; });
  return found == processes.end() ? nullptr : &*found;
}

SystemError CFakeWindowsProcesses::EnablePrivilege(const std::string& name) {
  return Count("EnablePrivilege " + name);
}

SystemError CFakeWindowsProcesses::TakeSnapshot(std::unique_ptr<CProcessSnapshot>& snapshot) {
  const SystemError error = Count("CreateToolhelp32Snapshot");
  if (error == kErrorSuccess) snapshot = std::make_unique<CFakeSnapshot>(*this);
  return error;
}

SystemError CFakeWindowsProcesses::EnumPids(std::vector<uint32_t>& pids) {
  const SystemError error = Count("EnumProcesses");
  if (error != kErrorSuccess) return error;
  for (const FakeWindowsProcess& process : processes) pids.push_back(process.pid);
  return kErrorSuccess;
}

SystemError CFakeWindowsProcesses::QuerySystemInformation(uint32_t informationClass, size_t size,
                                                          SystemBytes& answer) {
  const SystemError error = Count("NtQuerySystemInformation");
  if (error != kErrorSuccess) return error;
  if (informationClass != kSystemProcessInformation) return kErrorInvalidParameter;
  answer.address = callerWidth == 32 ? kNarrowListAddress : kListAddress;
  answer.bytes = ProcessListBytes(processes, callerWidth, answer.address);
  return answer.bytes.size() + listGrowth * ++m_looks > size ? kErrorBadLength : kErrorSuccess;
}

SystemError CFakeWindowsProcesses::OpenHandle(uint32_t pid, uint32_t access,
                                              std::unique_ptr<CProcessHandle>& process) {
  const SystemError error = Count("OpenProcess");
  if (error != kErrorSuccess) return error;
  const FakeWindowsProcess* pFound = Find(pid);
  if (!pFound) return kErrorInvalidParameter;
  const bool mayRead = access == kProcessQueryAndRead;
  if (mayRead ? !pFound->mayBeRead : access != kMaximumAllowed || !pFound->mayBeOpened) {
    return kErrorAccessDenied;
  }
  process = std::make_unique<CFakeHandle>(*this, *pFound, mayRead);
  return kErrorSuccess;
}

SystemError CFakeWindowsProcesses::SessionOf(uint32_t pid, uint32_t& session) {
  const SystemError error = Count("ProcessIdToSessionId");
  if (error != kErrorSuccess) return error;
  const FakeWindowsProcess* pFound = Find(pid);
  if (!pFound || !pFound->session) return kErrorInvalidParameter;
  session = *pFound->session;
  return kErrorSuccess;
}

SystemError CFakeWindowsProcesses::CallerSession(uint32_t& session) {
  const SystemError error = Count("ProcessIdToSessionId");
  session = callerSession.value_or(0);
  return error == kErrorSuccess && !callerSession ? kErrorAccessDenied : error;
}

SystemError CFakeWindowsProcesses::LogonSessions(std::vector<LogonSession>& sessions) {
  const SystemError error = Count("LsaEnumerateLogonSessions");
  if (error == kErrorSuccess) sessions = logonSessions;
  return error;
}

SystemError CFakeWindowsProcesses::AccountOfSid(const std::string& sid, std::string& account) {
  const SystemError error = Count("LookupAccountSid");
  return error == kErrorSuccess ? LookUp(accounts, sid, account) : error;
}

SystemError CFakeWindowsProcesses::TextOfSid(const std::string& sid, std::string& text) {
  const SystemError error = Count("ConvertSidToStringSid");
  return error == kErrorSuccess ? LookUp(sidTexts, sid, text) : error;
}

SystemError CFakeWindowsProcesses::DeviceOfDrive(const std::string& drive, std::string& device) {
  const SystemError error = Count("QueryDosDevice");
  return error == kErrorSuccess ? LookUp(devices, drive, device) : error;
}

SystemError CFakeWindowsProcesses::SearchFile(const std::string& name, bool withoutRedirection,
                                              std::string& path) {
  const SystemError error = Count(withoutRedirection ? "SearchPath 64" : "SearchPath");
  return error == kErrorSuccess ? LookUp(searched, name, path) : error;
}

SystemError CFakeWindowsProcesses::EnumOldTasks(uint32_t pid, std::vector<OldTask>& tasks) {
  const SystemError error = Count("VDMEnumTaskWOWEx");
  const FakeWindowsProcess* pFound = Find(pid);
  if (error == kErrorSuccess && pFound) tasks = pFound->oldTasks;
  return error;
}

SystemError CFakeWindowsProcesses::TerminateOldTask(uint32_t pid, uint16_t taskId) {
  return Count("VDMTerminateTaskWOW " + std::to_string(pid) + " " + std::to_string(taskId));
}

SystemError CFakeWindowsProcesses::CloseThreadWindows(uint32_t threadId) {
  return Count("WM_CLOSE " + std::to_string(threadId));
}

void StoreLittle(std::string& bytes, uint64_t offset, size_t width, uint64_t number) {
  const auto begin = static_cast<size_t>(offset);
  if (bytes.size() < begin + width) bytes.resize(begin + width, '\0');
  for (size_t i = 0; i < width; ++i) bytes[begin + i] = static_cast<char>(number >> (8 * i));
}

std::string Utf16Bytes(std::string_view text) {
  std::string bytes;
  for (const char c : text) bytes += {c, '\0'};
  return bytes;
}

std::string ProcessListBytes(const std::vector<FakeWindowsProcess>& processes, uint32_t width,
                             uint64_t address) {
  const bool isWide = width == 64;
  const size_t pointer = isWide ? 8 : 4;
  std::string bytes;
  for (size_t i = 0; i < processes.size(); ++i) {
    const FakeWindowsProcess& process = processes[i];
    const uint64_t entry = bytes.size();
    const uint64_t name = entry + (isWide ? 0x100 : 0xB8);  // behind all members
    const std::string text = process.pid == 0 ? "" : Utf16Bytes(process.exeName);
    const uint64_t end = (name + text.size() + 2 + 7) / 8 * 8;
    StoreLittle(bytes, end - 1, 1, 0);
    StoreLittle(bytes, entry, 4, i + 1 < processes.size() ? end - entry : 0);
    StoreLittle(bytes, entry + 0x20, 8, process.startTime);
    StoreLittle(bytes, entry + 0x38, 2, text.size());
    StoreLittle(bytes, entry + 0x3A, 2, text.size() + 2);
    StoreLittle(bytes, entry + 0x38 + pointer, pointer, text.empty() ? 0 : address + name);
    StoreLittle(bytes, entry + (isWide ? 0x50 : 0x44), pointer, process.pid);
    StoreLittle(bytes, entry + (isWide ? 0x58 : 0x48), pointer, process.parentPid);
    StoreLittle(bytes, entry + (isWide ? 0x60 : 0x4C), 4, process.handleCount.value_or(0));
    StoreLittle(bytes, entry + (isWide ? 0x90 : 0x68), pointer, process.workingSet);
    bytes.replace(static_cast<size_t>(name), text.size(), text);
  }
  return bytes;
}

}  // namespace kestra::test
