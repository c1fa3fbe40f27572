// Filling an item anew because the host asks for it, without permission to change anything and
// without a termination event.
#pragma once

#include "model/classes/Module.h"
#include "model/items/Item.h"

namespace kestra {

// The item's own filling, under its lock. Whoever walks the item meanwhile is not guarded.
inline bool FillAgain(CVDiagItem& item, bool initChild) {
  const CAutoInterruptibleLock lock(item.Lock(), nullptr);
  const bool isFilled = item.Init(initChild);
  // What a module holds now came from the machine.
  if (item.IsModule()) static_cast<DiagModule&>(item).FromCache = false;
  return isFilled;
}

}  // namespace kestra
