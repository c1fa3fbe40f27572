// INSERT, UPDATE and DELETE of sections and keys.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

#include "VLib/src/data/CfgLayers.h"
#include "tests/Modules/IniFile/IniFixture.h"
#include "tests/support/FailingMachine.h"
#include "tests/support/TempDirectory.h"

namespace kestra::test {
namespace {

constexpr char kPath[] = "/d/x.ini";

// What a statement does: with the item at a path of indexes below the module.
struct Statement {
  const char* verb;  // "section", "key" (both add), "set" or "delete"
  std::vector<size_t> item;
  Texts values;
};

CVDiagItem* Find(CVDiagItem& top, const std::vector<size_t>& indexes) {
  CVDiagItem* pItem = &top;
  for (const size_t index : indexes) pItem = pItem ? pItem->Children.Get(index) : nullptr;
  return pItem;
}

std::string Perform(CVDiagItem& module, const Statement& statement, QueryMessage& message) {
  CVDiagItem* pItem = Find(module, statement.item);
  if (!pItem) return "no such item";
  const std::string verb = statement.verb;
  const ClassDecl& decl = verb == "section" ? kIniSectionClass : kIniKeyClass;
  const DiagParams params = GivenTo(decl, statement.values);
  if (verb == "set") return ShowOutcome(pItem->Update(params, message), message);
  if (verb == "delete") return ShowOutcome(pItem->Delete(message), message);
  return ShowOutcome(pItem->Add(decl.name, params, message), message);
}

Ref<CIniFileModule> MakeFilled(const Ref<CMachine>& machine, const std::string& args) {
  Ref<CIniFileModule> module = MakeIni(machine, args);
  QueryMessage message;
  CVDiagItem& item = *module;
  EXPECT_TRUE(item.Init(true, false, message));
  return module;
}

std::string PerformOnce(const Ref<CMachine>& machine, const std::string& args,
                        const Statement& statement) {
  const auto module = MakeFilled(machine, args);
  QueryMessage message(Ref<os::CEvent>(), true);
  return Perform(*module, statement, message);
}

TEST(IniChanges, Statements) {
  const std::string ini = "; c\ntop=1\n[a]\nx = 1\n\n[b]\ny=2\n";
  const struct {
    const char* what;
    const char* args;
    Statement statement;
    const char* outcome;
    std::string after;
  } cases[] = {
      {"section", "", {"section", {}, {{"Name", "c"}}}, "ok", ini + "[c]\n"},
      {"key",
       "",
       {"key", {1}, {{"Name", "k"}, {"StringValue", "v"}}},
       "ok",
       "; c\ntop=1\n[a]\nx = 1\nk = v\n\n[b]\ny=2\n"},
      {"number",
       "",
       {"key", {}, {{"Name", "k"}, {"DWORDValue", "7"}}},
       "ok",
       "; c\ntop=1\nk=7\n[a]\nx = 1\n\n[b]\ny=2\n"},
      {"value",
       "",
       {"set", {1, 0}, {{"StringValue", "w"}}},
       "ok",
       "; c\ntop=1\n[a]\nx = w\n\n[b]\ny=2\n"},
      {"gone key", "", {"delete", {1, 0}, {}}, "ok", "; c\ntop=1\n[a]\n\n[b]\ny=2\n"},
      {"gone section", "", {"delete", {1}, {}}, "ok", "; c\ntop=1\n[b]\ny=2\n"},
      {"of one section",
       ",Section='B'",
       {"set", {0, 0}, {{"DWORDValue", "3"}}},
       "ok",
       "; c\ntop=1\n[a]\nx = 1\n\n[b]\ny=3\n"},
      {"quotes by the profile functions",
       ",API=1",
       {"set", {0, 0}, {{"StringValue", " w"}}},
       "ok",
       "; c\ntop=1\n[a]\nx = \" w\"\n\n[b]\ny=2\n"},
      {"no name", "", {"key", {1}, {{"StringValue", "v"}}}, "11000 Name", ini},
      {"no name of a section", "", {"section", {}, {{"Name", ""}}}, "11000 Name", ini},
      {"no value", "", {"key", {1}, {{"Name", "k"}}}, "11002 StringValue DWORDValue", ini},
      {"two values",
       "",
       {"set", {1, 0}, {{"StringValue", "1"}, {"DWORDValue", "1"}}},
       "11002 StringValue DWORDValue",
       ini},
      {"reserved",
       "",
       {"set", {1, 0}, {{"DWORDValue", "4294967295"}}},
       "11002 DWORDValue 4294967295",
       ini},
      {"key there", "", {"key", {1}, {{"Name", "x"}, {"StringValue", "v"}}}, "16002 x", ini},
      {"section there", "", {"section", {}, {{"Name", "a"}}}, "16002 a", ini},
      {"section there, another case", ",API=1", {"section", {}, {{"Name", "A"}}}, "16002 A", ini},
      {"section in a section", "", {"section", {1}, {{"Name", "n"}}}, " error 50", ini},
      {"key outside, profile functions",
       ",API=1",
       {"key", {}, {{"Name", "k"}, {"StringValue", "v"}}},
       " error 50",
       ini},
      {"=", "", {"key", {1}, {{"Name", "k=1"}, {"StringValue", "v"}}}, "11002 Name k=1", ini},
      {";", "", {"key", {1}, {{"Name", ";k"}, {"StringValue", "v"}}}, "11002 Name ;k", ini},
      {"[", "", {"key", {1}, {{"Name", "[k"}, {"StringValue", "v"}}}, "11002 Name [k", ini},
      {"blank", "", {"key", {1}, {{"Name", " k"}, {"StringValue", "v"}}}, "11002 Name  k", ini},
      {"]", "", {"section", {}, {{"Name", "a]b"}}}, "11002 Name a]b", ini},
      {"line end", "", {"section", {}, {{"Name", "a\rb"}}}, "11002 Name a\rb", ini},
      {"control byte",
       "",
       {"set", {1, 0}, {{"StringValue", "a\x1b"}}},
       "11002 StringValue a\x1b",
       ini},
      {"second line",
       "",
       {"set", {1, 0}, {{"StringValue", "a\nb"}}},
       "11002 StringValue a\nb",
       ini},
      {"blanks at the end",
       "",
       {"set", {1, 0}, {{"StringValue", "a "}}},
       "11002 StringValue a ",
       ini},
      {"compressed, but no key",
       ",Compress=1",
       {"set", {1, 0}, {{"StringValue", "1"}}},
       " error 87",
       ini},
  };
  for (const auto& c : cases) {
    const auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
    machine->files.Add(kPath, {.content = ini});
    const std::string args = "Path='" + std::string(kPath) + "'" + c.args;
    EXPECT_EQ(PerformOnce(machine, args, c.statement), c.outcome) << c.what;
    EXPECT_EQ(machine->files.Content(kPath), c.after) << c.what;
  }
}

TEST(IniChanges, FilesThatAreNotThereAndLayers) {
  const struct {
    SystemFamily family;
    const char* args;
    const char* expected;
  } cases[] = {{SystemFamily::Linux, "Path='/d/new.ini'", "[n]\n"},
               {SystemFamily::Windows, "Path='C:\\d\\new.ini'", "[n]\r\n"},
               {SystemFamily::Linux, "Path='/d/new.ini',Format='Cfg'", "[n]\n[]\n"}};
  for (const auto& c : cases) {
    const auto machine = MakeRef<CFakeMachine>(c.family);
    const std::string directory = c.family == SystemFamily::Linux ? "/d" : "C:\\d";
    machine->files.AddDirectory(directory);
    const Statement add{"section", {}, {{"Name", "n"}}};
    EXPECT_EQ(PerformOnce(machine, c.args, add), "ok");
    EXPECT_EQ(machine->files.Content(directory + (directory == "/d" ? "/" : "\\") + "new.ini"),
              c.expected);
  }
  const auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  machine->files.AddDirectory("/d");
  const std::string args = "Path='/d/s',ScrambleKey=9,Compress=1,Format='Cfg'";
  EXPECT_EQ(PerformOnce(machine, args, {"section", {}, {{"Name", "a"}}}), "ok");
  EXPECT_EQ(PerformOnce(machine, args, {"section", {0}, {{"Name", "b"}}}), "ok");
  EXPECT_EQ(PerformOnce(machine, args,
                        {"key", {0, 0}, {{"Name", "k"}, {"StringValue", std::string(500, 'v')}}}),
            "ok");
  EXPECT_LT(machine->files.Content("/d/s").size(), 200u);
  EXPECT_EQ(PerformOnce(machine, args, {"set", {0, 0, 0}, {{"DWORDValue", "1"}}}), "ok");
  EXPECT_EQ(ShowIni(*MakeFilled(machine, args)), "[a [b k=1#1]]");
  // Another key makes a jumble of it, and what is written back then could never be read again.
  const std::string before = machine->files.Content("/d/s");
  EXPECT_EQ(PerformOnce(machine, "Path='/d/s',ScrambleKey=8", {"section", {}, {{"Name", "x"}}}),
            "15004 /d/s error 13");
  EXPECT_EQ(machine->files.Content("/d/s"), before);
}

TEST(IniChanges, ARowIsTheOneThatWasListed) {
  const auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  machine->files.Add(kPath, {.content = "[a]\nx=1\nx=2\nx=3\n[a]\ny=1\n[a]\ny=2\n"});
  const auto module = MakeFilled(machine, "Path='" + std::string(kPath) + "'");
  QueryMessage message(Ref<os::CEvent>(), true);
  const std::pair<Statement, const char*> steps[] = {
      {{"set", {0, 1}, {{"StringValue", "b"}}}, "[a]\nx=1\nx=b\nx=3\n[a]\ny=1\n[a]\ny=2\n"},
      {{"delete", {0, 0}, {}}, "[a]\nx=b\nx=3\n[a]\ny=1\n[a]\ny=2\n"},
      {{"delete", {0, 1}, {}}, "[a]\nx=3\n[a]\ny=1\n[a]\ny=2\n"},
      {{"set", {0, 2}, {{"StringValue", "c"}}}, "[a]\nx=c\n[a]\ny=1\n[a]\ny=2\n"},
      {{"delete", {0}, {}}, "[a]\ny=1\n[a]\ny=2\n"},
      {{"set", {1, 0}, {{"StringValue", "d"}}}, "[a]\ny=d\n[a]\ny=2\n"},
      {{"delete", {2}, {}}, "[a]\ny=d\n"},
  };
  for (const auto& [statement, after] : steps) {
    EXPECT_EQ(Perform(*module, statement, message), "ok") << after;
    EXPECT_EQ(machine->files.Content(kPath), after);
  }
  // What went with a row that was deleted before counts as done, but cannot be changed any more.
  for (const Statement& gone :
       {Statement{"delete", {0}, {}}, {"delete", {0, 2}, {}}, {"delete", {0, 1}, {}}})
    EXPECT_EQ(Perform(*module, gone, message), "ok");
  for (const Statement& gone : {Statement{"set", {2, 0}, {{"DWORDValue", "1"}}},
                                {"set", {0, 2}, {{"DWORDValue", "1"}}},
                                {"key", {0}, {{"Name", "k"}, {"StringValue", "v"}}}})
    EXPECT_EQ(Perform(*module, gone, message), " error 2");
  EXPECT_EQ(machine->files.Content(kPath), "[a]\ny=d\n");
  machine->files.Remove(kPath);
  EXPECT_EQ(Perform(*module, {"delete", {1, 0}, {}}, message), " error 2");
  EXPECT_EQ(machine->files.Content(kPath), "");
}

// As a statement does that has each section for a row, those in others too.
TEST(IniChanges, ASectionThatWentWithAnotherIsDone) {
  const auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  machine->files.Add(kPath, {.content = "[A]\n[B]\nx=1\n[]\n[]\n[A]\n[]\n"});
  const auto module = MakeFilled(machine, "Path='" + std::string(kPath) + "',Format='Cfg'");
  QueryMessage message(Ref<os::CEvent>(), true);
  const std::pair<std::vector<size_t>, const char*> steps[] = {{{0}, "[A]\n[]\n"},
                                                               {{0, 0}, "[A]\n[]\n"},
                                                               {{0, 0, 0}, "[A]\n[]\n"},
                                                               {{0}, "[A]\n[]\n"},
                                                               {{1}, ""}};
  for (const auto& [item, after] : steps) {
    EXPECT_EQ(Perform(*module, {"delete", item, {}}, message), "ok");
    EXPECT_EQ(machine->files.Content(kPath), after);
  }
}

TEST(IniChanges, FilesThatAreNotOfTheFormatStayAsTheyAre) {
  std::string scrambled, compressed;
  CTerminationLook never(nullptr);
  const std::string text = "[a]\r\nx=1\r\n" + std::string(100, '\n');
  ASSERT_TRUE(EncodeCfgLayers(text, 77, false, never, scrambled));
  ASSERT_TRUE(EncodeCfgLayers(text, 77, true, never, compressed));
  const Statement add{"section", {}, {{"Name", "n"}}};
  const Statement set{"set", {0}, {{"StringValue", "2"}}};
  const struct {
    std::string content;
    Statement statement;
  } cases[] = {{scrambled, add},    {compressed, add},    {"no such text\n", add},
               {"a=1\rb=2\r", set}, {"a=1\n\x01\n", set}, {"a=1\rb=2\n", add}};
  for (const auto& c : cases) {
    const auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
    machine->files.Add(kPath, {.content = c.content});
    EXPECT_EQ(PerformOnce(machine, "Path='" + std::string(kPath) + "'", c.statement),
              "15004 " + std::string(kPath) + " error 13");
    EXPECT_EQ(machine->files.Content(kPath), c.content);
  }
}

TEST(IniChanges, ACancelAtTheNthCallChangesAllOrNothing) {
  const auto inner = MakeRef<CFakeMachine>(SystemFamily::Linux);
  std::string text = "[a]\nx=1\n";
  for (int i = 0; i < 20'000; ++i) text += "; some comment\n";
  inner->files.Add(kPath, {.content = text});
  const auto failing = MakeRef<CFailingMachine>(inner);
  const auto module = MakeFilled(failing, "Path='" + std::string(kPath) + "'");
  uint32_t cancelled = 0;
  for (uint32_t n = 1; n < 50; ++n) {
    inner->files.Add(kPath, {.content = text});
    const auto event = MakeRef<os::CEvent>();
    failing->FailCall(n, kErrorSuccess);
    failing->OnFailure([&] { event->Set(); });
    QueryMessage message(event, true);
    const std::string outcome = Perform(*module, {"set", {0, 0}, {{"StringValue", "2"}}}, message);
    if (outcome != "ok") ++cancelled;
    EXPECT_TRUE(outcome == "ok" || outcome == " error 1223") << outcome;
    EXPECT_EQ(inner->files.Content(kPath) == text, outcome != "ok") << n;
    if (!failing->HasFailed()) break;
  }
  // All calls but the one that commits.
  EXPECT_EQ(cancelled + 1, failing->Calls());
}

TEST(IniChanges, NothingHappensWithoutPermissionOnAVolumeOrWhenACallFails) {
  const auto inner = MakeRef<CFakeMachine>(SystemFamily::Linux);
  inner->files.Add(kPath, {.content = "[a]\nx=1\n"});
  const std::string args = "Path='" + std::string(kPath) + "'";
  QueryMessage refused(Ref<os::CEvent>(), false);
  const Statement set{"set", {0, 0}, {{"StringValue", "2"}}};
  EXPECT_EQ(Perform(*MakeFilled(inner, args), set, refused), "11015");
  const auto failing = MakeRef<CFailingMachine>(inner);
  const auto module = MakeFilled(failing, args);
  uint32_t call = 1;
  for (; call < 50; ++call) {
    failing->FailCall(call, kErrorDiskFull);
    QueryMessage message(Ref<os::CEvent>(), true);
    const std::string outcome = Perform(*module, set, message);
    if (!failing->HasFailed()) break;
    EXPECT_EQ(outcome, " error 112") << call;
    EXPECT_EQ(inner->files.Content(kPath), "[a]\nx=1\n") << call;
  }
  EXPECT_GT(call, 5u);
  EXPECT_EQ(inner->files.Content(kPath), "[a]\nx=2\n");
  inner->files.isReadOnly = true;
  EXPECT_EQ(PerformOnce(inner, args, {"delete", {0}, {}}), " error 19");
}

TEST(IniChanges, AnotherWritersChangeIsKept) {
  const auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  CFakeFileSystem& files = machine->files;
  const std::string args = "Path='" + std::string(kPath) + "'";
  const Statement set{"set", {0, 0}, {{"StringValue", "2"}}};
  int commits = 0;
  const auto interfere = [&](int times, const std::string& content) {
    files.Add(kPath, {.content = "[a]\nx=1\n"});
    const auto module = MakeFilled(machine, args);
    commits = 0;
    files.beforeCommit = [&files, &commits, times, content] {
      if (commits++ >= times) return;
      if (content.empty()) return files.Remove(kPath);
      files.Add(kPath, {.content = content});
    };
    QueryMessage message(Ref<os::CEvent>(), true);
    return Perform(*module, set, message);
  };
  EXPECT_EQ(interfere(2, "; theirs\n[a]\nx=1\n"), "ok");
  EXPECT_EQ(files.Content(kPath), "; theirs\n[a]\nx=2\n");
  EXPECT_EQ(commits, 3);
  EXPECT_EQ(interfere(1, "[b]\n"), " error 2");
  EXPECT_EQ(files.Content(kPath), "[b]\n");
  EXPECT_EQ(interfere(1, ""), " error 2");
  EXPECT_EQ(interfere(1000, "; again\n[a]\nx=1\n"), " error 32");
  EXPECT_EQ(files.Content(kPath), "; again\n[a]\nx=1\n");
  EXPECT_LT(commits, 100);
  // A file that comes while we make one.
  files.Remove(kPath);
  files.beforeCommit = [&, isFirst = true]() mutable {
    if (std::exchange(isFirst, false)) files.Add(kPath, {.content = "[theirs]\n"});
  };
  EXPECT_EQ(PerformOnce(machine, args, {"section", {}, {{"Name", "ours"}}}), "ok");
  EXPECT_EQ(files.Content(kPath), "[theirs]\n[ours]\n");
}

// Each thread as a process of its own would: with a module of its own.
void ExpectNoLostChange(const Ref<CMachine>& machine, const std::string& path) {
  constexpr int kThreads = 4;
  constexpr int kKeys = 15;
  std::atomic<int> done{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      const auto module = MakeFilled(machine, "Path='" + path + "'");
      for (int i = 0; i < kKeys; ++i) {
        QueryMessage message(Ref<os::CEvent>(), true);
        const std::string name = std::to_string(t) + "." + std::to_string(i);
        const std::string outcome =
            Perform(*module, {"key", {}, {{"Name", name}, {"StringValue", "v"}}}, message);
        if (outcome == "ok") ++done;
        EXPECT_TRUE(outcome == "ok" || outcome == " error 32") << outcome;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_GT(done, kKeys);
  EXPECT_EQ(MakeFilled(machine, "Path='" + path + "'")->Children.Count(),
            static_cast<size_t>(done.load()));
}

TEST(IniChanges, WritersAtOnceLoseNothing) {
  const auto fake = MakeRef<CFakeMachine>(SystemFamily::Linux);
  fake->files.AddDirectory("/d");
  ExpectNoLostChange(fake, kPath);
  const CTempDirectory directory;
  ExpectNoLostChange(LiveMachine(), directory / "x.ini");
}

}  // namespace
}  // namespace kestra::test
