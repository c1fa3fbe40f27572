// What lies behind a shared record on Linux: files that everybody who has it open holds.
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/NamedLock.h"
#include "platform/os/SharedRecord.h"
#include "tests/support/UniqueName.h"
#include "tests/support/linux/ChildProcess.h"
#include "tests/support/linux/HeldGuard.h"

namespace kestra::os {
namespace {

using test::CUniqueName;

// The names are apart: one may stand for a memory and for an event.
SystemError Open(const std::string& name, SharedRecord& record, size_t size = 16) {
  return OpenSharedRecord(name, size, name, record);
}

std::string Content(const SharedRecord& record) {
  return {static_cast<const char*>(record.memory->Data()), 16};
}

int FilesOf(const std::string& name) {
  int count = 0;
  for (const char* base : {"/dev/shm/kestra-", "/tmp/kestra-locks-"}) {
    std::error_code none;
    const std::string directory = base + std::to_string(geteuid());
    for (const auto& entry : std::filesystem::directory_iterator(directory, none))
      if (entry.path().string().find(name) != std::string::npos) ++count;
  }
  return count;
}

TEST(SharedRecordFiles, LeavesNoFiles) {
  const CUniqueName name;
  SharedRecord first;
  SharedRecord second;
  ASSERT_EQ(Open(name, first), kErrorSuccess);
  ASSERT_EQ(Open(name, second), kErrorSuccess);
  SharedRecord unfit;
  EXPECT_EQ(Open(name, unfit, 17), kErrorInvalidParameter);
  first = {};
  EXPECT_EQ(FilesOf(name), 2);
  second = {};
  EXPECT_EQ(FilesOf(name), 0);
  // Of one that ended without leaving, until the next one goes.
  test::RunInChild([&] { return Open(name, first) == kErrorSuccess ? 0 : 1; });
  EXPECT_EQ(FilesOf(name), 2);
  ASSERT_EQ(Open(name, first), kErrorSuccess);
  first = {};
  EXPECT_EQ(FilesOf(name), 0);
}

// The event's name may be in use with another memory: who waits there must still be reached.
TEST(SharedRecordFiles, KeepsAnEventThatAnotherMemoryGoesWith) {
  const CUniqueName name;
  SharedRecord other;
  ASSERT_EQ(OpenSharedRecord(std::string(name) + "other", 16, name, other), kErrorSuccess);
  SharedRecord record;
  ASSERT_EQ(Open(name, record), kErrorSuccess);
  record = {};
  ASSERT_EQ(Open(name, record), kErrorSuccess);
  record.event->Set();
  EXPECT_EQ(WaitAny({other.event.get()}, 0), 0);
}

TEST(SharedRecordFiles, IsKeptForAForkedChild) {
  const CUniqueName name;
  SharedRecord record;
  ASSERT_EQ(Open(name, record), kErrorSuccess);
  EXPECT_EQ(test::RunInChild([&] {
              record = {};
              return FilesOf(name);
            }),
            2);
  record.event->Set();
  SharedRecord again;
  ASSERT_EQ(Open(name, again), kErrorSuccess);
  EXPECT_EQ(WaitAny({again.event.get()}, 0), 0);
}

TEST(SharedRecordFiles, IsAnotherInAnotherPidNamespace) {
  const CUniqueName name;
  SharedRecord record;
  ASSERT_EQ(Open(name, record), kErrorSuccess);
  std::memcpy(record.memory->Data(), "0123456789abcdef", 16);
  constexpr int kNotAllowed = 77;
  const int result = test::RunInChild([&] {
    if (unshare(CLONE_NEWPID) != 0) return kNotAllowed;
    return test::RunInChild([&] {
      SharedRecord other;
      if (Open(name, other) != kErrorSuccess) return 2;
      return Content(other) == std::string(16, '\0') ? 0 : 1;
    });
  });
  if (result == kNotAllowed) GTEST_SKIP() << "needs the right to make namespaces";
  EXPECT_EQ(result, 0);
  EXPECT_EQ(Content(record), "0123456789abcdef");
}

TEST(SharedRecordFiles, DoesNotWaitForEverForItsTurn) {
  if (!test::IsRoot()) GTEST_SKIP() << "would hold up other tests";
  std::unique_ptr<CNamedLock> turn;  // two such tests at once would hold up each other
  ASSERT_EQ(AcquireNamedLock("test.held-guard", nullptr, 20'000, turn), NamedLockResult::Held);
  EXPECT_TRUE(test::RunAsOrdinaryUser([] {
    const CUniqueName name;
    SharedRecord record;
    bool isGood = Open(name, record) == kErrorSuccess;
    {
      const test::CHeldGuard guard;
      CEvent stop;
      stop.Set();
      const CWaitable* const stops[] = {nullptr, &stop};
      uint32_t start = TickCount();
      SharedRecord other;
      isGood &= OpenSharedRecord(name, 16, name, other, stops) == kErrorCancelled;
      isGood &= TickCount() - start < 250;
      start = TickCount();
      isGood &= OpenSharedRecord(name, 16, name, other, {stops, 1}) == kErrorTimeout;
      const uint32_t passed = TickCount() - start;
      isGood &= passed >= 990 && passed < 2500;
      start = TickCount();
      record = {};
      isGood &= TickCount() - start < 500 && FilesOf(name) == 2;
    }
    isGood &= Open(name, record) == kErrorSuccess;
    record = {};
    return isGood && FilesOf(name) == 0;
  }));
}

}  // namespace
}  // namespace kestra::os
