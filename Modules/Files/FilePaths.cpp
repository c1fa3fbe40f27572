#include "Modules/Files/FilePaths.h"

namespace kestra {
namespace {

// "/", "C:\" and "\\": what may not lose its last separator.
bool IsRoot(std::string_view path, char separator) {
  if (path.find_first_not_of(separator) == std::string_view::npos) return true;
  return separator == '\\' && path.size() == 3 && path[1] == ':';
}

}  // namespace

std::string JoinPath(std::string directory, std::string_view name, char separator) {
  if (!directory.empty() && directory.back() != separator) directory += separator;
  return directory.append(name);
}

std::string TrimSeparators(std::string path, char separator) {
  while (path.size() > 1 && path.back() == separator && !IsRoot(path, separator)) path.pop_back();
  if (separator == '/' && path.find_first_not_of('/') == std::string::npos && !path.empty())
    path = "/";
  return path;
}

std::string_view LastPart(std::string_view path, char separator) {
  const size_t last = path.rfind(separator);
  return last == std::string_view::npos ? path : path.substr(last + 1);
}

std::string ParentPath(const std::string& path, char separator) {
  const size_t last = path.rfind(separator);
  return last == std::string::npos ? std::string()
                                   : TrimSeparators(path.substr(0, last + 1), separator);
}

bool HasSeparator(std::string_view text, char separator) {
  return text.find('\\') != std::string_view::npos ||
         text.find(separator) != std::string_view::npos;
}

}  // namespace kestra
