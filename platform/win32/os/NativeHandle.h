// Between the seam's handles, which are numbers, and the system's.
#pragma once

#include "platform/os/Wait.h"
#include "platform/win32/base/UniqueHandle.h"

namespace kestra::os {

// Null counts as none too: hosts say it so.
inline bool IsHandle(NativeHandle handle) {
  return handle != kNoHandle && handle != 0;
}
inline HANDLE HandleOf(NativeHandle handle) {
  return reinterpret_cast<HANDLE>(handle);
}
// Of what the caller goes on to own.
inline NativeHandle NativeOf(HANDLE handle) {
  return handle ? reinterpret_cast<NativeHandle>(handle) : kNoHandle;
}
inline void CloseNative(NativeHandle handle) {
  if (IsHandle(handle)) CUniqueHandle(HandleOf(handle));
}

}  // namespace kestra::os
