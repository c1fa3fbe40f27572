// Queries that are cut off from another thread, and queries whose time is over.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "query/parse/ParseTree.h"
#include "query/parse/chart/Chart.h"
#include "tests/query/support/TestModules.h"
#include "tests/query/unit/RunningQuery.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {
namespace {

// Ready, so that a query on it is not cut off before its own work has begun, slow as the machine
// may be.
Ref<DiagRoot> NewRoot() {
  auto root = MakeRef<DiagRoot>("", ModulesWithTests(), Ref<CMachine>(MakeRef<CFakeMachine>()));
  Value value;
  EvaluateQuery(value, "1", root, kNoTimeOut, nullptr);
  return root;
}

std::string Answer(const Ref<DiagRoot>& root, const std::string& text,
                   uint32_t timeOut = kNoTimeOut) {
  Value value;
  EvaluateQuery(value, text, root, timeOut, nullptr);
  if (!value.IsVector()) return value.asString();
  return std::to_string(value.asVector().Count()) + " elements";
}

// A list that takes a while each time it is evaluated.
std::string SlowList() {
  std::string list = "0";
  for (int i = 0; i < 15000; ++i) list += ",1-2";
  return list;
}

std::string LongJoins() {
  std::string text = "SELECT a0.Id FROM Test.Row a0";
  for (int i = 1; i <= 5000; ++i) {
    const std::string alias = "a" + std::to_string(i);
    text += " JOIN Test.Row " + alias + " ON " + alias + ".Id=a0.Id";
  }
  return text;
}

struct Case {
  const char* pName;
  std::string prepare;  // runs before, so that the query is where it is meant to be
  std::string text;
};

void PrintTo(const Case& c, std::ostream* pStream) {
  *pStream << c.pName;
}

class Cancel : public testing::TestWithParam<Case> {};

// Runs the query, cancels it when it is under way, and gives how long it then took.
uint32_t CancelOnce(const Ref<DiagRoot>& root, const std::string& text,
                    const Ref<QueryMessage>& message, os::CEvent& event) {
  CRunningQuery query(root, text, message);
  EXPECT_FALSE(query.EndsWithin(60)) << "it was to last: " << query.Result().asString();
  const uint32_t cancelledAt = os::TickCount();
  event.Set();
  if (!query.EndsWithin(kPatienceMs)) {
    fprintf(stderr, "a cancelled query does not end: %.200s\n", text.c_str());
    std::abort();
  }
  EXPECT_EQ(query.Result().asString(), "<ERROR>");
  EXPECT_FALSE(query.Message().Success);
  EXPECT_EQ(query.Message().SystemError, kErrorCancelled);
  return query.EndedAt() - cancelledAt;
}

// The machine may be busy with something else, which only ever makes a query later: one of three
// has to be in time.
void ExpectInTime(const std::function<uint32_t()>& cancel) {
  uint32_t best = kPatienceMs;
  for (int attempt = 0; attempt < 3 && best > kCancelMs; ++attempt) best = std::min(best, cancel());
  EXPECT_LE(best, kCancelMs);
  testing::Test::RecordProperty("milliseconds", static_cast<int>(best));
}

TEST_P(Cancel, ByAnEventOfOurs) {
  const auto root = NewRoot();
  if (!GetParam().prepare.empty()) Answer(root, GetParam().prepare);
  ExpectInTime([&] {
    const auto event = MakeRef<os::CEvent>();
    return CancelOnce(root, GetParam().text, MakeRef<QueryMessage>(event, true), *event);
  });
  EXPECT_EQ(Answer(root, "SELECT Id FROM Test.Row WHERE Id > 1"), "4 elements");
}

// A host's event is known by its handle alone.
TEST_P(Cancel, ByAnEventOfTheHosts) {
  const auto root = NewRoot();
  if (!GetParam().prepare.empty()) Answer(root, GetParam().prepare);
  ExpectInTime([&] {
    os::CEvent event;
    const auto borrowed = MakeRef<os::CBorrowedEvent>(event.Native());
    return CancelOnce(root, GetParam().text, MakeRef<QueryMessage>(borrowed, true), event);
  });
  EXPECT_EQ(Answer(root, "SELECT Id FROM Test.Row WHERE Id > 1"), "4 elements");
}

constexpr const char* kFill20000 = "(SELECT COUNT(*) FROM Many(Count=20000).Entry)";

INSTANTIATE_TEST_SUITE_P(
    Places, Cancel,
    testing::Values(
        Case{"Filling", {}, "SELECT Id FROM Slow.Entry"},
        Case{"FillingOfMany", {}, "SELECT Id FROM Many(Count=50000000).Entry"},
        Case{"Scan", kFill20000,
             "SELECT Id FROM Many(Count=20000).Entry WHERE Id IN (" + SlowList() + ")"},
        Case{"Join", kFill20000,
             "SELECT a.Id FROM Many(Count=20000).Entry a JOIN Many(Count=20000).Entry b ON "
             "a.Name=b.Name+'x'"},
        Case{"JoinThatKeepsNothing", kFill20000,
             "SELECT a.Id FROM Many(Count=20000).Entry a JOIN Many(Count=20000).Entry b ON 1=1 "
             "WHERE a.Id+b.Id=0-1"},
        Case{"ScalarJoin", kFill20000,
             "(SELECT a.Id FROM Many(Count=20000).Entry a JOIN Many(Count=20000).Entry b ON 1=2)"},
        // The index finds two hundred rows for each row of the left.
        Case{"JoinByIndex", kFill20000,
             "SELECT a.Id FROM Many(Count=20000).Entry a JOIN Many(Count=20000).Entry b ON "
             "a.Group = b.Group AND a.Name + 'x' = b.Name + 'y'"},
        // What chance has part in is run anew for each row.
        Case{"ValuePerRow", kFill20000,
             "SELECT (SELECT COUNT(*) FROM Many(Count=20000).Entry WHERE RAND()*2=5) FROM "
             "Many(Count=20000).Entry"},
        Case{"RowOfLists", kFill20000,
             "SELECT Id, LEN(Name) FROM Many(Count=20000).Entry WHERE Id NOT IN (" + SlowList() +
                 ")"},
        Case{"Aggregate", kFill20000,
             "SELECT SUM((SELECT COUNT(*) FROM Many(Count=20000).Entry WHERE RAND()*2=5)) FROM "
             "Many(Count=20000).Entry"},
        Case{"CountOfNonNull", kFill20000,
             "SELECT COUNT((SELECT COUNT(*) FROM Many(Count=20000).Entry WHERE RAND()*2=5)) FROM "
             "Many(Count=20000).Entry"},
        Case{"Like",
             {},
             "'" + std::string(300000, 'a') + "' LIKE '*" + std::string(150000, 'a') + "b'"}),
    [](const auto& info) { return std::string(info.param.pName); });

// Another query fills the item, and the one that is cancelled waits for its lock.
TEST(CancelLock, EndsTheWaitForAnItem) {
  const auto root = NewRoot();
  const auto fillEvent = MakeRef<os::CEvent>();
  CRunningQuery filling(root, "SELECT Id FROM Slow.Entry", MakeRef<QueryMessage>(fillEvent, false));
  EXPECT_FALSE(filling.EndsWithin(100));
  ExpectInTime([&] {
    const auto event = MakeRef<os::CEvent>();
    return CancelOnce(root, "SELECT Id FROM Slow.Entry", MakeRef<QueryMessage>(event, false),
                      *event);
  });
  EXPECT_FALSE(filling.EndsWithin(0)) << "the other query goes on";
  fillEvent->Set();
  EXPECT_TRUE(filling.EndsWithin(kPatienceMs));
  EXPECT_EQ(Answer(root, "SELECT Id FROM Slow(Duration=0).Entry"), "1 elements");
}

// Two that wait for one filling both get what it made, and it is made once.
TEST(CancelLock, WaitersGetWhatTheFirstOneFilled) {
  const auto root = NewRoot();
  const char* pText = "SELECT Id FROM Slow(Duration=300).Entry";
  CRunningQuery first(root, pText, nullptr), second(root, pText, nullptr),
      third(root, pText, nullptr);
  for (const CRunningQuery* pQuery : {&first, &second, &third}) {
    ASSERT_TRUE(pQuery->EndsWithin(kPatienceMs));
    EXPECT_EQ(pQuery->Result().asVector().Count(), 1u) << pQuery->Result().asString();
  }
}

TEST(CancelFilling, LeavesNoHalfContentAndIsDoneAnew) {
  const auto root = NewRoot();
  const auto event = MakeRef<os::CEvent>();
  CancelOnce(root, "SELECT Id FROM Slow(Duration=5000).Entry", MakeRef<QueryMessage>(event, false),
             *event);
  const Ref<DiagModule> module = root->GetDiagModule("Slow", "Duration=5000");
  ASSERT_TRUE(module);
  EXPECT_FALSE(module->IsInitialized);
  EXPECT_EQ(module->Children.Count(), 0u);
}

// The longest text is parsed too fast to be cancelled from another thread in between.
TEST(CancelParsing, IsLookedAtInALongText) {
  const auto root = NewRoot();
  const auto event = MakeRef<os::CEvent>();
  for (const bool isCancelled : {false, true}) {
    QueryContext context(LongJoins(), root, kNoTimeOut, MakeRef<QueryMessage>(event, false));
    ParseTree tree;
    ASSERT_TRUE(Tokenise(context.QueryText, context.Tokens));
    if (isCancelled) event->Set();
    EXPECT_EQ(ParseTokens(context, tree), !isCancelled);
  }
}

TEST(CancelFilling, AlreadySignalledEndsAtOnce) {
  const auto root = NewRoot();
  const auto event = MakeRef<os::CEvent>();
  event->Set();
  for (const char* pText : {"SELECT Id FROM Test.Row", "SELECT Id FROM Slow.Entry", "1 + 1"}) {
    const auto message = MakeRef<QueryMessage>(event, false);
    Value value;
    EvaluateQuery(value, pText, root, kNoTimeOut, message);
    EXPECT_EQ(value.asString(), "<ERROR>") << pText;
    EXPECT_EQ(message->SystemError, kErrorCancelled) << pText;
  }
}

constexpr uint32_t kShortTimeOut = 50;

TEST(TimeOut, EndsAQueryWhereItIsLookedAt) {
  const struct {
    const char* pName;
    std::string text;
  } cases[] = {
      {"behind a filling", "SELECT Id FROM Slow(Duration=100).Entry"},
      {"left of a join",
       "SELECT a.Id FROM Slow(Duration=101).Entry a JOIN Test.Row b ON a.Id=b.Id"},
      {"right of a join",
       "SELECT a.Id FROM Test.Row b JOIN Slow(Duration=102).Entry a ON a.Id=b.Id"},
      {"before a count",
       "SELECT COUNT(a.Id) FROM Many(Count=1300).Entry a JOIN Many(Count=1300).Entry b ON "
       "a.Name=b.Name+'x'"},
      {"before an aggregate",
       "SELECT MAX(a.Id) FROM Many(Count=1300).Entry a JOIN Many(Count=1300).Entry b ON "
       "a.Name=b.Name+'x'"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Answer(NewRoot(), c.text, kShortTimeOut), "<ERROR>") << c.pName;
  }
}

TEST(TimeOut, EndsAScanAtAnItemWithChildren) {
  std::string slow = "SELECT Id FROM Test.Row WHERE ";
  for (int i = 0; i < 5; ++i) slow += "Id NOT IN (0" + SlowList().substr(1, 12000) + ") AND ";
  const auto root = NewRoot();
  Answer(root, "SELECT Id FROM Test.Row");
  EXPECT_EQ(Answer(root, slow + "1 = 1", 1), "<ERROR>");
  EXPECT_EQ(Answer(root, slow + "1 = 1"), "5 elements");
}

// Parsing only is no matter of time.
TEST(TimeOut, OfZeroDoesNotRun) {
  const auto root = NewRoot();
  EXPECT_EQ(Answer(root, "SELECT Id FROM Slow.Entry", 0), "<NULL>");
  EXPECT_EQ(root->Children.Count(), 0u);
  EXPECT_EQ(Answer(root, "SELECT Nothing FROM Slow.Entry", 0), "<ERROR: Syntax error>");
}

}  // namespace
}  // namespace kestra::test
