// The WHERE that is tried on row after row.
#pragma once

#include <memory>

#include "query/eval/compiled/Condition.h"

namespace kestra {

class CRowFilter {
 public:
  // filter is null for none. Every test must find the same aliases on the scope.
  CRowFilter(QueryContext& context, ParseNode* pFilter) : m_context(context), m_pFilter(pFilter) {}

  bool IsEmpty() const { return !m_pFilter; }
  // Tests what is bound. False for a failure; passes tells whether the row stays, and decided
  // becomes false when that is not known yet.
  bool Test(bool& passes, bool& decided) {
    passes = true;
    if (!m_pFilter) return true;
    const Verdict verdict = m_pCompiled ? m_pCompiled->Test(m_context) : Verdict::Unknown;
    if (Decides(verdict, passes, decided)) return true;
    return verdict != Verdict::Failed && TestPlainly(passes, decided);
  }

 private:
  bool TestPlainly(bool& passes, bool& decided);

  QueryContext& m_context;
  ParseNode* const m_pFilter;
  uint32_t m_tests = 0;
  std::unique_ptr<CCompiledCondition> m_pCompiled;  // once there were some rows
};

}  // namespace kestra
