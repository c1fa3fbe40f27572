#include "tests/support/ScopedTimeZone.h"

#include <cstdlib>
#include <ctime>

#include "platform/os/HostEnvironment.h"

namespace kestra::test {

CScopedTimeZone::CScopedTimeZone(const std::string& zone) : m_former(os::ReadEnvironment("TZ")) {
  setenv("TZ", zone.c_str(), 1);
  tzset();
}

CScopedTimeZone::~CScopedTimeZone() {
  if (m_former) {
    setenv("TZ", m_former->c_str(), 1);
  } else {
    unsetenv("TZ");
  }
  tzset();
}

}  // namespace kestra::test
