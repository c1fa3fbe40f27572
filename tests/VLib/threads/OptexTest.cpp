#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "VLib/src/threads/AutoOptex.h"
#include "VLib/src/threads/Optex.h"
#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/HostFile.h"
#include "platform/os/NamedLock.h"
#include "platform/os/Thread.h"
#include "tests/support/LockCounter.h"
#include "tests/support/Peer.h"
#include "tests/support/UniqueName.h"

namespace kestra {
namespace {

using test::CTempDirectory;
using test::CUniqueName;

constexpr uint32_t kSpinCount = 4000;

// What all who have the name open see.
class CSeenRecord {
 public:
  explicit CSeenRecord(const std::string& name) {
    EXPECT_EQ(os::OpenSharedRecord("Optex_MMF_" + name, 16, "Optex_Event_" + name, m_record),
              kErrorSuccess);
  }
  OptexRecord Get() const { return *static_cast<const OptexRecord*>(m_record.memory->Data()); }
  bool TakeSignal() const { return os::WaitAny({m_record.event.get()}, 0) == 0; }

 private:
  os::SharedRecord m_record;
};

class CScopedUniProcessor {
 public:
  explicit CScopedUniProcessor(int32_t value) : m_former(Optex::UniProcessor.exchange(value)) {}
  ~CScopedUniProcessor() { Optex::UniProcessor = m_former; }
  CScopedUniProcessor(const CScopedUniProcessor&) = delete;
  CScopedUniProcessor& operator=(const CScopedUniProcessor&) = delete;

 private:
  int32_t m_former;
};

bool WaitForFile(const std::string& path) {
  for (int i = 0; i < 10'000 && !os::PathExists(path); ++i) os::Sleep(1);
  return os::PathExists(path);
}

bool EnterInThread(Optex& optex, uint32_t timeOutMs, const os::CWaitable* pExtra = nullptr) {
  bool isEntered = false;
  std::thread([&] {
    isEntered = optex.Enter(pExtra ? 1 : 0, &pExtra, timeOutMs);
    if (isEntered) optex.Leave();
  }).join();
  return isEntered;
}

TEST(Optex, IsEnteredAgainByItsOwner) {
  const CUniqueName name;
  Optex optex(name, kSpinCount);
  const CSeenRecord seen(name);
  EXPECT_TRUE(optex.Enter(0, nullptr, 0));
  EXPECT_TRUE(optex.TryEnter());
  optex.Leave();
  EXPECT_TRUE(optex.IsHeldByCaller());
  EXPECT_EQ(seen.Get().ThreadId, os::CurrentThreadId());
  EXPECT_EQ(seen.Get().RecurseCount, 1u);
  EXPECT_EQ(seen.Get().LockCount, 1u);
  EXPECT_FALSE(EnterInThread(optex, 0));
  optex.Leave();
  EXPECT_FALSE(optex.IsHeldByCaller());
  EXPECT_EQ(seen.Get().ThreadId, 0u);
}

TEST(Optex, SpinsOnlyOnSeveralProcessors) {
  for (const int32_t uniProcessor : {0, 1}) {
    const CUniqueName name;
    const CScopedUniProcessor scope(uniProcessor);
    Optex optex(name, kSpinCount);
    const CSeenRecord seen(name);
    EXPECT_EQ(seen.Get().SpinCount, uniProcessor ? 0u : kSpinCount);
    optex.SetSpinCount(17);
    EXPECT_EQ(seen.Get().SpinCount, uniProcessor ? 0u : 17u);
    const Optex last(name, 99);
    EXPECT_EQ(seen.Get().SpinCount, uniProcessor ? 0u : 99u);
  }
  const CScopedUniProcessor scope(-1);
  const Optex optex(kSpinCount);
  EXPECT_EQ(Optex::UniProcessor, os::OnlineProcessors() == 1 ? 1 : 0);
}

// After each of these the record keeps the count of who gave up, and the lock goes on to exclude.
TEST(Optex, AnswersFalseWithoutTheLock) {
  os::CEvent cancel;
  cancel.Set();
  const os::CWaitable* const pCancel = &cancel;
  const std::vector<const os::CWaitable*> many(64, nullptr);
  const struct {
    const char* what;
    uint32_t extraCount;
    const os::CWaitable* const* extraHandles;
    uint32_t timeOutMs;
  } kCases[] = {
      {"time-out", 0, nullptr, 20},
      {"extra handle", 1, &pCancel, os::kInfinite},
      {"too many handles", 64, many.data(), os::kInfinite},
      {"no handles", 1, nullptr, os::kInfinite},
  };
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.what);
    const CUniqueName name;
    Optex optex(name, 0);
    const CSeenRecord seen(name);
    ASSERT_TRUE(optex.Enter(0, nullptr, 0));
    bool isEntered = true;
    std::thread([&] {
      isEntered = optex.Enter(test.extraCount, test.extraHandles, test.timeOutMs);
    }).join();
    EXPECT_FALSE(isEntered);
    EXPECT_EQ(seen.Get().LockCount, 2u);
    optex.Leave();
    EXPECT_EQ(seen.Get().LockCount, 1u);
    EXPECT_FALSE(optex.TryEnter());
    ASSERT_TRUE(optex.Enter(0, nullptr, 1000));  // by the signal that nobody waited for
    EXPECT_FALSE(EnterInThread(optex, 20));
    optex.Leave();
    EXPECT_TRUE(EnterInThread(optex, 1000));
  }
}

TEST(Optex, TakesAsManyHandlesAsTheSystemLets) {
  Optex optex(0);
  ASSERT_TRUE(optex.TryEnter());
  os::CEvent cancel;
  std::vector<const os::CWaitable*> handles(63, nullptr);
  handles.back() = &cancel;
  bool isEntered = true;
  std::thread waiter([&] { isEntered = optex.Enter(63, handles.data(), os::kInfinite); });
  os::Sleep(20);
  const uint32_t start = os::TickCount();
  cancel.Set();
  waiter.join();
  EXPECT_FALSE(isEntered);
  EXPECT_LT(os::TickCount() - start, 250u);
}

TEST(Optex, WakesWhoWaits) {
  const CUniqueName name;
  Optex optexes[] = {Optex(name, 0), Optex(0)};
  for (Optex& optex : optexes) {
    ASSERT_TRUE(optex.Enter(0, nullptr, 0));
    std::atomic<bool> isEntered{false};
    std::thread waiter([&] {
      isEntered = optex.Enter(0, nullptr, 20'000);
      if (isEntered) optex.Leave();
    });
    os::Sleep(20);
    EXPECT_FALSE(isEntered);
    optex.Leave();
    waiter.join();
    EXPECT_TRUE(isEntered);
  }
}

TEST(Optex, CutsLongNames) {
  const CUniqueName unique;
  const std::string name = std::string(unique) + std::string(100, 'x');
  Optex whole(name, 0);
  ASSERT_TRUE(whole.Enter(0, nullptr, 0));
  // "Optex_MMF_" leaves 89 bytes of the name, "Optex_Event_" 87.
  Optex same(name.substr(0, 89), 0);
  EXPECT_FALSE(EnterInThread(same, 0));
  Optex other(name.substr(0, 88), 0);
  EXPECT_TRUE(EnterInThread(other, 0));
}

TEST(Optex, OfTheSameNameIsOneLockAndWithoutNameItsOwn) {
  const CUniqueName name;
  Optex first(name, kSpinCount);
  Optex second(name, kSpinCount);
  ASSERT_TRUE(first.TryEnter());
  EXPECT_TRUE(second.TryEnter());  // the thread has it
  EXPECT_FALSE(EnterInThread(second, 0));
  Optex unnamed(kSpinCount);
  Optex empty("", kSpinCount);
  ASSERT_TRUE(unnamed.TryEnter());
  EXPECT_TRUE(EnterInThread(empty, 0));
}

TEST(Optex, ExcludesThreadsAndProcesses) {
  const CUniqueName name;
  const CTempDirectory directory;
  const std::string counter = directory.Write("counter", "0");
  constexpr int kRounds = 100;
  const auto peer =
      test::StartPeer(KESTRA_LOCK_PEER, {"count-optex", name, counter, std::to_string(kRounds)});
  Optex optex(name, kSpinCount);
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i)
    threads.emplace_back([&] { EXPECT_TRUE(test::CountUnderOptex(optex, counter, kRounds)); });
  for (std::thread& thread : threads) thread.join();
  for (int i = 0; i < 20'000 && test::ReadWholeFile(counter) != "400"; ++i) os::Sleep(1);
  EXPECT_EQ(test::ReadWholeFile(counter), "400");
}

TEST(Optex, IsLockedForGoodByADeadOwnerWhileAnybodyHasItOpen) {
  const CUniqueName name;
  const CTempDirectory directory;
  {
    const auto witness =
        test::StartPeer(KESTRA_LOCK_PEER, {"open-optex", name, directory / "open"});
    ASSERT_TRUE(WaitForFile(directory / "open"));
    {
      const auto owner =
          test::StartPeer(KESTRA_LOCK_PEER, {"hold-optex", name, directory / "held"});
      ASSERT_TRUE(WaitForFile(directory / "held"));
    }  // killed
    Optex optex(name, 0);
    EXPECT_FALSE(optex.Enter(0, nullptr, 50));
    EXPECT_EQ(CSeenRecord(name).Get().LockCount, 2u);
  }
  Optex fresh(name, 0);
  EXPECT_TRUE(fresh.Enter(0, nullptr, 0));
}

TEST(AutoOptex, HoldsForAScope) {
  const CUniqueName name;
  Optex outside(name, 0);
  const CSeenRecord seen(name);
  {
    const AutoOptex lock(0, nullptr, os::kInfinite, true, name, kSpinCount);
    EXPECT_TRUE(lock.Locked);
    EXPECT_FALSE(EnterInThread(outside, 0));
    const AutoOptex unnamed(0, nullptr, os::kInfinite, true, "", kSpinCount);
    EXPECT_TRUE(unnamed.Locked);
    const AutoOptex none(0, nullptr, os::kInfinite, false, name, kSpinCount);
    EXPECT_FALSE(none.Locked);
  }
  EXPECT_EQ(seen.Get().ThreadId, 0u);
}

TEST(AutoOptex, DoesNotLeaveWhatItDidNotGet) {
  const CUniqueName name;
  Optex optex(name, 0);
  const CSeenRecord seen(name);
  ASSERT_TRUE(optex.TryEnter());
  os::CEvent cancel;
  cancel.Set();
  const os::CWaitable* const pCancel = &cancel;
  std::thread([&] {
    const AutoOptex lock(1, &pCancel, os::kInfinite, true, name, 0);
    EXPECT_FALSE(lock.Locked);
  }).join();
  EXPECT_EQ(seen.Get().LockCount, 2u);
  EXPECT_EQ(seen.Get().RecurseCount, 1u);
  EXPECT_FALSE(seen.TakeSignal());
}

}  // namespace
}  // namespace kestra
