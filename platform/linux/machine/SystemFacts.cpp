#include "platform/machine/SystemFacts.h"

#include <limits.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <string_view>

#include "platform/linux/machine/Facilities.h"
#include "platform/linux/machine/UserFolders.h"
#include "platform/os/HostEnvironment.h"

namespace kestra {
namespace {

// The system's width is the kernel's: a process of 32 bits may run on a system of 64.
SystemWidth KernelWidth() {
  constexpr bool kIsNarrow = sizeof(void*) < 8;
  SystemWidth width;
  utsname names{};
  width.isKnown = !kIsNarrow || uname(&names) == 0;
  width.isWide = !kIsNarrow || std::string_view(names.machine).find("64") != std::string_view::npos;
  width.isRedirected = kIsNarrow && width.isWide;
  return width;
}

std::string TemporaryFolder() {
  std::string folder = os::ReadEnvironment("TMPDIR").value_or("");
  while (folder.size() > 1 && folder.ends_with('/')) folder.pop_back();
  return folder.starts_with('/') ? folder : "/tmp";
}

class CLinuxSystemFacts final : public CSystemFacts {
 public:
  SystemFamily Family() const override { return SystemFamily::Linux; }
  std::optional<WindowsVersion> Windows() const override { return std::nullopt; }
  SystemWidth Width() const override { return KernelWidth(); }
  std::string ComputerName() const override {
    char name[HOST_NAME_MAX + 1] = {};
    if (gethostname(name, sizeof name - 1) != 0) return std::string();
    return name;
  }
  // The table that docs/paths-on-linux.md explains.
  std::optional<std::string> FolderPath(Folder folder) const override {
    switch (folder) {
      case Folder::Windows:
        return "/";
      case Folder::System:
        return "/usr/lib";
      case Folder::Temp:
        return TemporaryFolder();
      case Folder::Inf:
        return std::nullopt;
      case Folder::Desktop:
        return DesktopFolder();
      case Folder::Programs:
        return Below(BaseFolder("XDG_DATA_HOME", ".local/share"), "applications");
      case Folder::Startup:
        return Below(BaseFolder("XDG_CONFIG_HOME", ".config"), "autostart");
      case Folder::AppData:
        return BaseFolder("XDG_CONFIG_HOME", ".config");
      case Folder::CommonAppData:
        return "/etc";
      case Folder::ProgramFiles:
        return "/opt";
      case Folder::ProgramFiles32:
        return "/opt";
      case Folder::ProgramFiles64:
        return KernelWidth().isWide ? std::optional("/opt") : std::nullopt;
      case Folder::CdDrive:
        return CdDriveFolder();
      case Folder::SystemDrive:
        return "";
    }
    return std::nullopt;
  }
  char PathSeparator() const override { return '/'; }
  size_t MaxPath() const override { return PATH_MAX; }

 private:
  static std::optional<std::string> Below(std::optional<std::string> folder, const char* name) {
    if (folder) *folder += folder->ends_with('/') ? name : std::string("/") + name;
    return folder;
  }
};

}  // namespace

std::unique_ptr<CSystemFacts> MakeLinuxSystemFacts() {
  return std::make_unique<CLinuxSystemFacts>();
}

}  // namespace kestra
