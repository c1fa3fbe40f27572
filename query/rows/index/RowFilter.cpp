#include "query/rows/index/RowFilter.h"

#include "query/rows/FromResult.h"

namespace kestra {
namespace {

// Fewer rows than these are not worth a preparation.
constexpr uint32_t kRowsTestedPlainly = 8;

}  // namespace

bool CRowFilter::TestPlainly(bool& passes, bool& decided) {
  if (m_tests <= kRowsTestedPlainly && ++m_tests == kRowsTestedPlainly && m_context.UsesShortcuts)
    m_pCompiled = CCompiledCondition::Make(*m_pFilter, CScopeShape(m_context.Scope));
  return TestFilter(m_pFilter, passes, decided);
}

}  // namespace kestra
