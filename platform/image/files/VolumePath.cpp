#include "platform/image/files/VolumePath.h"

#include <algorithm>

namespace kestra::image {
namespace {

constexpr std::string_view kSeparators = "\\/";

bool IsOnVolume(std::string_view path) {
  const bool hasDrive = path.size() >= 2 && (path[0] == 'C' || path[0] == 'c') && path[1] == ':';
  return hasDrive && (path.size() == 2 || kSeparators.find(path[2]) != std::string_view::npos);
}

// What Windows takes off the end of a name in a path: one period, and from the last name all
// periods and blanks. Source: the page "File path formats on Windows systems", "Trim characters".
std::string_view TrimmedName(std::string_view name, bool isLast) {
  if (isLast) return name.substr(0, name.find_last_not_of(". ") + 1);
  if (name.ends_with('.') && !name.ends_with("..")) name.remove_suffix(1);
  return name;
}

}  // namespace

SystemError SplitVolumePath(std::string_view path, std::vector<std::string>& names) {
  names.clear();
  constexpr std::string_view kPrefix = R"(\\?\)";
  if (path.starts_with(kPrefix)) path.remove_prefix(kPrefix.size());
  if (!IsOnVolume(path)) return kErrorPathNotFound;
  path.remove_prefix(2);
  while (!path.empty()) {
    const size_t end = std::min(path.find_first_of(kSeparators), path.size());
    std::string_view name = path.substr(0, end);
    const bool isLast = end == path.size();
    path.remove_prefix(std::min(end + 1, path.size()));
    if (name == "..") {
      if (!names.empty()) names.pop_back();
      continue;
    }
    name = TrimmedName(name, isLast);
    if (name.empty()) continue;
    if (name.find('\0') != std::string_view::npos) return kErrorInvalidName;
    names.emplace_back(name);
  }
  return kErrorSuccess;
}

}  // namespace kestra::image
