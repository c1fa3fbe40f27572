// The account database.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace kestra {

struct Account {
  std::string name;
  std::string home;
};

// Nothing for a user without an account. May wait for a directory service.
std::optional<Account> ReadAccount(uid_t uid);

}  // namespace kestra
