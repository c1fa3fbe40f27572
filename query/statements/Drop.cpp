// DROP MODULE: forgets what modules have been filled with, in memory and in the cache. It changes
// nothing on the machine and needs no permission.
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"
#include "query/rows/Arguments.h"
#include "query/statements/Statement.h"

namespace kestra {
namespace {

// The number of modules dropped is the value; entries of the cache that cannot be removed fail the
// statement.
bool EndDrop(Value& out, ParseNode& node, size_t count, std::string_view name,
             const DiagParams* pArgs) {
  ResultCache* pCache = node.Context->Root->Cache();
  if (pCache && !pCache->ClearEntries(name, pArgs, *node.Context->Message)) {
    return FailWithMessage(out, node);
  }
  out.SetNumber(static_cast<int32_t>(count));
  return true;
}

}  // namespace

bool DropAllModules(Value& out, ParseNode& node) {
  return EndDrop(out, node, node.Context->Root->DropAll(), "*", nullptr);
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
    return EndDrop(out, node, root.DropModules(name, nullptr), name, nullptr);
  }
  const DiagClass* pClass = FindModuleClass(node.Context->RootClass.get(), name);
  if (!pClass) return Fail(out);
  DiagParams given(pClass->Args->Defs());
  if (!ApplyArguments(out, pairs.asVector(), given)) return FailKeepingMessage(out);
  DiagParams args(pClass->Args->Defs());
  for (size_t i = 0; i < pClass->Args->Count(); ++i) {
    args.Set(Ref<DiagParam>(pClass->Args->Get(i)), false);
  }
  for (size_t i = 0; i < given.Count(); ++i) args.Set(Ref<DiagParam>(given.Get(i)), true);
  return EndDrop(out, node, root.DropModules(name, &args), pClass->Name, &args);
}

}  // namespace kestra
