#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/linux/machine/UserFolders.h"
#include "platform/machine/Machine.h"
#include "platform/machine/SystemFacts.h"

namespace kestra {
namespace {

struct EntryCase {
  const char* content;
  std::optional<std::string> folder;
};

TEST(DecodeDesktopEntry, ReadsTheShellLines) {
  const EntryCase cases[] = {
      {"", std::nullopt},
      {"# c\nXDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n", "/home/ann/Schreibtisch"},
      {"XDG_DESKTOP_DIR=\"/d/x/\"", "/d/x"},
      {" \tXDG_DESKTOP_DIR=\"$HOME/\"", "/home/ann"},
      {"XDG_DESKTOP_DIR=\"relative\"\n", std::nullopt},
      {"#XDG_DESKTOP_DIR=\"$HOME/a\"\nXDG_MUSIC_DIR=\"$HOME/b\"\n", std::nullopt},
      {"XDG_DESKTOP_DIR=\"$HOME/a\"\nXDG_DESKTOP_DIR=\"$HOME/b\"\n", "/home/ann/b"},
      {"XDG_DESKTOP_DIR=\"", std::nullopt},
      {"\n\n   ", std::nullopt},
  };
  for (const EntryCase& test : cases)
    EXPECT_EQ(DecodeDesktopEntry(test.content, "/home/ann"), test.folder) << test.content;
}

TEST(BaseFolder, BelievesOnlyAbsolutePaths) {
  setenv("KESTRA_TEST_FOLDER", "/x/y/", 1);
  EXPECT_EQ(BaseFolder("KESTRA_TEST_FOLDER", "f"), "/x/y");
  const std::string fallback = *HomeFolder() == "/" ? "/f" : *HomeFolder() + "/f";
  setenv("KESTRA_TEST_FOLDER", "x/y", 1);
  EXPECT_EQ(BaseFolder("KESTRA_TEST_FOLDER", "f"), fallback);
  unsetenv("KESTRA_TEST_FOLDER");
  EXPECT_EQ(BaseFolder("KESTRA_TEST_FOLDER", "f"), fallback);
}

TEST(LiveMachine, DescribesALinuxMachine) {
  const Ref<CMachine> machine = LiveMachine();
  EXPECT_EQ(machine, LiveMachine());
  const CSystemFacts& system = machine->System();
  EXPECT_EQ(system.Family(), SystemFamily::Linux);
  EXPECT_FALSE(system.Windows());
  EXPECT_TRUE(system.Width().isKnown);
  EXPECT_NE(system.ComputerName(), "");
  EXPECT_EQ(system.FolderPath(Folder::CommonAppData), "/etc");
  EXPECT_EQ(system.FolderPath(Folder::Inf), std::nullopt);
  EXPECT_EQ(machine->Registry(), nullptr);
}

}  // namespace
}  // namespace kestra
