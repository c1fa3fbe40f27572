#include "platform/os/MessageText.h"

#include <dlfcn.h>

#include <algorithm>
#include <iterator>

#include "platform/os/HostEnvironment.h"

namespace kestra::os {
namespace {

struct ErrorText {
  SystemError code;
  const char* text;
};

constexpr ErrorText kErrorTexts[] = {
#include "platform/linux/os/SystemErrorTable.inc"
};

}  // namespace

std::optional<std::string> SystemErrorLine(SystemError code) {
  const auto* row = std::lower_bound(std::begin(kErrorTexts), std::end(kErrorTexts), code,
                                     [](const ErrorText& r, SystemError c) { return r.code < c; });
  if (row == std::end(kErrorTexts) || row->code != code) return std::nullopt;
  return std::string(row->text);
}

std::optional<std::string> SystemErrorText(SystemError code) {
  std::optional<std::string> text = SystemErrorLine(code);
  if (text) *text += "\r\n";
  return text;
}

// There is no network message file, no remote access service and no string table in an ELF object.
std::optional<std::string> NetworkErrorText(SystemError) {
  return std::nullopt;
}
std::optional<std::string> RemoteAccessErrorText(SystemError) {
  return std::nullopt;
}
std::optional<std::string> LoadModuleString(uintptr_t, uint32_t) {
  return std::nullopt;
}

std::optional<std::string> ModuleFileName(uintptr_t module) {
  if (module == 0) {
    std::string path = LibraryPath();
    if (path.empty()) return std::nullopt;
    return path;
  }
  Dl_info info{};
  if (!dladdr(reinterpret_cast<const void*>(module), &info) || !info.dli_fname) return std::nullopt;
  return std::string(info.dli_fname);
}

}  // namespace kestra::os
