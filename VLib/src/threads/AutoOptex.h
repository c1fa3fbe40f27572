// An optex that is made and entered for a scope.
//
//   AutoOptex lock(1, &pTermination, os::kInfinite, true, "MarloFilesOptex", 4000);
//   if (!lock.Locked) return Cancelled();
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "VLib/src/threads/Optex.h"

namespace kestra {

class AutoOptex {
 public:
  // With create false it does nothing. An empty name makes an unnamed optex. The extra handles end
  // the opening of a named one as they end the wait.
  AutoOptex(uint32_t extraCount, const os::CWaitable* const* extraHandles, uint32_t timeout,
            bool create, const std::string& name, uint32_t spinCount) {
    if (!create) return;
    m_pOptex = name.empty() ? std::make_unique<Optex>(spinCount)
                            : std::make_unique<Optex>(name, spinCount, extraCount, extraHandles);
    Locked = m_pOptex->Enter(extraCount, extraHandles, timeout);
  }
  ~AutoOptex() {
    if (Locked) m_pOptex->Leave();
  }
  AutoOptex(const AutoOptex&) = delete;
  AutoOptex& operator=(const AutoOptex&) = delete;

  bool Locked = false;  // what Enter answered

 private:
  std::unique_ptr<Optex> m_pOptex;
};

}  // namespace kestra
