#include "query/rows/FromResult.h"

#include <algorithm>

#include "query/eval/Actions.h"
#include "query/eval/Operands.h"

namespace kestra {

CFromReader::CFromReader(const Value& fromResult) {
  if (!fromResult.IsVector()) return;
  const ValueVector& sources = fromResult.asVector();
  for (size_t i = 0; i < sources.Count(); ++i) {
    const ValueVector& pair = sources[i].asVector();
    if (pair.Count() != 2 || !pair[1].IsVector()) return;
    std::string buffer;
    m_sources.push_back({pair[0].asText(buffer), &pair[1].asVector()});
  }
  m_isValid = !m_sources.empty();
}

size_t CFromReader::FindAlias(std::string_view alias) const {
  const auto found = std::find_if(m_sources.begin(), m_sources.end(),
                                  [&](const SourceRows& source) { return source.alias == alias; });
  return static_cast<size_t>(found - m_sources.begin());
}

void CFromReader::BindRow(QueryContext& context, size_t r) const {
  for (const SourceRows& source : m_sources) {
    context.Scope.push_back({source.alias, (*source.pRows)[r].asVDIagItem()});
  }
}

void CFromReader::UnbindRow(QueryContext& context) const {
  context.Scope.resize(context.Scope.size() - m_sources.size());
}

bool EvalOnRow(Value& out, size_t r, const CFromReader& reader, ParseNode& node, size_t symbol) {
  const CBoundRow bound(reader, *node.Context, r);
  return Child(node, out, symbol);
}

void AppendSource(ValueVector& fromResult, std::string alias, Value rows) {
  auto pair = MakeRef<ValueVector>();
  Value element;
  element.SetString(std::move(alias));
  pair->Append(std::move(element));
  pair->Append(std::move(rows));
  Value source;
  source.SetVector(std::move(pair));
  fromResult.Append(std::move(source));
}

bool RowsOf(Value& out, const Value& fromResult, std::string_view alias) {
  const CFromReader reader(fromResult);
  if (!reader.IsValid()) return Fail(out);
  const size_t index = alias.empty() ? 0 : reader.FindAlias(alias);
  if (index == reader.SourceCount() || (alias.empty() && reader.SourceCount() > 1)) {
    return Fail(out);
  }
  out.SetVector(Ref<ValueVector>(reader.Source(index).pRows));
  return true;
}

bool IsOnlyCounted(const ParseNode& body) {
  const ParseNode* pFrom = body.Parent;
  return pFrom && pFrom->Rule->Action == From && pFrom->Parent &&
         pFrom->Parent->Rule->Action == CountOfRows;
}

ParseNode* OpenFilterOf(ParseNode* pWhere) {
  const bool isEmpty = !pWhere || (pWhere->Is(NonTerminal::OptWhere) && pWhere->IsEmptyRule());
  return isEmpty ? nullptr : pWhere;
}

CFilterScope::CFilterScope(QueryContext& context, ParseNode* pWhere) : m_context(context) {
  m_context.FilterStack.push_back(OpenFilterOf(pWhere));
}

bool TestFilter(ParseNode* pFilter, bool& passes, bool& decided) {
  passes = true;
  if (!pFilter) return true;
  Value verdict;
  if (!RunNode(*pFilter, verdict)) return false;
  if (verdict.IsBoolean()) {
    passes = verdict.asBool();
  } else if (verdict.IsUndefined()) {
    passes = false;
  } else if (verdict.IsAny()) {
    decided = false;
  } else {
    return false;
  }
  return true;
}

}  // namespace kestra
