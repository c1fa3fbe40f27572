// The asynchronous road of a session: the worker, its announcements, a cancel, and the end of a
// session while something runs.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "front/session/SorrelCOM.h"
#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "tests/query/support/TestModules.h"
#include "tests/support/FakeMachine.h"

namespace kestra::test {
namespace {

constexpr uint32_t kLongMs = 20000;  // for what comes at once on a machine that is not busy
constexpr const char* kSlow = "SELECT COUNT(*) FROM Slow(Duration=60000).Entry";

class AsyncSession : public testing::Test {
 protected:
  AsyncSession()
      : m_pSession(std::make_unique<CSorrelCOM>(
            SessionSetup{ModulesWithTests(), Ref<CMachine>(MakeRef<CFakeMachine>())})) {
    m_pSession->SetQueryCompleteSink(
        [this](const QueryOutcome& outcome) { m_results.push_back(outcome.value.asString()); });
  }

  // Waits as an event loop does. False when nothing was announced in time.
  bool WaitForEvent(uint32_t timeOutMs) {
    const os::CBorrowedEvent event(m_pSession->EventHandle());
    return os::WaitAny({&event}, timeOutMs) == 0;
  }
  std::string Dispatch() {
    if (!WaitForEvent(kLongMs)) return "nothing was announced";
    m_pSession->DispatchEvents();
    return m_results.empty() ? "nothing was fired" : m_results.back();
  }

  std::vector<std::string> m_results;
  std::unique_ptr<CSorrelCOM> m_pSession;
};

TEST_F(AsyncSession, FiresEachResultOnTheOwnersThread) {
  const struct {
    const char* pQuery;
    uint32_t timeOut;
    const char* pResult;
  } kCases[] = {
      {"1 + 1", kNoTimeOut, "2"},
      {"SELECT Id FROM Test.Row", kNoTimeOut, "<Vector>"},
      {"SELECT Nope FROM Test.Row", kNoTimeOut, "<ERROR: Syntax error>"},
      {"SELECT Id FROM Test.Row", 0, "<NULL>"},  // parsed only
      {"SELECT Id FROM Throws.Entry", kNoTimeOut, "<ERROR: Unknown error>"},
      {"2 + 2", kNoTimeOut, "4"},
  };
  for (const auto& test : kCases) {
    ASSERT_EQ(m_pSession->RunQuery(test.pQuery, test.timeOut), SessionStatus::Ok) << test.pQuery;
    EXPECT_EQ(Dispatch(), test.pResult) << test.pQuery;
  }
  EXPECT_EQ(m_results.size(), std::size(kCases));
  EXPECT_FALSE(WaitForEvent(0));
}

TEST_F(AsyncSession, RefusesASecondQueryUntilTheFirstIsDispatched) {
  ASSERT_EQ(m_pSession->RunQuery("1 + 1", kNoTimeOut), SessionStatus::Ok);
  EXPECT_EQ(m_pSession->RunQuery("2 + 2", kNoTimeOut), SessionStatus::Fail);
  ASSERT_TRUE(WaitForEvent(kLongMs));
  EXPECT_EQ(m_pSession->RunQuery("2 + 2", kNoTimeOut), SessionStatus::Fail);
  EXPECT_EQ(Dispatch(), "2");
  EXPECT_EQ(m_pSession->RunQuery("2 + 2", kNoTimeOut), SessionStatus::Ok);
  EXPECT_EQ(Dispatch(), "4");
}

TEST_F(AsyncSession, ACancelledQueryAnnouncesNothingAndTheNextOneRuns) {
  ASSERT_EQ(m_pSession->RunQuery(kSlow, kNoTimeOut), SessionStatus::Ok);
  os::Sleep(50);
  m_pSession->CancelQuery();
  EXPECT_FALSE(WaitForEvent(100));
  // One that has ended and is not dispatched yet goes too.
  ASSERT_EQ(m_pSession->RunQuery("1 + 1", kNoTimeOut), SessionStatus::Ok);
  ASSERT_TRUE(WaitForEvent(kLongMs));
  m_pSession->CancelQuery();
  EXPECT_EQ(m_pSession->DispatchEvents(), 0u);
  EXPECT_TRUE(m_results.empty());
  ASSERT_EQ(m_pSession->RunQuery("3 + 3", kNoTimeOut), SessionStatus::Ok);
  EXPECT_EQ(Dispatch(), "6");
}

// The announcement of a query that is cancelled from elsewhere may come late, when the next query
// runs already: it must not take that one's place.
TEST_F(AsyncSession, ALateAnnouncementIsNotTheNextQuerys) {
  for (int round = 0; round < 100; ++round) {
    ASSERT_EQ(m_pSession->RunQuery("1 + 1", kNoTimeOut), SessionStatus::Ok);
    ASSERT_TRUE(WaitForEvent(kLongMs));
    std::thread canceller([this] { m_pSession->CancelQuery(); });
    for (int i = 0; i < 50; ++i) {
      m_pSession->RunQuery("SELECT COUNT(*) FROM Slow(Duration=1).Entry", kNoTimeOut);
      m_pSession->DispatchEvents();
    }
    canceller.join();
    m_pSession->CancelQuery();
  }
  ASSERT_EQ(m_pSession->RunQuery("3 + 3", kNoTimeOut), SessionStatus::Ok);
  EXPECT_EQ(Dispatch(), "6");
  for (const std::string& result : m_results) {
    EXPECT_TRUE(result == "2" || result == "1" || result == "6") << result;
  }
}

TEST_F(AsyncSession, WithoutAsyncModeNothingStarts) {
  ASSERT_EQ(m_pSession->RunQuery("1 + 1", kNoTimeOut), SessionStatus::Ok);
  m_pSession->DisableAsyncMode();
  EXPECT_EQ(m_pSession->RunQuery("1 + 1", kNoTimeOut), SessionStatus::Fail);
  EXPECT_EQ(m_pSession->EventHandle(), os::kNoHandle);
  EXPECT_EQ(m_pSession->DispatchEvents(), 0u);
  QueryOutcome outcome;
  m_pSession->RunQuerySync("1 + 1", std::nullopt, kNoTimeOut, outcome);
  EXPECT_EQ(outcome.value.asString(), "2");
}

TEST_F(AsyncSession, EndsWhileAQueryAndAFillingRun) {
  ASSERT_EQ(m_pSession->RunQuery(kSlow, kNoTimeOut), SessionStatus::Ok);
  ASSERT_EQ(m_pSession->InitDiagModule("Slow", "Duration=59999", false), SessionStatus::Ok);
  os::Sleep(20);
  const uint32_t start = os::TickCount();
  m_pSession.reset();
  EXPECT_LT(os::TickCount() - start, 5000u);
}

TEST_F(AsyncSession, TheSinkMayEndTheSession) {
  m_pSession->SetQueryCompleteSink([this](const QueryOutcome&) { m_pSession.reset(); });
  ASSERT_EQ(m_pSession->RunQuery("1 + 1", kNoTimeOut), SessionStatus::Ok);
  ASSERT_TRUE(WaitForEvent(kLongMs));
  CSorrelCOM& session = *m_pSession;
  EXPECT_EQ(session.DispatchEvents(), 1u);
  EXPECT_EQ(m_pSession, nullptr);
}

// A warm-up meets queries that walk the same module: nobody's rows are pulled away.
TEST_F(AsyncSession, InitDiagModuleLeavesReadersTheirRows) {
  for (int i = 0; i < 60; ++i) {
    ASSERT_EQ(m_pSession->InitDiagModule("Many", "Count=500", i % 2 != 0), SessionStatus::Ok);
    QueryOutcome outcome;
    m_pSession->RunQuerySync("SELECT Id, Name FROM Many(Count=500).Entry WHERE Group > 10",
                             std::nullopt, kNoTimeOut, outcome);
    ASSERT_EQ(outcome.value.asVector().Count(), 445u);
    EXPECT_EQ(outcome.value.asVector()[444].asVector()[1].asString(), "entry number 499");
  }
}

TEST_F(AsyncSession, InitDiagModuleFillsAheadOfTheQuery) {
  EXPECT_EQ(m_pSession->InitDiagModule("NoSuch", "", false), SessionStatus::Pointer);
  EXPECT_EQ(m_pSession->InitDiagModule("Slow", "Duration=x", false), SessionStatus::Pointer);
  ASSERT_EQ(m_pSession->InitDiagModule("Slow", "Duration=1500", false), SessionStatus::Ok);
  os::Sleep(50);
  // The query waits for the filling that runs, and does not fill again.
  const uint32_t start = os::TickCount();
  QueryOutcome outcome;
  m_pSession->RunQuerySync("SELECT COUNT(*) FROM Slow(Duration=1500).Entry", std::nullopt,
                           kNoTimeOut, outcome);
  EXPECT_EQ(outcome.value.asString(), "1");
  EXPECT_LT(os::TickCount() - start, 2800u);
}

}  // namespace
}  // namespace kestra::test
