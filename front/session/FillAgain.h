// Filling an item anew because the host asks for it, without permission to change anything and
// without a termination event.
#pragma once

#include "model/classes/Module.h"
#include "model/items/Item.h"
#include "platform/os/Clock.h"

namespace kestra {

// The item's own filling, under its lock. Whoever walks the item meanwhile is not guarded.
inline bool FillAgain(CVDiagItem& item, bool initChild) {
  const CAutoInterruptibleLock lock(item.Lock(), nullptr);
  const bool isFilled = item.Init(initChild);
  // What a module holds now came from the machine.
  if (item.IsModule()) {
    auto& module = static_cast<DiagModule&>(item);
    module.FromCache = false;
    module.FilledAt = os::SystemTimeAsFileTime().ticks;
    module.IsCutShort = false;  // nobody was asked
    module.SetProblems({});
  }
  return isFilled;
}

}  // namespace kestra
