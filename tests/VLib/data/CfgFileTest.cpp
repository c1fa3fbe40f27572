#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "VLib/src/data/CfgNode.h"
#include "tests/VLib/data/CfgTrees.h"
#include "tests/support/FakeFileSystem.h"

namespace kestra {
namespace {

using test::CFakeFileSystem;
using test::kCfgPath;
using test::Show;

struct SelectCase {
  const char* sectionPath;
  CfgMode mode;
  CfgLayout layout;
  const char* expected;
};

TEST(CfgFile, SelectiveLoading) {
  constexpr auto All = CfgMode::All;
  constexpr auto Own = CfgMode::OwnKeys;
  constexpr auto Skip = CfgMode::Skip;
  constexpr auto Cfg = CfgLayout::Cfg;
  constexpr auto Ini = CfgLayout::Ini;
  const std::string nested =
      "r=0\n[A]\na=1\n[X]\nx=9\n[Y]\ny=9\n[]\n[]\n[B]\nb=2\n[D]\nd=3\n[]\nb=4\n[]\na=5\n[]\n"
      "[C]\nc=6\n[]\n[a]\n[b]\nb=7\n[]\n[]\nr=8\n";
  const std::string flat = "r=0\n[A]\na=1\n[B]\nb=2\n[C]\n[A]\na=3\n";
  const SelectCase cases[] = {
      {"A\\B", All, Cfg, "[A|[B|b=2;b=4;[D|d=3;]]][a|[b|b=7;]]"},
      {"\\a\\\\b\\\\", All, Cfg, "[A|[B|b=2;b=4;[D|d=3;]]][a|[b|b=7;]]"},
      {"A\\B", Own, Cfg, "[A|[B|b=2;[D|]]][a|[b|b=7;]]"},
      {"A", Own, Cfg, "[A|a=1;[X|]][a|[b|]]"},
      {"", Own, Cfg, "r=0;[A|]"},
      {"\\", Own, Cfg, "r=0;[A|]"},
      {"C", All, Cfg, "[C|c=6;]"},
      {"X", All, Cfg, ""},
      {"A\\B\\D\\E", All, Cfg, "[A|[B|[D|]]][a|[b|]]"},
      {"b", All, Ini, "[B|b=2;]"},
      {"A", All, Ini, "[A|a=1;][A|a=3;]"},
      {"A", Own, Ini, "[A|a=1;][A|a=3;]"},
      {"A\\B", All, Ini, "[A|][A|]"},
      {"", Own, Ini, "r=0;[A|]"},
      {"C", Own, Ini, "[C|]"},
      {"", Skip, Cfg, ""},
      {"A\\B", Skip, Cfg, ""},
      {"", Skip, Ini, ""},
      {"A", Skip, Ini, ""},
  };
  for (const SelectCase& test : cases) {
    CfgNode node;
    EXPECT_TRUE(node.LoadBytes(test.layout == Cfg ? nested : flat, test.sectionPath, test.mode, 0,
                               test.layout));
    EXPECT_EQ(Show(node), test.expected) << test.sectionPath;
  }
}

TEST(CfgFile, FilesThatCannotBeLoaded) {
  CFakeFileSystem files('\\');
  files.Add("C:\\empty", {});
  files.Add("C:\\utf16", {.content = std::string("\xFF\xFEk\0=\0v\0", 8)});
  files.Add("C:\\mark", {.content = "\xFF\xFE"});
  files.Add("C:\\denied", {.error = kErrorAccessDenied, .content = "k=v"});
  files.Add("C:\\shorter", {.size = 3});
  files.Add("C:\\huge", {.size = uint64_t{1} << 32});
  files.AddDirectory("C:\\directory");
  CfgNode node;
  node.SetText("a", "1");
  for (const char* name : {"empty", "utf16", "mark", "denied", "shorter", "huge", "directory",
                           "missing", "missing\\too"}) {
    EXPECT_FALSE(
        node.LoadFile(files, std::string("C:\\") + name, "", CfgMode::All, 0, CfgLayout::Cfg))
        << name;
    EXPECT_FALSE(node.File) << name;
  }
  EXPECT_EQ(Show(node), "a=1;");
  files.Add("C:\\byte", {.content = "\xFF"});
  EXPECT_TRUE(node.LoadFile(files, "C:\\byte", "", CfgMode::All, 0, CfgLayout::Cfg));
}

TEST(CfgFile, TellsOfItsFile) {
  CFakeFileSystem files('\\');
  files.AddDirectory("C:\\");
  CfgNode node;
  node.SetText("a", "1");
  EXPECT_FALSE(node.Save(files, 0, false, CfgLayout::Cfg));  // where to?
  files.now = FileTime{1000};
  ASSERT_TRUE(node.SaveFile(files, kCfgPath, 0, false, CfgLayout::Cfg));
  EXPECT_EQ(node.File->Path, kCfgPath);
  EXPECT_EQ(node.File->LastWrite.ticks, 1000u);
  CfgNode read;
  ASSERT_TRUE(read.LoadFile(files, kCfgPath, "", CfgMode::All, 0, CfgLayout::Cfg));
  EXPECT_EQ(read.File->LastWrite.ticks, 1000u);
  files.now = FileTime{2000};
  read.SetText("b", "2");
  ASSERT_TRUE(read.Save(files, 0, false, CfgLayout::Ini));
  EXPECT_EQ(read.File->LastWrite.ticks, 2000u);
  EXPECT_EQ(files.Content(kCfgPath), "a = 1\r\nb = 2\r\n");
  EXPECT_FALSE(node.SaveFile(files, "C:\\none\\data.cfg", 0, false, CfgLayout::Cfg));
  EXPECT_EQ(node.File->LastWrite.ticks, 0u);
}

TEST(CfgFile, SavingKeepsAttributesAndFollowsLinks) {
  CFakeFileSystem files('\\');
  constexpr uint32_t kHiddenSystem = kFileAttributeHidden | kFileAttributeSystem;
  files.Add(kCfgPath, {.attributes = kHiddenSystem, .content = "a=1"});
  files.Add("C:\\link", {.kind = FileKind::Link,
                         .attributes = kFileAttributeReparsePoint,
                         .lastWriteTime = FileTime{1},
                         .linkTarget = kCfgPath});
  CfgNode node;
  node.SetText("b", "2");
  ASSERT_TRUE(node.SaveFile(files, "C:\\link", 0, false, CfgLayout::Cfg));
  EXPECT_EQ(node.File->LastWrite, files.now);
  EXPECT_EQ(files.Content(kCfgPath), " b = 2\r\n");
  FileInfo info;
  ASSERT_EQ(files.Info(kCfgPath, info), kErrorSuccess);
  EXPECT_EQ(info.attributes, kHiddenSystem);

  files.Add("C:\\readonly", {.attributes = kFileAttributeReadOnly, .content = "a=1"});
  EXPECT_FALSE(node.SaveFile(files, "C:\\readonly", 0, false, CfgLayout::Cfg));
  EXPECT_EQ(files.Content("C:\\readonly"), "a=1");
  files.isReadOnly = true;
  EXPECT_FALSE(node.SaveFile(files, kCfgPath, 0, false, CfgLayout::Cfg));
}

// What stands in the file for a value of so many characters.
std::string Saved(std::string value, uint32_t key, bool compress) {
  CFakeFileSystem files('\\');
  files.AddDirectory("C:\\");
  CfgNode node;
  node.SetText("k", std::move(value));
  EXPECT_EQ(node.SaveFile(files, kCfgPath, key, compress, CfgLayout::Ini), key != 0 || !compress);
  return files.Content(kCfgPath);
}

TEST(CfgFile, LayersAroundTheText) {
  const std::string plain = Saved(std::string(100, 'x'), 0, false);
  ASSERT_EQ(plain, "k = " + std::string(100, 'x') + "\r\n");
  EXPECT_EQ(Saved(std::string(100, 'x'), 0, true), "");  // compression needs a key
  std::string scrambled = Saved(std::string(100, 'x'), 99, false);
  EXPECT_NE(scrambled, plain);
  EXPECT_TRUE(std::is_permutation(scrambled.begin(), scrambled.end(), plain.begin(), plain.end()));
  const std::string compressed = Saved(std::string(100, 'x'), 99, true);
  EXPECT_LT(compressed.size(), plain.size());
  EXPECT_GT(compressed.size(), 12u);
  // Of what does not become shorter the text stays as it is: of 12 bytes, and where the header
  // would take the gain.
  EXPECT_EQ(Saved("xxxxxx", 99, true), Saved("xxxxxx", 99, false));
  EXPECT_EQ(Saved("abcdefghijklmn", 99, true), Saved("abcdefghijklmn", 99, false));

  CfgNode node;
  EXPECT_TRUE(node.LoadBytes(compressed, "", CfgMode::All, 99, CfgLayout::Ini));
  EXPECT_EQ(Show(node), "k=" + std::string(100, 'x') + ";");
  CfgNode wrongKey;
  EXPECT_TRUE(wrongKey.LoadBytes(scrambled, "", CfgMode::All, 98, CfgLayout::Ini));
  EXPECT_NE(Show(wrongKey), Show(node));
}

// The mark of UTF-16 text at the front, by chance or by a key's name, may not make a file of ours
// one that we refuse.
TEST(CfgFile, AFileThatWouldLookLikeUtf16ReadsBack) {
  CFakeFileSystem files('\\');
  files.AddDirectory("C:\\");
  CfgNode node;
  node.SetText("\xFF\xFEkey", "v");
  ASSERT_TRUE(node.SaveFile(files, kCfgPath, 0, false, CfgLayout::Ini));
  CfgNode read;
  EXPECT_TRUE(read.LoadFile(files, kCfgPath, "", CfgMode::All, 0, CfgLayout::Ini));
  EXPECT_EQ(Show(read), Show(node));
  size_t moved = 0;
  for (uint32_t key = 1; key < 2000; ++key) {
    ASSERT_TRUE(node.SaveFile(files, kCfgPath, key, false, CfgLayout::Cfg)) << key;
    moved += files.Content(kCfgPath).size() > sizeof " \xFF\xFEkey = v\r\n" - 1;
    CfgNode back;
    ASSERT_TRUE(back.LoadFile(files, kCfgPath, "", CfgMode::All, key, CfgLayout::Cfg)) << key;
    ASSERT_EQ(Show(back), Show(node)) << key;
  }
  EXPECT_GT(moved, 0u);
}

}  // namespace
}  // namespace kestra
