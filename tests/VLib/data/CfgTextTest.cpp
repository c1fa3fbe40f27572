#include <gtest/gtest.h>

#include <iterator>
#include <string>

#include "VLib/src/data/CfgNode.h"
#include "platform/os/Event.h"
#include "tests/VLib/data/CfgTrees.h"

namespace kestra {
namespace {

using test::Show;

struct TextCase {
  std::string text;
  std::string cfg;
  std::string ini;
};

TEST(CfgText, LinesAndLayouts) {
  const TextCase cases[] = {
      {"", "", ""},
      {"k=v", "k=v;", "k=v;"},
      {" \t\v k l \t= \v v w \v\r\n", "k l=v w;", "k l=v w;"},
      {"k=\n=x\n=\n", "k=;=x;=;", "k=;=x;=;"},
      {"k==v=\n", "k==v=;", "k==v=;"},
      {"; k=v\n ;\nk=v ; w\nnothing\n\r\n", "k=v ; w;", "k=v ; w;"},
      {"a=1\rb=2", "a=1\rb=2;", "a=1\rb=2;"},
      {"k=\"v\"", "k=\"v\";", "k=\"v\";"},
      {std::string("a\0=\0b\n", 6), std::string("a\0=\0b;", 6), std::string("a\0=\0b;", 6)},
      {"k=1\nk=2\n", "k=1;k=2;", "k=1;k=2;"},
      // Brackets.
      {"[A", "", ""},
      {"[A=1", "[A=1;", "[A=1;"},
      {"[", "", ""},
      {"[ A ]k=v\na=1", "[ A |a=1;]", "[ A |a=1;]"},
      {"[[A]]\na=1", "[[A|a=1;]", "[[A|a=1;]"},
      {"k=[A]", "k=[A];", "k=[A];"},
      {"\t[A]\r\n", "[A|]", "[A|]"},
      // Sections.
      {"r=0\n[A]\na=1\n[B]\nb=2\n", "r=0;[A|a=1;[B|b=2;]]", "r=0;[A|a=1;][B|b=2;]"},
      {"[A]\n[B]\n[]\na=1\n[]\nr=0", "r=0;[A|a=1;[B|]]", "a=1;[A|][B|]"},
      {"[A]\na=1\n[]\n[A]\na=2\n[]", "[A|a=1;][A|a=2;]", "[A|a=1;][A|a=2;]"},
      {"[A]\na=1\n[] b=2\nc=3", "c=3;[A|a=1;]", "c=3;[A|a=1;]"},
      // One that closes nothing ends the text.
      {"a=1\n[]\nb=2\n[C]", "a=1;", "a=1;"},
      {"[A]\n[]\n[]\n[B]", "[A|]", "[A|]"},
  };
  for (const TextCase& test : cases) {
    CfgNode cfg;
    CfgNode ini;
    EXPECT_TRUE(cfg.LoadText(test.text, 0, CfgLayout::Cfg)) << test.text;
    EXPECT_TRUE(ini.LoadText(test.text, 0, CfgLayout::Ini)) << test.text;
    EXPECT_EQ(Show(cfg), test.cfg) << test.text;
    EXPECT_EQ(Show(ini), test.ini) << test.text;
  }
}

TEST(CfgText, QuotesAreTakenOffWhenAsked) {
  CfgNode node;
  ASSERT_TRUE(
      node.LoadText("a=\" x \"\nb=\"\nc=\"\"\nd=\"e\" f\ng=\"\"h\"\"", kCfgQuotes, CfgLayout::Cfg));
  EXPECT_EQ(Show(node), "a= x ;b=\";c=;d=\"e\" f;g=\"h\";");
}

TEST(CfgText, ReadingAddsToWhatIsThere) {
  CfgNode node("N");
  ASSERT_TRUE(node.LoadText("a=1\n[S]\nb=2", 0, CfgLayout::Cfg));
  ASSERT_TRUE(node.LoadText("a=3\n[S]\nb=4", 0, CfgLayout::Cfg));
  EXPECT_EQ(Show(node), "a=1;a=3;[S|b=2;][S|b=4;]");
  // A section line closes the named node that it stands in, and there is nothing around it.
  ASSERT_TRUE(node.LoadText("c=5\n[S]\nd=6", 0, CfgLayout::Ini));
  EXPECT_EQ(Show(node), "a=1;a=3;c=5;[S|b=2;][S|b=4;]");
}

Ref<CfgNode> Example() {
  auto root = MakeRef<CfgNode>();
  root->SetText("r", "0");
  root->Section("A", true)->SetText("a", " 1\t");
  root->Section("A\\B", true)->SetText("b", "\"2\"");
  root->Section("A\\B", true)->SetText("e", "");
  root->Section("C", true)->SetText("\xC3\xA4", "\xC3\xA4");
  return root;
}

struct DumpCase {
  const char* start;
  size_t indent;
  uint32_t quoteFlags;
  CfgLayout layout;
  std::string expected;
};

TEST(CfgText, Dump) {
  const DumpCase cases[] = {
      {"", 0, 0, CfgLayout::Cfg,
       " r = 0\r\n[A]\r\n a =  1\t\r\n [B]\r\n  b = \"2\"\r\n  e = \r\n []\r\n[]\r\n"
       "[C]\r\n \xC3\xA4 = \xC3\xA4\r\n[]\r\n"},
      {"", 0, 0, CfgLayout::Ini,
       "r = 0\r\n[A]\r\na =  1\t\r\n[B]\r\nb = \"2\"\r\ne = \r\n[C]\r\n\xC3\xA4 = \xC3\xA4\r\n"},
      {"A", 2, kCfgQuotes, CfgLayout::Cfg,
       "  [A]\r\n   a = \" 1\t\"\r\n   [B]\r\n    b = \"\"2\"\"\r\n    e = \"\"\r\n   []\r\n"
       "  []\r\n"},
      {"C", 7, kCfgQuotes, CfgLayout::Ini, "[C]\r\n\xC3\xA4 = \"\xC3\xA4\"\r\n"},
  };
  const Ref<CfgNode> root = Example();
  for (const DumpCase& test : cases) {
    const CfgNode* pNode = *test.start ? root->Section(test.start, false) : root.get();
    std::string text = "before";
    pNode->Dump(text, test.indent, test.quoteFlags, test.layout);
    EXPECT_EQ(text, "before" + test.expected);
  }
}

TEST(CfgText, LooksUpTheFirstOfEqualNames) {
  CfgNode node;
  ASSERT_TRUE(
      node.LoadText("n= -12x\nn=3\nbig=99999999999\nw=word\n"
                    "[A]\n[B]\nk=1\n[]\n[]\n[A]\n[B]\nk=2\n[]\n[C]",
                    0, CfgLayout::Cfg));
  EXPECT_EQ(node.Section("A\\B", false)->GetText("k"), "1");
  EXPECT_EQ(node.Section("\\\\A\\\\B\\", false), node.Section("A\\B", false));
  for (const char* path : {"", "\\", "a", "A\\C", "A\\B\\C"})
    EXPECT_EQ(node.Section(path, false), nullptr) << path;
  EXPECT_EQ(node.GetNumber("n"), -12);
  EXPECT_EQ(node.GetNumber("big"), 2147483647);
  EXPECT_EQ(node.GetNumber("w", 7), 0);
  EXPECT_EQ(node.GetNumber("N", 7), 7);
  EXPECT_EQ(node.GetText("N", "none"), "none");
  node.SetNumber("n", -2147483647 - 1);
  node.SetText("new", "x");
  EXPECT_EQ(node.Section("A\\D\\E", true)->Name, "E");
  EXPECT_EQ(Show(node),
            "n=-2147483648;n=3;big=99999999999;w=word;new=x;[A|[B|k=1;][D|[E|]]][A|[B|k=2;][C|]]");
}

TEST(CfgText, ATerminatedReadingLeavesTheNodeAlone) {
  os::CEvent event;
  event.Set();
  CfgNode node;
  node.SetText("a", "1");
  EXPECT_FALSE(node.LoadText("b=2", 0, CfgLayout::Cfg, &event));
  EXPECT_EQ(Show(node), "a=1;");
}

}  // namespace
}  // namespace kestra
