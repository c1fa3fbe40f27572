// Shared records within a process. tests/VLib/threads/OptexTest.cpp shares them between processes.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "platform/os/Event.h"
#include "platform/os/SharedRecord.h"
#include "tests/support/UniqueName.h"

namespace kestra::os {
namespace {

using test::CUniqueName;

SystemError Open(const std::string& name, SharedRecord& record, size_t size = 16) {
  return OpenSharedRecord("memory_" + name, size, "event_" + name, record);
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
  first.event->Set();
  EXPECT_TRUE(IsSignalled(first));
  EXPECT_FALSE(IsSignalled(second));  // two signals were one
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

TEST(SharedRecord, RefusesSizesOutOfRange) {
  const CUniqueName name;
  SharedRecord record;
  EXPECT_EQ(Open(name, record, 0), kErrorInvalidParameter);
  EXPECT_EQ(Open(name, record, 4097), kErrorInvalidParameter);
  EXPECT_EQ(record.memory, nullptr);
  EXPECT_EQ(record.event, nullptr);
  EXPECT_EQ(Open(name, record, 4096), kErrorSuccess);
}

TEST(SharedRecord, OneSignalLetsOneWaiterThrough) {
  const CUniqueName name;
  std::atomic<int> woken{0};
  CEvent stop;
  std::vector<std::thread> waiters;
  for (int i = 0; i < 4; ++i) {
    waiters.emplace_back([&] {
      SharedRecord record;
      ASSERT_EQ(Open(name, record), kErrorSuccess);
      while (WaitAny({record.event.get(), &stop}, kInfinite) == 0) ++woken;
    });
  }
  SharedRecord record;
  ASSERT_EQ(Open(name, record), kErrorSuccess);
  for (int signal = 1; signal <= 200; ++signal) {
    record.event->Set();
    for (int i = 0; i < 5000 && woken != signal; ++i) WaitAny({&stop}, 1);
    ASSERT_EQ(woken, signal);
  }
  stop.Set();
  for (std::thread& waiter : waiters) waiter.join();
  EXPECT_EQ(woken, 200);
}

// Everybody who comes writes his mark; nobody may find another's gone while he is there.
TEST(SharedRecord, OpeningsAtOnceDoNotResetEachOther) {
  const CUniqueName name;
  std::vector<std::thread> threads;
  // Two, so that the last one often goes while the other comes.
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&, i] {
      for (int round = 0; round < 500; ++round) {
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

}  // namespace
}  // namespace kestra::os
