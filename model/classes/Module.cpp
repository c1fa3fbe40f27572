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

}  // namespace kestra
