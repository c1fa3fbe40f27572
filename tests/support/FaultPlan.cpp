#include "tests/support/FaultPlan.h"

namespace kestra::test {

void CFaultPlan::FailCall(uint32_t number, SystemError error, Facility facility) {
  m_calls = 0;
  m_hasFailed = false;
  m_error = error;
  m_facility = facility;
  m_failing = number;
}

SystemError CFaultPlan::Count(Facility facility) {
  const Facility wanted = m_facility;
  if (wanted != Facility::Any && wanted != facility) return kErrorSuccess;
  if (++m_calls != m_failing) return kErrorSuccess;
  m_hasFailed = true;
  if (onFailure) onFailure();
  return m_error;
}

}  // namespace kestra::test
