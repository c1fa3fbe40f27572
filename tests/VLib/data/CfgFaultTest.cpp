// Whatever fails, and whenever a load or save is ended: what was saved before is there, whole.
#include <gtest/gtest.h>

#include <string>

#include "VLib/src/data/CfgNode.h"
#include "platform/os/Event.h"
#include "tests/VLib/data/CfgTrees.h"
#include "tests/support/FailingMachine.h"
#include "tests/support/FakeMachine.h"

namespace kestra {
namespace {

using test::CFailingMachine;
using test::CFakeMachine;
using test::Show;

constexpr char kPath[] = "C:\\data.cfg";
constexpr uint32_t kMostCalls = 200;

// A tree whose text takes several pieces to write, and looks at the event in all stages.
Ref<CfgNode> BigTree(const std::string& text) {
  auto root = MakeRef<CfgNode>();
  for (int i = 0; i < 30; ++i) {
    CfgNode& section = root->AddSection("S" + std::to_string(i));
    section.SetText("text", text + std::string(60'000, 'x'));
  }
  return root;
}

std::string Loaded(CFileSystem& files, uint32_t key) {
  CfgNode node;
  return node.LoadFile(files, kPath, "", CfgMode::All, key, CfgLayout::Cfg) ? Show(node) : "none";
}

// Old and new trees, the old one saved.
struct Fixture {
  explicit Fixture(uint32_t theKey) : key(theKey) {
    machine->files.AddDirectory("C:\\");
    EXPECT_TRUE(before->SaveFile(machine->files, kPath, key, key != 0, CfgLayout::Cfg));
  }
  // After a save that answered this.
  void ExpectWhole(bool isSaved, uint32_t call) {
    EXPECT_EQ(Loaded(machine->files, key), Show(isSaved ? *after : *before)) << call;
    EXPECT_TRUE(before->SaveFile(machine->files, kPath, key, key != 0, CfgLayout::Cfg));
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
          test.after->SaveFile(*failing.Files(), kPath, key, key != 0, CfgLayout::Cfg);
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
        node.LoadFile(*failing.Files(), kPath, "", CfgMode::All, 0, CfgLayout::Cfg);
    EXPECT_EQ(isLoaded, !failing.HasFailed()) << call;
    EXPECT_EQ(Show(node), failing.HasFailed() ? "" : Show(*test.before)) << call;
    if (!failing.HasFailed()) break;
  }
  EXPECT_GT(call, 3u);
  EXPECT_LT(call, kMostCalls);
}

// An event that is found signalled at the n-th look and at every later one.
class CEventAtLook final : public os::CWaitable {
 public:
  explicit CEventAtLook(uint32_t look) : m_look(look) { m_signalled.Set(); }
  os::NativeHandle Native() const override {
    return ++m_looks >= m_look ? m_signalled.Native() : m_quiet.Native();
  }
  bool WasSeen() const { return m_looks >= m_look; }

 private:
  uint32_t m_look;
  mutable uint32_t m_looks = 0;
  os::CEvent m_signalled;
  os::CEvent m_quiet;
};

TEST(CfgFault, CancelAtTheNthLook) {
  Fixture test(77);
  uint32_t look = 1;
  for (; look < 10 * kMostCalls; ++look) {
    const CEventAtLook saving(look);
    const bool isSaved =
        test.after->SaveFile(test.machine->files, kPath, 77, true, CfgLayout::Cfg, &saving);
    EXPECT_EQ(isSaved, !saving.WasSeen()) << look;
    test.ExpectWhole(isSaved, look);
    const CEventAtLook loading(look);
    CfgNode node;
    const bool isLoaded =
        node.LoadFile(test.machine->files, kPath, "", CfgMode::All, 77, CfgLayout::Cfg, &loading);
    EXPECT_EQ(isLoaded, !loading.WasSeen()) << look;
    EXPECT_EQ(Show(node), isLoaded ? Show(*test.before) : "") << look;
    if (isSaved && isLoaded) break;
  }
  EXPECT_GT(look, 20u);
  EXPECT_LT(look, 10 * kMostCalls);
}

}  // namespace
}  // namespace kestra
