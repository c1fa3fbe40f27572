// A file in the directory of named objects that several processes have open, and that is removed
// with the last of them.
//
// Each user holds a shared flock(2) on the file, which goes with the process however that ends; so
// who gets the exclusive one is alone, and what the file holds is left over from the dead. To turn
// an exclusive lock into a shared one is not one step, and a file must not be removed while
// somebody opens it; so all that happens under the lock of a guard file.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "platform/base/SystemError.h"
#include "platform/linux/UniqueFd.h"
#include "platform/os/Wait.h"

namespace kestra::os {

// The lock under which shared files are opened and removed, one for all of them.
class CGuard {
 public:
  CGuard() = default;
  CGuard(const CGuard&) = delete;
  CGuard& operator=(const CGuard&) = delete;
  ~CGuard();
  // As LockWithin (NamedObjects.h), of which it also has the errors.
  SystemError Enter(int directory, std::span<const CWaitable* const> stops, uint32_t timeOutMs);

 private:
  CUniqueFd m_file;
};

class CSharedFile {
 public:
  // Nothing is opened yet. directory is that of the named objects.
  CSharedFile(std::shared_ptr<const CUniqueFd> directory, std::string fileName)
      : m_directory(std::move(directory)), m_fileName(std::move(fileName)) {}
  CSharedFile(CSharedFile&&) noexcept = default;
  CSharedFile& operator=(CSharedFile&&) = delete;
  // Removes the file if nobody else has it open; takes the guard for that, so its thread must not
  // hold it. Where the guard is not to be had in 100 ms, or no descriptor is left, the file stays
  // for the next user to remove.
  ~CSharedFile();

  // Takes over the file of that name, opened. The three are called in this order, under the guard.
  void Take(CUniqueFd file) { m_file = std::move(file); }
  // Whether nobody else has it open. The file is then locked against all others.
  SystemError LearnIfAlone(bool& isAlone) const;
  // Makes the caller one of those who have it open.
  SystemError Join() const;
  int get() const { return m_file.get(); }

 private:
  void RemoveIfUnused() const;

  std::shared_ptr<const CUniqueFd> m_directory;
  std::string m_fileName;
  CUniqueFd m_file;
};

}  // namespace kestra::os
