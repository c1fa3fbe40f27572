// The module Processes: what runs on the machine, one item of the class Process per process and
// per 16-bit task.
//
// Filling reads the machine's process list once; what may not be read of a process stays unset.
// One that ends meanwhile makes no item on Linux; on Windows its item has what the list itself says
// of it. A list that cannot be taken, or that ends in an error, gives a failed fill with the system
// error in the message. A machine without processes to show gives no items, and success.
#pragma once

#include "model/classes/Module.h"

namespace kestra {

extern const ClassDecl kProcessesModule;
extern const ClassDecl kProcessClass;

class CProcessesModule : public DiagModule {
 public:
  // How long a process that was asked to close may take before it is ended by force.
  static constexpr uint32_t kCloseTimeOutMs = 10000;

  CProcessesModule(Ref<DiagClass> diagClass, Ref<CMachine> machine,
                   uint32_t closeTimeOutMs = kCloseTimeOutMs)
      : DiagModule(std::move(diagClass), std::move(machine)), m_closeTimeOutMs(closeTimeOutMs) {}

  using DiagModule::Init;
  bool Init(bool bInitChild, QueryMessage& message) override;

 private:
  const uint32_t m_closeTimeOutMs;
};

}  // namespace kestra
