// Indexes, compiled conditions and kept values against the plain evaluation: for any data and any
// query both give the same, whatever it is.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "query/Evaluate.h"
#include "query/parse/ParseTree.h"
#include "query/parse/chart/Chart.h"
#include "query/rows/FromResult.h"
#include "query/rows/index/RowFinder.h"
#include "query/rows/repeated/Repeats.h"
#include "tests/query/unit/rows/GeneratedData.h"
#include "tests/query/unit/rows/RowQueries.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {
namespace {

Ref<DiagRoot> NewRoot() {
  auto root = MakeRef<DiagRoot>("", ModulesWithData(), Ref<CMachine>(MakeRef<CFakeMachine>()));
  Value value;
  EvaluateQuery(value, "1", root, kNoTimeOut, nullptr);
  return root;
}

std::string Show(const Value& value) {
  const std::string kind = std::to_string(static_cast<int>(value.Kind())) + ":";
  if (value.IsVDiagItem())
    return kind + value.asVDIagItem()->Params.Find("Id", true)->GetText() +
           std::to_string(value.asVDIagItem()->Params.Find("Id", true)->DWordValue);
  if (!value.IsVector()) return kind + value.asString();
  std::string text = kind + "[";
  for (size_t i = 0; i < value.asVector().Count(); ++i) text += Show(value.asVector()[i]) + " ";
  return text + "]";
}

struct Answer {
  std::string text;
  uint64_t rowsSeen = 0;
  bool isParsed = true;
};

Answer Ask(const Ref<DiagRoot>& root, const std::string& text, bool usesShortcuts,
           uint32_t timeOut = kNoTimeOut) {
  QueryContext context(text, root, timeOut, nullptr);
  context.UsesShortcuts = usesShortcuts;
  ParseTree tree;
  Value value;
  if (!Tokenise(context.QueryText, context.Tokens) || !ParseTokens(context, tree))
    return {"", 0, false};
  const bool isGood = RunNode(*tree.Top(), value);
  Answer answer{(isGood ? "" : "failed ") + Show(value), 0, true};
  EXPECT_TRUE(context.Scope.empty()) << text;
  EXPECT_TRUE(context.FilterStack.empty()) << text;
  for (const SourceReport& source : context.Report.sources) answer.rowsSeen += source.rowsSeen;
  return answer;
}

// Deterministic. What it takes of the time of the tests is a few seconds.
TEST(Shortcuts, GiveWhatThePlainEvaluationGives) {
  const Ref<DiagRoot> root = NewRoot();
  std::map<bool, int> outcomes;  // by whether they are an Error
  int indexed = 0, parsed = 0;
  for (uint32_t seed = 0; seed < 20; ++seed) {
    CRowQueries queries(seed);
    for (int i = 0; i < 400; ++i) {
      const std::string text = queries.Next();
      const Answer plain = Ask(root, text, false);
      if (!plain.isParsed) continue;
      const Answer fast = Ask(root, text, true);
      ASSERT_EQ(fast.text, plain.text) << text;
      ++parsed;
      ++outcomes[plain.text.find("<ERROR") != std::string::npos];
      if (fast.rowsSeen < plain.rowsSeen) ++indexed;
    }
  }
  EXPECT_GT(parsed, 6000);
  EXPECT_GT(outcomes[true], 500);
  EXPECT_GT(outcomes[false], 3000);
  EXPECT_GT(indexed, 300) << "what is compared is to be taken";
}

// While the rows of a are found, b.Id is not known yet, and the row stays.
TEST(Shortcuts, LeaveOpenWhatIsNotKnownYet) {
  const std::string text =
      "SELECT a.Id FROM Data(Count=9).Entry a JOIN Data(Count=9).Entry b ON b.Id = a.Id WHERE 1 = "
      "(SELECT COUNT(*) FROM Data(Count=9).Entry s WHERE s.Id = b.Id)";
  const Ref<DiagRoot> root = NewRoot();
  const Answer plain = Ask(root, text, false);
  EXPECT_EQ(plain.text, "8:[6:0 6:1 6:2 6:3 6:4 6:5 6:6 6:7 6:8 ]");
  EXPECT_EQ(Ask(root, text, true).text, plain.text);
}

// A call fails behind the rows that have a text. It must not be made a second time to learn why;
// how often it was made is seen by the rows of its argument.
TEST(Shortcuts, MakeACallOnce) {
  const Ref<DiagRoot> root = NewRoot();
  const std::string call =
      "CALLDLL('no such library', 'f', SELECT b.Id FROM Data(Count=9).Entry b)";
  const std::string from = " FROM Data.Entry a WHERE a.Text IS NOT NULL OR a.Id > 15";
  for (const std::string& select : {"SELECT ISNULL(a.Text, " + call + ")" + from,
                                    "SELECT a.Id, ISNULL(a.Text, " + call + ")" + from}) {
    const Answer plain = Ask(root, select, false);
    const Answer fast = Ask(root, select, true);
    EXPECT_EQ(plain.text.substr(0, 6), "failed") << select;
    EXPECT_EQ(plain.rowsSeen, 20u + 9) << select;
    EXPECT_EQ(fast.rowsSeen, plain.rowsSeen) << select;
  }
}

// A clause does not see what another has listed: what stands between them may change the module.
TEST(Shortcuts, ForgetAListingBehindItsClause) {
  const Ref<DiagRoot> root = NewRoot();
  const QueryContext context("1", root, kNoTimeOut, nullptr);
  DiagParams args(FindModuleClass(context.RootClass.get(), "Data")->Args->Defs());
  const Ref<DiagModule> module = root->GetDiagModule("Data", args, *context.Message);
  ASSERT_TRUE(module);
  CListing listing;
  const auto rows = MakeRef<ValueVector>();
  {
    const CListingScope clause(listing);
    EXPECT_FALSE(listing.IsOf(*module, "Entry"));
    listing.Keep(*module, "Entry", *rows);
    {
      const CListingScope inner(listing);
      EXPECT_FALSE(listing.IsOf(*module, "Entry"));
    }
    EXPECT_TRUE(listing.IsOf(*module, "Entry"));
    EXPECT_EQ(&listing.Rows(), rows.get());
    EXPECT_FALSE(listing.IsOf(*module, "Other"));
  }
  EXPECT_FALSE(listing.IsOf(*module, "Entry"));
}

// The time is over from the beginning. In a module without children nothing looks at it.
TEST(Shortcuts, LookAtTheTimeWhereAWalkDoes) {
  const Ref<DiagRoot> root = NewRoot();
  for (const char* count : {"0", "9"}) {
    const std::string source = "Data(Count=" + std::string(count) + ").Entry";
    const std::string text =
        "SELECT a.Id FROM " + source + " a JOIN " + source + " b ON a.Id = b.Id";
    const Answer plain = Ask(root, text, false, 0);
    EXPECT_EQ(plain.text.substr(0, 6) == "failed", *count != '0') << text;
    EXPECT_EQ(Ask(root, text, true, 0).text, plain.text) << text;
  }
}

TEST(Shortcuts, KeepNoMoreRowsThanThereIsRoomFor) {
  CRepeats repeats;
  EXPECT_TRUE(repeats.TakeRoomFor(100'000'000)) << "the first may be of any length";
  EXPECT_FALSE(repeats.TakeRoomFor(1));
  CRepeats others;
  size_t kept = 0;
  while (kept < 1000 && others.TakeRoomFor(1'000'000)) ++kept;
  EXPECT_GE(kept, 4u);
  EXPECT_LT(kept, 100u);
  EXPECT_FALSE(others.TakeRoomFor(SIZE_MAX));
}

// A cancel that comes while an index is made, and one while it is looked up.
TEST(Shortcuts, LookAtACancel) {
  const Ref<DiagRoot> root = NewRoot();
  Value rows;
  EvaluateQuery(rows, "SELECT * FROM Data(Count=9).Entry", root, kNoTimeOut, nullptr);
  ASSERT_EQ(rows.asVector().Count(), 9u);
  const auto event = MakeRef<os::CEvent>();
  QueryContext context("SELECT a.Id FROM Data.Entry a JOIN Data.Entry b ON a.Id = b.Id", root,
                       kNoTimeOut, MakeRef<QueryMessage>(event, false));
  ParseTree tree;
  ASSERT_TRUE(Tokenise(context.QueryText, context.Tokens) && ParseTokens(context, tree));
  ParseNode& on = *tree.Top()->ChildNode(2)->ChildNode(1)->ChildNode(4);
  CScopeShape shape;
  shape.Add("a");
  shape.Add("b");
  const CBoundItem bound(context, "a", *rows.asVector()[3].asVDIagItem());
  const auto compiled = CCompiledCondition::Make(on, shape);
  ASSERT_TRUE(compiled);
  const auto plan = FindEquality(*compiled, 1);
  ASSERT_TRUE(plan);
  CRowFinder finder(context, &on, shape, rows.asVector(), 1000);
  ASSERT_TRUE(finder.Begin());
  EXPECT_EQ(finder.Next(), 3u);
  EXPECT_EQ(finder.Next(), CRowFinder::kNoRow);
  event->Set();
  EXPECT_FALSE(finder.Begin());
  CEqualityIndex index;
  EXPECT_EQ(index.Make(rows.asVector(), *plan->pColumn, plan->form, context),
            CEqualityIndex::Outcome::Cancelled);
}

}  // namespace
}  // namespace kestra::test
