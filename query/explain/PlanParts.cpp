#include "query/explain/PlanParts.h"

#include <algorithm>
#include <iterator>

#include "query/eval/Actions.h"
#include "query/parse/TreeWalk.h"

namespace kestra {
namespace {

struct PartRow {
  SemanticAction action;
  PlanPart part;
};
constexpr PartRow kParts[] = {
    {RowsOfSource, PlanPart::Select},
    {ValuePerRow, PlanPart::Select},
    {FirstRowValue, PlanPart::Select},
    {CountOfRows, PlanPart::Select},
    {CountOfNonNull, PlanPart::Select},
    {NumberAggregateOf, PlanPart::Select},
    {VersionAggregateOf, PlanPart::Select},
    {StringAggregateOf, PlanPart::Select},
    {DatimeAggregateOf, PlanPart::Select},
    {From, PlanPart::From},
    {ScalarFrom, PlanPart::From},
    {ModuleDescriptor, PlanPart::Source},
    {BuiltInDescriptor, PlanPart::Source},
    {InsertValuesUnderItem, PlanPart::Change},
    {InsertValues, PlanPart::Change},
    {InsertFromQueryUnderItems, PlanPart::Change},
    {InsertFromQuery, PlanPart::Change},
    {UpdateRows, PlanPart::Change},
    {UpdateRowsOfAlias, PlanPart::Change},
    {DeleteRows, PlanPart::Change},
    {DeleteRowsOfAlias, PlanPart::Change},
    {ExecuteAction, PlanPart::Change},
    {DropAllModules, PlanPart::Drop},
    {DropModule, PlanPart::Drop},
    {DefineProcedure, PlanPart::Procedure},
    {CallDll, PlanPart::Call},
    {CallDllV, PlanPart::Call},
};

bool IsJoinByParent(SemanticAction action) {
  return action == JoinByParent || action == JoinByParentLimit2 || action == JoinByParentChained;
}
bool IsJoinOnCondition(SemanticAction action) {
  return action == JoinOnCondition || action == JoinOnConditionLimit2 ||
         action == JoinOnConditionChained;
}

// The text of the token that a symbol is.
PlanSource SourceOf(const ParseNode* pNode, const ParseNode* pJoin) {
  std::string_view alias;
  if (pNode->Rule->Action == DescriptorWithAlias) {
    alias = TokenOf(*pNode, 1);
    pNode = pNode->ChildNode(0);
  }
  return {pNode, alias, pJoin, pJoin && IsJoinByParent(pJoin->Rule->Action)};
}

}  // namespace

PlanPart PartOf(const ParseNode& node) {
  const auto row = std::find_if(std::begin(kParts), std::end(kParts), [&](const PartRow& part) {
    return part.action == node.Rule->Action;
  });
  return row == std::end(kParts) ? PlanPart::None : row->part;
}

std::vector<const ParseNode*> PartsBelow(const ParseNode& node) {
  std::vector<const ParseNode*> parts;
  WalkTree(node, [&](const ParseNode& next) {
    if (&next == &node || PartOf(next) == PlanPart::None) return true;
    parts.push_back(&next);
    return false;
  });
  return parts;
}

std::vector<PlanSource> SourcesOf(const ParseNode& body) {
  std::vector<PlanSource> sources;
  const ParseNode* pNode = &body;
  for (; IsJoinByParent(pNode->Rule->Action) || IsJoinOnCondition(pNode->Rule->Action);
       pNode = pNode->ChildNode(0)) {
    sources.push_back(SourceOf(pNode->ChildNode(2), pNode));
  }
  // What runs the first source, around it.
  const bool isRun = PartOf(*pNode) == PlanPart::None && pNode->Rule->Action != DescriptorWithAlias;
  sources.push_back(SourceOf(isRun ? pNode->ChildNode(0) : pNode, nullptr));
  std::reverse(sources.begin(), sources.end());
  return sources;
}

std::set<std::string_view> OuterAliases(const ParseNode& node) {
  std::set<std::string_view> named, declared;
  WalkTree(node, [&](const ParseNode& next) {
    if (next.Rule->Action == ColumnValue) {
      const ParseNode* pAlias = next.ChildNode(0);
      if (pAlias && !pAlias->IsEmptyRule()) named.insert(TokenOf(*pAlias, 0));
    } else if (next.Rule->Action == DescriptorWithAlias) {
      declared.insert(TokenOf(next, 1));
    }
    return true;
  });
  for (const std::string_view alias : declared) named.erase(alias);
  return named;
}

}  // namespace kestra
