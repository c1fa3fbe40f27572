#include <gtest/gtest.h>

#include <algorithm>

#include "VLib/src/paths/RenameAtBoot.h"
#include "VLib/src/paths/WininitFile.h"
#include "platform/os/Event.h"
#include "tests/support/EventAtLook.h"
#include "tests/support/FakeMachine.h"

namespace kestra {
namespace {

using test::CFakeMachine;
using Moves = std::vector<std::pair<std::string, std::string>>;

constexpr char kIniPath[] = "C:\\WINDOWS\\WININIT.INI";

Ref<CFakeMachine> Machine(uint32_t systemClass) {
  auto machine = MakeRef<CFakeMachine>();
  machine->system.windows = test::VersionOfKind(systemClass);
  machine->system.folders[Folder::Windows] = "C:\\WINDOWS";
  machine->files.AddDirectory("C:\\WINDOWS");
  return machine;
}

SystemError Rename(CFakeMachine& machine, const std::string& from, const std::string& to) {
  return RenameAtBoot(machine, from, to, nullptr);
}

TEST(RenameAtBoot, NeedsASourceAndASystemThatCanDoIt) {
  for (const uint32_t systemClass : {0u, 1u}) {
    const auto machine = Machine(systemClass);
    machine->files.Add("C:\\a.dll", {});
    EXPECT_EQ(Rename(*machine, "C:\\a.dll", ""), kErrorCallNotImplemented);
  }
  const auto linux = MakeRef<CFakeMachine>(SystemFamily::Linux);
  linux->files.Add("/a", {});
  EXPECT_EQ(Rename(*linux, "/a", "/b"), kErrorCallNotImplemented);
  const auto machine = Machine(9);
  EXPECT_EQ(Rename(*machine, "C:\\missing", ""), kErrorFileNotFound);
  machine->files.Add("C:\\bad", {.error = kErrorAccessDenied});
  EXPECT_EQ(Rename(*machine, "C:\\bad", ""), kErrorAccessDenied);
  machine->hasFiles = false;
  EXPECT_EQ(Rename(*machine, "C:\\a.dll", ""), kErrorCallNotImplemented);
  EXPECT_FALSE(IsRestartNeeded());
  EXPECT_EQ(machine->files.MovesAtBoot(), Moves());
}

TEST(RenameAtBoot, OnNtPutsDownTheContentBeforeTheDirectory) {
  for (const uint32_t systemClass : {6u, 12u, 13u}) {
    const auto machine = Machine(systemClass);
    machine->files.Add("C:\\d\\a.dll", {});
    machine->files.Add("C:\\d\\sub\\b.dll", {});
    machine->files.Add("C:\\d\\gone", {.vanishes = true});
    machine->files.Add("C:\\other\\c.dll", {});
    machine->files.Add(
        "C:\\d\\link",
        {.kind = FileKind::Link, .attributes = kFileAttributeDirectory, .linkTarget = "C:\\other"});
    EXPECT_EQ(Rename(*machine, "C:\\d", ""), kErrorSuccess);
    const Moves expected = {{"C:\\d\\a.dll", ""},
                            {"C:\\d\\sub\\b.dll", ""},
                            {"C:\\d\\sub", ""},
                            {"C:\\d\\link", ""},
                            {"C:\\d", ""}};
    EXPECT_EQ(machine->files.MovesAtBoot(), expected);
    EXPECT_TRUE(IsRestartNeeded());
  }
  const auto machine = Machine(9);
  machine->files.Add("C:\\d\\sub\\b.dll", {});
  EXPECT_EQ(Rename(*machine, "C:\\d", "D:\\"), kErrorSuccess);
  const Moves expected = {
      {"C:\\d\\sub\\b.dll", "D:\\sub\\b.dll"}, {"C:\\d\\sub", "D:\\sub"}, {"C:\\d", "D:\\"}};
  EXPECT_EQ(machine->files.MovesAtBoot(), expected);
}

TEST(RenameAtBoot, OnNtPutsDownNothingWhenTheContentCannotBeRead) {
  const auto machine = Machine(9);
  machine->files.Add("C:\\d\\a.dll", {});
  machine->files.Add("C:\\d\\bad", {.kind = FileKind::Directory, .error = kErrorAccessDenied});
  EXPECT_EQ(Rename(*machine, "C:\\d", ""), kErrorAccessDenied);
  os::CEvent cancel;
  cancel.Set();
  EXPECT_EQ(RenameAtBoot(*machine, "C:\\d", "", &cancel), kErrorCancelled);
  std::string deep = "C:";
  for (int i = 0; i < 600; ++i) deep += "\\x";
  machine->files.AddDirectory(deep);
  EXPECT_EQ(Rename(*machine, "C:\\x", ""), kErrorFilenameExceedsRange);
  EXPECT_EQ(machine->files.MovesAtBoot(), Moves());
  machine->files.isReadOnly = true;
  EXPECT_EQ(Rename(*machine, "C:\\d\\a.dll", ""), kErrorWriteProtect);
}

TEST(RenameAtBoot, OnNtStopsAtAnyPointWhenCancelled) {
  const Moves all = {{"C:\\d\\a", ""}, {"C:\\d\\b", ""}, {"C:\\d\\c", ""}, {"C:\\d", ""}};
  size_t withinTheMoves = 0;
  for (uint32_t look = 1;; ++look) {
    ASSERT_LT(look, 50u);
    const auto machine = Machine(9);
    for (const char* name : {"a", "b", "c"}) machine->files.Add(std::string("C:\\d\\") + name, {});
    const test::CEventAtLook cancel(look);
    const SystemError error = RenameAtBoot(*machine, "C:\\d", "", &cancel);
    const Moves moves = machine->files.MovesAtBoot();
    ASSERT_LE(moves.size(), all.size());
    EXPECT_TRUE(std::equal(moves.begin(), moves.end(), all.begin())) << look;
    EXPECT_EQ(error, cancel.WasSeen() ? kErrorCancelled : kErrorSuccess) << look;
    EXPECT_EQ(moves.size() == all.size(), !cancel.WasSeen()) << look;
    if (!cancel.WasSeen()) break;
    withinTheMoves += moves.empty() ? 0 : 1;
  }
  EXPECT_EQ(withinTheMoves, all.size() - 1);
}

TEST(RenameAtBoot, On9xWritesShortNamesIntoTheIni) {
  const auto machine = Machine(3);
  machine->files.Add("C:\\long folder", {.kind = FileKind::Directory,
                                         .attributes = kFileAttributeDirectory,
                                         .shortPath = "C:\\LONGFO~1"});
  machine->files.Add("C:\\long folder\\library.dll", {.shortPath = "C:\\LONGFO~1\\LIBRARY.DLL"});
  machine->files.Add("C:\\old library.dll", {.shortPath = "C:\\OLDLIB~1.DLL"});
  const std::string from = "C:\\long folder\\library.dll";
  EXPECT_EQ(Rename(*machine, from, ""), kErrorSuccess);
  EXPECT_EQ(Rename(*machine, from, "C:\\old library.dll"), kErrorSuccess);
  EXPECT_EQ(Rename(*machine, from, "C:\\long folder\\new.dll"), kErrorSuccess);
  EXPECT_EQ(Rename(*machine, "C:\\long folder", ""), kErrorSuccess);
  const std::string lines =
      "[rename]\r\n"
      "NUL=C:\\LONGFO~1\\LIBRARY.DLL\r\n"
      "C:\\OLDLIB~1.DLL=C:\\LONGFO~1\\LIBRARY.DLL\r\n"
      "C:\\LONGFO~1\\new.dll=C:\\LONGFO~1\\LIBRARY.DLL\r\n"
      "DIRNUL=C:\\LONGFO~1\r\n";
  EXPECT_EQ(machine->files.Content(kIniPath), lines);
  EXPECT_EQ(machine->files.MovesAtBoot(), Moves());

  EXPECT_EQ(Rename(*machine, from, "C:\\missing\\new.dll"), kErrorPathNotFound);
  EXPECT_EQ(Rename(*machine, from, "C:\\long folder\\a=b"), kErrorInvalidName);
  EXPECT_EQ(Rename(*machine, from, "C:\\long folder\\a\r\nb"), kErrorInvalidName);
  EXPECT_EQ(Rename(*machine, from, "C:\\long folder\\\xC3\xA4"), kErrorInvalidName);
  machine->files.isReadOnly = true;
  EXPECT_EQ(Rename(*machine, from, ""), kErrorWriteProtect);
  EXPECT_EQ(machine->files.Content(kIniPath), lines);
}

TEST(RenameAtBoot, On9xKeepsAnIniThatCannotBeReadOrIsTooLong) {
  const auto machine = Machine(5);
  machine->files.Add("C:\\A.DLL", {.shortPath = "C:\\A.DLL"});
  for (const auto& file : {test::FakeFile{.content = std::string((1 << 20) + 1, ';')},
                           test::FakeFile{.error = kErrorSharingViolation}}) {
    machine->files.Add(kIniPath, file);
    EXPECT_EQ(Rename(*machine, "C:\\A.DLL", ""),
              file.error ? kErrorSharingViolation : kErrorFileTooLarge);
    EXPECT_EQ(machine->files.Content(kIniPath), file.content);
  }
  machine->system.folders.erase(Folder::Windows);
  EXPECT_EQ(Rename(*machine, "C:\\A.DLL", ""), kErrorPathNotFound);
}

TEST(AddRenameLine, ChangesNoOtherByte) {
  const struct {
    std::string before;
    std::string after;
  } kCases[] = {
      {"", "[rename]\r\nN=x\r\n"},
      {"[other]\r\na=1", "[other]\r\na=1\r\n[rename]\r\nN=x\r\n"},
      {"[rename]", "[rename]\r\nN=x\r\n"},
      {"[rename]\n", "[rename]\nN=x\n"},
      {"; c\r\n [ReName ] \t\r\nNUL=1\r\nNUL=1\r\n ;d\r\n\r\n\r\n[z]\r\nN=0\r\n",
       "; c\r\n [ReName ] \t\r\nNUL=1\r\nNUL=1\r\n ;d\r\nN=x\r\n\r\n\r\n[z]\r\nN=0\r\n"},
      {"[rename]\r\n[rename]\r\nNUL=2\r\n", "[rename]\r\nN=x\r\n[rename]\r\nNUL=2\r\n"},
      {"[rename]\r\nNUL=1\r\n\r\nNUL=2", "[rename]\r\nNUL=1\r\n\r\nNUL=2\r\nN=x\r\n"},
      {"rename]\r\n[rename\r\n[renamed]\r\n\xFF\0", "rename]\r\n[rename\r\n[renamed]\r\n\xFF"},
  };
  for (const auto& test : kCases) {
    std::string content = test.before;
    EXPECT_EQ(AddRenameLine(content, "N=x"), kErrorSuccess);
    if (content.find('\xFF') == std::string::npos) {
      EXPECT_EQ(content, test.after);
    } else {
      EXPECT_EQ(content, test.after + "\r\n[rename]\r\nN=x\r\n");
    }
  }
}

TEST(AddRenameLine, StopsAtTheBufferOfTheSystem) {
  // Each line and the whole end in a NUL there; comments and other sections take no room.
  const std::string head = "[a]\r\n" + std::string(40'000, 'a') + "\r\n[rename]\r\n;" +
                           std::string(40'000, 'c') + "\r\n";
  for (const size_t length : {32'765u - 4u, 32'765u - 3u}) {
    std::string content = head + std::string(length, 'x') + "\r\n";
    const std::string before = content;
    const bool fits = length + 1 + 3 + 1 + 1 <= 32'767;
    EXPECT_EQ(AddRenameLine(content, "N=x"), fits ? kErrorSuccess : kErrorInsufficientBuffer);
    EXPECT_EQ(content, fits ? before + "N=x\r\n" : before);
  }
}

}  // namespace
}  // namespace kestra
