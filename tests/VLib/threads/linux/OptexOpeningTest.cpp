#include <gtest/gtest.h>

#include "VLib/src/threads/AutoOptex.h"
#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/NamedLock.h"
#include "tests/support/UniqueName.h"
#include "tests/support/linux/ChildProcess.h"
#include "tests/support/linux/HeldGuard.h"

namespace kestra {
namespace {

using test::CUniqueName;

constexpr uint32_t kSpinCount = 4000;

TEST(Optex, IsNeverEnteredWhereNoHandleIsLeft) {
  if (!test::kCanRunWithoutDescriptors) GTEST_SKIP() << "a sanitizer needs descriptors";
  for (const char* name : {"", "test.no-handle"}) {
    EXPECT_EQ(test::RunWithoutDescriptors([&] {
                Optex optex(name, 0);
                return optex.IsOpen() || optex.TryEnter() || optex.Enter(0, nullptr, 0) ? 1 : 0;
              }),
              0)
        << name;
  }
}

TEST(AutoOptex, StopsWaitingForItsTurnToOpen) {
  if (!test::IsRoot()) GTEST_SKIP() << "would hold up other tests";
  std::unique_ptr<os::CNamedLock> turn;  // two such tests at once would hold up each other
  ASSERT_EQ(os::AcquireNamedLock("test.held-guard", nullptr, 20'000, turn),
            os::NamedLockResult::Held);
  EXPECT_TRUE(test::RunAsOrdinaryUser([] {
    const CUniqueName name;
    const test::CHeldGuard guard;
    os::CEvent cancel;
    cancel.Set();
    const os::CWaitable* const pCancel = &cancel;
    const uint32_t start = os::TickCount();
    const AutoOptex lock(1, &pCancel, os::kInfinite, true, name, kSpinCount);
    return !lock.Locked && os::TickCount() - start < 250;
  }));
}

}  // namespace
}  // namespace kestra
