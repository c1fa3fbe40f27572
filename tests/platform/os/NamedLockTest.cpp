// Named locks between threads and between processes.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/HostFile.h"
#include "platform/os/NamedLock.h"
#include "tests/support/LockCounter.h"
#include "tests/support/Peer.h"
#include "tests/support/UniqueName.h"

namespace kestra::os {
namespace {

using test::CTempDirectory;
using test::CUniqueName;

NamedLockResult Acquire(const std::string& name, uint32_t timeOutMs,
                        std::unique_ptr<CNamedLock>& lock,
                        const CWaitable* pTermination = nullptr) {
  return AcquireNamedLock(name, pTermination, timeOutMs, lock);
}

NamedLockResult AcquireInThread(const std::string& name, uint32_t timeOutMs) {
  NamedLockResult result = NamedLockResult::Failed;
  std::thread([&] {
    std::unique_ptr<CNamedLock> lock;
    result = Acquire(name, timeOutMs, lock);
  }).join();
  return result;
}

// A process that holds the lock until what this gives is let go.
std::shared_ptr<void> StartOwner(const std::string& name) {
  const CTempDirectory directory;
  const std::string marker = directory / "held";
  auto owner = test::StartPeer(KESTRA_LOCK_PEER, {"hold-lock", name, marker});
  for (int i = 0; i < 10'000 && !PathExists(marker); ++i) Sleep(1);
  EXPECT_TRUE(PathExists(marker));
  return owner;
}

TEST(NamedLock, IsHeldByOneAtATime) {
  for (const std::string& end :
       {std::string("x"), std::string("\\y"), std::string("/y"), std::string(400, 'z')}) {
    const std::string name = std::string(CUniqueName()) + end;
    std::unique_ptr<CNamedLock> first;
    std::unique_ptr<CNamedLock> second;
    ASSERT_EQ(Acquire(name, 0, first), NamedLockResult::Held);
    EXPECT_EQ(Acquire(name, 0, second), NamedLockResult::TimedOut);  // not re-entrant
    const uint32_t start = TickCount();
    EXPECT_EQ(AcquireInThread(name, 120), NamedLockResult::TimedOut);
    EXPECT_GE(TickCount() - start, 119u);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(Acquire(name + "x", 0, second), NamedLockResult::Held);
    first.reset();
    EXPECT_EQ(AcquireInThread(name, 0), NamedLockResult::Held);
    EXPECT_EQ(Acquire(name, 0, first), NamedLockResult::Held);
  }
}

// Held by this process or by another one.
TEST(NamedLock, StopsWaitingOnTermination) {
  for (const bool isOurs : {true, false}) {
    const CUniqueName name;
    std::unique_ptr<CNamedLock> held;
    const auto owner = isOurs ? nullptr : StartOwner(name);
    ASSERT_EQ(isOurs ? Acquire(name, 0, held) : NamedLockResult::Held, NamedLockResult::Held);
    CEvent termination;
    NamedLockResult result = NamedLockResult::Held;
    std::thread waiter([&] {
      std::unique_ptr<CNamedLock> lock;
      result = Acquire(name, kInfinite, lock, &termination);
      EXPECT_EQ(lock, nullptr);
    });
    Sleep(200);  // until its steps are at their longest
    const uint32_t start = TickCount();
    termination.Set();
    waiter.join();
    EXPECT_EQ(result, NamedLockResult::Terminated);
    EXPECT_LT(TickCount() - start, 250u);
  }
}

TEST(NamedLock, ExcludesThreadsAndProcesses) {
  constexpr int kRounds = 30;
  const CUniqueName name;
  const CTempDirectory directory;
  const std::string counter = directory.Write("counter", "0");
  const std::vector<std::string> arguments{"count-lock", name, counter, std::to_string(kRounds)};
  const auto first = test::StartPeer(KESTRA_LOCK_PEER, arguments);
  const auto second = test::StartPeer(KESTRA_LOCK_PEER, arguments);
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i)
    threads.emplace_back([&] { EXPECT_TRUE(test::CountUnderNamedLock(name, counter, kRounds)); });
  for (std::thread& thread : threads) thread.join();
  for (int i = 0; i < 20'000 && test::ReadWholeFile(counter) != "150"; ++i) Sleep(1);
  EXPECT_EQ(test::ReadWholeFile(counter), "150");
}

TEST(NamedLock, IsFreeWhenItsOwnerWasKilled) {
  const CUniqueName name;
  std::unique_ptr<CNamedLock> lock;
  auto owner = StartOwner(name);
  EXPECT_EQ(Acquire(name, 0, lock), NamedLockResult::TimedOut);
  owner.reset();
  EXPECT_EQ(Acquire(name, 1000, lock), NamedLockResult::Held);
}

}  // namespace
}  // namespace kestra::os
