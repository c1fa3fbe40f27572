// A mutex that a name stands for, across the processes of one user (on Windows of one machine).
//
//   std::unique_ptr<CNamedLock> lock;
//   if (AcquireNamedLock(name, pTermination, 600'000, lock) == NamedLockResult::Held) ...
//
// It is released by its destructor, and by the system when the process ends in whatever way: a lock
// whose owner was killed is simply free. On Linux a child that the owner has forked has it too
// until it calls exec or ends: such a child keeps the lock of a parent that was killed. It excludes
// the threads of one process from each other as well, and is not re-entrant: a thread that holds a
// name and asks for it again waits for itself. It is released by the thread that acquired it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/os/Wait.h"

namespace kestra::os {

class CNamedLock {
 public:
  virtual ~CNamedLock() = default;
};

enum class NamedLockResult { Held, TimedOut, Terminated, Failed };

// Waits until the lock is held, the time is over, or pTermination (null: nothing) is signalled,
// which is answered within 100 ms. name may hold any bytes and have any length; two names are the
// same only if all bytes are, but for long ones: names that do not fit into 200 bytes (where a byte
// other than a letter, a digit, "-", "_" and "." takes three; on Windows only if one of them cannot
// stand in the name of a system object) are told apart by their length, their first 20 bytes and a
// 128-bit hash that is not proof against names made to collide. Failed when there is no safe place
// for locks, or no handle left. On Linux the locks are files in /dev/shm/kestra-<user id>
// (/tmp/kestra-locks-<user id> without /dev/shm), which must be a directory of the user's alone;
// they are removed as they are released. On Windows they are mutexes of all sessions, which every
// user may hold; of the own session where the system does not allow that.
NamedLockResult AcquireNamedLock(const std::string& name, const CWaitable* pTermination,
                                 uint32_t timeOutMs, std::unique_ptr<CNamedLock>& lock);

}  // namespace kestra::os
