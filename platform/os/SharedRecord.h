// Memory and an event that names stand for, shared by the processes of one user (on Windows of one
// machine): what a lock across processes is made of.
//
//   SharedRecord record;
//   if (OpenSharedRecord("memory name", 16, "event name", record) == kErrorSuccess) ...
//
// While anybody holds the names open, everybody who opens them gets the same memory with what is in
// it, and the same event; also when the one who wrote it has died since. When all are gone the next
// one starts with zeros and an event that is not signalled.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "platform/base/SystemError.h"
#include "platform/os/Wait.h"

namespace kestra::os {

class CSharedMemory {
 public:
  virtual ~CSharedMemory() = default;
  // Aligned for any type. Lives as long as this object.
  virtual void* Data() = 0;
};

// An auto-reset event: one signal lets one waiter through, of whatever process. Any thread.
class CSharedEvent : public CWaitable {
 public:
  virtual void Set() = 0;
};

struct SharedRecord {
  std::unique_ptr<CSharedMemory> memory;
  std::unique_ptr<CSharedEvent> event;
};

// Opens both, or neither. They are opened together so that a fresh memory never comes with an event
// that a dying process has left signalled. Names may hold any bytes and have any length; those of
// memories and of events are apart. size is 1 to 4096 bytes, and the same for all who open the name
// (kErrorInvalidParameter otherwise). kErrorAccessDenied when there is no safe place for named
// objects. Openings happen one at a time: kErrorCancelled when one of stops (any may be null) is
// signalled before our turn, kErrorTimeout when it does not come within ten seconds, or within one
// where there is nothing to stop for.
//
// On Windows they are the system's objects of exactly these names, as far as the system takes them
// (a backslash, say, is escaped), for the programs of one session: the two must differ
// (kErrorInvalidHandle), and any two sizes are the same, since memory comes in whole pages.
//
// On Linux they are files where the named locks are (NamedLock.h), and long names are told apart in
// the same way. Processes in different PID namespaces (pid_namespaces(7)) never share a record,
// since thread numbers in it would not be unique. Needs /proc. Who goes last removes the files;
// those of killed processes, and of one that could not look in time whether it is the last, stay
// until the name's next user goes.
SystemError OpenSharedRecord(const std::string& memoryName, size_t size,
                             const std::string& eventName, SharedRecord& record,
                             std::span<const CWaitable* const> stops = {});

}  // namespace kestra::os
