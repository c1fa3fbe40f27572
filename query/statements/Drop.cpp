// DROP MODULE: forgets what modules have been filled with. It changes nothing on the machine and
// needs no permission.
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"
#include "query/rows/Arguments.h"

namespace kestra {

bool DropAllModules(Value& out, ParseNode& node) {
  out.SetNumber(static_cast<int32_t>(node.Context->Root->DropAll()));
  return true;
}

bool DropModule(Value& out, ParseNode& node) {
  DiagRoot& root = *node.Context->Root;
  std::string name;
  if (const Operand read = ReadString(node, out, 2, name); read != Operand::Ready) {
    return EndOperator(read);
  }
  if (!Child(node, out, 3)) return FailKeepingMessage(out);
  const Value pairs = out;
  if (pairs.asVector().Count() == 0) {
    out.SetNumber(static_cast<int32_t>(root.DropModules(name, nullptr)));
    return true;
  }
  const DiagClass* pClass = FindClass(node.Context->RootClass.get(), name);
  if (!pClass) return Fail(out);
  DiagParams given(pClass->Args->Defs());
  if (!ApplyArguments(out, pairs.asVector(), given)) return FailKeepingMessage(out);
  DiagParams args(pClass->Args->Defs());
  for (size_t i = 0; i < pClass->Args->Count(); ++i) {
    args.Set(Ref<DiagParam>(pClass->Args->Get(i)), false);
  }
  for (size_t i = 0; i < given.Count(); ++i) args.Set(Ref<DiagParam>(given.Get(i)), true);
  out.SetNumber(static_cast<int32_t>(root.DropModules(name, &args)));
  return true;
}

}  // namespace kestra
