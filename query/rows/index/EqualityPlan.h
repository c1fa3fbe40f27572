// Whether a condition says that a column of the last source has the value of something that is
// known before: then an index of that column tells which of its rows are worth trying.
#pragma once

#include <optional>
#include <vector>

#include "query/eval/compiled/Condition.h"

namespace kestra {

struct EqualityPlan {
  CCompiledCondition::Form form;    // Numbers, Datimes or Texts
  const CCompiledOperand* pColumn;  // of the last row of the shape
  const CCompiledOperand* pKey;     // can be read without that row
  // The condition says nothing else, so that rows with the value pass.
  bool isWhole = false;
  // What has to be of its column's class, since a row that is left out may not have failed: columns
  // of the conditions before.
  std::vector<const CCompiledOperand*> columnsBefore;
};
// lastSlot is that of the last row of the condition's shape. What the plan points to lies in the
// condition.
std::optional<EqualityPlan> FindEquality(const CCompiledCondition& condition, size_t lastSlot);

}  // namespace kestra
