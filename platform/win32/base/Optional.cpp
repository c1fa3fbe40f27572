#include "platform/win32/base/Optional.h"

#include <string>

#include "platform/win32/base/Wide.h"

namespace kestra {

// By its full path, so that a file of that name beside the host, or in its current directory, or
// one that the host has loaded from elsewhere, is never taken for the system's. Each call keeps one
// more reference, so that nobody else's unloading it takes the function away.
FARPROC OptionalExport(const wchar_t* library, const char* name) {
  const std::wstring folder = FetchText(GetSystemDirectoryW);
  if (folder.empty()) return nullptr;
  const HMODULE module = LoadLibraryW((folder + L'\\' + library).c_str());
  return module ? GetProcAddress(module, name) : nullptr;
}

}  // namespace kestra
