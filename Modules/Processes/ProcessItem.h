// An item of the class Process. It is filled from a record of the machine's process list when it is
// made, and keeps what it takes to find the same process again.
#pragma once

#include <cstdint>

#include "model/classes/Module.h"
#include "platform/machine/Processes.h"

namespace kestra {

// The declarations of the class Process, looked up once: a list has hundreds of processes.
struct ProcessDefs {
  const DiagParamDef* pPID;
  const DiagParamDef* pParentProcessID;
  const DiagParamDef* pThreadID;
  const DiagParamDef* pImageName;
  const DiagParamDef* pFilePath;
  const DiagParamDef* pMemoryUsage;
  const DiagParamDef* pHandleCount;
  const DiagParamDef* pUser;
  const DiagParamDef* pCommandLine;
  const DiagParamDef* pProcessArchitecture;
  const DiagParamDef* pWindowTitle;

  // How many values an item has at most.
  static constexpr size_t kCount = 11;

  explicit ProcessDefs(const DiagParamDefs& defs);
};

class CProcessItem : public CFilledItem {
 public:
  CProcessItem(Ref<DiagClass> diagClass, Ref<CMachine> machine, uint32_t closeTimeOutMs);

  // Sets the properties that the record has a value for. wanted is what the list was asked for; the
  // user and the command line are shown only if they were. On Windows nothing is known of the idle
  // process and of the kernel's (PID up to 4) but their names, and what the others run is looked at
  // for its version resource if its path is on a drive, unless pTermination (may be null) is
  // signalled.
  void Fill(ProcessRecord&& record, uint32_t wanted, const ProcessDefs& defs,
            const os::CWaitable* pTermination);

 protected:
  // Ends the process: it is asked to close, and ended by force if it has not done so in time.
  // A 16-bit task has its time to close, and is ended then.
  // - 11000 with "PID" for one of the system's own (below 5), with "ThreadID" for a task without;
  // - kErrorInvalidHandle if the process that was listed is not there any more, if nobody can tell
  //   whether it is the one, or if it may not be opened; kErrorAccessDenied on Linux, where opening
  //   needs no right, if it may not be signalled;
  // - kErrorInvalidFunction where the system cannot end a task, kErrorCallNotImplemented where it
  //   has none;
  // - kErrorCancelled if the query is cancelled meanwhile: the process is then left alone.
  // The item stays in its list until the next filling.
  bool OnDelete(QueryMessage& message) override;

 private:
  bool EndProcess(uint32_t pid, QueryMessage& message);
  bool EndTask(uint32_t threadId, QueryMessage& message);

  const Ref<CMachine> m_poMachine;
  const uint32_t m_closeTimeOutMs;
  uint64_t m_startTime = 0;
  uint32_t m_taskHostPID = 0;  // of a 16-bit task: the process that runs it
  uint16_t m_taskId = 0;       // likewise
};

}  // namespace kestra
