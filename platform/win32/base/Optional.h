// Functions that not every system has: looked up at run time, and null where they are missing.
//
//   static const auto pIsWow64 = Optional<BOOL WINAPI(HANDLE, PBOOL)>(L"kernel32.dll",
//   "IsWow64Process"); if (pIsWow64) ...
#pragma once

#include "platform/win32/base/Windows.h"

namespace kestra {

// The export of a library of the system's own, which is loaded from the system folder if it is not
// there yet and stays loaded.
FARPROC OptionalExport(const wchar_t* library, const char* name);

template <class Function>
Function* Optional(const wchar_t* library, const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(OptionalExport(library, name)));
}

}  // namespace kestra
