// Whatever fails, and whenever a load or save is ended: what was saved before is there, whole.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "VLib/src/data/CfgNode.h"
#include "tests/VLib/data/CfgTrees.h"
#include "tests/support/EventAtLook.h"
#include "tests/support/FailingMachine.h"
#include "tests/support/FakeMachine.h"

namespace kestra {
namespace {

using test::CEventAtLook;
using test::CFailingMachine;
using test::CFakeMachine;
using test::kCfgPath;
using test::Show;

constexpr uint32_t kMostCalls = 200;

// A tree whose text takes several pieces to write, and looks at the event in all stages.
Ref<CfgNode> BigTree(const std::string& text) {
  auto root = MakeRef<CfgNode>();
  std::mt19937 random(1);
  for (int i = 0; i < 30; ++i) {
    std::string digits;  // those compress, but not out of all measure
    while (digits.size() < 60'000) digits += std::to_string(random() % 1000) + std::string(20, 'x');
    CfgNode& section = root->AddSection("S" + std::to_string(i));
    section.SetText("text", text + digits);
  }
  return root;
}

std::string Loaded(CFileSystem& files, uint32_t key) {
  CfgNode node;
  return node.LoadFile(files, kCfgPath, "", CfgMode::All, key, CfgLayout::Cfg) ? Show(node)
                                                                               : "none";
}

// Old and new trees, the old one saved.
struct Fixture {
  explicit Fixture(uint32_t theKey) : key(theKey) {
    machine->files.AddDirectory("C:\\");
    EXPECT_TRUE(before->SaveFile(machine->files, kCfgPath, key, key != 0, CfgLayout::Cfg));
  }
  // After a save that answered this.
  void ExpectWhole(bool isSaved, uint32_t call) {
    EXPECT_EQ(Loaded(machine->files, key), Show(isSaved ? *after : *before)) << call;
    EXPECT_TRUE(before->SaveFile(machine->files, kCfgPath, key, key != 0, CfgLayout::Cfg));
  }

  uint32_t key;
  Ref<CFakeMachine> machine = MakeRef<CFakeMachine>();
  Ref<CfgNode> before = BigTree("before");
  Ref<CfgNode> after = BigTree("after");
};

TEST(CfgFault, ASaveWhoseNthCallFails) {
  for (const uint32_t key : {0u, 77u}) {
    Fixture test(key);
    CFailingMachine failing(test.machine);
    uint32_t call = 1;
    for (; call < kMostCalls; ++call) {
      failing.FailCall(call, kErrorDiskFull);
      const bool isSaved =
          test.after->SaveFile(*failing.Files(), kCfgPath, key, key != 0, CfgLayout::Cfg);
      if (!failing.HasFailed()) break;
      test.ExpectWhole(isSaved, call);
    }
    EXPECT_GT(call, 4u);
    EXPECT_LT(call, kMostCalls);
  }
}

TEST(CfgFault, ALoadWhoseNthCallFails) {
  Fixture test(0);
  CFailingMachine failing(test.machine);
  uint32_t call = 1;
  for (; call < kMostCalls; ++call) {
    failing.FailCall(call, kErrorIoDevice);
    CfgNode node;
    const bool isLoaded =
        node.LoadFile(*failing.Files(), kCfgPath, "", CfgMode::All, 0, CfgLayout::Cfg);
    EXPECT_EQ(isLoaded, !failing.HasFailed()) << call;
    EXPECT_EQ(Show(node), failing.HasFailed() ? "" : Show(*test.before)) << call;
    if (!failing.HasFailed()) break;
  }
  EXPECT_GT(call, 3u);
  EXPECT_LT(call, kMostCalls);
}

TEST(CfgFault, CancelAtTheNthLook) {
  Fixture test(77);
  uint32_t look = 1;
  for (; look < 10 * kMostCalls; ++look) {
    const CEventAtLook saving(look);
    const bool isSaved =
        test.after->SaveFile(test.machine->files, kCfgPath, 77, true, CfgLayout::Cfg, &saving);
    EXPECT_EQ(isSaved, !saving.WasSeen()) << look;
    test.ExpectWhole(isSaved, look);
    const CEventAtLook loading(look);
    CfgNode node;
    const bool isLoaded = node.LoadFile(test.machine->files, kCfgPath, "", CfgMode::All, 77,
                                        CfgLayout::Cfg, &loading);
    EXPECT_EQ(isLoaded, !loading.WasSeen()) << look;
    EXPECT_EQ(Show(node), isLoaded ? Show(*test.before) : "") << look;
    if (isSaved && isLoaded) break;
  }
  EXPECT_GT(look, 20u);
  EXPECT_LT(look, 10 * kMostCalls);
}

}  // namespace
}  // namespace kestra
