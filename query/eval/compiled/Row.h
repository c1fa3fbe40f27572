// The values of a select list, for many rows.
#pragma once

#include <memory>
#include <vector>

#include "query/eval/compiled/Operand.h"

namespace kestra {

class CCompiledRow {
 public:
  // For symbol i of node: one expression, or a list that makes a Vector of each row.
  CCompiledRow(ParseNode& node, size_t symbol, const CScopeShape& shape);

  // What the symbol's action makes of the rows that are bound. False for a failure, whose Error
  // stands in out.
  bool Read(QueryContext& context, Value& out) const;

 private:
  // Unknown: the action has to be asked.
  Known ReadOperands(QueryContext& context, Value& out) const;

  ParseNode& m_node;
  const size_t m_symbol;
  bool m_isList = false;
  std::vector<CCompiledOperand> m_operands;  // none: it is left to the action
};

}  // namespace kestra
