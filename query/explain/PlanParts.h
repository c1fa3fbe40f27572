// What the nodes of a parse tree are for one who explains it.
#pragma once

#include <set>
#include <string_view>
#include <vector>

#include "query/parse/ParseTree.h"

namespace kestra {

enum class PlanPart {
  None,
  Select,     // any form of SELECT; its last symbol is the FROM clause
  From,       // a FROM clause
  Source,     // a module or built-in source, without alias
  Change,     // a statement that changes the machine
  Drop,       // DROP MODULE
  Procedure,  // CREATE PROCEDURE
  Call,       // CALLDLL
};
PlanPart PartOf(const ParseNode& node);

// The parts below a node, in the order of the text, without those below them in turn.
std::vector<const ParseNode*> PartsBelow(const ParseNode& node);

// One source of a FROM clause.
struct PlanSource {
  const ParseNode* pSource;  // a PlanPart::Source
  std::string_view alias;    // empty for none
  const ParseNode* pJoin;    // the join that it is the right side of; null for the first source
  bool isJoinedByParent;     // else on a condition
};
// The sources of a FROM clause, or of the target of a statement, in the order of the text.
std::vector<PlanSource> SourcesOf(const ParseNode& body);

// The aliases that the columns below a node name and no FROM clause below it declares.
std::set<std::string_view> OuterAliases(const ParseNode& node);

}  // namespace kestra
