#include "Modules/Processes/windows/inspect/ProcessInspector.h"

#include <optional>
#include <utility>

#include "Modules/Processes/windows/SystemProcesses.h"
#include "platform/base/ByteSource.h"

namespace kestra {
namespace {

constexpr const char* kAccessDenied = "<access denied>";

std::string UnknownUser(std::optional<uint32_t> session) {
  return session ? "UnknownUser_Session" + std::to_string(*session) : "UnknownUser_SessionUnknown";
}

std::optional<uint32_t> WorkingSetKB(CProcessHandle& process) {
  uint64_t bytes = 0;
  if (process.WorkingSet(bytes) != kErrorSuccess) return std::nullopt;
  return KilobytesOf(bytes);
}

std::optional<uint32_t> HandleCount(CProcessHandle& process) {
  std::string bytes;
  uint32_t count = 0;
  if (process.QueryInformation(kProcessHandleCount, sizeof(count), bytes) == kErrorSuccess &&
      LoadLittle(bytes, 0, count)) {
    return count;
  }
  if (process.HandleCount(count) == kErrorSuccess) return count;
  return std::nullopt;
}

// The path of the program's file in the kernel's form, else as the process's own list has it.
std::string ImagePath(CProcessHandle& process) {
  std::string path;
  if (process.ImageFileName(path) == kErrorSuccess && !path.empty()) return path;
  uint64_t module = 0;
  if (process.FirstModule(module) != kErrorSuccess ||
      process.ModuleFileName(module, path) != kErrorSuccess) {
    return {};
  }
  return path;
}

}  // namespace

bool CProcessInspector::IsListed(uint32_t pid) {
  constexpr uint32_t kServices = 0;
  const std::optional<uint32_t> own = m_context.CallerSession();
  if (Wants(kProcessAllSessions) || !own) return true;
  const std::optional<uint32_t> session = m_context.SessionOf(pid);
  return session && (*session == kServices || *session == *own);
}

void CProcessInspector::Inspect(ProcessRecord& record) {
  Fill(Open(record.PID), record);
}

// With the greatest rights that the system grants, which may be few, where those that are needed
// are refused.
CProcessInspector::Opened CProcessInspector::Open(uint32_t pid) {
  Opened opened;
  if (pid <= kLastSystemPID) return opened;  // nothing is shown of them but the name
  CWindowsProcesses& windows = m_context.Windows();
  opened.refusal = windows.OpenHandle(pid, kProcessQueryAndRead, opened.handle);
  opened.mayRead = opened.refusal == kErrorSuccess;
  if (!opened.mayRead && windows.OpenHandle(pid, kMaximumAllowed, opened.handle) != kErrorSuccess) {
    opened.handle.reset();
  }
  return opened;
}

// One that does not tell when it started tells nothing else that could be another's.
bool CProcessInspector::IsSame(CProcessHandle& process, ProcessRecord& record) const {
  uint64_t startTime = 0;
  if (process.StartTime(startTime) != kErrorSuccess) return true;
  if (record.StartTime == 0 ? startTime > m_listedAt : startTime != record.StartTime) return false;
  record.StartTime = startTime;
  return true;
}

// On a system of 64 bits only the process itself tells its width.
void CProcessInspector::Fill(const Opened& opened, ProcessRecord& record) {
  if (!m_context.IsWide()) {
    record.Width = 32;
  } else if (record.PID <= kLastSystemPID) {
    record.Width = 64;
  }
  if (record.PID <= kLastSystemPID) return;
  // Of one that has ended since it was listed the system says that the number is invalid.
  if (opened.refusal != kErrorInvalidParameter) record.Unread = opened.refusal;
  if (!opened.handle || !IsSame(*opened.handle, record)) {
    if (Wants(kProcessWantUser)) record.User = UserOfUnopened(record.PID);
    if (!m_context.IsWide()) RepairPath(record);
    return;
  }
  CProcessHandle& process = *opened.handle;
  if (Wants(kProcessWantUser)) record.User = UserOf(process, record.PID);
  if (opened.mayRead) {
    FillFromBlock(process, record);
  } else {
    bool isRedirected = false;
    if (m_context.IsWide() && process.IsRedirected(isRedirected) == kErrorSuccess) {
      record.Width = isRedirected ? 32 : 64;
    }
    FillPath(process, {}, record);
  }
  if (!record.WorkingSetKB) record.WorkingSetKB = WorkingSetKB(process);
  if (!record.HandleCount) record.HandleCount = HandleCount(process);
}

void CProcessInspector::FillFromBlock(CProcessHandle& process, ProcessRecord& record) {
  ProcessBlock block =
      ReadProcessBlock(process, m_context.Reader(), Wants(kProcessWantCommandLine));
  if (m_context.IsWide()) record.Width = block.isNarrow ? 32 : 64;
  FillPath(process, std::move(block.imagePath), record);
  if (!block.commandLine.empty()) record.CommandLine = std::move(block.commandLine);
  if (!block.windowTitle.empty()) record.WindowTitle = std::move(block.windowTitle);
}

void CProcessInspector::FillPath(CProcessHandle& process, std::string path, ProcessRecord& record) {
  if (!record.FilePath || record.FilePath->empty()) {
    record.FilePath = path.empty() ? ImagePath(process) : std::move(path);
  }
  record.FilePath = m_context.Normalised(*std::move(record.FilePath));
  RepairPath(record);
}

// A mere name is searched for. One that the process does not tell either is taken from the list,
// on a system of 32 bits: on one of 64 the search could find the program of the other width. What
// has no folder in the end is no path.
void CProcessInspector::RepairPath(ProcessRecord& record) {
  if (record.FilePath && HasFolder(*record.FilePath)) return;
  std::string name = std::exchange(record.FilePath, std::nullopt).value_or(std::string());
  if (name.empty() && !m_context.IsWide()) name = record.ImageName;
  if (Wants(kProcessRepairPath)) record.FilePath = m_context.Searched(name, record.Width);
}

// Whom the process runs for, by its token. A token that may not be read is of somebody else than
// the session's user, for all that is known; the user is named only where the token fails in
// another way.
std::string CProcessInspector::UserOf(CProcessHandle& process, uint32_t pid) {
  std::string sid;
  const SystemError error = process.UserSid(sid);
  if (error == kErrorAccessDenied) return kAccessDenied;
  if (error != kErrorSuccess) return UserOfUnopened(pid);
  if (auto account = m_context.AccountOfSid(sid)) return *std::move(account);
  std::string text;
  if (m_context.Windows().TextOfSid(sid, text) == kErrorSuccess) return text;
  return UnknownUser(m_context.SessionOf(pid));
}

std::string CProcessInspector::UserOfUnopened(uint32_t pid) {
  const std::optional<uint32_t> session = m_context.SessionOf(pid);
  if (session) {
    if (auto account = m_context.AccountOfSession(*session)) return *std::move(account);
  }
  return UnknownUser(session);
}

}  // namespace kestra
