#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

#include "VLib/src/threads/InterruptibleLock.h"
#include "platform/os/Clock.h"
#include "platform/os/Event.h"

namespace kestra {
namespace {

static_assert(sizeof(CInterruptibleLock) == 8);

TEST(CInterruptibleLock, IsReentrant) {
  CInterruptibleLock lock;
  os::CEvent stop;
  ASSERT_TRUE(lock.Enter(&stop));
  ASSERT_TRUE(lock.Enter(nullptr));
  lock.Leave();
  bool wasEntered = true;
  stop.Set();
  std::thread([&] { wasEntered = lock.Enter(&stop); }).join();
  EXPECT_FALSE(wasEntered);
  // Held by this thread, so the set event does not matter to it.
  EXPECT_TRUE(lock.Enter(&stop));
  lock.Leave();
  lock.Leave();
  std::thread([&] {
    wasEntered = lock.Enter(&stop);
    if (wasEntered) lock.Leave();
  }).join();
  EXPECT_TRUE(wasEntered);
}

TEST(CInterruptibleLock, ExcludesUnderContention) {
  constexpr int kThreads = 6;
  constexpr int kRounds = 3000;
  std::array<CInterruptibleLock, 3> locks;
  std::array<int, 3> counters{};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kRounds; ++i) {
        const auto k = static_cast<size_t>((i + t) % 3);
        ASSERT_TRUE(locks[k].Enter(nullptr));
        ASSERT_TRUE(locks[k].Enter(nullptr));
        const int before = counters[k];
        if (i % 16 == 0) std::this_thread::yield();
        counters[k] = before + 1;
        locks[k].Leave();
        locks[k].Leave();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counters[0] + counters[1] + counters[2], kThreads * kRounds);
}

TEST(CInterruptibleLock, TerminationEndsTheWaitAtOnce) {
  CInterruptibleLock lock;
  os::CEvent stop;
  ASSERT_TRUE(lock.Enter(nullptr));
  std::atomic<bool> isWaiting{false};
  bool wasEntered = true;
  std::thread waiter([&] {
    isWaiting = true;
    wasEntered = lock.Enter(&stop);
  });
  while (!isWaiting) std::this_thread::yield();
  os::Sleep(20);
  const uint32_t start = os::TickCount();
  stop.Set();
  waiter.join();
  EXPECT_LT(os::TickCount() - start, 250u);
  EXPECT_FALSE(wasEntered);
  lock.Leave();
  // The one who went away left nothing behind.
  EXPECT_TRUE(lock.Enter(nullptr));
  lock.Leave();
}

TEST(CInterruptibleLock, AWaitThatTheSystemRefusesEnds) {
  CInterruptibleLock lock;
  ASSERT_TRUE(lock.Enter(nullptr));
  const os::CBorrowedEvent closed(1'000'000);  // no such descriptor
  bool wasEntered = true;
  std::thread([&] { wasEntered = lock.Enter(&closed); }).join();
  EXPECT_FALSE(wasEntered);
  lock.Leave();
}

// Waiters come and go while the lock changes hands. One without a termination event whom nobody
// wakes would hang here for ever.
TEST(CInterruptibleLock, WaitersComeAndGo) {
  constexpr int kRounds = 200;
  CInterruptibleLock lock;
  for (int round = 0; round < kRounds; ++round) {
    os::CEvent stop;
    std::atomic<int> entered{0};
    const auto use = [&](const os::CWaitable* pStop) {
      if (!lock.Enter(pStop)) return;
      ++entered;
      lock.Leave();
    };
    ASSERT_TRUE(lock.Enter(nullptr));
    std::thread impatient([&] { use(&stop); });
    std::thread patient([&] { use(nullptr); });
    std::thread alsoPatient([&] { use(nullptr); });
    if (round % 2) std::this_thread::yield();
    std::thread stopper([&] { stop.Set(); });
    lock.Leave();
    impatient.join();
    patient.join();
    alsoPatient.join();
    stopper.join();
    ASSERT_GE(entered, 2);
  }
}

// A termination that ends a wait, and lets something happen before the waiter knows.
class CStopWithPause final : public os::CWaitable {
 public:
  os::NativeHandle Native() const override { return event.Native(); }
  bool Consume() const override {
    isReached.Set();
    os::WaitAny({&mayGoOn}, os::kInfinite);
    return true;
  }
  os::CEvent event;
  mutable os::CEvent isReached;
  os::CEvent mayGoOn;
};

// The holder leaves and wakes the first waiter at the very moment when that one's wait has ended
// otherwise: the wake-up must reach the second one.
TEST(CInterruptibleLock, AWakeUpIsPassedOnByWhoGaveUp) {
  CInterruptibleLock lock;
  CStopWithPause stop;
  os::CEvent giveUp;
  os::CEvent isEntered;
  bool wasFirstEntered = true;
  ASSERT_TRUE(lock.Enter(nullptr));
  std::thread first([&] { wasFirstEntered = lock.Enter(&stop); });
  os::Sleep(50);  // stands in the queue by then
  std::thread second([&] {
    if (!lock.Enter(&giveUp)) return;
    isEntered.Set();
    lock.Leave();
  });
  os::Sleep(50);
  stop.event.Set();
  ASSERT_EQ(os::WaitAny({&stop.isReached}, 10000), 0);
  lock.Leave();
  stop.mayGoOn.Set();
  EXPECT_EQ(os::WaitAny({&isEntered}, 5000), 0);
  giveUp.Set();
  first.join();
  second.join();
  EXPECT_FALSE(wasFirstEntered);
}

}  // namespace
}  // namespace kestra
