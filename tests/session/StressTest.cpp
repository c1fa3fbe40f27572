// Eight threads at once: queries of all kinds over one root and over roots of their own, cancels,
// refills, a root that is made anew, plug-ins that come and go, changes, and a cache directory that
// all share. Whatever comes together, each query gives its result, or the Error of one that was
// cancelled.
//
//   KESTRA_STRESS_SECONDS=120 build/tsan/tests/session/kestra_session_stress
//
// Without the variable it takes a few seconds.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "front/session/SorrelCOM.h"
#include "platform/machine/Machine.h"
#include "platform/os/Clock.h"
#include "tests/query/support/TestModules.h"
#include "tests/support/TempDirectory.h"

namespace kestra::test {
namespace {

constexpr uint32_t kUsualSeconds = 5;
constexpr const char* kCancelled = "<ERROR>";

uint32_t Seconds() {
  const char* const pText = std::getenv("KESTRA_STRESS_SECONDS");
  const int seconds = pText ? std::atoi(pText) : 0;
  return seconds > 0 ? static_cast<uint32_t>(seconds) : kUsualSeconds;
}

struct Query {
  std::string text;
  std::string result;   // "n rows", or the text of what is no list
  std::string other{};  // what it may give too
};

enum Work { kQueries, kCancels, kRefills, kNewRoots, kPluginChanges, kChanges, kAsync, kWorkCount };

class Stress : public testing::Test {
 protected:
  std::string ResultOf(CSorrelCOM& session, const std::string& text) {
    QueryOutcome outcome;
    session.RunQuerySync(text, std::nullopt, kNoTimeOut, outcome);
    const Value& value = outcome.value;
    ++m_done[kQueries];
    return value.IsVector() ? std::to_string(value.asVector().Count()) + " rows" : value.asString();
  }
  void Ask(CSorrelCOM& session, const Query& query, bool mayBeCancelled) {
    const std::string result = ResultOf(session, query.text);
    if (mayBeCancelled && result == kCancelled) {
      ++m_done[kCancels];
      return;
    }
    EXPECT_TRUE(result == query.result || (!query.other.empty() && result == query.other))
        << query.text << ": " << result;
  }
  void AskShared(uint32_t seed);
  void AskAsync();
  void Change(uint32_t number);
  void Cancel();
  void Manage();
  std::vector<Query> Queries() const;
  SessionSetup Setup() const { return {ModulesWithTests(), LiveMachine(), m_cache.Path()}; }

  const CTempDirectory m_cache, m_directory;
  const std::string m_notes = m_directory.Write("notes", "call Ann\nx write\n");
  CSorrelCOM m_shared{Setup()};
  std::atomic<bool> m_isOver{false};
  std::array<std::atomic<uint64_t>, kWorkCount> m_done{};
};

std::vector<Query> Stress::Queries() const {
  return {
      {"SELECT Id FROM Test.Row", "5 rows"},
      {"SELECT Id FROM Test(First=2, Mask='One|Two').Row", "4 rows"},
      {"SELECT a.Id, p.Number FROM Test.Row a JOIN Test.Part p ON p.ATTACHEDTO = a.ITEMID",
       "3 rows"},
      {"SELECT a.Id FROM Many(Count=300).Entry a JOIN Many(Count=300).Entry b ON a.Id = b.Id",
       "300 rows"},
      {"SELECT COUNT(*) FROM Many(Count=300).Entry WHERE Name LIKE '*9'", "30"},
      {"SELECT Id FROM Many(Count=50).Entry WHERE Id <= (SELECT MIN(Id) FROM Test.Row)", "2 rows"},
      {"SELECT COUNT(*) FROM Many(Count=40)#60.Entry", "40"},
      {"SELECT COUNT(*) FROM Many(Count=30)#0*.Entry", "30"},
      {"(SELECT COUNT(*) FROM Processes.Process) > 0", "True"},
      {"SELECT FileName FROM FILES.FILE('" + m_notes + "')", "1 rows"},
      {"CREATE PROCEDURE a AS 1 CREATE PROCEDURE b AS 'x'", "2 rows"},
      {"SELECT Id FROM Slow(Duration=3).Entry", "1 rows"},
      {"SELECT Id FROM Broken.Entry", "<ERROR>"},
      {"SELECT Id FROM Throws.Entry", "<ERROR: Unknown error>"},
      {"SELECT Nothing FROM Broken.Entry", "<ERROR: Syntax error>"},
      {"SELECT Text FROM Notes(File='" + m_notes + "')#60.Note", "2 rows", "<ERROR: Syntax error>"},
  };
}

// One of several threads over one root.
void Stress::AskShared(uint32_t seed) {
  const std::vector<Query> queries = Queries();
  std::mt19937 random(seed);
  while (!m_isOver) Ask(m_shared, queries[random() % queries.size()], true);
}

// A session of its own, asked by the worker's road, and left with something running.
void Stress::AskAsync() {
  while (!m_isOver) {
    CSorrelCOM session(Setup());
    size_t fired = 0;
    session.SetQueryCompleteSink([&](const QueryOutcome&) { ++fired; });
    for (int i = 0; i < 20 && !m_isOver; ++i) {
      const bool isSlow = i % 4 == 0;
      ASSERT_EQ(session.RunQuery(isSlow ? "SELECT Id FROM Slow(Duration=60000).Entry"
                                        : "SELECT Id FROM Test.Row",
                                 kNoTimeOut),
                SessionStatus::Ok);
      if (isSlow) {
        os::Sleep(1);
        session.CancelQuery();
        continue;
      }
      const size_t before = fired;
      const os::CBorrowedEvent event(session.EventHandle());
      ASSERT_EQ(os::WaitAny({&event}, 60000), 0u);
      session.DispatchEvents();
      ASSERT_EQ(fired, before + 1);
      ++m_done[kAsync];
    }
    session.RunQuery("SELECT Id FROM Slow(Duration=60000).Entry", kNoTimeOut);
  }
}

// A session of its own that changes what all modules Test show.
void Stress::Change(uint32_t number) {
  CSorrelCOM session(Setup());
  session.AllowActive(true);
  const std::string id = std::to_string(number);
  while (!m_isOver) {
    Ask(session, {"UPDATE Test.Row SET Size = 7, Text = 'changed' WHERE Id = " + id, "1 rows"},
        false);
    Ask(session, {"SELECT Text FROM Test.Row WHERE Size = 7 AND Id = " + id, "1 rows"}, false);
    Ask(session, {"DROP MODULE Many", "1 rows"}, false);
    ++m_done[kChanges];
  }
}

void Stress::Cancel() {
  std::mt19937 random(7);
  while (!m_isOver) {
    m_shared.CancelQuery();
    std::string what;
    uint64_t done = 0, total = 0;
    m_shared.Progress().Read(what, done, total);
    os::Sleep(random() % 8);
  }
}

// What only the owner of the session does, while others ask it.
void Stress::Manage() {
  std::mt19937 random(11);
  while (!m_isOver) {
    switch (random() % 6) {
      case 0:
        m_shared.ReInitDiagRoot();
        ++m_done[kNewRoots];
        break;
      case 1:
        EXPECT_TRUE(m_shared.SetPluginsDir(KESTRA_EXAMPLE_PLUGINS));
        ++m_done[kPluginChanges];
        break;
      case 2:
        m_shared.ClearPlugins();
        ++m_done[kPluginChanges];
        break;
      case 3:
        ResultOf(m_shared, "DROP MODULE *");
        break;
      default:
        m_shared.InitDiagModule("Many", "Count=300", random() % 2 != 0);
        m_shared.InitDiagModule("Test", "", true);
        ++m_done[kRefills];
    }
    os::Sleep(random() % 4);
  }
}

TEST_F(Stress, EightThreads) {
  std::vector<std::thread> threads;
  for (const uint32_t seed : {1u, 2u, 3u}) threads.emplace_back([this, seed] { AskShared(seed); });
  for (const uint32_t id : {1u, 3u}) threads.emplace_back([this, id] { Change(id); });
  threads.emplace_back([this] { AskAsync(); });
  threads.emplace_back([this] { Cancel(); });
  std::thread timer([this] {
    const uint32_t start = os::TickCount(), duration = Seconds() * 1000;
    while (os::TickCount() - start < duration && !HasFailure()) os::Sleep(20);
    m_isOver = true;
  });
  Manage();
  timer.join();
  for (auto& thread : threads) thread.join();

  m_shared.ClearPlugins();
  Ask(m_shared, {"SELECT Id FROM Test.Row", "5 rows"}, false);
  constexpr const char* kNames[] = {"queries",     "cancelled",           "refills",
                                    "new roots",   "changes of plug-ins", "changes",
                                    "asynchronous"};
  for (size_t i = 0; i < kWorkCount; ++i) {
    std::cout << kNames[i] << ": " << m_done[i] << "\n";
    EXPECT_GT(m_done[i], 0u) << kNames[i];
  }
  RestoreTestRows();
}

}  // namespace
}  // namespace kestra::test
