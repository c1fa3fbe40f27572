// What the calls of this folder share: the ways in which their libraries tell how a call ended.
#pragma once

#include "platform/base/SystemError.h"
#include "platform/win32/base/UniqueHandle.h"

namespace kestra {

// The Win32 number of an NTSTATUS; success for those that are not negative.
SystemError ErrorOfStatus(LONG status);

inline SystemError ErrorOf(BOOL succeeded) {
  return succeeded ? kErrorSuccess : LastError();
}

}  // namespace kestra
