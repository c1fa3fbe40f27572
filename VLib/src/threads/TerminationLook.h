// Looking at a termination event from a loop, at a cost that the loop does not feel.
#pragma once

#include <cstddef>

#include "platform/os/Wait.h"

namespace kestra {

// One thread at a time. A handle that the system refuses to wait for counts as signalled: nobody
// could end what would go on then.
class CTerminationLook {
 public:
  // The event may be null, and is borrowed.
  explicit CTerminationLook(const os::CWaitable* pTermination) : m_pTermination(pTermination) {}

  // To be asked again and again, with the bytes that were worked through since. Once true, always
  // true.
  bool IsOver(size_t bytes) {
    m_bytes += bytes;
    if (m_bytes < kBytesPerLook) return m_isOver;
    m_bytes = 0;
    return IsOverNow();
  }
  // The same without a look put off, for work that comes in large pieces.
  bool IsOverNow() {
    if (m_pTermination && !m_isOver)
      m_isOver = os::WaitAny({m_pTermination}, 0) != os::kWaitTimeOut;
    return m_isOver;
  }

 private:
  static constexpr size_t kBytesPerLook = 1 << 16;
  const os::CWaitable* m_pTermination;
  size_t m_bytes = 0;
  bool m_isOver = false;
};

}  // namespace kestra
