// What the value of a part of the parse tree depends on.
#pragma once

#include <string_view>
#include <vector>

#include "query/parse/ParseTree.h"

namespace kestra {

struct NodeNeeds {
  bool isSimple = true;  // nothing but operators, functions of their operands, literals and columns
  bool hasCall = false;  // runs code of a library, which may do anything
  std::vector<const ParseNode*> columns;

  bool IsConstant() const { return isSimple && columns.empty(); }
};
NodeNeeds NeedsOf(const ParseNode& node);

// The alias that a column is written with; empty for none.
std::string_view AliasOfColumn(const ParseNode& column);

// Whether a SELECT that gives one value gives the same one each time that its query asks for it: it
// names no row from outside, reads modules only, and no clock, chance or library has part in it.
bool IsSteadySelect(const ParseNode& select);

// Whether a node stands in a statement that changes something. What is read before such a change
// is not what is read behind it.
bool IsInChangingStatement(const ParseNode& node);

}  // namespace kestra
