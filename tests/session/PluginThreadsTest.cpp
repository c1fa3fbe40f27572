// Sessions on several threads over one cache directory, whose plug-ins come and go meanwhile.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "front/session/SorrelCOM.h"
#include "platform/machine/Machine.h"
#include "platform/os/Clock.h"
#include "tests/query/support/TestModules.h"
#include "tests/session/ResultOf.h"
#include "tests/support/TempDirectory.h"

namespace kestra::test {
namespace {

constexpr uint32_t kDurationMs = 1500;

// Each answers the same whatever the others do; the plug-in's module is there or not.
void AskUntil(CSorrelCOM& session, const std::string& file, const std::atomic<bool>& isOver) {
  const std::string ofPlugin = "SELECT Text FROM Notes(File='" + file + "')#60.Note";
  while (!isOver) {
    EXPECT_EQ(ResultOf(session, "SELECT COUNT(*) FROM Many(Count=40)#60.Entry"), "40");
    EXPECT_EQ(ResultOf(session, "SELECT COUNT(*) FROM Many(Count=30)#0*.Entry"), "30");
    const std::string notes = ResultOf(session, "(" + ofPlugin + ") = 'call Ann'");
    EXPECT_TRUE(notes == "True" || notes == "<ERROR: Syntax error>") << notes;
  }
}

TEST(PluginThreads, QueriesGoOnWhilePluginsComeAndGo) {
  const CTempDirectory cache;
  const CTempDirectory directory;
  const std::string file = directory.Write("notes", "call Ann\n");
  const SessionSetup setup{ModulesWithTests(), LiveMachine(), cache.Path()};
  CSorrelCOM shared(setup), other(setup);
  std::atomic<bool> isOver{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) threads.emplace_back([&] { AskUntil(shared, file, isOver); });
  threads.emplace_back([&] { AskUntil(other, file, isOver); });
  const uint32_t start = os::TickCount();
  for (int turn = 0; os::TickCount() - start < kDurationMs; ++turn) {
    EXPECT_TRUE(shared.SetPluginsDir(KESTRA_EXAMPLE_PLUGINS));
    if (turn % 3 == 0) other.SetPluginsDir(KESTRA_EXAMPLE_PLUGINS);
    ResultOf(other, "DROP MODULE *");
    shared.ReInitDiagRoot();
    shared.ClearPlugins();
  }
  isOver = true;
  for (auto& thread : threads) thread.join();
}

}  // namespace
}  // namespace kestra::test
