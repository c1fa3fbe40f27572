#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "platform/os/Event.h"
#include "platform/os/HostFile.h"
#include "platform/os/SharedRecord.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/os/named/MutexLock.h"
#include "platform/win32/os/named/ObjectName.h"
#include "tests/support/LockCounter.h"
#include "tests/support/UniqueName.h"
#include "tests/support/win32/ChildProcess.h"

namespace kestra::os {
namespace {

using test::CChildProcess;
using test::CTempDirectory;
using test::CUniqueName;

SystemError Open(const std::string& name, SharedRecord& record, size_t size = 16,
                 std::span<const CWaitable* const> stops = {}) {
  return OpenSharedRecord("memory_" + name, size, "event_" + name, record, stops);
}

std::string Content(const SharedRecord& record) {
  return {static_cast<const char*>(record.memory->Data()), 16};
}

void Fill(const SharedRecord& record) {
  std::memcpy(record.memory->Data(), "0123456789abcdef", 16);
}

bool IsSignalled(const SharedRecord& record) {
  return WaitAny({record.event.get()}, 0) == 0;
}

TEST(SharedRecord, IsTheSameForAllWhoHaveItOpen) {
  const CUniqueName name;
  SharedRecord first;
  SharedRecord second;
  ASSERT_EQ(Open(name, first), kErrorSuccess);
  EXPECT_EQ(Content(first), std::string(16, '\0'));
  ASSERT_EQ(Open(name, second), kErrorSuccess);
  Fill(first);
  EXPECT_EQ(Content(second), "0123456789abcdef");
  first.event->Set();
  EXPECT_TRUE(IsSignalled(second));
  EXPECT_FALSE(IsSignalled(first));  // taken by the other
  first.event->Set();
  first = {};
  ASSERT_EQ(Open(name, first), kErrorSuccess);
  EXPECT_EQ(Content(first), "0123456789abcdef");
  EXPECT_TRUE(IsSignalled(first));
}

TEST(SharedRecord, BeginsAfreshWhenAllAreGone) {
  const CUniqueName name;
  SharedRecord record;
  ASSERT_EQ(Open(name, record), kErrorSuccess);
  Fill(record);
  record.event->Set();
  record = {};
  ASSERT_EQ(Open(name, record), kErrorSuccess);
  EXPECT_EQ(Content(record), std::string(16, '\0'));
  EXPECT_FALSE(IsSignalled(record));
  // Of one that is being left the event may live a little longer than the memory.
  record.event->Set();
  record.memory.reset();
  SharedRecord fresh;
  ASSERT_EQ(Open(name, fresh), kErrorSuccess);
  EXPECT_FALSE(IsSignalled(fresh));
}

// Other programs know the two by their names.
TEST(SharedRecord, IsASystemObjectOfThatName) {
  const CUniqueName name;
  SharedRecord record;
  ASSERT_EQ(Open(name, record), kErrorSuccess);
  Fill(record);
  const CUniqueHandle mapping(
      OpenFileMappingW(FILE_MAP_READ, FALSE, Wide("memory_" + std::string(name)).c_str()));
  ASSERT_TRUE(mapping);
  const void* const pView = MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 16);
  ASSERT_NE(pView, nullptr);
  EXPECT_EQ(std::memcmp(pView, "0123456789abcdef", 16), 0);
  UnmapViewOfFile(pView);
  const CUniqueHandle event(
      OpenEventW(EVENT_MODIFY_STATE, FALSE, Wide("event_" + std::string(name)).c_str()));
  ASSERT_TRUE(event);
  SetEvent(event.get());
  EXPECT_TRUE(IsSignalled(record));
}

TEST(SharedRecord, RefusesWhatDoesNotFit) {
  const CUniqueName name;
  SharedRecord record;
  EXPECT_EQ(Open(name, record, 0), kErrorInvalidParameter);
  EXPECT_EQ(Open(name, record, 4097), kErrorInvalidParameter);
  EXPECT_EQ(OpenSharedRecord(name, 16, name, record), kErrorInvalidHandle);
  EXPECT_EQ(record.memory, nullptr);
  EXPECT_EQ(record.event, nullptr);
  EXPECT_EQ(Open("Global\\" + std::string(name), record, 4096), kErrorSuccess);
}

TEST(SharedRecord, DoesNotWaitForEverForItsTurn) {
  const CUniqueName name;
  std::unique_ptr<CNamedLock> turn;
  ASSERT_EQ(AcquireMutexLock(NameSpace::Session,
                             ObjectName("memory_" + std::string(name) + "_Opening"), {}, 0, turn),
            NamedLockResult::Held);
  CEvent stop;
  stop.Set();
  const CWaitable* const stops[] = {nullptr, &stop};
  SharedRecord record;
  uint32_t start = TickCount();
  EXPECT_EQ(Open(name, record, 16, stops), kErrorCancelled);
  EXPECT_LT(TickCount() - start, 250u);
  start = TickCount();
  EXPECT_EQ(Open(name, record, 16, {stops, 1}), kErrorTimeout);
  const uint32_t passed = TickCount() - start;
  EXPECT_TRUE(passed >= 990 && passed < 2500) << passed;
  turn.reset();
  EXPECT_EQ(Open(name, record), kErrorSuccess);
}

// Everybody who comes writes his mark; nobody may find another's gone while he is there.
TEST(SharedRecord, OpeningsAtOnceDoNotResetEachOther) {
  const CUniqueName name;
  std::vector<std::thread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&, i] {
      for (int round = 0; round < 300; ++round) {
        SharedRecord record;
        ASSERT_EQ(Open(name, record), kErrorSuccess);
        auto* const words = static_cast<uint32_t*>(record.memory->Data());
        const std::atomic_ref<uint32_t> word(words[i]);
        word.store(1);
        SharedRecord another;
        ASSERT_EQ(Open(name, another), kErrorSuccess);
        ASSERT_EQ(word.load(), 1u);
        word.store(0);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(SharedRecord, MakesAnOptexOfTwoProcesses) {
  constexpr int kRounds = 30;
  const CUniqueName name;
  const CTempDirectory directory;
  const std::string counter = directory.Write("counter", "0");
  const CChildProcess peer(KESTRA_LOCK_PEER,
                           {"peer", "count-optex", name, counter, std::to_string(kRounds)});
  Optex optex(name, 4000);
  EXPECT_TRUE(test::CountUnderOptex(optex, counter, kRounds));
  for (int i = 0; i < 20'000 && test::ReadWholeFile(counter) != "60"; ++i) Sleep(1);
  EXPECT_EQ(test::ReadWholeFile(counter), "60");
}

}  // namespace
}  // namespace kestra::os
