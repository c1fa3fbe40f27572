#include <gtest/gtest.h>

#include <set>
#include <thread>

#include "platform/os/Event.h"
#include "platform/os/HostFile.h"
#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/os/named/ObjectName.h"
#include "tests/support/LockCounter.h"
#include "tests/support/UniqueName.h"
#include "tests/support/win32/ChildProcess.h"

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

NamedLockResult AcquireInThread(const std::string& name, uint32_t timeOutMs) {
  NamedLockResult result = NamedLockResult::Failed;
  std::thread([&] {
    std::unique_ptr<CNamedLock> lock;
    result = Acquire(name, timeOutMs, lock);
  }).join();
  return result;
}

bool WaitForFile(const std::string& path) {
  for (int i = 0; i < 10'000 && !PathExists(path); ++i) Sleep(1);
  return PathExists(path);
}

TEST(ObjectName, IsTheNameItselfWhereItCanBe) {
  EXPECT_EQ(ObjectName("Optex_MMF_VXMLOptex"), L"Optex_MMF_VXMLOptex");
  EXPECT_EQ(ObjectName("C:_a b/{\xC3\xA4}100%"), L"C:_a b/{\u00E4}100%");
}

TEST(ObjectName, IsNeverSharedByTwo) {
  const std::string longName(300, 'a');
  const std::string names[] = {"",
                               "a",
                               "A",
                               "a\\b",
                               "a%5cb",
                               "%a%5cb",
                               "%25a",
                               "%",
                               "Global\\a",
                               std::string("a\0b", 3),
                               std::string("a\0c", 3),
                               "\xC3\xA4",
                               "\xE4",
                               "\xE5",
                               "+",
                               std::string(200, 'a'),
                               longName,
                               longName + "a",
                               "b" + longName,
                               std::string(67, '\\'),
                               std::string(66, '\\')};
  std::set<std::wstring> seen;
  for (const std::string& name : names) {
    const std::wstring object = ObjectName(name);
    EXPECT_TRUE(seen.insert(object).second) << name;
    EXPECT_TRUE(!object.empty() && object.size() <= 240) << name;
    EXPECT_EQ(object.find_first_of(std::wstring(L"\\\0", 2)), std::wstring::npos) << name;
  }
}

TEST(NamedLock, IsHeldByOneAtATime) {
  for (const std::string& end : {std::string("x"), std::string("\\y"), std::string(400, 'z')}) {
    const std::string name = std::string(CUniqueName()) + end;
    std::unique_ptr<CNamedLock> first;
    std::unique_ptr<CNamedLock> second;
    ASSERT_EQ(Acquire(name, 0, first), NamedLockResult::Held);
    EXPECT_EQ(Acquire(name, 0, second), NamedLockResult::TimedOut);  // not re-entrant
    EXPECT_EQ(AcquireInThread(name, 60), NamedLockResult::TimedOut);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(Acquire(name + "x", 0, second), NamedLockResult::Held);
    first.reset();
    EXPECT_EQ(AcquireInThread(name, 0), NamedLockResult::Held);
    EXPECT_EQ(Acquire(name, 0, first), NamedLockResult::Held);
  }
}

// Another program's mutex of that name is the same lock, however its owner goes.
TEST(NamedLock, IsAMutexOfTheMachine) {
  const CUniqueName name;
  const std::wstring object = L"Global\\" + Wide(std::string(name));
  const CUniqueHandle mutex(CreateMutexW(nullptr, FALSE, object.c_str()));
  ASSERT_TRUE(mutex);
  CEvent mayEnd;
  CEvent isHeld;
  std::thread other([&] {
    WaitForSingleObject(mutex.get(), INFINITE);
    isHeld.Set();
    WaitAny({&mayEnd}, kInfinite);  // and ends without letting go
  });
  ASSERT_EQ(WaitAny({&isHeld}, 10'000), 0);
  std::unique_ptr<CNamedLock> lock;
  EXPECT_EQ(Acquire(name, 30, lock), NamedLockResult::TimedOut);
  mayEnd.Set();
  other.join();
  EXPECT_EQ(Acquire(name, 10'000, lock), NamedLockResult::Held);
}

TEST(NamedLock, StopsWaitingOnTermination) {
  const CUniqueName name;
  const CTempDirectory directory;
  const CChildProcess owner(KESTRA_LOCK_PEER, {"peer", "hold-lock", name, directory / "held"});
  ASSERT_TRUE(WaitForFile(directory / "held"));
  CEvent termination;
  uint32_t setAt = 0;
  std::thread setter([&] {
    Sleep(100);
    setAt = TickCount();
    termination.Set();
  });
  std::unique_ptr<CNamedLock> lock;
  EXPECT_EQ(Acquire(name, kInfinite, lock, &termination), NamedLockResult::Terminated);
  const uint32_t endedAt = TickCount();
  setter.join();
  EXPECT_LT(endedAt - setAt, 100u);
  EXPECT_EQ(lock, nullptr);
}

TEST(NamedLock, ExcludesThreadsAndProcesses) {
  constexpr int kRounds = 30;
  const CUniqueName name;
  const CTempDirectory directory;
  const std::string counter = directory.Write("counter", "0");
  const std::vector<std::string> arguments{"peer", "count-lock", name, counter,
                                           std::to_string(kRounds)};
  const CChildProcess first(KESTRA_LOCK_PEER, arguments);
  const CChildProcess second(KESTRA_LOCK_PEER, arguments);
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i)
    threads.emplace_back([&] { EXPECT_TRUE(test::CountUnderNamedLock(name, counter, kRounds)); });
  for (std::thread& thread : threads) thread.join();
  for (int i = 0; i < 20'000 && test::ReadWholeFile(counter) != "150"; ++i) Sleep(1);
  EXPECT_EQ(test::ReadWholeFile(counter), "150");
}

TEST(NamedLock, IsFreeWhenItsOwnerWasKilled) {
  const CUniqueName name;
  const CTempDirectory directory;
  std::unique_ptr<CNamedLock> lock;
  {
    const CChildProcess owner(KESTRA_LOCK_PEER, {"peer", "hold-lock", name, directory / "held"});
    ASSERT_TRUE(WaitForFile(directory / "held"));
    EXPECT_EQ(Acquire(name, 0, lock), NamedLockResult::TimedOut);
  }
  EXPECT_EQ(Acquire(name, 1000, lock), NamedLockResult::Held);
}

}  // namespace
}  // namespace kestra::os
