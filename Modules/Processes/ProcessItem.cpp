#include "Modules/Processes/ProcessItem.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Modules/Processes/windows/OldTasks.h"
#include "Modules/Processes/windows/SystemProcesses.h"
#include "Modules/Processes/windows/WindowsProcessList.h"
#include "Modules/VersionProperties.h"
#include "VLib/src/system/OsKind.h"
#include "VLib/src/text/Text.h"
#include "platform/machine/SystemFacts.h"

namespace kestra {
namespace {

constexpr uint32_t kNoArchitecture = 0xFFFFFFFF;

// The place among the options of ProcessArchitecture.
uint32_t ArchitectureIndex(uint32_t width) {
  switch (width) {
    case 16:
      return 0;
    case 32:
      return 1;
    case 64:
      return 2;
    default:
      return kNoArchitecture;
  }
}

constexpr VersionProperty kVersionProperties[] = {
    {"Description", "FileDescription"}, {"FileVersion", "FileVersion"},
    {"ProductName", "ProductName"},     {"ProductVersion", "ProductVersion"},
    {"CompanyName", "CompanyName"},
};

// Whether a path is one on a drive, "C:\...". The process itself has written it where it was read
// from: a path of a server or of a device would have whoever asks log on there, or open what is no
// file.
bool IsOnDrive(const std::string& path) {
  return path.size() > 3 && IsAsciiLetter(path[0]) && path[1] == ':' && path[2] == '\\';
}

// Appends to an item's values, leaving out what has none.
class CSetter {
 public:
  explicit CSetter(DiagParams& params) : m_params(params) {}
  void Number(const DiagParamDef* pDef, const std::optional<uint32_t>& number) {
    if (number) m_params.Set(MakeRef<DiagParam>(pDef, *number), false);
  }
  void NumberAboveZero(const DiagParamDef* pDef, const std::optional<uint32_t>& number) {
    if (number && *number > 0) Number(pDef, number);
  }
  void Text(const DiagParamDef* pDef, std::optional<std::string>&& text) {
    if (text && !text->empty()) {
      m_params.Set(MakeRef<DiagParam>(pDef, *std::move(text)), false);
    }
  }

 private:
  DiagParams& m_params;
};

}  // namespace

ProcessDefs::ProcessDefs(const DiagParamDefs& defs)
    : pPID(defs.Find("PID", false)),
      pParentProcessID(defs.Find("ParentProcessID", false)),
      pThreadID(defs.Find("ThreadID", false)),
      pImageName(defs.Find("ImageName", false)),
      pFilePath(defs.Find("FilePath", false)),
      pMemoryUsage(defs.Find("MemoryUsage", false)),
      pHandleCount(defs.Find("HandleCount", false)),
      pUser(defs.Find("User", false)),
      pCommandLine(defs.Find("CommandLine", false)),
      pProcessArchitecture(defs.Find("ProcessArchitecture", false)),
      pWindowTitle(defs.Find("WindowTitle", false)) {}

CProcessItem::CProcessItem(Ref<DiagClass> diagClass, Ref<CMachine> machine, uint32_t closeTimeOutMs)
    : CFilledItem(std::move(diagClass)),
      m_poMachine(std::move(machine)),
      m_closeTimeOutMs(closeTimeOutMs) {}

void CProcessItem::Fill(ProcessRecord&& record, uint32_t wanted, const ProcessDefs& defs,
                        const os::CWaitable* pTermination) {
  m_startTime = record.StartTime;
  m_taskHostPID = record.PID;
  m_taskId = record.TaskId;
  Params.Clear();
  Params.Reserve(ProcessDefs::kCount);
  CSetter set(Params);

  const bool isTask = record.ThreadID.has_value();
  const bool isWindows = m_poMachine->System().Family() == SystemFamily::Windows;
  const bool isSystems = isWindows && !isTask && record.PID <= kLastSystemPID;
  if (!isTask) set.Number(defs.pPID, record.PID);
  if (isSystems) {
    set.Text(defs.pImageName, ProcessName(record.PID, std::move(record.ImageName)));
    IsInitialized = true;
    return;
  }
  if (!isTask) set.Number(defs.pParentProcessID, record.ParentPID);
  set.Number(defs.pThreadID, record.ThreadID);
  set.Text(defs.pImageName, std::move(record.ImageName));
  const std::string path = record.FilePath.value_or(std::string());
  set.Text(defs.pFilePath, std::move(record.FilePath));
  // What the kernel of Linux runs is never a program of Windows, so no file is opened there.
  if (isWindows && IsOnDrive(path)) {
    SetVersionProperties(Params, kVersionProperties, *m_poMachine, path, pTermination);
  }
  set.NumberAboveZero(defs.pMemoryUsage, record.WorkingSetKB);
  set.NumberAboveZero(defs.pHandleCount, record.HandleCount);
  if (wanted & kProcessWantUser) set.Text(defs.pUser, std::move(record.User));
  if (wanted & kProcessWantCommandLine) {
    set.Text(defs.pCommandLine, std::move(record.CommandLine));
  }
  const uint32_t architecture = ArchitectureIndex(record.Width);
  if (architecture != kNoArchitecture) set.Number(defs.pProcessArchitecture, architecture);
  set.Text(defs.pWindowTitle, std::move(record.WindowTitle));
  IsInitialized = true;
}

bool CProcessItem::OnDelete(QueryMessage& message) {
  const DiagParam* pPID = Params.Find("PID", false);
  const DiagParam* pThread = Params.Find("ThreadID", false);
  if (pPID ? pPID->DWordValue <= kLastSystemPID : !pThread) {
    message.RaiseMessage(11000, {"PID"});
    return false;
  }
  if (pThread && pThread->DWordValue == 0) {
    message.RaiseMessage(11000, {"ThreadID"});
    return false;
  }
  return pPID ? EndProcess(pPID->DWordValue, message) : EndTask(pThread->DWordValue, message);
}

bool CProcessItem::EndProcess(uint32_t pid, QueryMessage& message) {
  CProcesses* pProcesses = m_poMachine->Processes();
  if (!pProcesses) return message.Fail(kErrorCallNotImplemented);
  // Every process that may be looked at has a start time, but for those of the 9x family. Without
  // one nobody can tell whether the number still means the process that was listed.
  const bool isLinux = m_poMachine->System().Family() == SystemFamily::Linux;
  if (m_startTime == 0 && (isLinux || IsNtFamily(*m_poMachine))) {
    return message.Fail(kErrorInvalidHandle);
  }
  std::unique_ptr<CProcess> process;
  if (pProcesses->Open(pid, m_startTime, process) != kErrorSuccess || !process) {
    return message.Fail(kErrorInvalidHandle);
  }
  if (const SystemError error = process->RequestClose(); error != kErrorSuccess) {
    // One that ended by itself before it could be asked is what was wanted.
    return os::WaitAny({process.get()}, 0) == 0 || message.Fail(error);
  }
  switch (os::WaitAny({message.TerminationEvent(), process.get()}, m_closeTimeOutMs)) {
    case 0:
      return message.Fail(kErrorCancelled);
    case 1:
      return true;
    case os::kWaitTimeOut: {
      const SystemError error = process->Terminate();
      return error == kErrorSuccess || message.Fail(error);
    }
    default:  // nothing is known of the process now, so it is not ended by force
      return message.Fail(kErrorInvalidHandle);
  }
}

// Only Windows of the NT family with 32 bits has tasks that can be ended one by one.
bool CProcessItem::EndTask(uint32_t threadId, QueryMessage& message) {
  constexpr uint32_t kNarrowSystem = 1;
  CProcesses* pProcesses = m_poMachine->Processes();
  CWindowsProcesses* pWindows = pProcesses ? pProcesses->Windows() : nullptr;
  if (!pWindows || !IsNtFamily(*m_poMachine) || GetBitness(*m_poMachine) != kNarrowSystem) {
    return message.Fail(kErrorCallNotImplemented);
  }
  const SystemError error = EndOldTask(*pWindows, {m_taskHostPID, threadId, m_taskId},
                                       m_closeTimeOutMs, message.TerminationEvent());
  return error == kErrorSuccess || message.Fail(error);
}

}  // namespace kestra
