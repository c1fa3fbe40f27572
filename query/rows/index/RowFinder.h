// Finds the rows of one source for which a condition holds, again and again for other rows that are
// bound before it: by an index where the condition allows that, else by trying each.
//
//   if (!finder.Begin()) ...                          // cancelled
//   for (size_t i = finder.Next(); i != kNoRow; i = finder.Next()) {
//     ...                                             // bind row i
//     const Verdict verdict = finder.Test();          // Unknown: ask the condition's actions
//   }
//
// It leaves out only rows for which the condition's actions would say False or NULL, and keeps the
// order of the others.
#pragma once

#include <memory>
#include <optional>

#include "query/rows/index/EqualityIndex.h"
#include "query/rows/index/EqualityPlan.h"

namespace kestra {

class CRowFinder {
 public:
  static constexpr size_t kNoRow = static_cast<size_t>(-1);

  // The last row of the shape is the source's; the rows must outlive the object. condition is null
  // for none. Nothing is compiled, and no index made, unless the rows are asked for often.
  CRowFinder(QueryContext& context, ParseNode* pCondition, CScopeShape shape,
             const ValueVector& rows, size_t expectedRounds);

  // With all rows but the last bound. False when the query is cancelled.
  bool Begin();
  size_t Next();
  // With all rows bound.
  Verdict Test();

 private:
  bool MakeIndex();
  bool IsOfClasses() const;
  void Look();
  bool IsSameText(size_t row);

  QueryContext& m_context;
  const CScopeShape m_shape;
  const ValueVector& m_rows;
  bool m_hasCondition;
  std::unique_ptr<CCompiledCondition> m_pCompiled;
  std::optional<EqualityPlan> m_plan;
  std::unique_ptr<CEqualityIndex> m_pIndex;
  bool m_isByIndex = false;  // this round
  size_t m_next = 0;         // of this round; kNoRow at its end
  CTextHolder m_holder;
  std::string_view m_text;  // that is looked for
};

}  // namespace kestra
