// Lets one of all processes at a time read a large stretch of a file.
#pragma once

#include "VLib/src/threads/Optex.h"
#include "platform/os/Wait.h"

namespace kestra {

class CFilesLock {
 public:
  // Waits until the lock is free, or pTermination (may be null) is signalled.
  explicit CFilesLock(const os::CWaitable* pTermination)
      : m_optex("MarloFilesOptex", 4000, 1, &pTermination),
        // Enter may answer false with the lock in hand, and who does not leave it then locks out
        // all others for good.
        m_isHeld(m_optex.Enter(1, &pTermination, os::kInfinite) || m_optex.IsHeldByCaller()) {}
  ~CFilesLock() {
    if (m_isHeld) m_optex.Leave();
  }
  CFilesLock(const CFilesLock&) = delete;
  CFilesLock& operator=(const CFilesLock&) = delete;

 private:
  Optex m_optex;
  const bool m_isHeld;
};

}  // namespace kestra
