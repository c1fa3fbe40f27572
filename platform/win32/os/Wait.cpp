#include "platform/os/Wait.h"

#include <algorithm>

#include "platform/os/Clock.h"
#include "platform/win32/os/WaitList.h"

namespace kestra::os {
namespace {

constexpr size_t kMostAtOnce = MAXIMUM_WAIT_OBJECTS;
// How long one part of many objects is waited for before the others are looked at again.
constexpr uint32_t kTurnMs = 10;

class CDeadline {
 public:
  explicit CDeadline(uint32_t timeOutMs) : m_timeOutMs(timeOutMs), m_start(TickCount()) {}
  uint32_t Rest() const {
    if (m_timeOutMs == kInfinite) return kInfinite;
    const uint32_t passed = TickCount() - m_start;
    return passed < m_timeOutMs ? m_timeOutMs - passed : 0;
  }

 private:
  const uint32_t m_timeOutMs;
  const uint32_t m_start;
};

int WaitForPart(const CWaitList& list, size_t first, uint32_t timeOutMs) {
  const size_t count = std::min(list.Count() - first, kMostAtOnce);
  const DWORD answer = WaitForMultipleObjects(static_cast<DWORD>(count),
                                              list.Handles().data() + first, FALSE, timeOutMs);
  return list.IndexFor(answer, first, count);
}

// The system takes 64 objects at a time. Of more, all parts are looked at in order, and then the
// first one is waited for until the next turn. Threads that wait for a part each would take the
// signals of two objects where the caller asked for one.
int WaitOnce(const CWaitList& list, uint32_t timeOutMs) {
  if (list.Count() <= kMostAtOnce) return WaitForPart(list, 0, timeOutMs);
  for (size_t first = 0; first < list.Count(); first += kMostAtOnce) {
    const int index = WaitForPart(list, first, 0);
    if (index != kWaitTimeOut) return index;
  }
  return timeOutMs == 0 ? kWaitTimeOut : WaitForPart(list, 0, std::min(timeOutMs, kTurnMs));
}

// For nothing that could ever happen.
int SitOut(const CDeadline& deadline) {
  uint32_t rest = deadline.Rest();
  if (rest == kInfinite) return kWaitFailed;
  for (; rest != 0; rest = deadline.Rest()) Sleep(rest);
  return kWaitTimeOut;
}

// Hands the messages that are there to their windows. A window that makes a new one for each that
// it gets must not keep the wait from its objects: so only some at a time.
void DispatchSome(bool& hasQuit, int& exitCode) {
  constexpr int kMostMessages = 100;
  MSG message;
  for (int i = 0; i < kMostMessages && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE); ++i) {
    if (message.message == WM_QUIT) {
      hasQuit = true;
      exitCode = static_cast<int>(message.wParam);
      continue;
    }
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

}  // namespace

int WaitAny(std::span<const CWaitable* const> objects, uint32_t timeOutMs) {
  const CWaitList list(objects);
  const CDeadline deadline(timeOutMs);
  if (list.Count() == 0) return SitOut(deadline);
  for (uint32_t rest = timeOutMs;;) {
    const int index = WaitOnce(list, rest);
    if (index != kWaitTimeOut || rest == 0) return index;
    // The system's clock of ticks may end a wait early. The last look is one without a wait.
    rest = deadline.Rest();
  }
}

int WaitAnyDispatching(std::span<const CWaitable* const> objects, uint32_t timeOutMs) {
  const CWaitList list(objects);
  const auto count = static_cast<DWORD>(list.Count());
  if (count >= kMostAtOnce || (count == 0 && timeOutMs == kInfinite)) return kWaitFailed;
  bool hasQuit = false;
  int exitCode = 0;
  int index = kWaitTimeOut;
  for (;;) {
    const DWORD answer = MsgWaitForMultipleObjectsEx(count, list.Handles().data(), timeOutMs,
                                                     QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    if (answer == WAIT_OBJECT_0 + count) {
      DispatchSome(hasQuit, exitCode);
      continue;
    }
    index = list.IndexFor(answer, 0, count);
    // An object that did not give itself: the wait goes on.
    if (index != kWaitTimeOut || answer == WAIT_TIMEOUT) break;
  }
  // The wish to end is for the loop that the caller goes back to.
  if (hasQuit) PostQuitMessage(exitCode);
  return index;
}

}  // namespace kestra::os
