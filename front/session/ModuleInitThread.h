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
    // The session looks at ended threads now and then only; the content is not to wait for that.
    const Ref<DiagModule> module = std::move(m_poModule);
    QueryMessage message(StopEvent(), false);
    const os::CTerminationScope scope(message.TerminationEvent());
    const CAutoInterruptibleLock lock(module->Lock(), message.TerminationEvent());
    if (!lock.IsHeld() || module->IsInitialized) return;
    message.Notes = MakeRef<CFillNotes>();
    module->InitFromMachine(true, false, message);
  }

 private:
  Ref<DiagModule> m_poModule;  // until the thread runs
};

}  // namespace kestra
