#include "VLib/src/paths/MachineFolder.h"

#include "VLib/src/registry/RegistryText.h"
#include "VLib/src/system/OsKind.h"
#include "platform/machine/Machine.h"
#include "platform/machine/Registry.h"

namespace kestra {
namespace {

constexpr char kCurrentVersion[] = "Software\\Microsoft\\Windows\\CurrentVersion";
constexpr char kShellFolders[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

std::string WindowsFolder(const CSystemFacts& system) {
  return system.FolderPath(Folder::Windows).value_or("C:");
}

std::optional<std::string> ProgramFilesOfRegistry(CMachine& machine, uint32_t view) {
  return ReadRegistryText(machine, RegistryRoot::LocalMachine, kCurrentVersion, "ProgramFilesDir",
                          view);
}

std::optional<std::string> ProgramFiles(CMachine& machine) {
  const auto asked = machine.System().FolderPath(Folder::ProgramFiles);
  return asked ? asked : ProgramFilesOfRegistry(machine, 0);
}

struct ShellFolder {
  Folder folder;
  bool isAskedFor;
  RegistryRoot root;
  const char* valueName;
  const char* belowWindows;
};

constexpr ShellFolder kFolders[] = {
    {Folder::Desktop, false, RegistryRoot::CurrentUser, "Desktop", "\\Desktop"},
    {Folder::Programs, true, RegistryRoot::CurrentUser, "Programs", "\\Start Menu\\Programs"},
    {Folder::Startup, true, RegistryRoot::CurrentUser, "Startup",
     "\\Start Menu\\Programs\\Startup"},
    {Folder::AppData, true, RegistryRoot::CurrentUser, "AppData", "\\Application Data"},
    {Folder::CommonAppData, true, RegistryRoot::LocalMachine, "Common AppData",
     "\\Application Data"},
};

// False where it is not known whose folders are meant: a volume of several users. A registry that
// there is not, or that lacks the key, is another matter.
bool HasRoot(CMachine& machine, RegistryRoot root) {
  std::unique_ptr<CRegistryKey> key;
  return !machine.Registry() || machine.Registry()->OpenRoot(root, key) != kErrorNoSuchUser;
}

std::optional<std::string> ShellFolderPath(Folder folder, CMachine& machine) {
  for (const ShellFolder& row : kFolders) {
    if (row.folder != folder) continue;
    std::optional<std::string> path;
    if (row.isAskedFor) path = machine.System().FolderPath(folder);
    if (!path && !HasRoot(machine, row.root)) return std::nullopt;
    if (!path) path = ReadRegistryText(machine, row.root, kShellFolders, row.valueName);
    return path ? path : WindowsFolder(machine.System()) + row.belowWindows;
  }
  return std::nullopt;
}

std::optional<std::string> FolderOnWindows(Folder folder, CMachine& machine) {
  const CSystemFacts& system = machine.System();
  const bool isWide = GetBitness(machine) == 2;
  switch (folder) {
    case Folder::Windows:
      return WindowsFolder(system);
    case Folder::System:
    case Folder::Temp:
      return system.FolderPath(folder).value_or("C:");
    case Folder::Inf:
      return WindowsFolder(system) + "\\INF";
    case Folder::SystemDrive:
      return WindowsFolder(system).substr(0, 2);
    case Folder::CdDrive:
      return system.FolderPath(folder).value_or("D:");
    case Folder::ProgramFiles:
      return ProgramFiles(machine);
    case Folder::ProgramFiles32:
      return isWide ? ProgramFilesOfRegistry(machine, kKeyWow64Key32) : ProgramFiles(machine);
    case Folder::ProgramFiles64:
      return isWide ? ProgramFilesOfRegistry(machine, kKeyWow64Key64) : std::nullopt;
    default:
      return ShellFolderPath(folder, machine);
  }
}

}  // namespace

std::optional<std::string> MachineFolder(Folder folder, CMachine& machine) {
  const CSystemFacts& system = machine.System();
  return system.Family() == SystemFamily::Windows ? FolderOnWindows(folder, machine)
                                                  : system.FolderPath(folder);
}

}  // namespace kestra
