// A termination event that comes at a certain moment of the work.
#pragma once

#include <cstdint>

#include "platform/os/Event.h"

namespace kestra::test {

// Found signalled at the n-th look (from 1) and at every later one. One thread at a time.
class CEventAtLook final : public os::CWaitable {
 public:
  explicit CEventAtLook(uint32_t look) : m_look(look) { m_signalled.Set(); }
  os::NativeHandle Native() const override {
    return ++m_looks >= m_look ? m_signalled.Native() : m_quiet.Native();
  }
  bool WasSeen() const { return m_looks >= m_look; }

 private:
  uint32_t m_look;
  mutable uint32_t m_looks = 0;
  os::CEvent m_signalled;
  os::CEvent m_quiet;
};

}  // namespace kestra::test
