#include "platform/linux/Account.h"

#include <pwd.h>

#include <cerrno>
#include <vector>

namespace kestra {

std::optional<Account> ReadAccount(uid_t uid) {
  constexpr size_t kMaxBytes = 1024 * 1024;
  std::vector<char> buffer(1024);
  passwd account{};
  passwd* pFound = nullptr;
  int status = 0;
  while ((status = getpwuid_r(uid, &account, buffer.data(), buffer.size(), &pFound)) == ERANGE &&
         buffer.size() < kMaxBytes) {
    buffer.resize(buffer.size() * 2);
  }
  if (status != 0 || !pFound) return std::nullopt;
  return Account{pFound->pw_name ? pFound->pw_name : "", pFound->pw_dir ? pFound->pw_dir : ""};
}

}  // namespace kestra
