#include "tests/support/TempDirectory.h"

#include <atomic>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "platform/os/HostEnvironment.h"

namespace kestra::test {

CTempDirectory::CTempDirectory() {
  static std::atomic<uint32_t> lastNumber{0};
  const std::string base = os::TemporaryDirectory();
  if (base.empty()) throw std::runtime_error("there is no temporary directory");
  do {
    m_path = base + os::PathSeparator() + "test-" + std::to_string(os::CurrentProcessId()) + "-" +
             std::to_string(++lastNumber);
  } while (!std::filesystem::create_directory(ToPath(m_path)));
}

CTempDirectory::~CTempDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(ToPath(m_path), ignored);
}

std::string CTempDirectory::operator/(const std::string& name) const {
  return m_path + os::PathSeparator() + name;
}

std::string CTempDirectory::Write(const std::string& name, const std::string& content) const {
  const std::string path = *this / name;
  WriteWholeFile(path, content);
  return path;
}

std::string ReadWholeFile(const std::string& path) {
  std::ifstream file(ToPath(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteWholeFile(const std::string& path, const std::string& content) {
  std::ofstream file(ToPath(path), std::ios::binary | std::ios::trunc);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
}

}  // namespace kestra::test
