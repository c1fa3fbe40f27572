#include <gtest/gtest.h>

#include <optional>

#include "VLib/src/paths/ExpandPath.h"
#include "tests/support/FakeMachine.h"

namespace kestra {
namespace {

using test::CFakeMachine;

struct PathCase {
  const char* in;
  std::optional<std::string> out;
};

std::optional<std::string> Expand(const std::string& in, CMachine& machine,
                                  PathTokens tokens = PathTokens::All) {
  std::string out;
  if (!ExpandPath(in, out, machine, tokens)) return std::nullopt;
  return out;
}

TEST(ExpandPath, OnWindows) {
  const auto machine = MakeRef<CFakeMachine>();
  const PathCase cases[] = {
      {"", ""},
      {"%TEMP%\\x", "C:\\Temp\\x"},
      {"%temp%", "C:\\Temp"},
      {"%temp%x", "C:\\Tempx"},
      {"%temp", std::nullopt},
      {"%nothing%\\x", std::nullopt},
      {"%", std::nullopt},
      {"C:\\%temp%\\x", "C:\\%temp%\\x"},
      {"\\Windows", "C:\\Windows"},
      {"\\\\server\\share", "\\\\server\\share"},
      {"a/b", "a/b"},
      {"%programfiles%\\A", "C:\\Program Files\\A"},
      {"%programfiles64%\\A", "\\A"},  // absent here: nothing, and the rest of the text
      {"%systemdrive%\\a", "C:\\a"},
      {"%cddrive%", "E:"},
  };
  for (const PathCase& test : cases) EXPECT_EQ(Expand(test.in, *machine), test.out) << test.in;
  machine->system.folders[Folder::Windows] = "D:\\WINNT";
  EXPECT_EQ(Expand("\\Windows", *machine), "D:\\Windows");
  EXPECT_EQ(Expand("%INF%\\a.inf", *machine), "D:\\WINNT\\INF\\a.inf");
  machine->system.folders.erase(Folder::ProgramFiles);
  EXPECT_EQ(Expand("%programfiles%\\A", *machine), std::nullopt);
}

TEST(ExpandPath, FileRowsKnowFewerTokens) {
  const auto machine = MakeRef<CFakeMachine>();
  machine->system.width.isWide = true;
  machine->registry.SetString(RegistryRoot::LocalMachine,
                              "Software\\Microsoft\\Windows\\CurrentVersion", "ProgramFilesDir",
                              "C:\\PF64");
  EXPECT_EQ(Expand("%programfiles%\\A", *machine, PathTokens::FileRows), std::nullopt);
  EXPECT_EQ(Expand("%programfiles32%\\A", *machine, PathTokens::FileRows), std::nullopt);
  EXPECT_EQ(Expand("%programfiles64%\\A", *machine, PathTokens::FileRows), "C:\\PF64\\A");
  EXPECT_EQ(Expand("%commonappdata%", *machine, PathTokens::FileRows), "C:\\Data");
}

TEST(ExpandPath, OnLinux) {
  const auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  const PathCase cases[] = {
      {"\\etc\\*.conf", "/etc/*.conf"},
      {"/etc/*.conf", "/etc/*.conf"},
      {"/a\\b", "/a\\b"},  // with a "/" in the text a backslash is a character
      {"\\a/b", "\\a/b"},
      {"%AppData%\\autostart", "/home/ann/.config/autostart"},
      {"%appdata%/a\\b", "/home/ann/.config/a\\b"},
      {"%windows%", "/"},
      {"%windows%\\etc", "/etc"},
      {"%windows%etc", "/etc"},
      {"%systemdrive%\\etc", "/etc"},
      {"%inf%\\x", std::nullopt},
      {"\\\\server\\share", "//server/share"},
      {"name", "name"},
  };
  for (const PathCase& test : cases) EXPECT_EQ(Expand(test.in, *machine), test.out) << test.in;
}

}  // namespace
}  // namespace kestra
