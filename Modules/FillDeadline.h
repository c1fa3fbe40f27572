// When a filling with a time limit has to come to its end.
#pragma once

#include <cstdint>

#include "platform/os/Clock.h"

namespace kestra {

// A copy runs to the same moment.
class CFillDeadline {
 public:
  // From now on.
  explicit CFillDeadline(uint32_t timeOutMs) : m_start(os::TickCount()), m_timeOutMs(timeOutMs) {}
  bool IsOver() const { return os::TickCount() - m_start >= m_timeOutMs; }

 private:
  uint32_t m_start;
  uint32_t m_timeOutMs;
};

}  // namespace kestra
