// The words that an optex counts in. In a named optex all processes see them, so their layout is a
// format. What is done to them is here, and waiting is in Optex.h.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestra {

struct OptexRecord {
  uint32_t SpinCount = 0;     // extra tries of the fast path, 0 on one processor
  uint32_t LockCount = 0;     // 0 when free; otherwise the owner's entries plus the waiters
  uint32_t ThreadId = 0;      // the owner's, as the system numbers threads; 0 when free
  uint32_t RecurseCount = 0;  // number of entries by the owner
};
static_assert(sizeof(OptexRecord) == 16 && offsetof(OptexRecord, LockCount) == 4 &&
              offsetof(OptexRecord, ThreadId) == 8 && offsetof(OptexRecord, RecurseCount) == 12);

// The functions below may run in any number of threads and processes at once. caller is the calling
// thread's number.

// Others write the record too, and what they write must not hold up the caller for seconds.
inline constexpr uint32_t kMostSpins = 100'000;

// The fast path: SpinCount, but at most kMostSpins, and 1 more tries to take the record if it is
// free, or to enter it once more.
bool TryEnterRecord(OptexRecord& record, uint32_t caller);

enum class OptexEntry {
  Taken,     // it came free, and is the caller's now
  Recursed,  // it was the caller's, who has entered once more
  MustWait,  // the caller is counted as one who waits
};
// Counts the caller in after the fast path has failed.
OptexEntry CountIntoRecord(OptexRecord& record, uint32_t caller);

// Makes the caller the owner: for one who was counted as waiting and has been woken.
void OwnRecord(OptexRecord& record, uint32_t caller);

// Undoes one entry. True when the lock is free now and somebody is counted as waiting, who is to be
// woken.
bool LeaveRecord(OptexRecord& record);

}  // namespace kestra
