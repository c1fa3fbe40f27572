// Who is in a session: one thread at a time, which may come in again from its callback.
//
// What a session hands out (texts, reports) is its last query's, so a second thread could only pull
// it from under the first. It is refused, and not kept waiting: it might wait for ever.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/base/Ref.h"
#include "platform/os/Thread.h"

namespace kestra {

class CSessionUse : public CCounted<CSessionUse> {
 public:
  // False while another thread is in.
  bool Enter() {
    const uint32_t self = os::CurrentThreadId();
    uint32_t owner = kNobody;
    if (!m_owner.compare_exchange_strong(owner, self) && owner != self) return false;
    ++m_depth;
    return true;
  }
  void Leave() {
    if (--m_depth == 0) m_owner.store(kNobody);
  }

 private:
  static constexpr uint32_t kNobody = 0;

  std::atomic<uint32_t> m_owner{kNobody};
  int m_depth = 0;  // the owner's
};

}  // namespace kestra
