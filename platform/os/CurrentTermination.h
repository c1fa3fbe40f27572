// The termination event of the work that a thread does, for code that no event is handed to: what
// lies below an interface in the terms of the system's calls, which know of none.
//
//   os::CTerminationScope scope(message.TerminationEvent());
//   ... and far below: if (os::IsWorkTerminated()) return kErrorCancelled;
//
// Whoever answers kErrorCancelled so must keep nothing half-made that another thread could take for
// the whole.
#pragma once

#include <cstdint>
#include <utility>

#include "platform/os/Clock.h"
#include "platform/os/Wait.h"

namespace kestra::os {

// For the thread that makes it, until it is destroyed there; may be nested, and the inner one alone
// counts then. The event is borrowed; null for work that nobody ends.
class CTerminationScope {
 public:
  explicit CTerminationScope(const CWaitable* pTermination) noexcept
      : m_outer(std::exchange(Current(), Work{pTermination, 0, false, false})) {}
  ~CTerminationScope() { Current() = m_outer; }
  CTerminationScope(const CTerminationScope&) = delete;
  CTerminationScope& operator=(const CTerminationScope&) = delete;

 private:
  struct Work {
    const CWaitable* pTermination = nullptr;
    uint32_t lastLook = 0;
    bool hasLooked = false;
    bool isOver = false;
  };
  static Work& Current() {
    static thread_local Work work;
    return work;
  }
  const Work m_outer;

  friend bool IsWorkTerminated();
};

// Whether the thread's work has to end; false on a thread without a scope. Once true it stays true
// within the scope. Looks at the event every few milliseconds and costs a look at the clock else. A
// wait that fails counts as not signalled, as in QueryMessage.
inline bool IsWorkTerminated() {
  constexpr uint32_t kMsBetweenLooks = 4;
  CTerminationScope::Work& work = CTerminationScope::Current();
  if (!work.pTermination || work.isOver) return work.isOver;
  const uint32_t now = TickCount();
  if (work.hasLooked && now - work.lastLook < kMsBetweenLooks) return false;
  work.hasLooked = true;
  work.lastLook = now;
  return work.isOver = WaitAny({work.pTermination}, 0) == 0;
}

// The same for a loop whose turns are shorter than a look at the clock. One thread at a time.
class CPacedTermination {
 public:
  // To be asked at every turn. Once true, always true.
  bool IsOver() {
    if (m_isOver || ++m_turns % kTurnsPerLook != 0) return m_isOver;
    return m_isOver = IsWorkTerminated();
  }

 private:
  static constexpr uint32_t kTurnsPerLook = 512;
  uint32_t m_turns = 0;
  bool m_isOver = false;
};

}  // namespace kestra::os
