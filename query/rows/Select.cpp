// What a SELECT makes of the rows of its FROM clause.
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"
#include "query/rows/FromResult.h"
#include "query/rows/repeated/Repeats.h"

namespace kestra {
namespace {

// Fewer rows than these are not worth a preparation.
constexpr size_t kFewRows = 8;

// Evaluates the FROM clause; keeps an Error that has a message.
bool ReadFrom(Value& out, ParseNode& node, size_t symbol) {
  return Child(node, out, symbol) || FailKeepingMessage(out);
}

// The source of a scalar sub-select, if its items are listed by now.
CRepeatedSource* ListedSourceOf(const ParseNode& select, ParseNode*& pFilter) {
  const ParseNode& from = *select.ChildNode(2);
  const ParseNode* pBody = from.ChildNode(1);
  if (pBody->Rule->Action != RunSourceLimit2) return nullptr;
  pFilter = OpenFilterOf(from.ChildNode(2));
  return select.Context->Repeats->ListedSourceAt(*pBody);
}

// The short way to the value of the only row, without a FromResult.
bool ValueOfListed(Value& out, ParseNode& select, CRepeatedSource& source, ParseNode* pFilter) {
  if (source.Run(out, pFilter, 2) != CRepeatedSource::Outcome::Done) return FailKeepingMessage(out);
  if (!source.Decided()) {
    out.SetAny();
    return true;
  }
  return source.Found().size() == 1 ? source.ValueOfFound(out, select, 1) : Fail(out);
}

bool RunFirstRowValue(Value& out, ParseNode& node) {
  ParseNode* pFilter = nullptr;
  if (CRepeatedSource* pSource = ListedSourceOf(node, pFilter))
    return ValueOfListed(out, node, *pSource, pFilter);
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
  std::unique_ptr<CCompiledRow> pRow;
  for (size_t r = 0; r < reader.RowCount(); ++r) {
    if (node.Context->IsCancelled()) return Fail(out);
    const CBoundRow bound(reader, *node.Context, r);
    if (r == kFewRows && node.Context->UsesShortcuts)
      pRow = std::make_unique<CCompiledRow>(node, 1, CScopeShape(node.Context->Scope));
    if (!(pRow ? pRow->Read(*node.Context, out) : Child(node, out, 1)))
      return FailKeepingMessage(out);
    if (out.IsAny()) return true;
    values->Append(std::move(out));
  }
  out.SetVector(std::move(values));
  return true;
}

bool FirstRowValue(Value& out, ParseNode& node) {
  return node.Context->Repeats->RunSelect(out, node, RunFirstRowValue);
}

}  // namespace kestra
