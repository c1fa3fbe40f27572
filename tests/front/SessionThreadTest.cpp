// Sessions and threads: queries that are cancelled from outside, and two sessions at once.
#include <thread>

#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "tests/front/SessionFixture.h"

namespace kestra::test {
namespace {

// Far above the 250 ms in which a cancel is to be answered, far below what the queries take.
constexpr uint32_t kPatienceMs = 5000;
constexpr uint32_t kHeadStartMs = 100;

using SessionThread = CInterfaceTest;

// Each would take a minute or more.
const char* const kLongQueries[] = {
    // a fill
    "SELECT * FROM Slow(Duration=60000).Entry",
    // a join
    "SELECT COUNT(*) FROM Many(Count=20000).Entry a JOIN Many(Count=20000).Entry b "
    "ON a.Id + b.Id = 1 JOIN Many(Count=20000).Entry c ON c.Id + b.Id = 3",
    // a scan
    "SELECT COUNT(*) FROM Many(Count=5000).Entry a WHERE "
    "(SELECT COUNT(*) FROM Many(Count=100000).Entry b WHERE b.Id + a.Id < 0) > 0",
};

TEST_F(SessionThread, CancelFromAnotherThreadEndsTheQuery) {
  for (const char* query : kLongQueries) {
    SCOPED_TRACE(query);
    uint32_t cancelled = 0;
    std::thread canceller([&] {
      os::Sleep(kHeadStartMs);
      cancelled = os::TickCount();
      EXPECT_EQ(kestra_session_cancel_query(session), KESTRA_OK);
    });
    kestra_value* value = Run(query);
    const uint32_t ended = os::TickCount();
    canceller.join();
    EXPECT_TRUE(Is(kestra_value_is_error, value)) << TakeText(Run(query, nullptr, 0));
    EXPECT_LT(ended - cancelled, kPatienceMs);
    kestra_value_release(value);
    EXPECT_EQ(TextOf("1 + 1"), "2");  // the cancel is forgotten
  }
}

TEST_F(SessionThread, EventOfTheHostEndsTheQuery) {
  os::CEvent event;
  const intptr_t handle = event.Native();
  for (const char* query : kLongQueries) {
    SCOPED_TRACE(query);
    std::thread host([&] {
      os::Sleep(kHeadStartMs);
      event.Set();
    });
    const uint32_t start = os::TickCount();
    kestra_value* value = Run(query, &handle);
    EXPECT_LT(os::TickCount() - start, kPatienceMs);
    host.join();
    EXPECT_TRUE(Is(kestra_value_is_error, value));
    kestra_value_release(value);
    EXPECT_TRUE(event.IsSet());  // polled, not taken
    event.Reset();
  }
}

TEST_F(SessionThread, CancelOfTheSessionLeavesAHostsEventAlone) {
  os::CEvent event;
  const intptr_t handle = event.Native();
  ASSERT_EQ(kestra_session_cancel_query(session), KESTRA_OK);
  EXPECT_EQ(TakeText(Run("1 + 1", &handle)), "2");
  EXPECT_EQ(TextOf("1 + 1"), "2");
}

TEST_F(SessionThread, TimeOutEndsTheQuery) {
  const uint32_t start = os::TickCount();
  // The scan is begun anew for each row, and looks at the time then.
  kestra_value* value = Run(kLongQueries[2], nullptr, 200);
  EXPECT_LT(os::TickCount() - start, kPatienceMs);
  EXPECT_TRUE(Is(kestra_value_is_error, value));
  kestra_value_release(value);
}

TEST_F(SessionThread, ASecondThreadIsRefusedWhileOneIsIn) {
  kestra_status run = KESTRA_OK, destroy = KESTRA_OK, progress = KESTRA_E_BUSY;
  kestra_value* none = nullptr;
  std::thread stranger([&] {
    while ((progress = kestra_session_progress(session, nullptr, 0, nullptr, nullptr)) ==
           KESTRA_E_NOTFOUND) {
      os::Sleep(1);
    }
    run = kestra_session_run_query_sync(session, "1 + 1", nullptr, KESTRA_NO_TIMEOUT, &none);
    destroy = kestra_session_destroy(session);
    kestra_session_cancel_query(session);
  });
  kestra_value* value = Run(kLongQueries[0]);
  stranger.join();
  EXPECT_EQ(progress, KESTRA_OK);
  EXPECT_EQ(run, KESTRA_E_BUSY);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(destroy, KESTRA_E_BUSY);
  EXPECT_TRUE(Is(kestra_value_is_error, value));
  kestra_value_release(value);
  std::thread heir([&] { EXPECT_EQ(TextOf("1 + 1"), "2"); });  // one after the other
  heir.join();
}

TEST_F(SessionThread, TwoSessionsOnTwoThreads) {
  const auto work = [] {
    kestra_session* own =
        MakeSession({ModulesWithTests(), MakeRef<CFakeMachine>(SystemFamily::Linux)});
    for (int i = 0; i < 20; ++i) {
      kestra_value* value = nullptr;
      ASSERT_EQ(kestra_session_run_query_sync(own, "SELECT COUNT(*) FROM Many(Count=100).Entry",
                                              nullptr, KESTRA_NO_TIMEOUT, &value),
                KESTRA_OK);
      EXPECT_EQ(TakeText(value), "100");
      if (i % 5 == 0) kestra_session_reinit_diag_root(own);
    }
    kestra_session_destroy(own);
  };
  std::thread first(work), second(work);
  first.join();
  second.join();
}

TEST_F(SessionThread, ResultsAreReadOnOtherThreads) {
  kestra_value* rows = Run("SELECT * FROM Test.Row");
  const auto read = [&](kestra_value* own) {
    kestra_values* values = nullptr;
    ASSERT_EQ(kestra_value_as_vector(own, &values), KESTRA_OK);
    for (int32_t i = 0; i < 5; ++i) {
      kestra_value* element = nullptr;
      ASSERT_EQ(kestra_values_value(values, i, &element), KESTRA_OK);
      EXPECT_EQ(TakeText(element), "<Diagnostics Item>");
    }
    kestra_values_release(values);
    kestra_value_release(own);
  };
  kestra_value* again = Run("SELECT * FROM Test.Row");  // the same items in a vector of its own
  std::thread first(read, rows), second(read, again);
  first.join();
  second.join();
}

}  // namespace
}  // namespace kestra::test
