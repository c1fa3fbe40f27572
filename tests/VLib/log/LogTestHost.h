// What the tests of the log give it for its host.
#pragma once

#include <fmt/format.h>

#include <map>
#include <string>

#include "VLib/src/log/Log.h"
#include "platform/os/HostEnvironment.h"
#include "tests/support/TempDirectory.h"

namespace kestra::test {

inline std::string LogVariable(const char* what) {
  return fmt::format("Marlo:CVLog:{}:0x{:x}", what, os::CurrentProcessId());
}

inline LogHost MakeLogHost(std::map<std::string, std::string> variables, std::string temporary = "",
                           CRegistry* pRegistry = nullptr) {
  LogHost host = SystemLogHost();
  host.readEnvironment = [variables](const std::string& name) -> std::optional<std::string> {
    const auto found = variables.find(name);
    if (found == variables.end()) return std::nullopt;
    return found->second;
  };
  host.temporaryDirectory = [temporary] { return temporary; };
  host.pRegistry = pRegistry;
  return host;
}

// The block at the head of a log that was written under these settings.
inline std::string SettingsBlock(const std::string& errorsOnly, std::string maxSize,
                                 const std::string& append) {
  maxSize.resize(32, ' ');
  return "ERRORS_ONLY=" + errorsOnly + "\r\nMAX_SIZE=" + maxSize + "\r\nAPPEND=" + append + "\r\n" +
         std::string(49, '-');
}
inline constexpr size_t kSettingsBlockBytes = 117;

}  // namespace kestra::test
