// The value of a column: the parameter of the row that is bound now.
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"
#include "query/parse/Predicates.h"

namespace kestra {
namespace {

// The row that an alias stands for; without an alias the one bound last. Null when there is none.
CVDiagItem* FindRow(const QueryContext& context, std::string_view alias) {
  if (alias.empty()) return context.Scope.empty() ? nullptr : context.Scope.back().Item;
  for (const ScopeEntry& entry : context.Scope) {
    if (entry.Alias == alias) return entry.Item;
  }
  return nullptr;
}

// The alias of a column: the token of its prefix, or nothing.
std::string_view AliasOf(const ParseNode& node) {
  const ParseNode* pAlias = node.ChildNode(0);
  if (!pAlias || pAlias->IsEmptyRule()) return {};
  return node.Context->Tokens[pAlias->Children[0].position].text;
}

}  // namespace

bool ColumnValue(Value& out, ParseNode& node) {
  QueryContext& context = *node.Context;
  const std::string_view alias = AliasOf(node);
  CVDiagItem* pItem = FindRow(context, alias);
  if (!pItem) {
    if (alias.empty()) return Fail(out);
    out.SetAny();  // the source of that alias is not bound yet
    return true;
  }
  const size_t position = node.Children[1].position;
  const ColumnBinding& binding = context.Predicates->Column(position);
  const std::string_view name = context.Tokens[position].text;
  const bool isOwnClass =
      binding.pClass && pItem->Params.Defs().get() == binding.pClass->Params.get();
  DiagParam* pParam =
      isOwnClass ? pItem->Params.Find(*binding.pDef) : pItem->Params.Find(name, true);
  if (pParam) {
    out.SetParameter(Ref<DiagParam>(pParam));
    return true;
  }
  // A declared property that this item does not have is NULL.
  const Ref<DiagClass> itemClass = isOwnClass ? nullptr : pItem->GetTypeInfo();
  if (!isOwnClass && (!itemClass || !itemClass->Params->Find(name, true))) return Fail(out);
  out.Clear();
  return true;
}

}  // namespace kestra
