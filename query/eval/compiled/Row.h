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

  // What the symbol's action would make of the rows that are bound. False: it has to be asked.
  bool Read(QueryContext& context, Value& out) const;

 private:
  bool m_isList = false;
  std::vector<CCompiledOperand> m_operands;  // none: it is left to the action
};

}  // namespace kestra
