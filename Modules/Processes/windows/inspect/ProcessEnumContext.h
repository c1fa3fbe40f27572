// What one enumeration of a Windows machine's processes carries: what is the same for all of them,
// and what was looked up for one and holds for others.
//
// One thread at a time; for one list only, since accounts and sessions change.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Modules/Processes/windows/inspect/ProcessBlock.h"
#include "platform/machine/Machine.h"
#include "platform/machine/Processes.h"
#include "platform/machine/WindowsProcesses.h"

namespace kestra {

// What an enumeration is to give; together with kProcessWantUser (1) and kProcessWantCommandLine
// (2).
inline constexpr uint32_t kProcessAllSessions = 4;  // those of other sessions too
inline constexpr uint32_t kProcessRepairPath = 8;   // search for a file whose path is not told

// With it more processes can be opened; what cannot then stays without value.
inline constexpr const char* kDebugPrivilege = "SeDebugPrivilege";

class ProcessEnumContext {
 public:
  // Both must outlive it.
  ProcessEnumContext(CMachine& machine, CWindowsProcesses& windows);

  CWindowsProcesses& Windows() const { return m_windows; }
  // The system has 64 bits.
  bool IsWide() const { return m_reader.isWideSystem; }
  const BlockReader& Reader() const { return m_reader; }
  // Nothing where the system has no sessions, or does not tell.
  std::optional<uint32_t> CallerSession() const { return m_callerSession; }
  std::optional<uint32_t> SessionOf(uint32_t pid);

  // Who is logged on to a session, by its account name. Nothing for a session of services, and
  // where either is not told.
  std::optional<std::string> AccountOfSession(uint32_t session);
  // The account's name; nothing where the system has none for the SID.
  std::optional<std::string> AccountOfSid(const std::string& sid);

  // A path of the kernel's as a path of a program's: "\SystemRoot" is the Windows folder,
  // "\??\UNC\server" is "\\server", any other "\??\" goes, and a volume is its drive. Any other
  // path stays as it is.
  std::string Normalised(std::string path);
  // The full path of a file name without folder, where the system's search finds it; width is that
  // of the program that it is of. Nothing on a system of 64 bits for a width other than 64: its
  // programs of 32 bits are found elsewhere.
  std::optional<std::string> Searched(const std::string& name, uint32_t width);

 private:
  void ReadLogonSessions();
  void ReadDevices();

  CMachine& m_machine;
  CWindowsProcesses& m_windows;
  BlockReader m_reader;
  std::optional<uint32_t> m_callerSession;
  std::map<uint32_t, std::optional<uint32_t>> m_sessionOfProcess;
  std::optional<std::map<uint32_t, std::string>> m_sidOfSession;  // made at the first need
  std::map<std::string, std::optional<std::string>> m_accountOfSid;
  std::optional<std::vector<std::pair<std::string, std::string>>> m_drives;  // device, drive
};

// Whether a path is a mere name.
inline bool HasFolder(const std::string& path) {
  return path.find_first_of("\\/:") != std::string::npos;
}
// What follows the last separator.
inline std::string FilePart(const std::string& path) {
  return path.substr(path.find_last_of("\\/:") + 1);
}
// Nothing where 32 bits cannot hold it.
inline std::optional<uint32_t> KilobytesOf(uint64_t bytes) {
  const uint64_t kilobytes = bytes >> 10;
  if (kilobytes > UINT32_MAX) return std::nullopt;
  return static_cast<uint32_t>(kilobytes);
}

}  // namespace kestra
