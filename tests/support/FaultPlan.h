// Which of the calls that are counted fails: what the fault harness is driven by.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

#include "platform/base/SystemError.h"

namespace kestra::test {

enum class Facility : uint32_t { Any, Files, Registry, Processes };

// Counts the calls and says which one fails.
class CFaultPlan {
 public:
  void FailCall(uint32_t number, SystemError error, Facility facility);
  // kErrorSuccess lets the call through.
  SystemError Count(Facility facility);
  uint32_t Calls() const { return m_calls; }
  bool HasFailed() const { return m_hasFailed; }
  std::function<void()> onFailure;

 private:
  std::atomic<uint32_t> m_calls{0};
  std::atomic<uint32_t> m_failing{0};
  std::atomic<SystemError> m_error{0};
  std::atomic<Facility> m_facility{Facility::Any};
  std::atomic<bool> m_hasFailed{false};
};

}  // namespace kestra::test
