// Memory that runs out at the n-th allocation, for every n: a text is still cut up right or not at
// all, and a query ends in its value or in an Error, never in another value. Nothing is left
// behind.
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "query/Evaluate.h"
#include "query/parse/Tokeniser.h"
#include "query/parse/chart/ChartMemory.h"
#include "tests/query/support/TestModules.h"
#include "tests/support/FailingMemory.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {
namespace {

// Whether a result shows what was expected; in a list an Error may stand in the place of a
// procedure's value.
bool IsSame(const Value& a, const Value& b, bool mayFail = false) {
  if (mayFail && a.IsError()) return true;
  if (a.IsVector() != b.IsVector()) return false;
  if (!a.IsVector()) return a.asString() == b.asString();
  if (a.asVector().Count() != b.asVector().Count()) return false;
  for (size_t i = 0; i < a.asVector().Count(); ++i) {
    if (!IsSame(a.asVector()[i], b.asVector()[i], mayFail)) return false;
  }
  return true;
}

// Runs body with the n-th allocation failing, for every n, until there is no n-th one. body answers
// whether one failed.
template <typename Body>
void ForEveryAllocation(const Body& body) {
  for (const MemoryFault fault : {MemoryFault::Once, MemoryFault::FromThen}) {
    bool hasFailed = true;
    for (uint64_t n = 1; hasFailed; ++n) {
      SCOPED_TRACE("allocation " + std::to_string(n) + (fault == MemoryFault::Once ? "" : "..."));
      const auto leavesSomething = [&] {
        // What parsing has learned is learned anew, so that all of it fails once.
        CBorrowedChartMemory::ForgetAll();
        const int64_t before = OutstandingBlocks();
        hasFailed = body(n, fault);
        CBorrowedChartMemory::ForgetAll();
        return OutstandingBlocks() > before;
      };
      // What is made once and kept may be made on the way of an error; so a second time counts.
      ASSERT_FALSE(leavesSomething() && leavesSomething());
      if (testing::Test::HasFailure()) return;
    }
  }
}

class QueryMemory : public testing::TestWithParam<const char*> {};

TEST_P(QueryMemory, EndsInTheValueOrAnError) {
  const std::string text = GetParam();
  const auto root =
      MakeRef<DiagRoot>("", ModulesWithTests(), Ref<CMachine>(MakeRef<CFakeMachine>()));
  const auto message = MakeRef<QueryMessage>();
  Value expected;
  // The second time, so that what is made once is there.
  for (int i = 0; i < 2; ++i) EvaluateQuery(expected, text, root, kNoTimeOut, message);
  ASSERT_FALSE(expected.IsError()) << expected.asString();
  ForEveryAllocation([&](uint64_t n, MemoryFault fault) {
    Value value;
    bool hasFailed = false;
    {
      CFailingMemory memory(n, fault);
      EvaluateQuery(value, text, root, kNoTimeOut, message);
      hasFailed = memory.HasFailed();
    }
    EXPECT_TRUE(IsSame(value, expected, hasFailed)) << value.asString();
    return hasFailed;
  });
  Value again;
  EvaluateQuery(again, text, root, kNoTimeOut, message);
  EXPECT_TRUE(IsSame(again, expected)) << again.asString();
}

// The modules are made and filled while memory runs out.
TEST_P(QueryMemory, FillsOrFails) {
  const std::string text = GetParam();
  const auto machine = MakeRef<CFakeMachine>();
  const auto newRoot = [&] {
    return MakeRef<DiagRoot>("", ModulesWithTests(), Ref<CMachine>(machine));
  };
  Value expected;
  for (int i = 0; i < 2; ++i) EvaluateQuery(expected, text, newRoot(), kNoTimeOut, nullptr);
  ForEveryAllocation([&](uint64_t n, MemoryFault fault) {
    Value value;
    bool hasFailed = false;
    {
      CFailingMemory memory(n, fault);
      try {
        EvaluateQuery(value, text, newRoot(), kNoTimeOut, nullptr);
      } catch (const std::bad_alloc&) {  // of the root
        value.SetError();
      }
      hasFailed = memory.HasFailed();
    }
    EXPECT_TRUE(IsSame(value, expected, hasFailed)) << value.asString();
    return hasFailed;
  });
}

INSTANTIATE_TEST_SUITE_P(
    Expressions, QueryMemory,
    testing::Values("1 + 2 * 3 - 4", "5 | 6 | 7 | ~4",
                    "'a text of some length, for the heap' + 'b'",
                    "LEN('a' + RIGHT('abc', 2) + SUBSTRING('abcdef', 2, 3))",
                    "NOT (1 = 2 OR 'b' LIKE 'a*' AND 3 IN (1, 2, 3))",
                    "'x' IN ('a', 'b', 'x', 'a text of some length, for the heap')",
                    "CONVERT(VERSION, '1.2b.3') > CONVERT(VERSION, '1.2')",
                    "DATEADD(dd, 1, '2006-01-02 03:04:05')", "DATEPART(yy, '2006-01-02')",
                    "'a text of some length, for the heap', 'b'",
                    "CREATE PROCEDURE a AS 1 CREATE PROCEDURE b AS 'x'"));

INSTANTIATE_TEST_SUITE_P(
    Rows, QueryMemory,
    testing::Values("SELECT * FROM Test.Row WHERE Id < 3",
                    "SELECT Id, Text, Kind FROM Test.Row WHERE Text LIKE '*a*'",
                    "SELECT a.Id, b.Text FROM Test.Row a JOIN Test.Row b ON a.Id = b.Id",
                    "SELECT a.Id, p.Label FROM Test.Row a JOIN Test.Part p ON p.ATTACHEDTO = "
                    "a.ITEMID",
                    "SELECT MAX(Text) FROM Test.Row", "SELECT COUNT(*) FROM Test.Row",
                    "SELECT ISNULL(Text, 'a text of some length, for the heap') FROM Test.Row",
                    "SELECT Id FROM Test.Row WHERE Id = (SELECT MAX(Owner) FROM Test.Part)",
                    "SELECT Id FROM Test(First=(SELECT MIN(Id) FROM Test.Row), Prefix='a text of "
                    "some length').Row"));

// An item that is changed keeps what it had, or has the new value besides.
TEST(ItemMemory, ReplacingAValueLosesNoOther) {
  auto defs = MakeRef<DiagParamDefs>();
  for (const char* pName : {"A", "B", "C"}) defs->Add(pName, ParamType::Dword, "", true, "");
  ForEveryAllocation([&](uint64_t n, MemoryFault fault) {
    DiagParams params{Ref<const DiagParamDefs>(defs)};
    for (size_t i = 0; i < 3; ++i)
      params.Set(MakeRef<DiagParam>(defs->Get(i), static_cast<uint32_t>(i)), false);
    CFailingMemory memory(n, fault);
    try {
      params.Set(MakeRef<DiagParam>(defs->Get(1), 7u), true);
    } catch (const std::bad_alloc&) {
    }
    EXPECT_EQ(params.Count(), 3u);
    for (size_t i = 0; i < params.Count(); ++i) {
      const DiagParam* pFound = params.Find(*defs->Get(i));
      EXPECT_TRUE(pFound && (pFound->DWordValue == i || (i == 1 && pFound->DWordValue == 7)));
    }
    return memory.HasFailed();
  });
}

TEST(TokeniserMemory, AllTokensOrNone) {
  const std::string text = "SELECT a, 'b' /* c */ FROM " + std::string(100, 'x') + " WHERE 1 <= 2";
  TokenList expected;
  ASSERT_TRUE(Tokenise(text, expected));
  ForEveryAllocation([&](uint64_t n, MemoryFault fault) {
    TokenList tokens;
    CFailingMemory memory(n, fault);
    try {
      EXPECT_TRUE(Tokenise(text, tokens));
      EXPECT_EQ(tokens.size(), expected.size());
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(memory.HasFailed());
    }
    return memory.HasFailed();
  });
}

}  // namespace
}  // namespace kestra::test
