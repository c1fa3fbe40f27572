#include "platform/win32/base/Optional.h"

#include <string>

#include "platform/win32/base/Wide.h"

namespace kestra {

// By its full path, so that a file of that name beside the host, or in its current directory, is
// never taken for the system's.
FARPROC OptionalExport(const wchar_t* library, const char* name) {
  HMODULE module = GetModuleHandleW(library);
  if (!module) {
    const std::wstring folder = FetchText(GetSystemDirectoryW);
    if (folder.empty()) return nullptr;
    module = LoadLibraryW((folder + L'\\' + library).c_str());
  }
  return module ? GetProcAddress(module, name) : nullptr;
}

}  // namespace kestra
