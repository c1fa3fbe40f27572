#include <gtest/gtest.h>

#include "tests/VLib/threads/TestThread.h"

namespace kestra {
namespace {

using test::CTestThread;
using test::WaitFor;

TEST(CVThread, EndsByForceAThreadThatDoesNotEnd) {
  os::CEvent mayEnd;
  std::atomic<int> started{0};
  std::atomic<int> ended{0};
  const auto thread = MakeRef<CTestThread>([&](CTestThread&) {
    ++started;
    os::WaitAny({&mayEnd}, os::kInfinite);
    ++ended;
  });
  ASSERT_TRUE(thread->Start());
  ASSERT_TRUE(WaitFor([&] { return started == 1; }));
  EXPECT_FALSE(thread->Stop(10));
  EXPECT_FALSE(thread->IsRunning());
  EXPECT_EQ(thread->ThreadId(), 0u);
  ASSERT_TRUE(thread->Start());  // the object goes on with another one
  EXPECT_FALSE(thread->StopEvent()->IsSet());
  ASSERT_TRUE(WaitFor([&] { return started == 2; }));
  mayEnd.Set();
  EXPECT_TRUE(thread->Stop(10'000));
  EXPECT_EQ(ended, 1);  // the first one is no more
}

}  // namespace
}  // namespace kestra
