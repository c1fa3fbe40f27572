// Making, changing and removing files over a machine in memory.
#include <gtest/gtest.h>

#include "tests/Modules/Files/FilesFixture.h"
#include "tests/support/FailingMachine.h"

namespace kestra {
namespace {

using test::CFailingMachine;
using test::CFakeMachine;
using test::Fill;
using test::Given;
using test::MakeFiles;
using test::ShowTree;
using Values = std::vector<std::pair<std::string, std::string>>;

Ref<CFakeMachine> MachineOf(SystemFamily family) {
  auto machine = MakeRef<CFakeMachine>(family);
  const bool isLinux = family == SystemFamily::Linux;
  const auto add = [&](std::string path, test::FakeFile file) {
    if (!isLinux) {
      for (char& c : path) c = c == '/' ? '\\' : c;
      path = "C:" + path;
    }
    machine->files.Add(path, std::move(file));
  };
  add("/d/a", {.content = "text"});
  add("/d/sub/b", {.content = "b"});
  add("/d/empty/x", {});
  machine->files.Remove(isLinux ? "/d/empty/x" : "C:\\d\\empty\\x");
  machine->system.maxPath = 64;
  return machine;
}

// The tree below the directory, as it is now.
std::string Tree(const Ref<CMachine>& machine) {
  const bool isLinux = machine->System().Family() == SystemFamily::Linux;
  auto module = MakeFiles(machine, isLinux ? "DirPath='/d',Levels=9" : "DirPath='C:\\d',Levels=9");
  QueryMessage message;
  EXPECT_TRUE(Fill(*module, message));
  return ShowTree(*module);
}

struct ChangeCase {
  const char* what;
  SystemFamily family;
  Values values;
  uint32_t messageId;
  SystemError error;
  const char* tree;
};

constexpr auto kLinux = SystemFamily::Linux;
constexpr auto kWindows = SystemFamily::Windows;
constexpr const char* kUnchanged = "d(a sub(b) empty())";

void Check(const ChangeCase& c, const Ref<CFakeMachine>& machine, bool isDone,
           const QueryMessage& message) {
  EXPECT_EQ(isDone, c.messageId == 0 && c.error == 0);
  EXPECT_EQ(message.MessageId, c.messageId);
  EXPECT_EQ(isDone || c.messageId != 0 ? c.error : message.SystemError, c.error);
  EXPECT_EQ(Tree(machine), c.tree);
}

TEST(FileChanges, AddsFiles) {
  const std::string tooLong(64, 'n');
  const ChangeCase cases[] = {
      {"no name", kLinux, {}, 11000, 0, kUnchanged},
      {"an empty one", kLinux, {{"FileName", "n"}}, 0, 0, "d(a sub(b) empty() n)"},
      {"by its path", kLinux, {{"Path", "/d/sub/n"}}, 0, 0, "d(a sub(b n) empty())"},
      {"by a path of the other kind", kLinux, {{"Path", "\\d\\n"}}, 0, 0, "d(a sub(b) empty() n)"},
      {"by both", kLinux, {{"Path", "/d/n"}, {"FileName", "n"}}, 0, 0, "d(a sub(b) empty() n)"},
      {"by two", kLinux, {{"Path", "/d/n"}, {"FileName", "m"}}, 11002, 0, kUnchanged},
      {"a blank name", kLinux, {{"FileName", "  "}}, 0, kErrorInvalidName, kUnchanged},
      {"a way out", kLinux, {{"FileName", "../n"}}, 0, kErrorInvalidName, kUnchanged},
      {"a backslash", kLinux, {{"FileName", "x\\n"}}, 0, kErrorInvalidName, kUnchanged},
      {"the parent", kLinux, {{"FileName", ".."}}, 0, kErrorInvalidName, kUnchanged},
      {"not absolute", kLinux, {{"Path", "d/n"}}, 0, kErrorInvalidName, kUnchanged},
      {"a source not absolute",
       kLinux,
       {{"FileName", "n"}, {"Source", "a"}},
       0,
       kErrorInvalidName,
       kUnchanged},
      {"not absolute", kWindows, {{"Path", "n"}}, 0, kErrorInvalidName, kUnchanged},
      {"too long", kLinux, {{"FileName", tooLong}}, 0, kErrorFilenameExceedsRange, kUnchanged},
      {"one that is there", kLinux, {{"FileName", "a"}}, 0, kErrorFileExists, kUnchanged},
      {"no directory", kLinux, {{"Path", "/no/n"}}, 0, kErrorPathNotFound, kUnchanged},
      {"a copy", kLinux, {{"FileName", "n"}, {"Source", "/d/a"}}, 0, 0, "d(a sub(b) empty() n)"},
      {"a copy over another",
       kLinux,
       {{"FileName", "a"}, {"Source", "/d/sub/b"}},
       0,
       kErrorFileExists,
       kUnchanged},
      {"a copy of nothing",
       kLinux,
       {{"FileName", "n"}, {"Source", "/d/z"}},
       0,
       kErrorFileNotFound,
       kUnchanged},
      {"a copy of a directory",
       kLinux,
       {{"FileName", "n"}, {"Source", "/d/sub"}},
       0,
       kErrorAccessDenied,
       kUnchanged},
      {"a hidden name", kLinux, {{"FileName", ".n"}, {"Attributes", "Hidden"}}, 0, 0, kUnchanged},
      {"hidden without the dot",
       kLinux,
       {{"FileName", "n"}, {"Attributes", "Hidden"}},
       0,
       kErrorNotSupported,
       kUnchanged},
      {"compressed",
       kWindows,
       {{"FileName", "n"}, {"Attributes", "Compressed"}},
       0,
       kErrorNotSupported,
       kUnchanged},
      {"a slash", kWindows, {{"Path", "C:\\d/n"}}, 0, kErrorInvalidName, kUnchanged},
      {"on Windows",
       kWindows,
       {{"Path", "C:\\d\\sub\\n"}, {"Attributes", "Hidden|ReadOnly"}},
       0,
       0,
       "d(a sub(b n) empty())"},
      {"a resource without its type",
       kWindows,
       {{"FileName", "n"}, {"Source", "C:\\d\\a"}, {"ResName", "1"}},
       11000,
       0,
       kUnchanged},
      {"a resource of no file",
       kWindows,
       {{"FileName", "n"}, {"ResType", "#16"}, {"ResName", "#1"}},
       11000,
       0,
       kUnchanged},
      {"a resource of what is no program",
       kWindows,
       {{"FileName", "n"}, {"Source", "C:\\d\\a"}, {"ResType", "#16"}, {"ResName", "#1"}},
       0,
       kErrorResourceTypeNotFound,
       kUnchanged},
  };
  for (const ChangeCase& c : cases) {
    SCOPED_TRACE(c.what);
    auto machine = MachineOf(c.family);
    auto module = MakeFiles(machine, c.family == kLinux ? "DirPath='/d'" : "DirPath='C:\\d'");
    QueryMessage message(Ref<os::CEvent>(), true);
    ASSERT_TRUE(Fill(*module, message));
    const DiagParams params = Given(kFileClass, c.values);
    Check(c, machine, module->Children.Get(0)->Add("File", params, message), message);
  }
}

TEST(FileChanges, GivesAttributesToWhatIsNew) {
  auto machine = MachineOf(kWindows);
  auto module = MakeFiles(machine, "DirPath='C:\\d'");
  QueryMessage message(Ref<os::CEvent>(), true);
  ASSERT_TRUE(Fill(*module, message));
  ASSERT_TRUE(module->Children.Get(0)->Add(
      "File",
      Given(kFileClass,
            {{"FileName", "n"}, {"Source", "C:\\d\\a"}, {"Attributes", "Hidden|ReadOnly"}}),
      message));
  FileInfo info;
  ASSERT_EQ(machine->files.Info("C:\\d\\n", info), kErrorSuccess);
  EXPECT_EQ(info.attributes & 7, kFileAttributeReadOnly | kFileAttributeHidden);
  EXPECT_EQ(machine->files.Content("C:\\d\\n"), "text");
}

TEST(FileChanges, UpdatesFiles) {
  const ChangeCase cases[] = {
      {"a new name", kLinux, {{"FileName", "n"}}, 0, 0, "d(n sub(b) empty())"},
      {"a new path", kLinux, {{"Path", "/d/sub/n"}}, 0, 0, "d(sub(n b) empty())"},
      {"its own name", kLinux, {{"FileName", "a"}}, 0, 0, kUnchanged},
      {"nothing", kLinux, {}, 0, 0, kUnchanged},
      {"a name that is taken", kLinux, {{"FileName", "sub"}}, 0, kErrorAlreadyExists, kUnchanged},
      {"a path that is taken", kLinux, {{"Path", "/d/sub/b"}}, 0, kErrorAlreadyExists, kUnchanged},
      {"two names", kLinux, {{"Path", "/d/n"}, {"FileName", "m"}}, 11002, 0, kUnchanged},
      {"a way out", kLinux, {{"FileName", "x/n"}}, 0, kErrorInvalidName, kUnchanged},
      {"no directory", kLinux, {{"Path", "/no/n"}}, 0, kErrorPathNotFound, kUnchanged},
      {"what Linux has not", kLinux, {{"Attributes", "System"}}, 0, kErrorNotSupported, kUnchanged},
      {"hidden by no dot",
       kLinux,
       {{"Attributes", "Hidden"}, {"FileName", "n"}},
       0,
       kErrorNotSupported,
       kUnchanged},
      {"compressed", kWindows, {{"Attributes", "Compressed"}}, 0, kErrorNotSupported, kUnchanged},
      {"another property", kWindows, {{"Comments", "x"}}, 11011, 0, kUnchanged},
  };
  for (const ChangeCase& c : cases) {
    SCOPED_TRACE(c.what);
    auto machine = MachineOf(c.family);
    auto file = MakeFiles(machine, c.family == kLinux ? "FilePath='/d/a'" : "FilePath='C:\\d\\a'");
    QueryMessage message(Ref<os::CEvent>(), true);
    ASSERT_TRUE(Fill(*file, message));
    const bool isDone = file->Children.Get(0)->Update(Given(kFileClass, c.values), message);
    Check(c, machine, isDone, message);
  }
}

// An attribute that was set comes back when the renaming fails.
TEST(FileChanges, AnUpdateThatFailsChangesNothing) {
  auto inner = MachineOf(kLinux);
  FileInfo before;
  inner->files.Info("/d/a", before);
  const Values values = {{"FileName", "n"}, {"Attributes", "ReadOnly"}};
  for (uint32_t n = 1;; ++n) {
    auto machine = MakeRef<CFailingMachine>(inner);
    auto module = MakeFiles(machine, "FilePath='/d/a'");
    QueryMessage message(Ref<os::CEvent>(), true);
    ASSERT_TRUE(Fill(*module, message));
    machine->FailCall(n, kErrorGenFailure);
    const bool isDone = module->Children.Get(0)->Update(Given(kFileClass, values), message);
    EXPECT_EQ(isDone, !machine->HasFailed());
    if (!machine->HasFailed()) break;
    FileInfo after;
    ASSERT_EQ(inner->files.Info("/d/a", after), kErrorSuccess) << n;
    EXPECT_EQ(after.attributes, before.attributes) << n;
  }
  EXPECT_EQ(Tree(inner), "d(n sub(b) empty())");
}

TEST(FileChanges, ACopyThatFailsLeavesNothing) {
  const Values values = {{"FileName", "n"}, {"Source", "/d/a"}, {"Attributes", "ReadOnly"}};
  uint32_t n = 1;
  for (;; ++n) {
    auto inner = MachineOf(kLinux);
    auto machine = MakeRef<CFailingMachine>(inner);
    auto module = MakeFiles(machine, "DirPath='/d'");
    QueryMessage message(Ref<os::CEvent>(), true);
    ASSERT_TRUE(Fill(*module, message));
    machine->FailCall(n, kErrorDiskFull);
    const bool isDone = module->Children.Get(0)->Add("File", Given(kFileClass, values), message);
    EXPECT_EQ(isDone, !machine->HasFailed());
    EXPECT_EQ(Tree(inner), isDone ? "d(a sub(b) empty() n)" : kUnchanged) << n;
    if (isDone) break;
    EXPECT_EQ(message.SystemError, kErrorDiskFull);
  }
  EXPECT_EQ(n, 4u);  // the copy, the look at it, its attributes
}

TEST(FileChanges, Directories) {
  auto machine = MachineOf(kLinux);
  auto module = MakeFiles(machine, "DirPath='/d',Levels=1");
  QueryMessage message(Ref<os::CEvent>(), true);
  ASSERT_TRUE(Fill(*module, message));
  CVDiagItem& start = *module->Children.Get(0);
  CVDiagItem& sub = *start.Children.Get(1);
  CVDiagItem& empty = *start.Children.Get(2);
  EXPECT_TRUE(module->Add("Directory", Given(kDirectoryClass, {{"Name", "m"}}), message));
  EXPECT_TRUE(sub.Add("Directory", Given(kDirectoryClass, {{"Name", "n"}}), message));
  EXPECT_EQ(Tree(machine), "d(a sub(b n()) empty() m())");
  EXPECT_FALSE(sub.Add("Directory", Given(kDirectoryClass, {{"Name", "b"}}), message));
  EXPECT_EQ(message.SystemError, kErrorAlreadyExists);
  EXPECT_FALSE(sub.Add("Directory", Given(kDirectoryClass, {}), message));
  EXPECT_EQ(message.Args.front(), "Name or Path");
  EXPECT_FALSE(sub.Delete(message));
  EXPECT_EQ(message.SystemError, kErrorDirNotEmpty);
  EXPECT_TRUE(empty.Delete(message));
  EXPECT_TRUE(sub.Update(Given(kDirectoryClass, {{"Name", "moved"}}), message));
  EXPECT_EQ(Tree(machine), "d(a moved(b n()) m())");
}

TEST(FileChanges, DeletesFilesNowOrAtTheNextStart) {
  auto machine = MachineOf(kWindows);
  auto module = MakeFiles(machine, "FilePath='C:\\d\\a'");
  QueryMessage forbidden;
  ASSERT_TRUE(Fill(*module, forbidden));
  EXPECT_FALSE(module->Children.Get(0)->Delete(forbidden));
  EXPECT_EQ(forbidden.MessageId, 11015u);
  QueryMessage message(Ref<os::CEvent>(), true);
  EXPECT_TRUE(module->Children.Get(0)->Delete(message));
  EXPECT_FALSE(message.Restart);
  EXPECT_EQ(Tree(machine), "d(sub(b) empty())");

  auto busy = MakeRef<CFailingMachine>(machine);
  auto other = MakeFiles(busy, "FilePath='C:\\d\\sub\\b'");
  ASSERT_TRUE(Fill(*other, message));
  busy->FailCall(1, kErrorSharingViolation);
  EXPECT_TRUE(other->Children.Get(0)->Delete(message));
  EXPECT_TRUE(message.Restart);
  ASSERT_EQ(machine->files.MovesAtBoot().size(), 1u);
  EXPECT_EQ(machine->files.MovesAtBoot()[0].first, "C:\\d\\sub\\b");
}

// A disk that is only looked at.
TEST(FileChanges, NothingHappensToAMachineThatIsOnlyRead) {
  auto machine = MachineOf(kWindows);
  machine->files.isReadOnly = true;
  auto module = MakeFiles(machine, "DirPath='C:\\d',Levels=1");
  QueryMessage message(Ref<os::CEvent>(), true);
  ASSERT_TRUE(Fill(*module, message));
  CVDiagItem& directory = *module->Children.Get(0);
  CVDiagItem& file = *directory.Children.Get(0);
  const bool done[] = {
      directory.Add("File", Given(kFileClass, {{"FileName", "n"}}), message),
      directory.Add("File", Given(kFileClass, {{"FileName", "n"}, {"Source", "C:\\d\\a"}}),
                    message),
      directory.Add("Directory", Given(kDirectoryClass, {{"Name", "n"}}), message),
      file.Update(Given(kFileClass, {{"FileName", "n"}}), message),
      file.Update(Given(kFileClass, {{"Attributes", "ReadOnly"}}), message),
      file.Delete(message),
      directory.Children.Get(2)->Delete(message),
  };
  for (const bool isDone : done) EXPECT_FALSE(isDone);
  EXPECT_EQ(message.SystemError, kErrorWriteProtect);
  EXPECT_EQ(Tree(machine), kUnchanged);
}

}  // namespace
}  // namespace kestra
