#include <gtest/gtest.h>

#include "platform/machine/Machine.h"
#include "platform/machine/SystemFacts.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/base/Windows.h"

namespace kestra {
namespace {

// What the registry, which the functions do not read it from, says of the same.
std::string TextOf(const wchar_t* key, const wchar_t* name) {
  wchar_t text[256] = {};
  DWORD size = sizeof text;
  RegGetValueW(HKEY_LOCAL_MACHINE, key, name, RRF_RT_REG_SZ, nullptr, text, &size);
  return Narrow(text);
}

TEST(WindowsFacts, TellTheSystemAndNotWhatAHostIsShown) {
  const Ref<CMachine> machine = LiveMachine();
  EXPECT_EQ(machine, LiveMachine());
  const CSystemFacts& system = machine->System();
  EXPECT_EQ(system.Family(), SystemFamily::Windows);
  const auto version = system.Windows();
  ASSERT_TRUE(version);
  EXPECT_EQ(version->platformId, 2u);
  const std::string build =
      TextOf(L"Software\\Microsoft\\Windows NT\\CurrentVersion", L"CurrentVersion");
  const std::string told = std::to_string(version->major) + "." + std::to_string(version->minor);
  // From Windows 10 on the text stays at 6.3.
  EXPECT_TRUE(told == build || (version->major >= 10 && build == "6.3")) << told << " " << build;
  EXPECT_EQ(version->architecture, 9u);
  EXPECT_TRUE(version->productType && *version->productType >= 1 && *version->productType <= 3);
  EXPECT_TRUE(version->product);
  EXPECT_TRUE(system.Width().isKnown);
  EXPECT_EQ(system.Width().isRedirected, false);
  EXPECT_TRUE(system.Width().isWide);
  EXPECT_EQ(
      system.ComputerName(),
      TextOf(L"System\\CurrentControlSet\\Control\\ComputerName\\ComputerName", L"ComputerName"));
  EXPECT_TRUE(machine->Registry() && machine->Files() && machine->Processes());
}

TEST(WindowsFacts, GiveFoldersWithoutSeparatorAndOnlyThoseThatFunctionsTell) {
  const CSystemFacts& system = LiveMachine()->System();
  EXPECT_EQ(system.FolderPath(Folder::System), *system.FolderPath(Folder::Windows) + "\\system32");
  for (const Folder folder :
       {Folder::Windows, Folder::System, Folder::Temp, Folder::Programs, Folder::Startup,
        Folder::AppData, Folder::CommonAppData, Folder::ProgramFiles}) {
    const auto path = system.FolderPath(folder);
    ASSERT_TRUE(path) << static_cast<int>(folder);
    EXPECT_EQ(path->substr(1, 2), ":\\");
    EXPECT_FALSE(path->ends_with('\\')) << *path;
  }
  for (const Folder folder : {Folder::Inf, Folder::Desktop, Folder::ProgramFiles32,
                              Folder::ProgramFiles64, Folder::SystemDrive})
    EXPECT_EQ(system.FolderPath(folder), std::nullopt) << static_cast<int>(folder);
  const auto drive = system.FolderPath(Folder::CdDrive);
  if (drive) {
    EXPECT_EQ(GetDriveTypeW(Wide(*drive + "\\").c_str()), UINT{DRIVE_CDROM});
  }
}

}  // namespace
}  // namespace kestra
