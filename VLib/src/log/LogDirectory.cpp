#include "VLib/src/log/LogDirectory.h"

#include <fmt/format.h>

#include <vector>

#include "VLib/src/text/Text.h"
#include "platform/os/HostEnvironment.h"

namespace kestra {
namespace {

// Windows takes both, and environment variables hold either.
std::string_view Separators() {
  return os::PathSeparator() == '\\' ? "\\/" : "/";
}

// Least index of the separator before a directory that is made: behind "C:\" on Windows.
size_t LeastSeparatorIndex() {
  return os::PathSeparator() == '\\' ? 3 : 0;
}

std::string TemporaryLogDirectory(const LogHost& host) {
  const std::string path = host.temporaryDirectory();
  const std::string trimmed(TrimRight(path, Separators()));
  if (trimmed.empty() && os::PathSeparator() == '\\') return "C:";
  return trimmed;
}

}  // namespace

bool MakeDirectories(const std::string& path) {
  std::string current(TrimRight(path, Separators()));
  std::vector<std::string> missing;
  // A path of the system's greatest length has at most some thousand parts.
  while (!current.empty() && !os::PathExists(current)) {
    const size_t last = current.find_last_of(Separators());
    if (last == std::string::npos || last < LeastSeparatorIndex()) return false;
    missing.push_back(current);
    current = std::string(TrimRight(current.substr(0, last), Separators()));
  }
  if (!current.empty() && !os::DirectoryExists(current)) return false;
  if (path.empty()) return false;
  for (; !missing.empty(); missing.pop_back()) {
    // Another process may make the same directory at the same moment.
    if (os::MakeDirectory(missing.back()) != kErrorSuccess && !os::DirectoryExists(missing.back()))
      return false;
  }
  return true;
}

std::string FindLogDirectory(const LogHost& host, const std::string& wanted) {
  std::string directory = wanted;
  if (directory.empty())
    directory = host.readEnvironment(LogVariableName("Dir")).value_or(std::string());
  if (!directory.empty() && MakeDirectories(directory) && !os::OthersCanWrite(directory))
    return directory;
  return TemporaryLogDirectory(host);
}

std::string LogVariableName(const char* what) {
  return fmt::format("Marlo:CVLog:{}:0x{:x}", what, os::CurrentProcessId());
}

}  // namespace kestra
