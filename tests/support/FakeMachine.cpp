#include "tests/support/FakeMachine.h"

namespace kestra::test {
namespace {

std::map<Folder, std::string> WindowsFolders() {
  return {{Folder::Windows, "C:\\Windows"},
          {Folder::System, "C:\\Windows\\System32"},
          {Folder::Temp, "C:\\Temp"},
          {Folder::Inf, "C:\\Windows\\INF"},
          {Folder::Desktop, "C:\\Users\\Ann\\Desktop"},
          {Folder::Programs, "C:\\Users\\Ann\\Programs"},
          {Folder::Startup, "C:\\Users\\Ann\\Startup"},
          {Folder::AppData, "C:\\Users\\Ann\\Data"},
          {Folder::CommonAppData, "C:\\Data"},
          {Folder::ProgramFiles, "C:\\Program Files"},
          {Folder::ProgramFiles32, "C:\\Program Files"},
          {Folder::CdDrive, "D:"},
          {Folder::SystemDrive, "C:"}};
}

std::map<Folder, std::string> LinuxFolders() {
  return {{Folder::Windows, "/"},          {Folder::System, "/usr/lib"},
          {Folder::Temp, "/tmp"},          {Folder::AppData, "/home/ann/.config"},
          {Folder::CommonAppData, "/etc"}, {Folder::SystemDrive, ""}};
}

}  // namespace

CFakeSystemFacts::CFakeSystemFacts(SystemFamily systemFamily) : family(systemFamily) {
  if (family == SystemFamily::Windows) {
    systemClass = 9;
    folders = WindowsFolders();
  } else {
    wordWidth = 2;
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
