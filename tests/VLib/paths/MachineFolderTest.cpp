#include <gtest/gtest.h>

#include "VLib/src/paths/MachineFolder.h"
#include "tests/support/FakeMachine.h"

namespace kestra {
namespace {

using test::CFakeMachine;

constexpr char kCurrentVersion[] = "Software\\Microsoft\\Windows\\CurrentVersion";
constexpr char kShellFolders[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

struct FolderCase {
  Folder folder;
  const char* asked;     // with all that the system's functions tell
  const char* looked;    // without that, out of the registry
  const char* supposed;  // without either
};

// Null: there is none.
const FolderCase kCases[] = {
    {Folder::Windows, "C:\\Windows", "C:", "C:"},
    {Folder::System, "C:\\Windows\\System32", "C:", "C:"},
    {Folder::Temp, "C:\\Temp", "C:", "C:"},
    {Folder::Inf, "C:\\Windows\\INF", "C:\\INF", "C:\\INF"},
    {Folder::SystemDrive, "C:", "C:", "C:"},
    {Folder::CdDrive, "E:", "D:", "D:"},
    {Folder::Desktop, "R:\\Desktop", "R:\\Desktop", "C:\\Desktop"},
    {Folder::Programs, "C:\\Users\\Ann\\Programs", "R:\\Programs", "C:\\Start Menu\\Programs"},
    {Folder::Startup, "C:\\Users\\Ann\\Startup", "R:\\Startup",
     "C:\\Start Menu\\Programs\\Startup"},
    {Folder::AppData, "C:\\Users\\Ann\\Data", "R:\\AppData", "C:\\Application Data"},
    {Folder::CommonAppData, "C:\\Data", "R:\\Common", "C:\\Application Data"},
    {Folder::ProgramFiles, "C:\\Program Files", "R:\\Program Files", nullptr},
    {Folder::ProgramFiles32, "C:\\Program Files", "R:\\Program Files", nullptr},
    {Folder::ProgramFiles64, nullptr, nullptr, nullptr},
};

void FillRegistry(CFakeMachine& machine) {
  auto& registry = machine.registry;
  for (const char* name : {"Desktop", "Programs", "Startup", "AppData"}) {
    registry.SetString(RegistryRoot::CurrentUser, kShellFolders, name, std::string("R:\\") + name);
  }
  registry.SetString(RegistryRoot::LocalMachine, kShellFolders, "Common AppData", "R:\\Common");
  registry.SetString(RegistryRoot::LocalMachine, kCurrentVersion, "ProgramFilesDir",
                     "R:\\Program Files");
}

std::optional<std::string> Text(const char* text) {
  return text ? std::optional<std::string>(text) : std::nullopt;
}

TEST(MachineFolder, FallsBack) {
  for (const FolderCase& c : kCases) {
    SCOPED_TRACE(static_cast<int>(c.folder));
    auto machine = MakeRef<CFakeMachine>();
    FillRegistry(*machine);
    machine->system.folders[Folder::Desktop] = "C:\\never asked for";
    EXPECT_EQ(MachineFolder(c.folder, *machine), Text(c.asked));
    machine->system.folders.clear();
    EXPECT_EQ(MachineFolder(c.folder, *machine), Text(c.looked));
    machine->hasRegistry = false;
    EXPECT_EQ(MachineFolder(c.folder, *machine), Text(c.supposed));
  }
}

TEST(MachineFolder, ProgramsOfEachWidthOnAWideSystem) {
  auto machine = MakeRef<CFakeMachine>();
  FillRegistry(*machine);
  machine->system.width.isWide = true;
  EXPECT_EQ(MachineFolder(Folder::ProgramFiles32, *machine), "R:\\Program Files");
  EXPECT_EQ(machine->registry.lastAccess, kKeyQueryValue | kKeyWow64Key32);
  EXPECT_EQ(MachineFolder(Folder::ProgramFiles64, *machine), "R:\\Program Files");
  EXPECT_EQ(machine->registry.lastAccess, kKeyQueryValue | kKeyWow64Key64);
  EXPECT_EQ(MachineFolder(Folder::ProgramFiles, *machine), "C:\\Program Files");
}

TEST(MachineFolder, OnLinuxTheMachineAlone) {
  auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  EXPECT_EQ(MachineFolder(Folder::Windows, *machine), "/");
  EXPECT_EQ(MachineFolder(Folder::Inf, *machine), std::nullopt);
}

}  // namespace
}  // namespace kestra
