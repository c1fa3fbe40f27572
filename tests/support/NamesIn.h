#pragma once

#include <filesystem>
#include <set>
#include <string>

namespace kestra::test {

// What lies in a directory.
inline std::set<std::string> NamesIn(const std::string& directory) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

}  // namespace kestra::test
