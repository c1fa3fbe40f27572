#include "VLib/src/threads/OptexRecord.h"

#include <algorithm>
#include <atomic>

// Only LockCount decides who holds the lock. The other words are written by the holder alone; they
// are atomic since others look at ThreadId, and since the system's wake-up of another process is
// nothing that the language knows to bring order into plain memory.

namespace kestra {
namespace {

using Word = std::atomic_ref<uint32_t>;
static_assert(Word::is_always_lock_free, "a lock of the library's would not reach other processes");

}  // namespace

bool TryEnterRecord(OptexRecord& record, uint32_t caller) {
  const Word lockCount(record.LockCount);
  const uint32_t spins = Word(record.SpinCount).load(std::memory_order_relaxed);
  const uint32_t tries = std::min(spins, kMostSpins) + 1;
  for (uint32_t i = 0; i < tries; ++i) {
    uint32_t expected = 0;
    if (lockCount.compare_exchange_strong(expected, 1)) {
      OwnRecord(record, caller);
      return true;
    }
    if (Word(record.ThreadId).load(std::memory_order_relaxed) == caller) {
      lockCount.fetch_add(1);
      Word(record.RecurseCount).fetch_add(1, std::memory_order_relaxed);
      return true;
    }
  }
  return false;
}

OptexEntry CountIntoRecord(OptexRecord& record, uint32_t caller) {
  if (Word(record.LockCount).fetch_add(1) == 0) {
    OwnRecord(record, caller);
    return OptexEntry::Taken;
  }
  if (Word(record.ThreadId).load(std::memory_order_relaxed) != caller) return OptexEntry::MustWait;
  Word(record.RecurseCount).fetch_add(1, std::memory_order_relaxed);
  return OptexEntry::Recursed;
}

void OwnRecord(OptexRecord& record, uint32_t caller) {
  // Reads what the former owner left behind, so that all he did before is seen.
  Word(record.LockCount).load();
  Word(record.ThreadId).store(caller, std::memory_order_relaxed);
  Word(record.RecurseCount).store(1, std::memory_order_relaxed);
}

bool LeaveRecord(OptexRecord& record) {
  const uint32_t entries = Word(record.RecurseCount).fetch_sub(1, std::memory_order_relaxed) - 1;
  if (static_cast<int32_t>(entries) > 0) {
    Word(record.LockCount).fetch_sub(1);
    return false;
  }
  Word(record.ThreadId).store(0, std::memory_order_relaxed);
  return static_cast<int32_t>(Word(record.LockCount).fetch_sub(1) - 1) > 0;
}

}  // namespace kestra
