#include "platform/os/HostEnvironment.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "platform/linux/Account.h"

namespace kestra::os {
namespace {

// What the loader knows of the file that this code is in.
bool FindThisLibrary(Dl_info& info, link_map*& pMap) {
  void* pFound = nullptr;
  const auto here = reinterpret_cast<const void*>(&FindThisLibrary);
  if (!dladdr1(here, &info, &pFound, RTLD_DL_LINKMAP)) return false;
  pMap = static_cast<link_map*>(pFound);
  return true;
}

std::string AbsolutePath(const char* path) {
  if (path[0] == '/') return path;
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path, nullptr), &std::free);
  return resolved ? resolved.get() : path;
}

}  // namespace

std::optional<std::string> ReadEnvironment(const std::string& name) {
  const char* value = std::getenv(name.c_str());
  if (!value) return std::nullopt;
  return std::string(value);
}

std::optional<std::string> CurrentUserName() {
  char host[HOST_NAME_MAX + 1] = {};
  if (gethostname(host, HOST_NAME_MAX) != 0) return std::nullopt;
  const std::optional<Account> account = ReadAccount(geteuid());
  return std::string(host) + "\\" + (account ? account->name : std::to_string(geteuid()));
}

uint32_t CurrentProcessId() {
  return static_cast<uint32_t>(getpid());
}

std::string ExecutablePath() {
  char buffer[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer);
  if (length <= 0) return std::string();
  std::string_view path(buffer, static_cast<size_t>(length));
  constexpr std::string_view kDeleted = " (deleted)";
  if (path.ends_with(kDeleted)) path.remove_suffix(kDeleted.size());
  return std::string(path);
}

std::string LibraryPath() {
  Dl_info info{};
  link_map* pMap = nullptr;
  // The loader has no name for the executable itself, which this code may be linked into.
  if (!FindThisLibrary(info, pMap) || !pMap || !pMap->l_name || !*pMap->l_name)
    return ExecutablePath();
  return AbsolutePath(pMap->l_name);
}

uintptr_t LibraryLoadAddress() {
  Dl_info info{};
  link_map* pMap = nullptr;
  return FindThisLibrary(info, pMap) ? reinterpret_cast<uintptr_t>(info.dli_fbase) : 0;
}

CRegistry* HostRegistry() {
  return nullptr;
}
char PathSeparator() {
  return '/';
}
size_t RootLength(const std::string& path) {
  return path.starts_with('/') ? 1 : 0;
}

}  // namespace kestra::os
