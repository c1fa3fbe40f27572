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

// However Set and Reset cross, in the end a wait says what IsSet says.
TEST(CEvent, WaitAndFlagAgreeInTheEnd) {
  for (int round = 0; round < 300; ++round) {
    CEvent event;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&event, t] {
        for (int i = 0; i < 20; ++i) {
          if ((i + t) % 2) {
            event.Set();
          } else {
            event.Reset();
          }
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    ASSERT_EQ(EndsAWait(event), event.IsSet());
  }
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
