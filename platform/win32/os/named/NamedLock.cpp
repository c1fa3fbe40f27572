#include "platform/os/NamedLock.h"

#include "platform/win32/os/named/MutexLock.h"
#include "platform/win32/os/named/ObjectName.h"

namespace kestra::os {

NamedLockResult AcquireNamedLock(const std::string& name, const CWaitable* pTermination,
                                 uint32_t timeOutMs, std::unique_ptr<CNamedLock>& lock) {
  return AcquireMutexLock(NameSpace::Machine, ObjectName(name), {&pTermination, 1}, timeOutMs,
                          lock);
}

}  // namespace kestra::os
