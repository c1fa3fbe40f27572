#include "tests/support/FakeMachine.h"

namespace kestra::test {
namespace {

std::map<Folder, std::string> WindowsFolders() {
  return {{Folder::Windows, "C:\\Windows"},
          {Folder::System, "C:\\Windows\\System32"},
          {Folder::Temp, "C:\\Temp"},
          {Folder::Programs, "C:\\Users\\Ann\\Programs"},
          {Folder::Startup, "C:\\Users\\Ann\\Startup"},
          {Folder::AppData, "C:\\Users\\Ann\\Data"},
          {Folder::CommonAppData, "C:\\Data"},
          {Folder::ProgramFiles, "C:\\Program Files"},
          {Folder::CdDrive, "E:"}};
}

std::map<Folder, std::string> LinuxFolders() {
  return {{Folder::Windows, "/"},          {Folder::System, "/usr/lib"},
          {Folder::Temp, "/tmp"},          {Folder::AppData, "/home/ann/.config"},
          {Folder::CommonAppData, "/etc"}, {Folder::SystemDrive, ""}};
}

}  // namespace

WindowsVersion VersionOfKind(uint32_t kind) {
  constexpr uint32_t kWorkstation = 1, kServer = 3;
  const WindowsVersion versions[] = {
      {.platformId = 3},
      {.platformId = 0, .major = 1, .minor = 30},
      {.platformId = 1, .major = 4, .minor = 0},
      {.platformId = 1, .major = 4, .minor = 10},
      {.platformId = 1, .major = 4, .minor = 10, .text = " A "},
      {.platformId = 1, .major = 4, .minor = 90},
      {.platformId = 2, .major = 3, .minor = 51},
      {.platformId = 2, .major = 4, .minor = 0},
      {.platformId = 2, .major = 5, .minor = 0, .productType = kWorkstation},
      {.platformId = 2, .major = 5, .minor = 1, .productType = kWorkstation},
      {.platformId = 2, .major = 5, .minor = 2, .productType = kServer},
      {.platformId = 2, .major = 6, .minor = 0, .productType = kWorkstation},
      {.platformId = 2, .major = 6, .minor = 0, .productType = kServer},
      {.platformId = 2, .major = 5, .minor = 2, .productType = kServer, .isServerR2 = true},
  };
  return versions[kind];
}

CFakeSystemFacts::CFakeSystemFacts(SystemFamily systemFamily) : family(systemFamily) {
  if (family == SystemFamily::Windows) {
    windows = VersionOfKind(9);
    folders = WindowsFolders();
  } else {
    width.isWide = true;
    maxPath = 4096;
    folders = LinuxFolders();
  }
}

std::optional<std::string> CFakeSystemFacts::FolderPath(Folder folder) const {
  const auto found = folders.find(folder);
  if (found == folders.end()) return std::nullopt;
  return found->second;
}

CFakeMachine::CFakeMachine(SystemFamily family)
    : system(family), files(system.PathSeparator()), hasRegistry(family == SystemFamily::Windows) {
  files.AddDirectory(family == SystemFamily::Windows ? "C:\\" : "/");
}

}  // namespace kestra::test
