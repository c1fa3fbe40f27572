#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/VLib/threads/TestThread.h"

namespace kestra {
namespace {

using test::CTestThread;
using test::WaitFor;

TEST(CVThread, RunsUntilItIsStopped) {
  std::atomic<uint32_t> id{0};
  const auto thread = MakeRef<CTestThread>([&](CTestThread& self) {
    id = os::CurrentThreadId();
    os::WaitAny({self.StopEvent().get()}, os::kInfinite);
  });
  EXPECT_EQ(thread->ThreadId(), 0u);
  EXPECT_TRUE(thread->Stop(0));  // nothing runs
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(thread->Start(256 * 1024));
    EXPECT_FALSE(thread->Start());
    EXPECT_TRUE(thread->IsRunning());
    ASSERT_TRUE(WaitFor([&] { return id != 0; }));
    EXPECT_EQ(thread->ThreadId(), id);
    EXPECT_TRUE(thread->Stop(10000));
    EXPECT_FALSE(thread->IsRunning());
    EXPECT_EQ(thread->ThreadId(), 0u);
    id = 0;
  }
}

TEST(CVThread, ExistsUntilItIsStoppedThoughItEndedByItself) {
  const auto thread = MakeRef<CTestThread>([](CTestThread&) { throw std::runtime_error("x"); });
  ASSERT_TRUE(thread->Start());
  ASSERT_TRUE(WaitFor([&] { return !thread->IsRunning(); }));
  EXPECT_FALSE(thread->Start());
  EXPECT_TRUE(thread->Stop(0));
  EXPECT_TRUE(thread->Start());
  EXPECT_TRUE(thread->Stop(10000));
}

TEST(CVThread, TheThreadKeepsItsObject) {
  std::atomic<bool> isDeleted{false};
  os::CEvent mayEnd;
  {
    const auto thread = MakeRef<CTestThread>(
        [&](CTestThread& self) {
          os::WaitAny({&mayEnd}, os::kInfinite);
          EXPECT_FALSE(self.Stop(10000));  // from the thread itself: only the event is set
          EXPECT_TRUE(self.StopEvent()->IsSet());
        },
        &isDeleted);
    ASSERT_TRUE(thread->Start());
  }
  EXPECT_FALSE(isDeleted);
  mayEnd.Set();
  EXPECT_TRUE(WaitFor([&] { return isDeleted.load(); }));
}

TEST(CVThread, MayBeStoppedFromManyThreads) {
  for (int round = 0; round < 50; ++round) {
    const auto thread = MakeRef<CTestThread>(
        [](CTestThread& self) { os::WaitAny({self.StopEvent().get()}, os::kInfinite); });
    ASSERT_TRUE(thread->Start());
    const auto stopper =
        MakeRef<CTestThread>([&](CTestThread&) { EXPECT_TRUE(thread->Stop(10000)); });
    ASSERT_TRUE(stopper->Start());
    EXPECT_TRUE(thread->Stop(10000));
    EXPECT_TRUE(stopper->Stop(10000));
  }
}

}  // namespace
}  // namespace kestra
