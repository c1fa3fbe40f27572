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
// loader's lock, it would be too late to release what belongs to other libraries. It goes before
// the count is 0, since from then on the library may be unloaded.
void CModuleLock::Unlock() {
  long count = g_count;
  do {
    if (count == 1) ForgetTypeInfos();
  } while (!g_count.compare_exchange_weak(count, count - 1));
}

long CModuleLock::Count() {
  return g_count;
}

}  // namespace kestra::com
