#include <gtest/gtest.h>

#include <string>

#include "VLib/src/data/CfgNode.h"
#include "tests/VLib/data/CfgTrees.h"
#include "tests/support/FakeFileSystem.h"

namespace kestra {
namespace {

using test::CFakeFileSystem;
using test::CTreeGenerator;
using test::IsSame;
using test::Show;

constexpr char kSlashPath[] = "/data.cfg";

Ref<CfgNode> ThroughText(const CfgNode& tree, uint32_t quoteFlags, CfgLayout layout) {
  std::string text;
  tree.Dump(text, 0, quoteFlags, layout);
  auto read = MakeRef<CfgNode>();
  EXPECT_TRUE(read->LoadText(text, quoteFlags, layout));
  return read;
}

Ref<CfgNode> ThroughFile(CfgNode& tree, uint32_t key, bool compress, CfgLayout layout) {
  CFakeFileSystem files('/');
  files.AddDirectory("/");
  EXPECT_TRUE(tree.SaveFile(files, kSlashPath, key, compress, layout));
  auto read = MakeRef<CfgNode>();
  // A tree without anything makes an empty file, and that is no data file.
  EXPECT_EQ(read->LoadFile(files, kSlashPath, "", CfgMode::All, key, layout),
            !files.Content(kSlashPath).empty());
  return read;
}

TEST(CfgRoundTrip, RandomTreesThroughEveryLayer) {
  for (uint32_t seed = 1; seed <= 1000; ++seed) {
    CTreeGenerator generator(seed);
    for (const CfgLayout layout : {CfgLayout::Cfg, CfgLayout::Ini}) {
      const size_t depth = layout == CfgLayout::Ini ? 1 : 4;
      const Ref<CfgNode> tree = generator.Tree(depth, true);
      const uint32_t key = generator.Key();
      ASSERT_TRUE(tree->ReadsBack(0, layout)) << seed;
      ASSERT_TRUE(IsSame(*ThroughText(*tree, 0, layout), *tree)) << seed;
      ASSERT_TRUE(IsSame(*ThroughText(*tree, kCfgQuotes, layout), *tree)) << seed;
      ASSERT_TRUE(IsSame(*ThroughFile(*tree, 0, false, layout), *tree)) << seed;
      ASSERT_TRUE(IsSame(*ThroughFile(*tree, key, false, layout), *tree)) << seed;
      ASSERT_TRUE(IsSame(*ThroughFile(*tree, key, true, layout), *tree)) << seed;
    }
  }
}

// Names and texts of any bytes: ReadsBack knows which trees come back, and which do not.
TEST(CfgRoundTrip, KnowsWhatReadsBack) {
  size_t readBack[2] = {};
  for (uint32_t seed = 1; seed <= 4000; ++seed) {
    CTreeGenerator generator(seed);
    const Ref<CfgNode> tree = generator.Tree(2, false);
    for (const CfgLayout layout : {CfgLayout::Cfg, CfgLayout::Ini}) {
      for (const uint32_t quoteFlags : {0u, kCfgQuotes}) {
        const bool isSame = IsSame(*ThroughText(*tree, quoteFlags, layout), *tree);
        ASSERT_EQ(tree->ReadsBack(quoteFlags, layout), isSame) << seed << ' ' << Show(*tree);
        ++readBack[isSame ? 1 : 0];
      }
    }
  }
  EXPECT_GT(readBack[0], 1000u);
  EXPECT_GT(readBack[1], 1000u);
}

TEST(CfgRoundTrip, ANodeWithANameReadsBackAsASection) {
  CfgNode node("N");
  node.SetText("k", "v");
  EXPECT_TRUE(node.ReadsBack(0, CfgLayout::Ini));
  EXPECT_EQ(Show(*ThroughText(node, 0, CfgLayout::Ini)), "[N|k=v;]");
  node.AddSection("M");
  EXPECT_FALSE(node.ReadsBack(0, CfgLayout::Ini));
  EXPECT_TRUE(node.ReadsBack(0, CfgLayout::Cfg));
  EXPECT_EQ(Show(*ThroughText(node, 0, CfgLayout::Cfg)), "[N|k=v;[M|]]");
}

}  // namespace
}  // namespace kestra
