// Keeps everybody of this user from opening shared records, as a process does that hangs in the
// midst of opening one. In a child that is another user only: other tests would wait.
#pragma once

#include <stdexcept>

#include "platform/linux/os/named/NamedObjects.h"

namespace kestra::test {

class CHeldGuard {
 public:
  CHeldGuard() {
    CUniqueFd directory;
    if (os::OpenNamedObjectDirectory(directory) != kErrorSuccess ||
        os::OpenNamedFile(directory.get(), "guard", m_file) != kErrorSuccess ||
        os::LockWithin(m_file.get(), {}, 20'000, 1) != kErrorSuccess)
      throw std::runtime_error("the guard is not to be had");
  }

 private:
  CUniqueFd m_file;
};

}  // namespace kestra::test
