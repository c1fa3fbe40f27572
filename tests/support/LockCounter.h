// A number in a file, which is right in the end only if those who count exclude each other.
#pragma once

#include <string>

#include "VLib/src/threads/Optex.h"
#include "platform/os/Clock.h"
#include "platform/os/NamedLock.h"
#include "tests/support/TempDirectory.h"

namespace kestra::test {

inline constexpr uint32_t kLockWaitMs = 20'000;

inline void CountUp(const std::string& file) {
  const int number = std::stoi(ReadWholeFile(file));
  os::Sleep(1);  // room for somebody who does not wait for his turn
  WriteWholeFile(file, std::to_string(number + 1));
}

// False when the lock was not to be had in good time.
inline bool CountUnderNamedLock(const std::string& name, const std::string& file, int rounds) {
  for (int i = 0; i < rounds; ++i) {
    std::unique_ptr<os::CNamedLock> lock;
    if (os::AcquireNamedLock(name, nullptr, kLockWaitMs, lock) != os::NamedLockResult::Held)
      return false;
    CountUp(file);
  }
  return true;
}

// Enters for certain: an entry that answers false may hold the lock all the same, and then one more
// by the same thread comes through and is undone.
inline bool EnterSurely(Optex& optex) {
  if (optex.Enter(0, nullptr, kLockWaitMs)) return true;
  if (!optex.TryEnter()) return false;
  optex.Leave();
  return true;
}

inline bool CountUnderOptex(Optex& optex, const std::string& file, int rounds) {
  for (int i = 0; i < rounds; ++i) {
    if (!EnterSurely(optex)) return false;
    CountUp(file);
    optex.Leave();
  }
  return true;
}

}  // namespace kestra::test
