// CModuleInitThread: fills one module ahead of the query that will ask for it. It tells nobody of
// the end: a query that reaches the module meanwhile waits on its lock and finds it filled.
#pragma once

#include "VLib/src/threads/Thread.h"
#include "model/classes/Module.h"
#include "platform/os/CurrentTermination.h"

namespace kestra {

class CModuleInitThread : public CVThread {
 public:
  explicit CModuleInitThread(Ref<DiagModule> module) : m_poModule(std::move(module)) {}

 protected:
  void Run() override {
    QueryMessage message(StopEvent(), false);
    const os::CTerminationScope scope(message.TerminationEvent());
    const CAutoInterruptibleLock lock(m_poModule->Lock(), message.TerminationEvent());
    if (!lock.IsHeld() || m_poModule->IsInitialized) return;
    message.Notes = MakeRef<CFillNotes>();
    m_poModule->InitFromMachine(true, false, message);
  }

 private:
  const Ref<DiagModule> m_poModule;
};

}  // namespace kestra
