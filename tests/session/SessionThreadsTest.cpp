// Sessions on several threads, and one session whose modules go while it is asked.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "front/session/SorrelCOM.h"
#include "platform/os/Clock.h"
#include "platform/os/Thread.h"
#include "tests/query/support/TestModules.h"
#include "tests/session/ResultOf.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {
namespace {

SessionSetup TestSetup() {
  return {ModulesWithTests(), Ref<CMachine>(MakeRef<CFakeMachine>())};
}

// Queries and the number of rows, or the text, that each gives.
struct Query {
  const char* pText;
  const char* pResult;
};
constexpr Query kQueries[] = {
    {"SELECT Id FROM Test.Row", "5 rows"},
    {"SELECT * FROM Test(First=2, Mask='One|Two').Row", "4 rows"},
    {"SELECT a.Id, p.Label FROM Test.Row a JOIN Test.Part p ON p.ATTACHEDTO = a.ITEMID", "3 rows"},
    {"SELECT COUNT(*) FROM Many(Count=300).Entry WHERE Name LIKE '*9'", "30"},
    {"SELECT MAX(Created) FROM Test.Row WHERE Created < '2006-06-01'", "*"},
    {"CREATE PROCEDURE a AS 1 CREATE PROCEDURE b AS 'x'", "2 rows"},
    {"SELECT Id FROM Slow(Duration=3).Entry", "1 rows"},
    {"SELECT Id FROM Broken.Entry", "<ERROR>"},
    {"SELECT Nothing FROM Broken.Entry", "<ERROR: Syntax error>"},
    {"SELECT PID FROM Processes.Process", "0 rows"},
    {"SELECT FileName FROM FILES.FILE('C:\\*')", "0 rows"},
    {"DROP MODULE Many", "1 rows"},
};

void RunQueries(CSorrelCOM& session, size_t times, size_t first) {
  for (size_t i = 0; i < times; ++i) {
    const Query& query = kQueries[(first + i) % std::size(kQueries)];
    EXPECT_EQ(ResultOf(session, query.pText), query.pResult) << query.pText;
  }
}

class CThreads {
 public:
  ~CThreads() { Join(); }
  void Start(std::function<void()> body) {
    m_threads.push_back(os::StartThread(std::move(body), 0));
  }
  void Join() {
    for (const auto& thread : m_threads) thread->Join();
    m_threads.clear();
  }

 private:
  std::vector<std::unique_ptr<os::CThreadHandle>> m_threads;
};

TEST(SessionThreads, TwoSessionsRunMixedQueries) {
  CThreads threads;
  for (size_t t = 0; t < 2; ++t) {
    threads.Start([t] {
      CSorrelCOM session(TestSetup());
      RunQueries(session, 20 * std::size(kQueries), t * 5);
    });
  }
}

// Each query holds what it reads; one that begins later makes it anew.
TEST(SessionThreads, ModulesAreDroppedWhileQueriesRun) {
  CSorrelCOM session(TestSetup());
  std::atomic<bool> isOver{false};
  CThreads threads;
  threads.Start([&] {
    while (!isOver) {
      session.ReInitDiagRoot();
      os::Sleep(1);
    }
  });
  // What depends on what other queries left does not belong here.
  RunQueries(session, 1, 0);
  for (size_t i = 0; i < 100; ++i) {
    const Query& query = kQueries[i % (std::size(kQueries) - 1)];
    EXPECT_EQ(ResultOf(session, query.pText), query.pResult) << query.pText;
  }
  isOver = true;
}

// Several threads over one root: the modules are found or made once for each.
TEST(SessionThreads, OneRootServesSeveralThreads) {
  CSorrel sorrel(TestSetup());
  CThreads threads;
  for (size_t t = 0; t < 4; ++t) {
    threads.Start([&, t] {
      for (size_t i = 0; i < 3 * (std::size(kQueries) - 1); ++i) {
        const Query& query = kQueries[(t * 3 + i) % (std::size(kQueries) - 1)];
        Value value;
        ASSERT_TRUE(sorrel.ProcessQuery(query.pText, value, kNoTimeOut, nullptr, nullptr));
        if (value.IsVector()) {
          EXPECT_EQ(std::to_string(value.asVector().Count()) + " rows", query.pResult)
              << query.pText;
        } else if (value.IsError()) {
          EXPECT_EQ(value.asString(), query.pResult) << query.pText;
        }
      }
    });
  }
  threads.Join();
  const Ref<DiagModule> first = sorrel.GetModule("Test", "First=2,Mask=3");
  EXPECT_TRUE(first == sorrel.GetModule("test", "Mask='One|Two',First=2"));
}

// A cancel that comes between two queries may be lost; one that comes during a query is not.
TEST(SessionThreads, CancelQueryEndsTheQueryThatRuns) {
  CSorrelCOM session(TestSetup());
  for (int i = 0; i < 3; ++i) {
    std::atomic<bool> hasEnded{false};
    CThreads threads;
    threads.Start([&] {
      os::Sleep(20);
      while (!hasEnded) {
        session.CancelQuery();
        os::Sleep(5);
      }
    });
    QueryOutcome outcome;
    session.RunQuerySync("SELECT Id FROM Slow(Duration=60000).Entry", std::nullopt, kNoTimeOut,
                         outcome);
    hasEnded = true;
    EXPECT_EQ(outcome.value.asString(), "<ERROR>");
    EXPECT_NE(outcome.message, "");
  }
  EXPECT_EQ(ResultOf(session, "SELECT Id FROM Test.Row"), "5 rows");
}

}  // namespace
}  // namespace kestra::test
