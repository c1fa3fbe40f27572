// Optex: a lock that costs one interlocked operation when it is free, and that works between the
// threads of a process or, with a name, between processes.
//
//   Optex optex("MarloFilesOptex", 4000);
//   if (optex.Enter(1, &pTermination, os::kInfinite)) { ...; optex.Leave(); }
//
// or, for a scope, AutoOptex. The thread that holds it may enter again. Only a thread that has to
// wait touches an object of the system.
//
// What others rely on, and what one must know:
// - Enter answers false although the lock is held when it comes free, or turns out to be the
//   caller's own, between the fast path and the wait. Who gives up then leaves it locked.
// - A wait that ended otherwise than by the lock leaves its count in the record: from then on the
//   record never reads free, every entry goes through the event, and a Leave signals it although
//   nobody may wait. The lock goes on to exclude.
// - An owner that dies without Leave locks the name for all, until all who have it open are gone.
//   CNamedLock is the lock that survives its owner.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "VLib/src/threads/OptexRecord.h"
#include "platform/os/SharedRecord.h"
#include "platform/os/Wait.h"

namespace kestra {

// All methods but the destructor may be called from any thread.
class Optex {
 public:
  // -1 until the first optex of the process is made; then 1 on a machine of one processor, where
  // spinning is of no use, and 0 on any other.
  static std::atomic<int32_t> UniProcessor;

  // Between the threads of this process.
  explicit Optex(uint32_t spinCount);
  // Between all who use the name, which is UTF-8. The handles, of which there may be as many as
  // Enter takes, end the wait for the turn to open it, which may last when another process hangs
  // (SharedRecord.h). Where the system keeps its names in wide characters it is converted there, so
  // one form serves both. An empty name is as none. The name counts with its prefix up to 99 bytes;
  // two names that differ only behind that are one.
  Optex(const std::string& name, uint32_t spinCount, uint32_t extraCount = 0,
        const os::CWaitable* const* extraHandles = nullptr);
  Optex(const Optex&) = delete;
  Optex& operator=(const Optex&) = delete;

  // False when the named record could not be opened, or the system had no handle left for an
  // unnamed one: nothing is ever entered then.
  bool IsOpen() const { return Shared != nullptr; }
  // Sets how often the fast path is tried again, for all who have the name open; a count above
  // kMostSpins (OptexRecord.h) works as that. Does nothing on one processor. Every constructor
  // does it, so the last one made counts.
  void SetSpinCount(uint32_t count);
  bool TryEnter();
  // Waits for the lock, for any of the extra handles, or for timeout milliseconds (os::kInfinite:
  // no limit); true if the lock is the caller's. extraCount of 64 and more, or of more than 0
  // with null extraHandles, is false without a wait. Null entries are passed over.
  bool Enter(uint32_t extraCount, const os::CWaitable* const* extraHandles, uint32_t timeout);
  // Whether the calling thread holds it, also after an Enter that answered false.
  bool IsHeldByCaller() const;
  // Undoes one entry, by the thread that made it.
  void Leave();

 private:
  std::unique_ptr<os::CSharedEvent> hEvent;
  std::unique_ptr<os::CSharedMemory> hMapping;  // null without a name
  std::unique_ptr<OptexRecord> m_pOwnRecord;    // null with a name
  OptexRecord* Shared = nullptr;                // in the mapping, or the one above
};

}  // namespace kestra
