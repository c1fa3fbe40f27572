// Waits: for any of several things at once, so that every wait can end on a cancel event.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>

namespace kestra::os {

// What the system waits for: a descriptor that becomes readable on Linux, a HANDLE on Windows.
using NativeHandle = intptr_t;
inline constexpr NativeHandle kNoHandle = -1;

// Something that can be waited for. Waiting is safe from any thread; the object must outlive the
// wait.
class CWaitable {
 public:
  virtual ~CWaitable() = default;
  // Owned by the object; never read, written or closed by a waiter. kNoHandle for one that could
  // not be made: a wait takes it for a thing that never happens.
  virtual NativeHandle Native() const = 0;
  // Called by WaitAny when this object ended the wait. An auto-reset event takes its signal back
  // here and answers false if another waiter was faster; the wait then goes on. Waiting elsewhere
  // never calls it.
  virtual bool Consume() const { return true; }
};

inline constexpr uint32_t kInfinite = 0xFFFFFFFF;
inline constexpr int kWaitTimeOut = -1;
inline constexpr int kWaitFailed = -2;

// Waits until one of the objects is signalled, or timeOutMs milliseconds are over (0 only looks,
// kInfinite waits for ever). Answers the index of the first signalled one in the order given,
// kWaitTimeOut, or kWaitFailed. Null entries are allowed and never signalled; waiting for nothing
// but null entries without limit fails rather than hang. Any number of objects; of more than 64 on
// Windows those behind the 64th are answered up to 10 ms late.
int WaitAny(std::span<const CWaitable* const> objects, uint32_t timeOutMs);
inline int WaitAny(std::initializer_list<const CWaitable*> objects, uint32_t timeOutMs) {
  return WaitAny(std::span<const CWaitable* const>(objects.begin(), objects.size()), timeOutMs);
}

// The same for a thread that may have windows, which must go on while it waits: each time input for
// them arrives it is handed to them, and the time begins anew. On Windows at most 63 objects
// (kWaitFailed otherwise); elsewhere nothing has windows, and it is WaitAny.
int WaitAnyDispatching(std::span<const CWaitable* const> objects, uint32_t timeOutMs);
inline int WaitAnyDispatching(std::initializer_list<const CWaitable*> objects, uint32_t timeOutMs) {
  return WaitAnyDispatching(std::span<const CWaitable* const>(objects.begin(), objects.size()),
                            timeOutMs);
}

}  // namespace kestra::os
