#include <gtest/gtest.h>

#include "tests/VLib/threads/TestThread.h"

namespace kestra {
namespace {

using test::CTestThread;
using test::WaitFor;

TEST(CVThread, LeavesBehindAThreadThatDoesNotEnd) {
  os::CEvent mayEnd;
  std::atomic<int> ended{0};
  std::atomic<int> sawStop{0};
  std::atomic<bool> isDeleted{false};
  auto thread = MakeRef<CTestThread>(
      [&](CTestThread& self) {
        os::WaitAny({&mayEnd}, os::kInfinite);
        if (self.StopEvent()->IsSet()) ++sawStop;
        ++ended;
      },
      &isDeleted);
  ASSERT_TRUE(thread->Start());
  EXPECT_FALSE(thread->Stop(10));
  EXPECT_FALSE(thread->IsRunning());
  ASSERT_TRUE(thread->Start());  // a second one, beside the first
  EXPECT_FALSE(thread->StopEvent()->IsSet());
  mayEnd.Set();
  ASSERT_TRUE(WaitFor([&] { return ended == 2; }));
  EXPECT_EQ(sawStop, 1);  // each looks at its own stop event
  EXPECT_TRUE(thread->Stop(10000));
  thread = nullptr;
  EXPECT_TRUE(WaitFor([&] { return isDeleted.load(); }));
}

}  // namespace
}  // namespace kestra
