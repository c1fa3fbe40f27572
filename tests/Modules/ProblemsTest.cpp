// What a filling notes of what it could not read: nothing is passed over in silence, and what has
// gone, or is not asked for, is no problem.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>

#include "Modules/Files/FileClasses.h"
#include "Modules/Files/FilesModule.h"
#include "Modules/IniFile/IniFileModule.h"
#include "Modules/Processes/ProcessesModule.h"
#include "Modules/Registry/RegistryClasses.h"
#include "Modules/Registry/RegistryModule.h"
#include "tests/support/FakeMachine.h"
#include "tests/support/SystemWords.h"

namespace kestra::test {
namespace {

template <class Module>
Ref<Module> Make(const ClassDecl& decl, const Ref<CFakeMachine>& machine, const std::string& args) {
  auto module = MakeRef<Module>(decl.Get(), machine);
  EXPECT_TRUE(module->SetArgs(args)) << args;
  return module;
}

// "subject: reason;" for each, sorted, and "cut" at the end.
std::string Problems(CVDiagItem& item) {
  QueryMessage message;
  message.Notes = MakeRef<CFillNotes>();
  item.Init(true, false, message);
  CFillNotes::Counts counts;
  std::vector<std::string> lines;
  for (const FillProblem& problem : message.Notes->TakeProblems(counts))
    lines.push_back(problem.subject + ": " + InWordsOfWindows(problem.reason) + ";");
  EXPECT_EQ(counts.all, lines.size());
  std::sort(lines.begin(), lines.end());
  std::string text;
  for (const std::string& line : lines) text += line;
  return text + (message.Notes->IsCutShort() ? "cut" : "");
}

constexpr const char* kDenied = ": Access is denied.;";

TEST(Problems, OfFiles) {
  const auto machine = MakeRef<CFakeMachine>();
  machine->files.Add("C:\\d\\a.txt", {.content = "text"});
  machine->files.Add("C:\\d\\gone.txt", {.vanishes = true});
  machine->files.Add("C:\\d\\shut.txt", {.error = kErrorAccessDenied});
  machine->files.AddDirectory("C:\\d\\deep");
  machine->files.Add("C:\\d\\deep\\b.txt", {.size = 1});
  machine->files.Add("C:\\shut", {.kind = FileKind::Directory,
                                  .attributes = kFileAttributeDirectory,
                                  .error = kErrorAccessDenied});
  const std::string shutFile = std::string("C:\\d\\shut.txt") + kDenied;
  const struct {
    const char* args;
    std::string expected;
  } cases[] = {
      {"DirPath='C:\\d'", shutFile},
      {"DirPath='C:\\d', Levels=2", shutFile},
      {"DirPath='C:\\d', FileName='a*'", ""},
      {"DirPath='C:\\d', CharFrom=1, CharCount=9", shutFile},
      {"DirPath='C:\\none'", ""},
      {"DirPath='C:\\shut'", std::string("C:\\shut") + kDenied},
      {"FilePath='C:\\d\\shut.txt'", shutFile},
      {"FilePath='C:\\d\\none.txt'", ""},
      {"DirPath='C:\\d', Timeout=0", "cut"},
      // The levels that were asked for are no limit that cuts off.
      {"DirPath='C:\\d', FileName='a*', Levels=0", ""},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Problems(*Make<CFilesModule>(kFilesModule, machine, c.args)), c.expected) << c.args;
}

TEST(Problems, OfRegistry) {
  const auto machine = MakeRef<CFakeMachine>();
  CFakeRegistry& registry = machine->registry;
  registry.SetString(RegistryRoot::LocalMachine, "A\\open", "v", "1");
  registry.SetString(RegistryRoot::LocalMachine, "A\\shut", "v", "1");
  registry.SetString(RegistryRoot::LocalMachine, "A", "unread", "1");
  registry.DenyKey(RegistryRoot::LocalMachine, "A\\shut", kErrorAccessDenied);
  registry.Find(RegistryRoot::LocalMachine, "A")->FindValue("unread")->readError =
      kErrorAccessDenied;
  const std::string shut = std::string("HKLM\\A\\shut") + kDenied;
  const std::string unread = std::string("HKLM\\A\\unread") + kDenied;
  const struct {
    const char* args;
    std::string expected;
  } cases[] = {
      {"KeyPath='HKLM\\A'", unread},  {"KeyPath='HKLM\\A', Levels=1", shut + unread},
      {"KeyPath='HKLM\\A\\*'", shut}, {"KeyPath='HKLM\\A\\shut'", shut},
      {"KeyPath='HKLM\\none'", ""},   {"KeyPath='HKLM\\A', Timeout=0", "cut"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Problems(*Make<CRegistryModule>(kRegistryModule, machine, c.args)), c.expected)
        << c.args;
}

TEST(Problems, OfProcessesAndDataFiles) {
  const auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  machine->processes.Add({.PID = 7, .ImageName = "a"});
  machine->processes.Add({.PID = 8, .ImageName = "b", .Unread = kErrorAccessDenied});
  machine->processes.Add({.PID = 9, .Unread = kErrorAccessDenied});
  machine->processes.Add({.PID = 10, .ImageName = "c", .Unread = kErrorAccessDenied})->vanishes =
      true;
  EXPECT_EQ(Problems(*MakeRef<CProcessesModule>(kProcessesModule.Get(), machine)),
            std::string("8 b") + kDenied + "9" + kDenied);

  machine->files.Add("/shut.ini", {.error = kErrorAccessDenied});
  machine->files.Add("/a.ini", {.content = "[s]\n"});
  EXPECT_EQ(Problems(*MakeIniFile(machine, "/shut.ini")), std::string("/shut.ini") + kDenied);
  EXPECT_EQ(Problems(*MakeIniFile(machine, "/a.ini")), "");
  EXPECT_EQ(Problems(*MakeIniFile(machine, "/none.ini")), "");
}

// Helpers share them, and only so many are kept.
TEST(Problems, AreCountedWhereTheyAreTooManyToBeKept) {
  QueryMessage message;
  message.NoteProblem("nobody asks", kErrorAccessDenied);
  message.Notes = MakeRef<CFillNotes>();
  const auto note = [&](const std::string& name) {
    const Ref<QueryMessage> own = message.ForHelper();
    for (int i = 0; i < 500; ++i) own->NoteProblem(name + std::to_string(i), kErrorAccessDenied);
  };
  std::thread other([&] { note("b"); });
  note("a");
  other.join();
  CFillNotes::Counts counts;
  EXPECT_EQ(message.Notes->TakeProblems(counts).size(), CFillNotes::kMostKept);
  EXPECT_EQ(counts.all, 1000u);
  // One that is told again, by whoever tried again, is still one.
  message.NoteProblem("x", kErrorAccessDenied);
  message.NoteProblem("x", kErrorAccessDenied);
  message.NoteProblem("x", 0x0fffffff);
  const auto problems = message.Notes->TakeProblems(counts);
  EXPECT_EQ(counts.all, 2u);
  EXPECT_EQ(problems.at(1).reason, "system error 268435455");
}

}  // namespace
}  // namespace kestra::test
