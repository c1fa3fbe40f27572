#include "model/classes/Module.h"

namespace kestra {
namespace {

Ref<DiagParams> CopyOf(const DiagParams& params) {
  auto copy = MakeRef<DiagParams>(params.Defs());
  for (size_t i = 0; i < params.Count(); ++i) {
    copy->Set(MakeRef<DiagParam>(*params.Get(i)), false);
  }
  return copy;
}

}  // namespace

DiagModule::DiagModule(Ref<DiagClass> diagClass, Ref<CMachine> machine)
    : CVDiagItem(diagClass->Params),
      Args(CopyOf(*diagClass->Args)),
      m_poClass(std::move(diagClass)),
      m_poMachine(std::move(machine)) {}

bool DiagModule::CachedInit(bool bInitChild, bool bForce, int32_t /*timeToLive*/, bool /*anyUser*/,
                            bool noRead, DiagRoot& /*root*/, QueryMessage& message) {
  CAutoInterruptibleLock lock(Lock(), message.TerminationEvent());
  if (!IsModule() || message.IsTerminated() || !lock.IsHeld()) return false;
  if (IsInitialized && !bForce) {
    if (!noRead || GetFillSource() != 2) return true;
    FromCache = false;
    return CVDiagItem::Init(bInitChild, true, message);
  }
  FromCache = false;
  return CVDiagItem::Init(bInitChild, bForce, message);
}

}  // namespace kestra
