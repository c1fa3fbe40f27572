#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/Wait.h"

namespace kestra::os {
namespace {

TEST(WaitAny, GivesTheFirstOfTheSignalledOnes) {
  CEvent a;
  CEvent b;
  CEvent c;
  b.Set();
  c.Set();
  EXPECT_EQ(WaitAny({&a, nullptr, &b, &c}, kInfinite), 2);
  EXPECT_EQ(WaitAny({&c, &b}, 0), 0);
  EXPECT_EQ(WaitAny({&a, nullptr}, 0), kWaitTimeOut);
}

TEST(WaitAny, TakesOnlyTheSignalThatEndedTheWait) {
  CEvent first;
  CAutoResetEvent second;
  first.Set();
  second.Set();
  EXPECT_EQ(WaitAny({&first, &second}, kInfinite), 0);
  EXPECT_EQ(WaitAny({&second}, 0), 0);
}

// What cannot be made or is not there never happens, but a wait for nothing else must not hang.
TEST(WaitAny, WaitsForNothing) {
  const CBorrowedEvent none(kNoHandle);
  EXPECT_EQ(WaitAny({}, kInfinite), kWaitFailed);
  EXPECT_EQ(WaitAny({nullptr, &none}, kInfinite), kWaitFailed);
  EXPECT_EQ(WaitAny({nullptr, &none}, 1), kWaitTimeOut);
  CEvent set;
  set.Set();
  EXPECT_EQ(WaitAny({&none, &set}, kInfinite), 1);
}

TEST(WaitAny, TimeOutIsKept) {
  CEvent event;
  const uint32_t start = TickCount();
  EXPECT_EQ(WaitAny({&event}, 60), kWaitTimeOut);
  const uint32_t taken = TickCount() - start;
  EXPECT_GE(taken, 59u);
  EXPECT_LT(taken, 5000u);
}

TEST(WaitAny, WakesFromAnotherThread) {
  CEvent event;
  std::thread setter([&] {
    Sleep(20);
    event.Set();
  });
  EXPECT_EQ(WaitAny({&event}, 0xFFFFFFFE), 0);
  setter.join();
}

TEST(WaitAny, ManyObjects) {
  std::array<CEvent, 100> events;
  std::vector<const CWaitable*> objects;
  for (const CEvent& event : events) objects.push_back(&event);
  events[97].Set();
  EXPECT_EQ(WaitAny(objects, kInfinite), 97);
}

TEST(Clock, NeverGoesBack) {
  const uint32_t ticks = TickCount();
  const uint64_t counter = PerformanceCounter();
  Sleep(5);
  EXPECT_GE(TickCount() - ticks, 4u);
  EXPECT_GT(PerformanceCounter(), counter);
}

}  // namespace
}  // namespace kestra::os
