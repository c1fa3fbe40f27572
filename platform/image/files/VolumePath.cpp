#include "platform/image/files/VolumePath.h"

#include <algorithm>

namespace kestra::image {
namespace {

bool IsOnVolume(std::string_view path) {
  const bool hasDrive = path.size() >= 2 && (path[0] == 'C' || path[0] == 'c') && path[1] == ':';
  return hasDrive && (path.size() == 2 || path[2] == '\\');
}

}  // namespace

SystemError SplitVolumePath(std::string_view path, std::vector<std::string>& names) {
  names.clear();
  if (!IsOnVolume(path)) return kErrorPathNotFound;
  path.remove_prefix(2);
  while (!path.empty()) {
    const size_t end = std::min(path.find('\\'), path.size());
    const std::string_view name = path.substr(0, end);
    path.remove_prefix(std::min(end + 1, path.size()));
    if (name.empty() || name == ".") continue;
    if (name == "..") {
      if (!names.empty()) names.pop_back();
      continue;
    }
    if (name.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos)
      return kErrorInvalidName;
    names.emplace_back(name);
  }
  return kErrorSuccess;
}

}  // namespace kestra::image
