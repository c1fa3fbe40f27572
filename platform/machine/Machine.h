// The machine that is diagnosed: an object with one small interface per facility. A root describes
// one machine and hands it to its modules; nothing reaches for a global one, so that two machines
// can be asked in one process and tests bring their own.
//
// Rules that hold for every facility:
// - It speaks in the terms of the Windows operations: Win32 error numbers, file times, attribute
//   words. The choice between operations and their fall-backs stands above.
// - A facility that a machine does not have is null: "not applicable". There is nothing to show,
//   and an active operation fails with kErrorCallNotImplemented.
// - "There is none" and "it could not be read" never look alike: the second is an error number.
#pragma once

#include "platform/base/Ref.h"

namespace kestra {

class CSystemFacts;
class CFileSystem;
class CRegistry;
class CProcesses;

// Facilities live as long as the machine, and may be used from any thread.
class CMachine : public CCounted<CMachine> {
 public:
  virtual ~CMachine() = default;
  // Nothing of it can be changed, and nothing is tried: every active operation fails with
  // kErrorWriteProtect before it begins.
  virtual bool IsReadOnly() const { return false; }
  virtual CSystemFacts& System() = 0;
  virtual CFileSystem* Files() = 0;
  virtual CRegistry* Registry() = 0;
  virtual CProcesses* Processes() = 0;
};

// The machine that this process runs on. One object for the whole process.
Ref<CMachine> LiveMachine();

}  // namespace kestra
