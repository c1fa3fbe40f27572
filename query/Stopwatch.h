// How long something takes, by a clock that never goes back.
#pragma once

#include <chrono>
#include <cstdint>

namespace kestra {

// Runs from its making on.
class CStopwatch {
 public:
  uint64_t Microseconds() const {
    const auto time = std::chrono::steady_clock::now() - m_start;
    return static_cast<uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(time).count());
  }

 private:
  const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

}  // namespace kestra
