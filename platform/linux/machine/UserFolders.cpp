#include "platform/linux/machine/UserFolders.h"

#include <mntent.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/linux/Account.h"
#include "platform/os/HostEnvironment.h"
#include "platform/os/HostFile.h"

namespace kestra {
namespace {

constexpr size_t kMaxUserDirsFile = 64 * 1024;

std::string WithoutTrailingSeparators(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

std::optional<std::string> AbsoluteVariable(const char* name) {
  const std::optional<std::string> value = os::ReadEnvironment(name);
  if (!value || !value->starts_with('/')) return std::nullopt;
  return WithoutTrailingSeparators(*value);
}

std::string Below(const std::string& folder, const std::string& name) {
  return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

}  // namespace

std::optional<std::string> HomeFolder() {
  if (auto home = AbsoluteVariable("HOME")) return home;
  const std::optional<Account> account = ReadAccount(geteuid());
  if (!account || !account->home.starts_with('/')) return std::nullopt;
  return WithoutTrailingSeparators(account->home);
}

std::optional<std::string> BaseFolder(const char* variable, const std::string& fallback) {
  if (auto folder = AbsoluteVariable(variable)) return folder;
  const std::optional<std::string> home = HomeFolder();
  if (!home) return std::nullopt;
  return Below(*home, fallback);
}

std::optional<std::string> DecodeDesktopEntry(const std::string& content, const std::string& home) {
  constexpr std::string_view kKey = "XDG_DESKTOP_DIR=\"";
  constexpr std::string_view kHome = "$HOME/";
  std::string_view rest = content;
  std::optional<std::string> folder;
  while (!rest.empty()) {
    const size_t end = rest.find('\n');
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    if (!line.starts_with(kKey)) continue;
    line.remove_prefix(kKey.size());
    const std::string value(line.substr(0, line.find('"')));
    if (value.starts_with(kHome)) {
      folder = WithoutTrailingSeparators(Below(home, value.substr(kHome.size())));
    } else if (value.starts_with('/')) {
      folder = WithoutTrailingSeparators(value);
    }
  }
  return folder;
}

std::optional<std::string> DesktopFolder() {
  if (auto folder = AbsoluteVariable("XDG_DESKTOP_DIR")) return folder;
  const std::optional<std::string> home = HomeFolder();
  if (!home) return std::nullopt;
  if (const auto config = BaseFolder("XDG_CONFIG_HOME", ".config")) {
    std::string content;
    os::ReadFileHead(Below(*config, "user-dirs.dirs"), kMaxUserDirsFile, content);
    if (auto folder = DecodeDesktopEntry(content, *home)) return folder;
  }
  return Below(*home, "Desktop");
}

std::optional<std::string> CdDriveFolder() {
  const std::unique_ptr<FILE, decltype(&endmntent)> mounts(setmntent("/proc/self/mounts", "re"),
                                                           &endmntent);
  if (mounts) {
    char buffer[8192];
    mntent entry{};
    while (getmntent_r(mounts.get(), &entry, buffer, sizeof buffer)) {
      if (std::string_view(entry.mnt_fsname).starts_with("/dev/sr")) return entry.mnt_dir;
    }
  }
  if (os::DirectoryExists("/media/cdrom")) return "/media/cdrom";
  return std::nullopt;
}

}  // namespace kestra
