#include "Modules/Processes/windows/inspect/ProcessEnumContext.h"

#include <string_view>

#include "VLib/src/paths/MachineFolder.h"
#include "VLib/src/system/OsKind.h"
#include "VLib/src/text/Text.h"
#include "platform/base/ByteSource.h"

namespace kestra {
namespace {

constexpr uint32_t kWideSystem = 2;  // what GetBitness gives for one of 64 bits

// Whether text begins with the word, in any case, as a whole component of a path.
bool BeginsWithComponent(std::string_view text, std::string_view word) {
  return text.size() >= word.size() && EqualsNoCase(text.substr(0, word.size()), word) &&
         (text.size() == word.size() || text[word.size()] == '\\');
}

// The prefix "\Device\HarddiskVolume" and its number; empty for any other path.
std::string_view VolumePrefix(std::string_view path) {
  constexpr std::string_view kVolume = "\\Device\\HarddiskVolume";
  if (path.size() <= kVolume.size() || !EqualsNoCase(path.substr(0, kVolume.size()), kVolume)) {
    return {};
  }
  size_t end = kVolume.size();
  while (end < path.size() && IsAsciiDigit(path[end])) ++end;
  const bool isWhole = end > kVolume.size() && (end == path.size() || path[end] == '\\');
  return isWhole ? path.substr(0, end) : std::string_view();
}

// Somebody sits there, or did so before the network went (the Win32 page of SECURITY_LOGON_TYPE).
bool IsInteractive(uint32_t logonType) {
  constexpr uint32_t kInteractive = 2, kRemote = 10, kCached = 11, kCachedRemote = 12;
  return logonType == kInteractive || logonType == kRemote || logonType == kCached ||
         logonType == kCachedRemote;
}

// The accounts that draw a session's windows and fonts are logged on there as its user is:
// S-1-5-90-... and S-1-5-96-...
bool IsServant(std::string_view sid) {
  constexpr uint64_t kNtAuthority = 5;
  constexpr uint32_t kWindowManager = 90, kFontDriver = 96;
  uint64_t authority = 0;
  uint32_t first = 0;
  return LoadNumber(sid, 2, 6, ByteOrder::Big, authority) && authority == kNtAuthority &&
         LoadLittle(sid, 8, first) && (first == kWindowManager || first == kFontDriver);
}

}  // namespace

ProcessEnumContext::ProcessEnumContext(CMachine& machine, CWindowsProcesses& windows)
    : m_machine(machine),
      m_windows(windows),
      m_reader{windows.CallerWidth(),
               GetBitness(machine) == kWideSystem || windows.CallerWidth() == 64} {
  uint32_t session = 0;
  if (windows.CallerSession(session) == kErrorSuccess) m_callerSession = session;
}

std::optional<uint32_t> ProcessEnumContext::SessionOf(uint32_t pid) {
  const auto [place, isNew] = m_sessionOfProcess.try_emplace(pid);
  uint32_t session = 0;
  if (isNew && m_windows.SessionOf(pid, session) == kErrorSuccess) place->second = session;
  return place->second;
}

void ProcessEnumContext::ReadLogonSessions() {
  m_sidOfSession.emplace();
  std::vector<LogonSession> sessions;
  if (m_windows.LogonSessions(sessions) != kErrorSuccess) return;
  for (const LogonSession& logon : sessions) {
    if (!IsInteractive(logon.logonType) || logon.sid.empty() || IsServant(logon.sid)) continue;
    m_sidOfSession->emplace(logon.session, logon.sid);
  }
}

std::optional<std::string> ProcessEnumContext::AccountOfSession(uint32_t session) {
  if (!m_sidOfSession) ReadLogonSessions();
  const auto found = m_sidOfSession->find(session);
  if (found == m_sidOfSession->end()) return std::nullopt;
  return AccountOfSid(found->second);
}

std::optional<std::string> ProcessEnumContext::AccountOfSid(const std::string& sid) {
  const auto [place, isNew] = m_accountOfSid.try_emplace(sid);
  std::string account;
  if (isNew && m_windows.AccountOfSid(sid, account) == kErrorSuccess) place->second = account;
  return place->second;
}

void ProcessEnumContext::ReadDevices() {
  m_drives.emplace();
  for (char letter = 'A'; letter <= 'Z'; ++letter) {
    const std::string drive = {letter, ':'};
    std::string device;
    if (m_windows.DeviceOfDrive(drive, device) == kErrorSuccess) {
      m_drives->emplace_back(std::move(device), drive);
    }
  }
}

std::string ProcessEnumContext::Normalised(std::string path) {
  constexpr std::string_view kSystemRoot = "\\SystemRoot";
  constexpr std::string_view kDosDevices = "\\??\\";
  constexpr std::string_view kServers = "\\??\\UNC";
  if (BeginsWithComponent(path, kSystemRoot)) {
    const auto windows = MachineFolder(Folder::Windows, m_machine);
    if (windows) path.replace(0, kSystemRoot.size(), *windows);
  }
  if (BeginsWithComponent(path, kServers)) {
    path.replace(0, kServers.size(), "\\");
  } else if (path.starts_with(kDosDevices)) {
    path.erase(0, kDosDevices.size());
  }
  const std::string_view volume = VolumePrefix(path);
  if (volume.empty()) return path;
  if (!m_drives) ReadDevices();
  for (const auto& [device, drive] : *m_drives) {
    if (EqualsNoCase(device, volume)) return path.replace(0, volume.size(), drive);
  }
  return path;
}

std::optional<std::string> ProcessEnumContext::Searched(const std::string& name, uint32_t width) {
  if (name.empty() || HasFolder(name) || (IsWide() && width != 64)) return std::nullopt;
  std::string path;
  if (m_windows.SearchFile(name, IsWide(), path) != kErrorSuccess) return std::nullopt;
  return path;
}

}  // namespace kestra
