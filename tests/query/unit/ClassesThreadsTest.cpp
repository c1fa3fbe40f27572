// Classes that many threads ask for at once, before anybody did.
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <vector>

#include "model/root/Root.h"
#include "platform/os/Event.h"
#include "platform/os/Thread.h"
#include "tests/query/support/TestModules.h"

namespace kestra::test {
namespace {

void Collect(const DiagClass& diagClass, std::vector<const void*>& found) {
  found.push_back(&diagClass);
  found.push_back(diagClass.Params.get());
  found.push_back(diagClass.Args.get());
  found.push_back(diagClass.Actions.get());
  for (const auto& child : diagClass.ChildClasses()) Collect(*child, found);
}

TEST(Classes, AreTheSameForAllThreads) {
  constexpr size_t kThreads = 8;
  std::array<std::vector<const void*>, kThreads> found;
  os::CEvent start;
  std::vector<std::unique_ptr<os::CThreadHandle>> threads;
  const ModuleTable table = ModulesWithTests();
  for (size_t t = 0; t < kThreads; ++t) {
    threads.push_back(os::StartThread(
        [&, t] {
          os::WaitAny({&start}, os::kInfinite);
          // Each begins somewhere else in the table.
          for (size_t i = 0; i < table.size(); ++i) {
            table[(i + t * table.size() / kThreads) % table.size()].pClass->Get();
          }
          for (const ModuleRow& row : table) Collect(*row.pClass->Get(), found[t]);
        },
        0));
  }
  start.Set();
  for (const auto& thread : threads) thread->Join();
  EXPECT_GT(found[0].size(), 4 * table.size());
  for (const auto& other : found) EXPECT_EQ(other, found[0]);
}

// One root's class tree, likewise.
TEST(Classes, OfOneRootAreMadeOnce) {
  const auto root = MakeRef<DiagRoot>("", ModulesWithTests(), nullptr);
  std::array<DiagClass*, 8> found{};
  std::vector<std::unique_ptr<os::CThreadHandle>> threads;
  for (DiagClass*& pFound : found) {
    threads.push_back(os::StartThread([&] { pFound = root->GetTypeInfo().get(); }, 0));
  }
  for (const auto& thread : threads) thread->Join();
  for (const DiagClass* pFound : found) EXPECT_EQ(pFound, found[0]);
}

}  // namespace
}  // namespace kestra::test
