// A program of 32 bits on a system of 64 sees another system folder than the system's own, unless
// it says that it does not want to.
#pragma once

#include "platform/win32/base/Windows.h"

namespace kestra {

// Switches the redirection off for the calling thread, while it lives. Where there is none, or the
// system lacks one of the functions, it does nothing. To be destroyed on the thread that made it;
// no library may be loaded meanwhile.
class CNoRedirection {
 public:
  explicit CNoRedirection(bool isWanted);
  ~CNoRedirection();
  CNoRedirection(const CNoRedirection&) = delete;
  CNoRedirection& operator=(const CNoRedirection&) = delete;

 private:
  void* m_pBefore = nullptr;
  bool m_isOff = false;
};

}  // namespace kestra
