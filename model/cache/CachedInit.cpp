// The fill of a module with the cache before it.
#include "model/cache/ResultCache.h"
#include "model/root/Root.h"
#include "platform/os/Clock.h"

namespace kestra {

bool DiagModule::InitFromMachine(bool bInitChild, bool bForce, QueryMessage& message) {
  const uint64_t now = os::SystemTimeAsFileTime().ticks;
  // The module wants to know even where nobody else asks.
  const CNotesScope scope(message, message.Notes ? message.Notes : MakeRef<CFillNotes>());
  const bool isFilled = CVDiagItem::Init(bInitChild, bForce, message);
  FilledAt = now;
  IsCutShort = message.Notes->IsCutShort();
  SetProblems(message.Notes->CountsSoFar());
  return isFilled;
}

void DiagModule::SetProblems(const CFillNotes::Counts& counts) {
  ProblemCount = counts.all;
  HidingCount = counts.hidingItems;
}

bool DiagModule::CachedInit(bool bInitChild, bool bForce, int32_t timeToLive, bool anyUser,
                            bool noRead, DiagRoot& root, QueryMessage& message) {
  // Before the item's lock, which stands below the root's.
  const std::string code = timeToLive == -1 ? std::string() : root.CodeOf(GetName());
  CAutoInterruptibleLock lock(Lock(), message.TerminationEvent());
  if (!IsModule() || message.IsTerminated() || !lock.IsHeld()) return false;
  const bool isRefill = noRead && GetFillSource() == 2;
  if (IsInitialized && !bForce && !isRefill) return true;
  bForce = bForce || isRefill;
  FromCache = false;
  ResultCache* pCache = timeToLive == -1 ? nullptr : root.Cache();
  ResultCache::Entry entry;
  std::unique_ptr<os::CNamedLock> entryLock;
  if (pCache && pCache->FindEntry(*this, code, anyUser, message, entry)) {
    entryLock = ResultCache::Lock(entry.path, message);
  }
  if (!entryLock) return InitFromMachine(bInitChild, bForce, message);
  if (!noRead && pCache->ReadEntry(entry, timeToLive, *this, message)) {
    FilledAt = entry.written.ticks;
    IsCutShort = false;
    SetProblems(entry.problems);
    return FromCache = true;
  }
  if (message.IsTerminated()) {
    DropContent();  // what could be read before the cancel is no content
    return IsInitialized = false;
  }
  // What is kept is always the whole tree: one that a limit cut short would pass for it later.
  if (!InitFromMachine(true, bForce, message)) return false;
  if (!IsCutShort) pCache->WriteEntry(entry, *this, message);
  return !message.IsTerminated();
}

}  // namespace kestra
