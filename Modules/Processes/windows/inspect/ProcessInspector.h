// Fills one record by opening its process. What the system refuses stays without value, or has the
// word that stands for it; nothing that a process is or does makes the rest of its record fail.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Modules/Processes/windows/inspect/ProcessEnumContext.h"
#include "platform/machine/Processes.h"

namespace kestra {

// One thread at a time, with the context that it works for.
class CProcessInspector {
 public:
  struct Opened {
    std::unique_ptr<CProcessHandle> handle{};  // null: it may not be opened
    bool mayRead = false;                      // its memory too
    SystemError refusal = kErrorSuccess;       // why not
  };

  // flags: kProcessWant..., kProcessAllSessions, kProcessRepairPath. listedAt is a moment before
  // the list was taken, in 100 ns since 1601; it counts for records without StartTime.
  CProcessInspector(ProcessEnumContext& context, uint32_t flags, uint64_t listedAt = UINT64_MAX)
      : m_context(context), m_flags(flags), m_listedAt(listedAt) {}

  // Whether the process is to be listed: unless all sessions are wanted, those of the caller's
  // session and of the services' are, as far as the system tells.
  bool IsListed(uint32_t pid);
  // Opens the process that the record is of, and fills the record. One that has ended since it was
  // listed is as one that may not be opened, though its number may be another's by now: that has
  // another start time than the record, or started after listedAt. StartTime then stays as it was.
  //
  // User is the token's account or its SID's text, also where somebody else is logged on to the
  // session: a program of SYSTEM's in a user's session is SYSTEM's. Only where there is no token to
  // look at is it the session's user.
  void Inspect(ProcessRecord& record);

  // The steps of Inspect. What the record has a value for already is kept.
  Opened Open(uint32_t pid);
  void Fill(const Opened& opened, ProcessRecord& record);

 private:
  bool Wants(uint32_t flag) const { return (m_flags & flag) != 0; }
  bool IsSame(CProcessHandle& process, ProcessRecord& record) const;
  void FillFromBlock(CProcessHandle& process, ProcessRecord& record);
  void FillPath(CProcessHandle& process, std::string path, ProcessRecord& record);
  void RepairPath(ProcessRecord& record);
  std::string UserOf(CProcessHandle& process, uint32_t pid);
  std::string UserOfUnopened(uint32_t pid);

  ProcessEnumContext& m_context;
  const uint32_t m_flags;
  const uint64_t m_listedAt;
};

}  // namespace kestra
