// What lies behind a named lock on Linux: a locked file.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/HostFile.h"
#include "platform/os/NamedLock.h"
#include "tests/support/UniqueName.h"

namespace kestra::os {
namespace {

using test::CUniqueName;

TEST(NamedLockFile, FailsForAnEventThatIsNone) {
  const CUniqueName name;
  std::unique_ptr<CNamedLock> held;
  std::unique_ptr<CNamedLock> lock;
  ASSERT_EQ(AcquireNamedLock(name, nullptr, 0, held), NamedLockResult::Held);
  const CBorrowedEvent closed(1'000'000);
  EXPECT_EQ(AcquireNamedLock(name, &closed, kInfinite, lock), NamedLockResult::Failed);
}

TEST(NamedLockFile, OutlivesNoForkedChild) {
  const CUniqueName name;
  std::unique_ptr<CNamedLock> lock;
  ASSERT_EQ(AcquireNamedLock(name, nullptr, 0, lock), NamedLockResult::Held);
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
    result = AcquireNamedLock(name, nullptr, 5000, waited);
  });
  Sleep(50);  // until it waits for the file that the child has open too
  lock.reset();
  waiter.join();
  EXPECT_EQ(result, NamedLockResult::Held);
  close(ends[1]);
  close(ends[0]);
  EXPECT_EQ(waitpid(child, nullptr, 0), child);
}

TEST(NamedLockFile, IsNotLeftBehind) {
  const std::string directory = "/dev/shm/kestra-" + std::to_string(geteuid());
  if (!DirectoryExists("/dev/shm")) GTEST_SKIP() << "the locks are elsewhere";
  const CUniqueName name;
  const std::string file = directory + "/lock-" + std::string(name);
  std::unique_ptr<CNamedLock> lock;
  ASSERT_EQ(AcquireNamedLock(name, nullptr, 0, lock), NamedLockResult::Held);
  EXPECT_TRUE(PathExists(file));
  lock.reset();
  EXPECT_FALSE(PathExists(file));
}

}  // namespace
}  // namespace kestra::os
