// What a query tells of its sources.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>

#include "platform/machine/Machine.h"
#include "platform/os/Clock.h"
#include "query/Evaluate.h"
#include "tests/query/support/TestModules.h"
#include "tests/support/FakeMachine.h"
#include "tests/support/SystemWords.h"
#include "tests/support/TempDirectory.h"

namespace kestra::test {
namespace {

// "Many(Count=5) machine 5/2", with what else there is to say behind it.
std::string Show(const QueryReport& report) {
  static constexpr const char* kFills[] = {"machine", "memory", "cache"};
  static constexpr const char* kStates[] = {"", " not built", " not here"};
  std::string text;
  for (const SourceReport& source : report.sources) {
    text += fmt::format("{}({}) {} {}/{}{}{}{};", source.name, source.arguments,
                        kFills[static_cast<int>(source.fill)], source.rowsSeen, source.rowsKept,
                        kStates[static_cast<int>(source.state)], source.isFilled ? "" : " unfilled",
                        source.isCutShort ? " cut" : "");
    for (const FillProblem& problem : source.problems)
      text += "[" + problem.subject + ": " + InWordsOfWindows(problem.reason) + "]";
    EXPECT_GE(source.problemCount, source.problems.size());
  }
  return text;
}

class Report : public testing::Test {
 protected:
  Report() {
    m_machine->files.Add("C:\\d\\a.txt", {.size = 1});
    m_machine->files.Add("C:\\d\\b.txt", {.size = 2});
    m_machine->files.Add("C:\\d\\lost.txt", {.error = kErrorAccessDenied});
    m_machine->files.Add("C:\\shut", {.kind = FileKind::Directory,
                                      .attributes = kFileAttributeDirectory,
                                      .error = kErrorAccessDenied});
    m_machine->files.Add("C:\\a.ini", {.content = "[one]\r\nk=1\r\n"});
    m_machine->files.Add("C:\\shut.ini", {.error = kErrorAccessDenied});
    m_machine->registry.SetString(RegistryRoot::LocalMachine, "A\\x", "v", "1");
    m_machine->registry.SetString(RegistryRoot::LocalMachine, "A\\y", "v", "2");
    m_machine->registry.DenyKey(RegistryRoot::LocalMachine, "A\\y", kErrorAccessDenied);
  }
  std::string Run(const std::string& text, uint32_t timeOut = kNoTimeOut,
                  Ref<QueryMessage> message = nullptr) {
    Value value;
    EvaluateQuery(value, text, m_root, timeOut, std::move(message), &report);
    outcome = value.asString();
    return Show(report);
  }

  Ref<CFakeMachine> m_machine = MakeRef<CFakeMachine>();
  Ref<DiagRoot> m_root = MakeRef<DiagRoot>("", ModulesWithTests(), Ref<CMachine>(m_machine));
  QueryReport report;
  std::string outcome;
};

TEST_F(Report, CountsWhatEachSourceLookedAt) {
  const struct {
    const char* query;
    const char* expected;
  } cases[] = {
      {"1 + 1", ""},
      {"SELECT COUNT(*) FROM Many(Count=9).Entry WHERE Id < 3", "Many(Count=9) machine 9/3;"},
      {"SELECT COUNT(*) FROM Many(Count=9).Entry WHERE Id < 3", "Many(Count=9) memory 9/3;"},
      // Each side of a join by itself; what a condition between both leaves open is kept.
      {"SELECT COUNT(*) FROM Many(Count=4).Entry a JOIN Many(Count=6).Entry b ON a.Id = b.Id "
       "WHERE a.Id > 0 AND b.Id > 2",
       "Many(Count=4) machine 4/3;Many(Count=6) machine 6/3;"},
      {"SELECT COUNT(*) FROM Many(Count=4).Entry a JOIN Many(Count=6).Entry b ON a.Id = b.Id "
       "WHERE a.Id <> b.Id",
       "Many(Count=4) memory 4/4;Many(Count=6) memory 6/6;"},
      // One source in two places; one that gives the same for each row of another, and is asked
      // once; and one that is asked for each row, and whose rows are found by an index from the
      // second time on, when they are all listed.
      {"SELECT COUNT(*) FROM Many(Count=4).Entry a JOIN Many(Count=4).Entry b ON a.Id = b.Id",
       "Many(Count=4) memory 8/8;"},
      {"SELECT COUNT(*) FROM Many(Count=4).Entry WHERE Id < (SELECT COUNT(*) FROM "
       "Many(Count=3).Entry)",
       "Many(Count=4) memory 4/3;Many(Count=3) machine 3/3;"},
      {"SELECT COUNT(*) FROM Many(Count=4).Entry a WHERE 1 = (SELECT COUNT(*) FROM "
       "Many(Count=9).Entry b WHERE b.Id = a.Id)",
       "Many(Count=4) memory 4/4;Many(Count=9) memory 21/13;"},
      // The limit of a scalar sub-select cuts nothing off.
      {"1 + (SELECT Id FROM Many(Count=6).Entry WHERE Id = 5)", "Many(Count=6) memory 6/1;"},
      {"1 + (SELECT Id FROM Many(Count=6).Entry)", "Many(Count=6) memory 2/2;"},
      // A join by parent looks at no module of its own.
      {"SELECT COUNT(*) FROM Test.Row r JOIN Test.Part p ON p.ATTACHEDTO = r.ITEMID",
       "Test() machine 5/5;"},
      {"SELECT * FROM DMI.BIOS", "DMI() machine 0/0 not built;"},
      {"SELECT * FROM Broken.Entry",
       "Broken() machine 0/0 unfilled;[Broken: The device is not "
       "ready.]"},
      {"SELECT * FROM FILES.FILE('C:\\d\\*') WHERE FileName = 'b.txt'",
       "FILES.FILE('C:\\d\\*') machine 3/1;[C:\\d\\lost.txt: Access is denied.]"},
      {"SELECT * FROM FILES.FILE('C:\\none\\*')", "FILES.FILE('C:\\none\\*') machine 0/0;"},
      {"SELECT * FROM FILES.FILE('C:\\shut\\*')",
       "FILES.FILE('C:\\shut\\*') machine 0/0;[C:\\shut\\: Access is denied.]"},
      {"SELECT * FROM FILES.FILE('x')",
       "FILES.FILE('x') machine 0/0 unfilled;[FILES.FILE('x'): it could not be filled]"},
      {"SELECT COUNT(*) FROM INIFILES.IniKey('C:\\a.ini')",
       "INIFILES.IniKey('C:\\a.ini') machine 1/1;"},
      {"SELECT COUNT(*) FROM INIFILES.IniKey('C:\\none.ini')",
       "INIFILES.IniKey('C:\\none.ini') machine 0/0;"},
      {"SELECT COUNT(*) FROM INIFILES.IniKey('C:\\shut.ini')",
       "INIFILES.IniKey('C:\\shut.ini') machine 0/0;[C:\\shut.ini: Access is denied.]"},
      {"SELECT COUNT(*) FROM REGISTRY.REGISTRYVALUE('HKLM\\A\\*\\v')",
       "REGISTRY.REGISTRYVALUE('HKLM\\A\\*\\v') machine 1/1;[HKLM\\A\\y: Access is denied.]"},
      {"SELECT COUNT(*) FROM REGISTRY.REGISTRYKEY('HKLM\\A\\y')",
       "REGISTRY.REGISTRYKEY('HKLM\\A\\y') machine 0/0;[HKLM\\A\\y: Access is denied.]"},
      {"SELECT COUNT(*) FROM REGISTRY.REGISTRYKEY('nohive\\A')",
       "REGISTRY.REGISTRYKEY('nohive\\A') machine 0/0 unfilled;"
       "[REGISTRY.REGISTRYKEY('nohive\\A'): it could not be filled]"},
      // A statement that fills without walking, and one whose argument is wrong.
      {"INSERT Broken.Entry (Id) VALUES (1)", ""},
      {"SELECT * FROM Many(Count='x').Entry", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(Run(c.query), c.expected) << c.query;
  EXPECT_GT(report.totalMicroseconds, 0u);
  EXPECT_LE(report.parseMicroseconds, report.totalMicroseconds);
}

TEST_F(Report, TellsWhatTheMachineDoesNotHave) {
  m_machine->hasRegistry = m_machine->hasFiles = m_machine->hasProcesses = false;
  const struct {
    const char* query;
    const char* expected;
  } cases[] = {
      {"SELECT COUNT(*) FROM Registry(KeyPath='HKLM').RegistryKey", "Registry"},
      {"SELECT COUNT(*) FROM Processes.Process", "Processes"},
      {"SELECT COUNT(*) FROM Files(DirPath='C:\\d').File", "Files"},
      {"SELECT COUNT(*) FROM REGISTRY.REGISTRYKEY('HKLM\\A')", "REGISTRY.REGISTRYKEY"},
      {"SELECT COUNT(*) FROM FILES.FILE('C:\\d\\*')", "FILES.FILE"},
  };
  for (const auto& c : cases) {
    Run(c.query);
    ASSERT_EQ(report.sources.size(), 1u) << c.query;
    EXPECT_EQ(report.sources[0].name, c.expected);
    EXPECT_EQ(report.sources[0].state, ModuleState::NotHere) << c.query;
  }
}

// What is cut off is told, however much of it there was.
TEST_F(Report, TellsWhatWasCutShort) {
  Run("SELECT COUNT(*) FROM Many(Count=100000).Entry");
  const auto termination = MakeRef<os::CEvent>();
  termination->Set();
  Run("SELECT COUNT(*) FROM Slow.Entry", kNoTimeOut, MakeRef<QueryMessage>(termination, false));
  EXPECT_EQ(outcome, "<ERROR>");
  EXPECT_TRUE(report.sources.empty()) << "it did not come so far";

  // The time is over when the filling comes back.
  EXPECT_EQ(Run("SELECT COUNT(*) FROM Slow(Duration=30).Entry", 10),
            "Slow(Duration=30) machine 0/0 cut;");
  EXPECT_EQ(outcome, "<ERROR>");
  // The module's own limit: what was found by then is a result, and stays one in memory.
  const char* const none = "SELECT COUNT(*) FROM Files(DirPath='C:\\d', Timeout=0).File";
  EXPECT_EQ(Run(none), "Files(DirPath='C:\\d',Timeout=0) machine 0/0 cut;");
  EXPECT_EQ(Run(none), "Files(DirPath='C:\\d',Timeout=0) memory 0/0 cut;");
}

// A condition or a value that fails, here at the last of twenty rows, is not asked again, and so
// its sub-select is counted once.
TEST_F(Report, CountsOnceWhatFails) {
  const std::string rows = "Many(Count=20).Entry a";
  const std::string count = "(SELECT COUNT(*) FROM Many(Count=3).Entry b WHERE b.Id < a.Id + 100)";
  const struct {
    std::string before, after;  // the number from which Id is taken for a divisor
  } cases[] = {
      {"SELECT COUNT(*) FROM " + rows + " WHERE " + count + " = 3 AND 1 / (", " - a.Id) < 100"},
      {"SELECT COUNT(*) FROM " + rows + " WHERE (SELECT " + count + " + 1 / (",
       " - a.Id) FROM Many(Count=2).Entry c WHERE c.Id = 1) < 100"},
  };
  const auto rowsOfCount = [this] {
    uint64_t seen = 0;
    for (const SourceReport& source : report.sources) {
      if (source.arguments == "Count=3") seen += source.rowsSeen;
    }
    return seen;
  };
  for (const auto& [before, after] : cases) {
    Run(before + "99" + after);
    ASSERT_NE(outcome, "<ERROR>") << before;
    const uint64_t seen = rowsOfCount();
    EXPECT_GE(seen, 3u) << before;
    Run(before + "19" + after);
    ASSERT_EQ(outcome, "<ERROR>") << before;
    EXPECT_EQ(rowsOfCount(), seen) << before;
  }
}

// What could not be read stays known while the content is there, though not what it was.
TEST_F(Report, RemembersHowMuchCouldNotBeRead) {
  const char* const query =
      "SELECT COUNT(*) FROM Files(DirPath='C:\\', Levels=1).Directory a JOIN Files(DirPath='C:\\', "
      "Levels=1).Directory b ON a.Path = b.Path";
  Run(query);
  ASSERT_EQ(report.sources.size(), 1u);
  const uint64_t problems = report.sources[0].problemCount, hiding = report.sources[0].hidingCount;
  EXPECT_EQ(report.sources[0].problems.size(), problems);
  EXPECT_GT(hiding, 0u);
  Run(query);
  EXPECT_EQ(report.sources[0].fill, FillSource::Memory);
  EXPECT_EQ(report.sources[0].problemCount, problems);
  EXPECT_EQ(report.sources[0].hidingCount, hiding);
  EXPECT_TRUE(report.sources[0].problems.empty());
}

TEST_F(Report, KnowsTheAgeOfWhatWasThere) {
  const char* const query = "SELECT COUNT(*) FROM Many(Count=3).Entry";
  Run(query);
  EXPECT_EQ(report.sources[0].ageSeconds, 0u);
  QueryMessage message;
  DiagModule& module = *m_root->GetDiagModule("Many", "Count=3");
  module.FilledAt = os::SystemTimeAsFileTime().ticks - 90 * uint64_t{10'000'000};
  Run(query);
  EXPECT_GE(report.sources[0].ageSeconds, 90u);
  EXPECT_LE(report.sources[0].ageSeconds, 95u);
  // A clock that was put back makes nothing old.
  module.FilledAt = UINT64_MAX;
  Run(query);
  EXPECT_EQ(report.sources[0].ageSeconds, 0u);
}

// A query may ask for as many sources as it has rows.
TEST_F(Report, AddsUpWhatIsTooMuchToBeToldOneByOne) {
  Run("SELECT COUNT(*) FROM Many(Count=1500).Entry a WHERE (SELECT COUNT(*) FROM "
      "FILES.FILE('C:\\d\\' + a.Name)) = 0");
  ASSERT_EQ(report.sources.size(), 1001u);
  EXPECT_EQ(report.sources[0].rowsSeen, 1500u);
  EXPECT_EQ(report.sources[1000].arguments, "...");
}

}  // namespace
}  // namespace kestra::test
