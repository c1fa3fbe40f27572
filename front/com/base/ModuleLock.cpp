#include "front/com/base/ModuleLock.h"

#include <atomic>

#include "front/com/base/TypeInfo.h"

namespace kestra::com {
namespace {

std::atomic<long> g_count{0};

}  // namespace

void CModuleLock::Lock() {
  ++g_count;
}

// What is kept for the objects goes with the last of them: at the library's unloading, under the
// loader's lock, it would be too late to release what belongs to other libraries.
void CModuleLock::Unlock() {
  if (--g_count == 0) ForgetTypeInfos();
}

long CModuleLock::Count() {
  return g_count;
}

}  // namespace kestra::com
