#include "tests/support/UniqueName.h"

#include <atomic>

#include "platform/os/HostEnvironment.h"

namespace kestra::test {

CUniqueName::CUniqueName() {
  static std::atomic<int> lastNumber{0};
  m_name =
      "test." + std::to_string(os::CurrentProcessId()) + "." + std::to_string(++lastNumber) + ".";
}

// The system keeps nothing under a name that nobody has open.
CUniqueName::~CUniqueName() = default;

}  // namespace kestra::test
