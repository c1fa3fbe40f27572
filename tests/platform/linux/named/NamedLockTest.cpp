#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>
#include <vector>

#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/HostFile.h"
#include "platform/os/NamedLock.h"
#include "tests/support/LockCounter.h"
#include "tests/support/UniqueName.h"
#include "tests/support/linux/ChildProcess.h"

namespace kestra::os {
namespace {

using test::CChildProcess;
using test::CTempDirectory;
using test::CUniqueName;

NamedLockResult Acquire(const std::string& name, uint32_t timeOutMs,
                        std::unique_ptr<CNamedLock>& lock,
                        const CWaitable* pTermination = nullptr) {
  return AcquireNamedLock(name, pTermination, timeOutMs, lock);
}

bool WaitForFile(const std::string& path) {
  for (int i = 0; i < 10'000 && !PathExists(path); ++i) Sleep(1);
  return PathExists(path);
}

TEST(NamedLock, IsHeldByOneAtATime) {
  const CUniqueName name;
  std::unique_ptr<CNamedLock> first;
  std::unique_ptr<CNamedLock> second;
  ASSERT_EQ(Acquire(name, 0, first), NamedLockResult::Held);
  EXPECT_EQ(Acquire(name, 0, second), NamedLockResult::TimedOut);  // not re-entrant
  const uint32_t start = TickCount();
  EXPECT_EQ(Acquire(name, 120, second), NamedLockResult::TimedOut);
  EXPECT_GE(TickCount() - start, 119u);
  EXPECT_EQ(second, nullptr);
  EXPECT_EQ(Acquire(std::string(name) + "x", 0, second), NamedLockResult::Held);
  first.reset();
  EXPECT_EQ(Acquire(name, 0, first), NamedLockResult::Held);
}

TEST(NamedLock, StopsWaitingOnTermination) {
  const CUniqueName name;
  std::unique_ptr<CNamedLock> held;
  ASSERT_EQ(Acquire(name, 0, held), NamedLockResult::Held);
  CEvent termination;
  NamedLockResult result = NamedLockResult::Held;
  std::thread waiter([&] {
    std::unique_ptr<CNamedLock> lock;
    result = Acquire(name, kInfinite, lock, &termination);
  });
  Sleep(200);  // until its steps are at their longest
  const uint32_t start = TickCount();
  termination.Set();
  waiter.join();
  EXPECT_EQ(result, NamedLockResult::Terminated);
  EXPECT_LT(TickCount() - start, 250u);
  std::unique_ptr<CNamedLock> lock;
  const CBorrowedEvent closed(1'000'000);
  EXPECT_EQ(Acquire(name, kInfinite, lock, &closed), NamedLockResult::Failed);
}

TEST(NamedLock, ExcludesThreadsAndProcesses) {
  const CUniqueName name;
  const CTempDirectory directory;
  const std::string counter = directory.Write("counter", "0");
  constexpr int kRounds = 40;
  const CChildProcess peer(KESTRA_LOCK_PEER,
                           {"peer", "count-lock", name, counter, std::to_string(kRounds)});
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i)
    threads.emplace_back([&] { EXPECT_TRUE(test::CountUnderNamedLock(name, counter, kRounds)); });
  for (std::thread& thread : threads) thread.join();
  for (int i = 0; i < 20'000 && test::ReadWholeFile(counter) != "160"; ++i) Sleep(1);
  EXPECT_EQ(test::ReadWholeFile(counter), "160");
}

TEST(NamedLock, IsFreeWhenItsOwnerWasKilled) {
  const CUniqueName name;
  const CTempDirectory directory;
  std::unique_ptr<CNamedLock> lock;
  {
    const CChildProcess owner(KESTRA_LOCK_PEER, {"peer", "hold-lock", name, directory / "held"});
    ASSERT_TRUE(WaitForFile(directory / "held"));
    EXPECT_EQ(Acquire(name, 0, lock), NamedLockResult::TimedOut);
  }  // SIGKILL
  EXPECT_EQ(Acquire(name, 1000, lock), NamedLockResult::Held);
}

TEST(NamedLock, OutlivesNoForkedChild) {
  const CUniqueName name;
  std::unique_ptr<CNamedLock> lock;
  ASSERT_EQ(Acquire(name, 0, lock), NamedLockResult::Held);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    close(ends[1]);
    char byte;
    _exit(read(ends[0], &byte, 1) == 0 ? 0 : 1);  // until the parent closes its end
  }
  NamedLockResult result = NamedLockResult::Failed;
  std::thread waiter([&] {
    std::unique_ptr<CNamedLock> waited;
    result = Acquire(name, 5000, waited);
  });
  Sleep(50);  // until it waits for the file that the child has open too
  lock.reset();
  waiter.join();
  EXPECT_EQ(result, NamedLockResult::Held);
  close(ends[1]);
  close(ends[0]);
  EXPECT_EQ(waitpid(child, nullptr, 0), child);
}

TEST(NamedLock, LeavesNoFileBehind) {
  const std::string directory = "/dev/shm/kestra-" + std::to_string(geteuid());
  if (!DirectoryExists("/dev/shm")) GTEST_SKIP() << "the locks are elsewhere";
  const CUniqueName name;
  const std::string file = directory + "/lock-" + std::string(name);
  std::unique_ptr<CNamedLock> lock;
  ASSERT_EQ(Acquire(name, 0, lock), NamedLockResult::Held);
  EXPECT_TRUE(PathExists(file));
  lock.reset();
  EXPECT_FALSE(PathExists(file));
}

}  // namespace
}  // namespace kestra::os
