#include "platform/win32/machine/processes/NativeCalls.h"

#include "platform/win32/base/Optional.h"

namespace kestra {

SystemError ErrorOfStatus(LONG status) {
  if (status >= 0) return kErrorSuccess;
  static const auto pToDosError =
      Optional<ULONG WINAPI(LONG)>(L"ntdll.dll", "RtlNtStatusToDosError");
  const ULONG error = pToDosError ? pToDosError(status) : ERROR_GEN_FAILURE;
  return error == ERROR_SUCCESS ? kErrorGenFailure : error;
}

}  // namespace kestra
