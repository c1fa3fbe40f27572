#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "platform/os/Event.h"

namespace kestra::os {
namespace {

bool EndsAWait(const CWaitable& object) {
  return WaitAny({&object}, 0) == 0;
}

TEST(CEvent, StaysSetUntilItIsReset) {
  CEvent event;
  EXPECT_FALSE(event.IsSet());
  EXPECT_FALSE(EndsAWait(event));
  event.Set();
  event.Set();
  EXPECT_TRUE(event.IsSet());
  EXPECT_TRUE(EndsAWait(event));
  EXPECT_TRUE(EndsAWait(event));
  event.Reset();
  event.Reset();
  EXPECT_FALSE(event.IsSet());
  EXPECT_FALSE(EndsAWait(event));
}

// However a Set and a Reset cross, in the end a wait says what IsSet says. Both threads start each
// round together, since the steps that must not cross are a few nanoseconds long.
TEST(CEvent, WaitAndFlagAgreeInTheEnd) {
  constexpr int kRounds = 20000;
  CEvent event;
  std::atomic<int> round{0};
  std::atomic<int> done{0};
  std::thread resetter([&] {
    for (int i = 1; i <= kRounds; ++i) {
      while (round < i) std::this_thread::yield();
      event.Reset();
      done = i;
    }
  });
  for (int i = 1; i <= kRounds; ++i) {
    round = i;
    event.Set();
    while (done < i) std::this_thread::yield();
    EXPECT_EQ(EndsAWait(event), event.IsSet()) << i;
  }
  resetter.join();
}

TEST(CAutoResetEvent, LetsOneWaiterThrough) {
  CAutoResetEvent event;
  EXPECT_FALSE(EndsAWait(event));
  event.Set();
  event.Set();
  EXPECT_TRUE(EndsAWait(event));
  EXPECT_FALSE(EndsAWait(event));
  event.Set();
  event.Reset();
  EXPECT_FALSE(EndsAWait(event));
}

TEST(CAutoResetEvent, EachSignalWakesOneOfManyWaiters) {
  constexpr int kWaiters = 4;
  constexpr int kSignals = 200;
  CAutoResetEvent event;
  CAutoResetEvent answered;
  CEvent stop;
  std::atomic<int> woken{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kWaiters; ++t) {
    threads.emplace_back([&] {
      while (WaitAny({&event, &stop}, kInfinite) == 0) {
        ++woken;
        answered.Set();
      }
    });
  }
  for (int i = 0; i < kSignals; ++i) {
    event.Set();
    ASSERT_EQ(WaitAny({&answered}, 10000), 0);
  }
  stop.Set();
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(woken, kSignals);
}

}  // namespace
}  // namespace kestra::os
