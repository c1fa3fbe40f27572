// A system mutex held as a lock that is not re-entrant.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "platform/os/NamedLock.h"

namespace kestra::os {

enum class NameSpace {
  Machine,  // for all sessions, or, where that is not allowed, for the own one
  Session,
};

// As AcquireNamedLock, with any number of events (any may be null) that end the wait. name is one
// that ObjectName gives.
NamedLockResult AcquireMutexLock(NameSpace space, const std::wstring& name,
                                 std::span<const CWaitable* const> stops, uint32_t timeOutMs,
                                 std::unique_ptr<CNamedLock>& lock);

}  // namespace kestra::os
