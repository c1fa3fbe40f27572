#include "platform/os/HostEnvironment.h"
#include "platform/os/HostFile.h"
#include "platform/win32/base/Wide.h"

namespace kestra::os {

// Mostly the user's own; and what lies there has the access lists of its directory.
std::string TemporaryDirectory() {
  std::string path =
      Narrow(FetchText([](wchar_t* buffer, DWORD size) { return GetTempPathW(size, buffer); }));
  while (path.ends_with('\\')) path.pop_back();
  return DirectoryExists(path + '\\') ? path : std::string();
}

}  // namespace kestra::os
