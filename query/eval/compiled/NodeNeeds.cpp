#include "query/eval/compiled/NodeNeeds.h"

#include <algorithm>
#include <iterator>

#include "query/eval/Actions.h"
#include "query/parse/TreeWalk.h"

namespace kestra {
namespace {

// Their value follows from those of their children alone.
constexpr SemanticAction kSimpleActions[] = {FirstSymbol,
                                             SecondSymbol,
                                             FifthSymbol,
                                             EmptyString,
                                             EmptyVector,
                                             TrueValue,
                                             FalseValue,
                                             NumberMinusOne,
                                             NewVector,
                                             AppendToVector,
                                             NameAndValuePair,
                                             AddOrSubtract,
                                             MultiplyOrDivide,
                                             BitOperation,
                                             Complement,
                                             ColumnValue,
                                             IsNullFunction,
                                             TextToNumber,
                                             NumberToText,
                                             TextAsVersion,
                                             Length,
                                             DatePart,
                                             DateAdd,
                                             Concatenate,
                                             Substring,
                                             Right,
                                             Or,
                                             And,
                                             Not,
                                             IsNullTest,
                                             IsNotNullTest,
                                             BooleanCompareOf,
                                             CompareAsNumbers,
                                             CompareAsVersions,
                                             CompareAsDatimes,
                                             CompareAsStrings,
                                             Like,
                                             LikeWithEscape,
                                             In,
                                             NotIn};
// And those that a SELECT over modules is made of.
constexpr SemanticAction kSelectActions[] = {From,
                                             ScalarFrom,
                                             RunSource,
                                             RunSourceLimit2,
                                             RunSourceJoinMember,
                                             JoinByParent,
                                             JoinByParentLimit2,
                                             JoinByParentChained,
                                             JoinOnCondition,
                                             JoinOnConditionLimit2,
                                             JoinOnConditionChained,
                                             ModuleDescriptor,
                                             DescriptorWithAlias,
                                             FirstRowValue,
                                             CountOfRows,
                                             CountOfNonNull,
                                             NumberAggregateOf,
                                             StringAggregateOf,
                                             VersionAggregateOf,
                                             DatimeAggregateOf};

template <size_t count>
bool IsAmong(const SemanticAction (&actions)[count], SemanticAction action) {
  return std::find(std::begin(actions), std::end(actions), action) != std::end(actions);
}

const ParseNode& TopOf(const ParseNode& node) {
  const ParseNode* pNode = &node;
  while (pNode->Parent) pNode = pNode->Parent;
  return *pNode;
}

std::vector<std::string_view> DeclaredAliases(const ParseNode& top) {
  std::vector<std::string_view> aliases;
  WalkTree(top, [&](const ParseNode& node) {
    if (node.Rule->Action == DescriptorWithAlias) aliases.push_back(TokenOf(node, 1));
    return true;
  });
  return aliases;
}

}  // namespace

NodeNeeds NeedsOf(const ParseNode& top) {
  NodeNeeds needs;
  WalkTree(top, [&](const ParseNode& node) {
    const SemanticAction action = node.Rule->Action;
    if (action == ColumnValue) needs.columns.push_back(&node);
    if (action == CallDll || action == CallDllV) needs.hasCall = true;
    if (!IsAmong(kSimpleActions, action)) needs.isSimple = false;
    return true;
  });
  return needs;
}

std::string_view AliasOfColumn(const ParseNode& column) {
  const ParseNode* pAlias = column.ChildNode(0);
  if (!pAlias || pAlias->IsEmptyRule()) return {};
  return TokenOf(*pAlias, 0);
}

// An alias that is declared in two places may stand for either, so it counts as one from outside.
bool IsSteadySelect(const ParseNode& select) {
  bool isSteady = !IsInChangingStatement(select);
  std::vector<std::string_view> named;
  WalkTree(select, [&](const ParseNode& node) {
    const SemanticAction action = node.Rule->Action;
    isSteady = isSteady && (IsAmong(kSimpleActions, action) || IsAmong(kSelectActions, action));
    // Arguments are evaluated before their own source has rows.
    if (action == ModuleDescriptor && !NeedsOf(*node.ChildNode(1)).IsConstant()) isSteady = false;
    if (action == ColumnValue) {
      const std::string_view alias = AliasOfColumn(node);
      if (!alias.empty()) named.push_back(alias);
    }
    return isSteady;
  });
  if (!isSteady || named.empty()) return isSteady;
  const auto inside = DeclaredAliases(select);
  const auto all = DeclaredAliases(TopOf(select));
  return std::all_of(named.begin(), named.end(), [&](std::string_view alias) {
    return std::count(inside.begin(), inside.end(), alias) == 1 &&
           std::count(all.begin(), all.end(), alias) == 1;
  });
}

bool IsInChangingStatement(const ParseNode& node) {
  for (const ParseNode* pNode = &node; pNode; pNode = pNode->Parent) {
    if (pNode->Is(NonTerminal::ActiveStatement) || pNode->Is(NonTerminal::ProcedureDefinition))
      return true;
  }
  return false;
}

}  // namespace kestra
