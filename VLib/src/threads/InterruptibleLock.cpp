#include "VLib/src/threads/InterruptibleLock.h"

#include <cassert>
#include <mutex>

#include "platform/os/Event.h"
#include "platform/os/ThreadLocal.h"

// How a wait works. A waiting thread stands in a process-wide table under the lock's address and
// has set the top bit of the owner word, both under the table's mutex. A holder that finds the bit
// frees the lock and takes the first waiter out of the table under the same mutex. The thread so
// woken owes it to the others to do one of three things: take the lock and set the bit again if
// others still wait, go back into the table and set the bit, or, when its own wait ended meanwhile,
// wake the next one. So no wake-up is lost, although a newcomer may take the lock first.

namespace kestra {
namespace {

constexpr uint32_t kHasWaiters = 0x80000000u;
// Only for the case that the system has no descriptor left for a waiter's event.
constexpr uint32_t kPollMilliseconds = 10;

// 1 and up, one for each thread of the process that ever took a lock.
uint32_t ThreadNumber() {
  static std::atomic<uint32_t> lastNumber{0};
  thread_local uint32_t number = 0;
  while (number == 0) {
    number = (lastNumber.fetch_add(1, std::memory_order_relaxed) + 1) & ~kHasWaiters;
  }
  return number;
}

struct Waiter {
  const void* pLock = nullptr;
  os::CEvent* pEvent = nullptr;
  bool isQueued = false;
  Waiter* pNext = nullptr;
};

// One part of the table. Everything in it is guarded by its mutex.
class CWaiterQueue {
 public:
  std::mutex Lock;

  void PushBack(Waiter& waiter) {
    waiter.isQueued = true;
    waiter.pNext = nullptr;
    Waiter** ppEnd = &m_pFirst;
    while (*ppEnd) ppEnd = &(*ppEnd)->pNext;
    *ppEnd = &waiter;
  }
  void PushFront(Waiter& waiter) {
    waiter.isQueued = true;
    waiter.pNext = m_pFirst;
    m_pFirst = &waiter;
  }
  void Remove(Waiter& waiter) {
    for (Waiter** ppWaiter = &m_pFirst; *ppWaiter; ppWaiter = &(*ppWaiter)->pNext) {
      if (*ppWaiter == &waiter) {
        *ppWaiter = waiter.pNext;
        waiter.isQueued = false;
        return;
      }
    }
  }
  bool HasWaiter(const void* pLock) const { return FirstOf(pLock) != nullptr; }
  void WakeFirst(const void* pLock) {
    if (Waiter* pWaiter = FirstOf(pLock)) {
      Remove(*pWaiter);
      pWaiter->pEvent->Set();
    }
  }

 private:
  Waiter* FirstOf(const void* pLock) const {
    Waiter* pWaiter = m_pFirst;
    while (pWaiter && pWaiter->pLock != pLock) pWaiter = pWaiter->pNext;
    return pWaiter;
  }

  Waiter* m_pFirst = nullptr;
};

CWaiterQueue& QueueOf(const void* pLock) {
  constexpr size_t kQueues = 64;
  // Never destroyed: threads may still use it while the process ends.
  static CWaiterQueue* const pQueues = new CWaiterQueue[kQueues];
  const auto address = reinterpret_cast<uintptr_t>(pLock);
  return pQueues[((address >> 4) ^ (address >> 12)) % kQueues];
}

// Takes the lock if it is free, or leaves the mark that somebody waits. Under the queue's mutex.
bool TakeOrMark(std::atomic<uint32_t>& owner, uint32_t taken) {
  uint32_t current = owner.load(std::memory_order_relaxed);
  for (;;) {
    const uint32_t wanted = current == 0 ? taken : current | kHasWaiters;
    if (owner.compare_exchange_weak(current, wanted, std::memory_order_acquire,
                                    std::memory_order_relaxed))
      return current == 0;
  }
}

// Waits for the wake-up or the termination. True for the second, and for a wait that the system
// refuses (a termination handle that its owner closed), which would otherwise never end.
bool WaitForWakeUp(const os::CEvent& event, const os::CWaitable* pTermination) {
  if (event.IsValid()) return os::WaitAny({&event, pTermination}, os::kInfinite) != 0;
  while (!event.IsSet()) {
    if (os::WaitAny({pTermination}, kPollMilliseconds) != os::kWaitTimeOut) return true;
  }
  return false;
}

}  // namespace

bool CInterruptibleLock::Enter(const os::CWaitable* pTermination) {
  const uint32_t self = ThreadNumber();
  uint32_t current = 0;
  if (!m_owner.compare_exchange_strong(current, self, std::memory_order_acquire,
                                       std::memory_order_relaxed)) {
    if ((current & ~kHasWaiters) != self && !EnterSlowly(self, pTermination)) return false;
  }
  ++m_depth;
  return true;
}

bool CInterruptibleLock::EnterSlowly(uint32_t self, const os::CWaitable* pTermination) {
  static os::CThreadLocal<os::CEvent> events;
  os::CEvent& event = events.Get();
  CWaiterQueue& queue = QueueOf(this);
  Waiter waiter{this, &event};
  for (bool isFirstTry = true;; isFirstTry = false) {
    {
      std::lock_guard guard(queue.Lock);
      event.Reset();
      if (TakeOrMark(m_owner, self | (queue.HasWaiter(this) ? kHasWaiters : 0))) return true;
      // Who was woken and found a newcomer in possession keeps his place.
      if (isFirstTry) {
        queue.PushBack(waiter);
      } else {
        queue.PushFront(waiter);
      }
    }
    const bool isTerminated = WaitForWakeUp(event, pTermination);
    std::lock_guard guard(queue.Lock);
    if (isTerminated) {
      if (waiter.isQueued) {
        queue.Remove(waiter);
      } else {
        queue.WakeFirst(this);
      }
      return false;
    }
    if (waiter.isQueued) queue.Remove(waiter);
  }
}

void CInterruptibleLock::Leave() {
  assert((m_owner.load(std::memory_order_relaxed) & ~kHasWaiters) == ThreadNumber());
  if (--m_depth != 0) return;
  uint32_t current = ThreadNumber();
  if (m_owner.compare_exchange_strong(current, 0, std::memory_order_release,
                                      std::memory_order_relaxed))
    return;
  CWaiterQueue& queue = QueueOf(this);
  std::lock_guard guard(queue.Lock);
  m_owner.store(0, std::memory_order_release);
  // From here on the lock may be gone; its address is no more than a key.
  queue.WakeFirst(this);
}

}  // namespace kestra
