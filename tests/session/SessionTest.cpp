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

TEST(Session, KeepsModulesUntilTheyAreDropped) {
  CSorrelCOM session(TestSetup());
  session.AllowActive(true);
  EXPECT_EQ(RunText(session, "DELETE Test.Part WHERE Number = 1"), "[1]");
  EXPECT_EQ(RunText(session, "SELECT Number FROM Test.Part WHERE Number = 1"), "[]");
  session.ReInitDiagRoot();
  EXPECT_EQ(RunText(session, "SELECT Number FROM Test.Part WHERE Number = 1"), "[1]");
  EXPECT_EQ(RunText(session, "UPDATE Test.Row SET Text = 'new' WHERE Id = 1"), "[1]");
  EXPECT_EQ(RunText(session, "DROP MODULE Test"), "[1]");
  EXPECT_EQ(RunText(session, "SELECT Text FROM Test.Row WHERE Id = 1"), "[Alpha one]");
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
  one.AllowActive(true);
  EXPECT_EQ(RunText(one, "UPDATE Test.Row SET Text = 'x' WHERE Id = 1"), "[1]");
  EXPECT_EQ(RunText(other, "SELECT Text FROM Test.Row WHERE Id = 1"), "[Alpha one]");
  EXPECT_NE(RunText(other, "UPDATE Test.Row SET Text = 'x' WHERE Id = 1").find("<ERROR: "),
            std::string::npos);
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
