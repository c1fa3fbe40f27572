#include <gtest/gtest.h>

#include "VLib/src/threads/OptexRecord.h"
#include "platform/os/Clock.h"

namespace kestra {

bool operator==(const OptexRecord& a, const OptexRecord& b) {
  return a.SpinCount == b.SpinCount && a.LockCount == b.LockCount && a.ThreadId == b.ThreadId &&
         a.RecurseCount == b.RecurseCount;
}
void PrintTo(const OptexRecord& record, std::ostream* pStream) {
  *pStream << record.LockCount << "/" << record.ThreadId << "/" << record.RecurseCount;
}

namespace {

constexpr uint32_t kCaller = 7;
constexpr uint32_t kOther = 8;

OptexRecord Record(uint32_t lockCount, uint32_t threadId, uint32_t recurseCount) {
  return {3, lockCount, threadId, recurseCount};
}

TEST(OptexRecord, IsEnteredOnTheFastPath) {
  const struct {
    OptexRecord before;
    bool isEntered;
    OptexRecord after;
  } kCases[] = {
      {Record(0, 0, 0), true, Record(1, kCaller, 1)},
      {Record(1, kCaller, 1), true, Record(2, kCaller, 2)},
      {Record(3, kCaller, 1), true, Record(4, kCaller, 2)},  // two others wait
      {Record(1, kOther, 1), false, Record(1, kOther, 1)},
      {Record(1, 0, 0), false, Record(1, 0, 0)},  // somebody who gave up is still counted
  };
  for (const auto& test : kCases) {
    OptexRecord record = test.before;
    EXPECT_EQ(TryEnterRecord(record, kCaller), test.isEntered);
    EXPECT_EQ(record, test.after);
  }
}

// The record may be written by anybody of the user's.
TEST(OptexRecord, DoesNotSpinForEver) {
  OptexRecord record{0xFFFFFFFF, 1, kOther, 1};
  const uint32_t start = os::TickCount();
  EXPECT_FALSE(TryEnterRecord(record, kCaller));
  EXPECT_LT(os::TickCount() - start, 2000u);
}

TEST(OptexRecord, CountsWhoComesBehindTheFastPath) {
  const struct {
    OptexRecord before;
    OptexEntry entry;
    OptexRecord after;
  } kCases[] = {
      {Record(0, 0, 0), OptexEntry::Taken, Record(1, kCaller, 1)},
      {Record(1, kCaller, 1), OptexEntry::Recursed, Record(2, kCaller, 2)},
      {Record(1, kOther, 1), OptexEntry::MustWait, Record(2, kOther, 1)},
      {Record(1, 0, 0), OptexEntry::MustWait, Record(2, 0, 0)},
  };
  for (const auto& test : kCases) {
    OptexRecord record = test.before;
    EXPECT_EQ(CountIntoRecord(record, kCaller), test.entry);
    EXPECT_EQ(record, test.after);
  }
}

TEST(OptexRecord, IsLeftEntryByEntry) {
  const struct {
    OptexRecord before;
    bool isSomebodyToBeWoken;
    OptexRecord after;
  } kCases[] = {
      {Record(2, kCaller, 2), false, Record(1, kCaller, 1)},
      {Record(3, kCaller, 2), false, Record(2, kCaller, 1)},
      {Record(1, kCaller, 1), false, Record(0, 0, 0)},
      {Record(2, kCaller, 1), true, Record(1, 0, 0)},
  };
  for (const auto& test : kCases) {
    OptexRecord record = test.before;
    EXPECT_EQ(LeaveRecord(record), test.isSomebodyToBeWoken);
    EXPECT_EQ(record, test.after);
  }
}

}  // namespace
}  // namespace kestra
