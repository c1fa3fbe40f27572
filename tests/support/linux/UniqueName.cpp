#include "tests/support/UniqueName.h"

#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <vector>

namespace kestra::test {

CUniqueName::CUniqueName() {
  static std::atomic<int> lastNumber{0};
  m_name = "test." + std::to_string(getpid()) + "." + std::to_string(++lastNumber) + ".";
}

CUniqueName::~CUniqueName() {
  std::error_code ignored;
  std::vector<std::filesystem::path> left;
  const std::string user = std::to_string(geteuid());
  for (const std::string& folder : {"/dev/shm/kestra-" + user, "/tmp/kestra-locks-" + user}) {
    for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
      if (entry.path().string().find(m_name) != std::string::npos) left.push_back(entry.path());
    }
  }
  for (const auto& path : left) std::filesystem::remove(path, ignored);
}

}  // namespace kestra::test
