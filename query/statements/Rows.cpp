// DELETE, UPDATE and EXECUTE Action: they find their rows as SELECT does and call an operation of
// each row's item, in order. The first that fails ends the statement; what is done stays done.
#include "query/eval/Actions.h"
#include "query/rows/Arguments.h"
#include "query/statements/ChangedModules.h"
#include "query/statements/Statement.h"

namespace kestra {
namespace {

bool DeleteItems(Value& out, ParseNode& node, const Value& rows) {
  const ValueVector& items = rows.asVector();
  CChangedModules changed(*node.Context);
  for (size_t r = 0; r < items.Count(); ++r) {
    CVDiagItem& item = *items[r].asVDIagItem();
    changed.Add(item);
    if (!item.Delete(*node.Context->Message)) return FailWithMessage(out, node);
  }
  return CountResult(out, items.Count());
}

// Runs a target source with the statement's own WHERE open, as FROM does.
bool ReadTarget(Value& out, ParseNode& node, size_t sourceSymbol, size_t whereSymbol,
                Value& fromResult) {
  const CFilterScope scope(*node.Context, node.ChildNode(whereSymbol));
  if (Child(node, fromResult, sourceSymbol)) return RowsOf(out, fromResult, {});
  out = std::move(fromResult);
  return FailKeepingMessage(out);
}

// The arguments may read the row's columns, so they are evaluated anew for each row.
bool UpdateItems(Value& out, ParseNode& node, const Value& rows, const Value& fromResult) {
  constexpr size_t kArgumentsSymbol = 3;
  const CFromReader reader(fromResult);
  const ValueVector& items = rows.asVector();
  CChangedModules changed(*node.Context);
  for (size_t r = 0; r < items.Count(); ++r) {
    if (!EvalOnRow(out, r, reader, node, kArgumentsSymbol)) return FailKeepingMessage(out);
    if (!out.IsVector()) return Fail(out);
    const Value pairs = out;
    CVDiagItem& item = *items[r].asVDIagItem();
    const Ref<DiagClass> diagClass = item.GetTypeInfo();
    if (!diagClass) return Fail(out);
    DiagParams params{Ref<const DiagParamDefs>(diagClass->Params)};
    if (!ApplyArguments(out, pairs.asVector(), params)) return false;
    changed.Add(item);
    if (!item.Update(params, *node.Context->Message)) return FailWithMessage(out, node);
  }
  return CountResult(out, items.Count());
}

}  // namespace

bool DeleteRows(Value& out, ParseNode& node) {
  Value fromResult;
  if (!ReadTarget(out, node, 1, 2, fromResult)) return false;
  return DeleteItems(out, node, Value(out));
}

bool DeleteRowsOfAlias(Value& out, ParseNode& node) {
  Value fromResult;
  if (!ReadRows(out, node, 2, TextOf(node, 1), fromResult)) return false;
  return DeleteItems(out, node, Value(out));
}

bool UpdateRows(Value& out, ParseNode& node) {
  Value fromResult;
  if (!ReadTarget(out, node, 1, 4, fromResult)) return false;
  return UpdateItems(out, node, Value(out), fromResult);
}

bool UpdateRowsOfAlias(Value& out, ParseNode& node) {
  Value fromResult;
  if (!ReadRows(out, node, 4, TextOf(node, 1), fromResult)) return false;
  return UpdateItems(out, node, Value(out), fromResult);
}

bool ExecuteAction(Value& out, ParseNode& node) {
  constexpr size_t kRowsSymbol = 3, kNameSymbol = 5, kArgumentsSymbol = 6;
  std::string name;
  if (const Operand read = ReadString(node, out, kNameSymbol, name); read != Operand::Ready) {
    return EndOperator(read);
  }
  Value rows;
  if (!Child(node, rows, kRowsSymbol) || !rows.IsVector()) {
    out = std::move(rows);
    return FailKeepingMessage(out);
  }
  const ValueVector& items = rows.asVector();
  if (items.Count() == 0) return CountResult(out, 0);
  CVDiagItem& first = *items[0].asVDIagItem();
  const Ref<DiagActions> actions = first.GetActions();
  const DiagAction* pAction = actions ? actions->Find(name, false) : nullptr;
  if (!pAction) return FailWithMessage(out, node, 11014, {first.GetName(), name});
  DiagParams params(pAction->Args->Defs());
  // Arguments that cannot be evaluated leave the action undone and still give the count.
  if (!Child(node, out, kArgumentsSymbol)) return CountResult(out, items.Count());
  if (out.IsVector()) {
    const Value pairs = out;
    if (pAction->Args->Count() == 0) {
      return FailWithMessage(out, node, 10008, {first.GetName(), name});
    }
    if (!ApplyArguments(out, pairs.asVector(), params)) return false;
  }
  CChangedModules changed(*node.Context);
  for (size_t r = 0; r < items.Count(); ++r) {
    CVDiagItem& item = *items[r].asVDIagItem();
    changed.Add(item);
    if (!item.Execute(name, &params, *node.Context->Message)) return FailWithMessage(out, node);
  }
  return CountResult(out, items.Count());
}

}  // namespace kestra
