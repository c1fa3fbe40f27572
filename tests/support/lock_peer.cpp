// The second process of the tests of locks between processes.
//
//   kestra_lock_peer hold-lock NAME MARKER          takes the named lock, and keeps it until killed
//   kestra_lock_peer hold-optex NAME MARKER         the same for an optex
//   kestra_lock_peer open-optex NAME MARKER         has it open without entering
//   kestra_lock_peer count-lock NAME FILE ROUNDS    adds 1 to the number in FILE, ROUNDS times,
//   each kestra_lock_peer count-optex NAME FILE ROUNDS   time under the lock
//
// MARKER is made when it has come that far. Ends by itself after half a minute.
#include <cstdlib>
#include <functional>
#include <string>

#include "VLib/src/threads/Optex.h"
#include "platform/os/Clock.h"
#include "platform/os/NamedLock.h"
#include "tests/support/LockCounter.h"
#include "tests/support/TempDirectory.h"

namespace kestra::test {
namespace {

constexpr uint32_t kLifeMs = 30'000;

int Stay(const std::string& marker) {
  WriteWholeFile(marker, "1");
  os::Sleep(kLifeMs);
  return 0;
}

int Run(const std::string& what, const std::string& name, const std::string& file, int rounds) {
  if (what == "hold-lock") {
    std::unique_ptr<os::CNamedLock> lock;
    const auto result = os::AcquireNamedLock(name, nullptr, kLifeMs, lock);
    return result == os::NamedLockResult::Held ? Stay(file) : 1;
  }
  if (what == "count-lock") return CountUnderNamedLock(name, file, rounds) ? 0 : 1;
  Optex optex(name, 4000);
  if (what == "open-optex") return optex.IsOpen() ? Stay(file) : 1;
  if (what == "hold-optex") return optex.Enter(0, nullptr, kLifeMs) ? Stay(file) : 1;
  if (what == "count-optex") return CountUnderOptex(optex, file, rounds) ? 0 : 1;
  return 2;
}

}  // namespace
}  // namespace kestra::test

int main(int count, char** arguments) {
  if (count < 4) return 2;
  return kestra::test::Run(arguments[1], arguments[2], arguments[3],
                           count > 4 ? std::atoi(arguments[4]) : 0);
}
