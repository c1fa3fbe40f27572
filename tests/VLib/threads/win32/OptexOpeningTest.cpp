#include <gtest/gtest.h>

#include "VLib/src/threads/AutoOptex.h"
#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/win32/os/named/MutexLock.h"
#include "platform/win32/os/named/ObjectName.h"
#include "tests/support/UniqueName.h"

namespace kestra {
namespace {

// Somebody hangs in the midst of opening the same one.
TEST(AutoOptex, StopsWaitingForItsTurnToOpen) {
  const test::CUniqueName name;
  std::unique_ptr<os::CNamedLock> turn;
  const std::string opening = "Optex_MMF_" + std::string(name) + "_Opening";
  ASSERT_EQ(os::AcquireMutexLock(os::NameSpace::Session, os::ObjectName(opening), {}, 10'000, turn),
            os::NamedLockResult::Held);
  os::CEvent cancel;
  cancel.Set();
  const os::CWaitable* const pCancel = &cancel;
  const uint32_t start = os::TickCount();
  {
    const AutoOptex lock(1, &pCancel, os::kInfinite, true, name, 4000);
    EXPECT_FALSE(lock.Locked);
  }
  EXPECT_LT(os::TickCount() - start, 250u);
  turn.reset();
  const AutoOptex lock(0, nullptr, 0, true, name, 4000);
  EXPECT_TRUE(lock.Locked);
}

}  // namespace
}  // namespace kestra
