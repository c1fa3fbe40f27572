// Filling the module Files over a machine in memory.
#include <gtest/gtest.h>

#include <thread>

#include "Modules/Files/FilesLock.h"
#include "tests/Modules/Files/FilesFixture.h"
#include "tests/support/FailingMachine.h"

namespace kestra {
namespace {

using test::CFailingMachine;
using test::CFakeMachine;
using test::Fill;
using test::MakeFiles;
using test::ShowTree;

Ref<CFakeMachine> LinuxMachine() {
  auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  auto& files = machine->files;
  files.Add("/d/a.txt", {.content = "one\ntwo\r\nthree"});
  files.Add("/d/.hidden", {.content = "x"});
  files.Add("/d/.dots/in.txt", {.content = "x"});
  files.Add("/d/sub/b.TXT", {.content = "0123456789"});
  files.Add("/d/sub/deep/c.log", {.content = "c"});
  files.Add(
      "/d/link",
      {.kind = FileKind::Link, .attributes = kFileAttributeReparsePoint, .linkTarget = "/d/a.txt"});
  files.Add("/d/linkdir", {.kind = FileKind::Link,
                           .attributes = kFileAttributeReparsePoint | kFileAttributeDirectory,
                           .linkTarget = "/d/sub"});
  files.Add("/d/pipe", {.kind = FileKind::Other, .attributes = kFileAttributeNormal});
  files.Add("/d/gone", {.vanishes = true});
  files.Add("/d/denied", {.error = kErrorAccessDenied});
  files.Add("/e/sub/b.txt", {.content = "e"});
  return machine;
}

Ref<CFakeMachine> WindowsMachine() {
  auto machine = MakeRef<CFakeMachine>(SystemFamily::Windows);
  machine->files.Add("C:\\d\\a.txt", {.content = "one\ntwo\r\nthree\r\n"});
  machine->files.Add("C:\\d\\sub\\b.txt", {.content = "b"});
  return machine;
}

struct FillCase {
  SystemFamily family;
  const char* args;
  bool filled;
  const char* expected;
};

TEST(FilesModule, ShowsWhatIsAskedFor) {
  constexpr auto kLinux = SystemFamily::Linux;
  constexpr auto kWindows = SystemFamily::Windows;
  const FillCase cases[] = {
      {kLinux, "DirPath='/d'", true, "d(a.txt link pipe denied)"},
      {kLinux, "DirPath='/d/'", true, "d(a.txt link pipe denied)"},
      {kLinux, "DirPath='\\d'", true, "d(a.txt link pipe denied)"},
      {kLinux, "DirPath='/d',Levels=1", true, "d(a.txt sub(b.TXT) link linkdir() pipe denied)"},
      {kLinux, "DirPath='/d',Levels=100,FileName='*.t?t'", true,
       "d(a.txt sub(b.TXT deep()) linkdir())"},
      {kLinux, "DirPath='/d',FileName='.*'", true, "d()"},
      {kLinux, "DirPath='/d/.dots'", true, ".dots(in.txt)"},
      {kLinux, "DirPath='/'", true, "?()"},
      {kLinux, "DirPath='/?/sub'", true, "sub(b.TXT) sub(b.txt)"},
      {kLinux, "DirPath='/d/*',Levels=1", true, "sub(b.TXT deep(c.log)) linkdir()"},
      {kLinux, "DirPath='/*/*/deep'", true, "deep(c.log)"},
      {kLinux, "FilePath='/d/a.txt'", true, "a.txt"},
      {kLinux, "FilePath='/d/.hidden'", true, ".hidden"},
      {kLinux, "FilePath='/d/*.txt'", true, "d(a.txt)"},
      {kLinux, "FilePath='/?/sub/b.txt'", true, "sub(b.TXT) sub(b.txt)"},
      {kLinux, "FilePath='/d/sub'", true, ""},  // is a directory
      {kLinux, "FilePath='/d/'", true, ""},
      {kLinux, "FilePath='/d/none'", true, ""},
      {kLinux, "FilePath='/none/none'", true, ""},
      {kLinux, "DirPath='/none'", true, ""},
      {kLinux, "DirPath='/none/*'", true, ""},
      {kLinux, "DirPath='/d/a.txt'", true, ""},  // is a file
      {kLinux, "FilePath='/d/denied'", false, ""},
      {kLinux, "FilePath='a.txt'", false, ""},
      {kLinux, "", false, ""},
      {kLinux, "DirPath='/d',FilePath='/d/a.txt'", false, ""},
      {kLinux, "DirPath='%nosuch%'", false, ""},
      {kLinux, "DirPath='/d',Levels=101", false, ""},
      {kLinux, "DirPath='/d',Timeout=3600001", false, ""},
      {kLinux, "DirPath='/d',Timeout=3600000,FileName='a*'", true, "d(a.txt)"},
      {kLinux, "DirPath='/d',Timeout=0,Levels=9", true, "d()"},  // what was found until then
      {kWindows, "DirPath='C:\\d',Levels=1", true, "d(a.txt sub(b.txt))"},
      {kWindows, "DirPath='C:/d'", true, ""},
      {kWindows, "DirPath='\\d'", true, "d(a.txt)"},  // on the system drive
      {kWindows, "FilePath='C:\\D\\A.TXT'", true, "A.TXT"},
  };
  for (const FillCase& c : cases) {
    SCOPED_TRACE(c.args);
    auto machine = c.family == kLinux ? LinuxMachine() : WindowsMachine();
    auto module = MakeFiles(machine, c.args);
    ASSERT_TRUE(module);
    QueryMessage message;
    EXPECT_EQ(Fill(*module, message), c.filled);
    EXPECT_EQ(ShowTree(*module), c.expected);
  }
}

// What is named and may not be listed is not empty.
TEST(FilesModule, ADirectoryThatIsRefusedFailsOnlyWhereItIsNamed) {
  auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  machine->files.Add("/d/a", {});
  const auto failing = MakeRef<CFailingMachine>(machine);
  for (const char* pPath : {"/d", "/"}) {
    uint32_t failed = 0;
    for (uint32_t n = 1; n < 20; ++n) {
      const auto module = MakeFiles(failing, std::string("Levels=3,DirPath='") + pPath + "'");
      failing->FailCall(n, kErrorAccessDenied, test::Facility::Files);
      QueryMessage message;
      if (Fill(*module, message)) continue;
      ++failed;
      EXPECT_EQ(message.SystemError, kErrorAccessDenied);
    }
    EXPECT_GT(failed, 0u) << pPath;
  }
}

TEST(FilesModule, ReadsTextAndLines) {
  const FillCase cases[] = {
      {SystemFamily::Linux, "FilePath='/d/sub/b.TXT',CharFrom=5,CharCount=100", true,
       "b.TXT=456789"},
      {SystemFamily::Linux, "FilePath='/d/sub/b.TXT',CharFrom=20,CharCount=1", true, "b.TXT="},
      {SystemFamily::Linux, "FilePath='/d/sub/b.TXT',CharCount=1", true, "b.TXT"},
      {SystemFamily::Linux, "FilePath='/d/sub/b.TXT',CharFrom=1,CharCount=1048577", true, "b.TXT"},
      {SystemFamily::Linux, "DirPath='/d',CharFrom=1,CharCount=1", true,
       "d(a.txt=o link pipe denied)"},  // no link is followed, and nothing odd is opened
      {SystemFamily::Linux, "FilePath='/d/link',LineFrom=1,LineCount=1", true, "link"},
      {SystemFamily::Linux, "FilePath='/d/a.txt',LineFrom=1,LineCount=9", true,
       "a.txt(1:one 2:two 3:three)"},
      {SystemFamily::Windows, "FilePath='C:\\d\\a.txt',LineFrom=1,LineCount=9", true,
       "a.txt(1:one\ntwo 2:three)"},  // a bare line feed ends no line there
      {SystemFamily::Linux, "FilePath='/d/a.txt',LineFrom=1,LineCount=1,LinePattern='t*'", true,
       "a.txt(2:two)"},
      {SystemFamily::Linux, "FilePath='/d/a.txt',LineFrom=1,LineCount=9,LineSize=2", true,
       "a.txt(1:on 2:tw 3:th)"},
      {SystemFamily::Linux, "FilePath='/d/a.txt',LineFrom=1,LineCount=9,LineSize=1025", true,
       "a.txt"},
      {SystemFamily::Linux, "FilePath='/d/a.txt',LineFrom=3,LineCount=1048577", true, "a.txt"},
      {SystemFamily::Linux, "FilePath='/d/a.txt',LineFrom=1,LineCount=9,Timeout=0", true, "a.txt"},
  };
  for (const FillCase& c : cases) {
    SCOPED_TRACE(c.args);
    auto machine = c.family == SystemFamily::Linux ? LinuxMachine() : WindowsMachine();
    auto module = MakeFiles(machine, c.args);
    ASSERT_TRUE(module);
    QueryMessage message;
    EXPECT_EQ(Fill(*module, message), c.filled);
    EXPECT_EQ(ShowTree(*module), c.expected);
  }
}

TEST(FilesModule, RefusesContentOutOfManyFilesByAMessage) {
  for (const char* args : {"FilePath='/d/*.txt',LineFrom=1", "DirPath='/?',CharFrom=1"}) {
    auto module = MakeFiles(LinuxMachine(), args);
    QueryMessage message;
    EXPECT_FALSE(Fill(*module, message));
    EXPECT_EQ(message.MessageId, 11008u);
    EXPECT_EQ(message.Args.back(), "wildcards in DirPath, FilePath");
  }
}

// Whatever fails on the way: what is shown is right, and all of it unless the filling failed or the
// machine said that it may not be read.
TEST(FilesModule, EveryFaultIsAnErrorOrLeavesOut) {
  const std::string args = "DirPath='/d',Levels=2,CharFrom=1,CharCount=3,LineFrom=1,LineCount=1";
  QueryMessage message;
  const auto makeMachine = [] {
    auto machine = LinuxMachine();
    machine->files.Remove("/d/gone");  // a second question would find it
    return machine;
  };
  auto whole = MakeFiles(makeMachine(), args);
  ASSERT_TRUE(Fill(*whole, message));
  for (const SystemError error : {kErrorGenFailure, kErrorFileNotFound}) {
    uint32_t n = 1;
    for (;; ++n) {
      auto machine = MakeRef<CFailingMachine>(makeMachine());
      auto module = MakeFiles(machine, args);
      machine->FailCall(n, error);
      const bool isFilled = Fill(*module, message);
      if (!machine->HasFailed()) break;
      EXPECT_EQ(module->IsInitialized, isFilled);
      EXPECT_LE(ShowTree(*module).size(), ShowTree(*whole).size()) << n;
    }
    EXPECT_GT(n, 20u);
  }
}

TEST(FilesModule, ACancelLeavesNothing) {
  auto event = MakeRef<os::CEvent>();
  QueryMessage message(event, false);
  event->Set();
  auto module = MakeFiles(LinuxMachine(), "DirPath='/d',Levels=2");
  EXPECT_FALSE(Fill(*module, message));
  EXPECT_EQ(module->Children.Count(), 0u);
  EXPECT_EQ(message.SystemError, kErrorCancelled);
}

// Another one reads a large stretch and does not come to its end.
TEST(FilesModule, ACancelEndsTheWaitForTheLock) {
  const std::string args = "FilePath='/d/a.txt',CharFrom=1,CharCount=3";
  auto event = MakeRef<os::CEvent>();
  {
    os::CEvent isHeld, mayLeave;
    std::thread other([&] {
      const CFilesLock lock(nullptr);
      isHeld.Set();
      os::WaitAny({&mayLeave}, 10000);
    });
    os::WaitAny({&isHeld}, 10000);
    std::thread canceller([&] {
      os::Sleep(30);
      event->Set();
    });
    QueryMessage message(event, false);
    auto module = MakeFiles(LinuxMachine(), args);
    const uint32_t begin = os::TickCount();
    EXPECT_FALSE(Fill(*module, message));
    EXPECT_LT(os::TickCount() - begin, 280u);
    EXPECT_EQ(message.SystemError, kErrorCancelled);
    mayLeave.Set();
    other.join();
    canceller.join();
  }
  QueryMessage message;
  auto module = MakeFiles(LinuxMachine(), args);
  EXPECT_TRUE(Fill(*module, message));
  EXPECT_EQ(ShowTree(*module), "a.txt=one");
}

// A directory of a result fills itself anew, with time of its own.
TEST(FilesModule, ADirectoryIsFilledAgainByItself) {
  auto machine = LinuxMachine();
  auto module = MakeFiles(machine, "DirPath='/e',Levels=1");
  QueryMessage message;
  ASSERT_TRUE(Fill(*module, message));
  machine->files.Add("/e/new", {.content = "n"});
  CVDiagItem& directory = *module->Children.Get(0);
  ASSERT_TRUE(directory.Init(true, true, message));
  EXPECT_EQ(ShowTree(directory), "sub(b.txt) new");
  machine->files.Remove("/e");
  EXPECT_FALSE(directory.Init(true, true, message));
  EXPECT_EQ(Show(directory), "");
}

}  // namespace
}  // namespace kestra
