// A directory of the test's own, removed with all that is in it at the end of the scope.
#pragma once

#include <filesystem>
#include <string>

namespace kestra::test {

class CTempDirectory {
 public:
  CTempDirectory();
  ~CTempDirectory();
  CTempDirectory(const CTempDirectory&) = delete;
  CTempDirectory& operator=(const CTempDirectory&) = delete;

  std::string Path() const { return m_path; }
  // The path of a name in the directory.
  std::string operator/(const std::string& name) const;
  // Writes a file and gives its path.
  std::string Write(const std::string& name, const std::string& content) const;

 private:
  std::string m_path;
};

// The paths of the tests are UTF-8 on every system; what the standard library makes of a plain text
// is not.
inline std::filesystem::path ToPath(const std::string& utf8) {
  return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string ReadWholeFile(const std::string& path);
void WriteWholeFile(const std::string& path, const std::string& content);

}  // namespace kestra::test
