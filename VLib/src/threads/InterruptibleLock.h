// A re-entrant lock whose wait ends on an event: what guards each item. Eight bytes, so that a
// million items can have one.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/os/Wait.h"

namespace kestra {

class CInterruptibleLock {
 public:
  CInterruptibleLock() = default;
  CInterruptibleLock(const CInterruptibleLock&) = delete;
  CInterruptibleLock& operator=(const CInterruptibleLock&) = delete;

  // Takes the lock, which the calling thread may hold already. Waits until it is free or
  // pTermination (may be null) is signalled, and answers false in the second case.
  bool Enter(const os::CWaitable* pTermination);
  void Leave();

 private:
  bool EnterSlowly(uint32_t self, const os::CWaitable* pTermination);

  std::atomic<uint32_t> m_owner{0};  // id of the holding thread with the top bit for "somebody
                                     // waits"; 0 when free
  uint32_t m_depth = 0;              // touched by the holder alone
};

// Holds a lock for a scope.
class CAutoInterruptibleLock {
 public:
  CAutoInterruptibleLock(CInterruptibleLock& lock, const os::CWaitable* pTermination)
      : m_lock(lock), m_isHeld(lock.Enter(pTermination)) {}
  ~CAutoInterruptibleLock() {
    if (m_isHeld) m_lock.Leave();
  }
  CAutoInterruptibleLock(const CAutoInterruptibleLock&) = delete;
  CAutoInterruptibleLock& operator=(const CAutoInterruptibleLock&) = delete;
  bool IsHeld() const { return m_isHeld; }

 private:
  CInterruptibleLock& m_lock;
  bool m_isHeld;
};

}  // namespace kestra
