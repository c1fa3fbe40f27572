// What a SELECT makes of the rows of its FROM clause.
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"
#include "query/rows/FromResult.h"

namespace kestra {
namespace {

// Evaluates the FROM clause; keeps an Error that has a message.
bool ReadFrom(Value& out, ParseNode& node, size_t symbol) {
  return Child(node, out, symbol) || FailKeepingMessage(out);
}

}  // namespace

bool RowsOfSource(Value& out, ParseNode& node) {
  Value alias;
  if (!Child(node, alias, 1)) return Fail(out);
  Value fromResult;
  if (!ReadFrom(fromResult, node, 3)) {
    out = std::move(fromResult);
    return false;
  }
  return RowsOf(out, fromResult, alias.asString());
}

bool ValuePerRow(Value& out, ParseNode& node) {
  Value fromResult;
  if (!ReadFrom(fromResult, node, 2)) {
    out = std::move(fromResult);
    return false;
  }
  const CFromReader reader(fromResult);
  if (!reader.IsValid()) return Fail(out);
  auto values = MakeRef<ValueVector>();
  values->Reserve(reader.RowCount());
  for (size_t r = 0; r < reader.RowCount(); ++r) {
    if (node.Context->IsCancelled()) return Fail(out);
    if (!EvalOnRow(out, r, reader, node, 1)) return FailKeepingMessage(out);
    if (out.IsAny()) return true;
    values->Append(std::move(out));
  }
  out.SetVector(std::move(values));
  return true;
}

bool FirstRowValue(Value& out, ParseNode& node) {
  Value fromResult;
  if (!ReadFrom(fromResult, node, 2)) {
    out = std::move(fromResult);
    return false;
  }
  if (fromResult.IsUndefined() || fromResult.IsAny()) {
    out = std::move(fromResult);
    return true;
  }
  const CFromReader reader(fromResult);
  if (!reader.IsValid() || reader.RowCount() == 0) return Fail(out);
  return EvalOnRow(out, 0, reader, node, 1);
}

}  // namespace kestra
