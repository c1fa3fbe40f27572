// The session itself, without a binding: what it keeps between queries and what it forgets.
#include <gtest/gtest.h>

#include <string>

#include "front/session/SorrelCOM.h"
#include "tests/query/support/TestModules.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {
namespace {

SessionSetup TestSetup() {
  return {ModulesWithTests(), Ref<CMachine>(MakeRef<CFakeMachine>())};
}

std::string RunText(CSorrelCOM& session, const std::string& query, uint32_t timeOut = kNoTimeOut) {
  QueryOutcome outcome;
  EXPECT_EQ(session.RunQuerySync(query, std::nullopt, timeOut, outcome), SessionStatus::Ok);
  EXPECT_TRUE(outcome.hasValue);
  const Value& value = outcome.value;
  if (!value.IsVector()) return value.asString();
  std::string text;
  for (size_t i = 0; i < value.asVector().Count(); ++i) {
    text += (i ? " " : "") + value.asVector()[i].asString();
  }
  return "[" + text + "]";
}

constexpr char kReadText[] = "SELECT Text FROM Test.Row WHERE Id = 1";

// Changes what the module Test describes, behind the back of every other session.
void Describe(const std::string& text) {
  CSorrelCOM other(TestSetup());
  other.AllowActive(true);
  ASSERT_EQ(RunText(other, "UPDATE Test.Row SET Text = '" + text + "' WHERE Id = 1"), "[1]");
}

TEST(Session, KeepsModulesUntilTheyAreDropped) {
  CSorrelCOM session(TestSetup());
  EXPECT_EQ(RunText(session, kReadText), "[Alpha one]");
  Describe("second");
  EXPECT_EQ(RunText(session, kReadText), "[Alpha one]");
  session.ReInitDiagRoot();
  EXPECT_EQ(RunText(session, kReadText), "[second]");
  Describe("third");
  EXPECT_EQ(RunText(session, kReadText), "[second]");
  EXPECT_EQ(RunText(session, "DROP MODULE Test"), "[1]");
  EXPECT_EQ(RunText(session, kReadText), "[third]");
  Describe("Alpha one");
}

// A statement that was not allowed, or reached no row, changed nothing: all is as it was filled.
TEST(Session, FillsAnewOnlyWhatAStatementTouched) {
  CSorrelCOM session(TestSetup());
  EXPECT_EQ(RunText(session, kReadText), "[Alpha one]");
  Describe("second");
  RunText(session, "UPDATE Test.Row SET Text = 'x' WHERE Id = 1");
  EXPECT_EQ(RunText(session, kReadText), "[Alpha one]");
  session.AllowActive(true);
  EXPECT_EQ(RunText(session, "UPDATE Test.Row SET Text = 'x' WHERE Id = 99"), "[0]");
  EXPECT_EQ(RunText(session, kReadText), "[Alpha one]");
  // One that fails may have changed a part.
  RunText(session, "DELETE Test.Row WHERE Id = 2");
  EXPECT_EQ(RunText(session, kReadText), "[second]");
  Describe("Alpha one");
}

TEST(Session, HoldsOneModulePerArguments) {
  CSorrelCOM session(TestSetup());
  // The first query made one of each.
  EXPECT_EQ(RunText(session, "DROP MODULE *"),
            "[" + std::to_string(ModulesWithTests().size()) + "]");
  RunText(session, "SELECT Id FROM Test.Row");
  RunText(session, "SELECT Id FROM Test(First=1, Mode='plain').Row");  // the defaults, spelled out
  RunText(session, "SELECT Id FROM Test(First=2).Row");
  RunText(session,
          "SELECT a.Id FROM Test(Mode=0,First=2).Row a JOIN Test(First=2).Row b ON a.Id=b.Id");
  EXPECT_EQ(RunText(session, "DROP MODULE *"), "[2]");
}

TEST(Session, SessionsShareNothing) {
  CSorrelCOM one(TestSetup()), other(TestSetup());
  RunText(one, kReadText);
  one.AllowActive(true);
  EXPECT_NE(RunText(other, "UPDATE Test.Row SET Text = 'x' WHERE Id = 1").find("<ERROR: "),
            std::string::npos);
  RunText(other, "DROP MODULE *");
  EXPECT_EQ(RunText(one, "DROP MODULE Test"), "[1]");
}

TEST(Session, CancelWithNothingToCancelHasNoEffect) {
  CSorrelCOM session(TestSetup());
  session.CancelQuery();
  EXPECT_EQ(RunText(session, "SELECT Id FROM Test.Row WHERE Id = 1"), "[1]");
}

// A cancelled query of a host's event says so, and the session's own event is another one.
TEST(Session, HostEventsAreLookedAtAndLeftAlone) {
  CSorrelCOM session(TestSetup());
  os::CEvent event;
  QueryOutcome outcome;
  session.CancelQuery();
  session.RunQuerySync("SELECT Id FROM Test.Row WHERE Id = 1", event.Native(), kNoTimeOut, outcome);
  EXPECT_EQ(outcome.value.asVector().Count(), 1u);
  EXPECT_EQ(outcome.message, "");
  event.Set();
  for (int i = 0; i < 2; ++i) {
    session.RunQuerySync("SELECT Id FROM Slow.Entry", event.Native(), kNoTimeOut, outcome);
    EXPECT_EQ(outcome.value.asString(), "<ERROR>");
    EXPECT_NE(outcome.message, "");
    EXPECT_TRUE(event.IsSet());
  }
  EXPECT_EQ(RunText(session, "SELECT Id FROM Test.Row WHERE Id = 1"), "[1]");
}

TEST(Session, SyntaxCheckRunsNothing) {
  CSorrelCOM session(TestSetup());
  const struct {
    const char* pQuery;
    int32_t good;
  } cases[] = {
      {"SELECT Id FROM Slow.Entry", -1},
      {"INSERT Test.Row (Id) VALUES (1)", -1},
      {"1 / 0", -1},
      {"SELECT Nothing FROM Slow.Entry", 0},
      {"", 0},
      {"'", 0},
  };
  for (const auto& c : cases) {
    int32_t good = 1;
    EXPECT_EQ(session.CheckQuerySyntax(c.pQuery, good), SessionStatus::Ok);
    EXPECT_EQ(good, c.good) << c.pQuery;
  }
  EXPECT_EQ(RunText(session, "SELECT Id FROM Slow.Entry", 0), "<NULL>");
}

TEST(Session, ResultsOutliveIt) {
  QueryOutcome outcome;
  {
    CSorrelCOM session(TestSetup());
    session.RunQuerySync("SELECT * FROM Test.Row WHERE Id = 2", std::nullopt, kNoTimeOut, outcome);
  }
  ASSERT_EQ(outcome.value.asVector().Count(), 1u);
  CVDiagItem* pItem = outcome.value.asVector()[0].asVDIagItem();
  EXPECT_EQ(pItem->GetName(), "Row");
  EXPECT_EQ(pItem->FindParam("Text")->GetText(), "beta TWO");
}

}  // namespace
}  // namespace kestra::test
