#include <fmt/format.h>
#include <gtest/gtest.h>

#include "platform/image/registry/wine/WineRegistry.h"
#include "platform/machine/Registry.h"

namespace kestra::image {
namespace {

using namespace std::string_literals;

const std::string kHead =
    "WINE REGISTRY Version 2\n;; All keys relative to REGISTRY\\\\Machine\n\n";

// One line for the tree: name{value=type:data;...subkey{...}}.
std::string Shown(const CKeyTree& tree, TreeId key) {
  std::vector<TreeEntry> entries;
  EXPECT_EQ(tree.Values(key, entries), kErrorSuccess);
  std::string shown = tree.IsLink(key) ? "->" : "";
  for (const TreeEntry& entry : entries) {
    uint32_t type = 0;
    std::string data;
    EXPECT_EQ(tree.ReadValue(entry.id, type, data), kErrorSuccess);
    shown += fmt::format("{}={:x}:{};", entry.name, type, data);
  }
  EXPECT_EQ(tree.SubKeys(key, entries), kErrorSuccess);
  for (const TreeEntry& entry : entries) {
    shown += fmt::format("{}{{{}}}", entry.name, Shown(tree, entry.id));
  }
  return shown;
}

struct Case {
  std::string text;  // behind the head
  std::string tree;
  size_t damagedLines = 0;
};

TEST(WineRegistry, ReadsValuesOfEveryForm) {
  const Case cases[] = {
      {"[A]\n@=\"x\"\n", "A{=1:x\0;}"s},
      {"[A]\n\"n\"=\"\"\n", "A{n=1:\0;}"s},
      {"[A]\n\"q\\\"\\\\\"=\"a\\\\b\\\"c\"\n", "A{q\"\\=1:a\\b\"c\0;}"s},
      {"[A]\n\"n\"=\"\\a\\b\\e\\f\\n\\r\\t\\v\"\n", "A{n=1:\a\b\x1B\f\n\r\t\v\0;}"s},
      {"[A]\n\"n\"=\"\\1\\33\\1012\\x41g\\x00e9\\xd83d\\xdd11\"\n",
       "A{n=1:\x01\x1B"s + "A2Ag\u00e9\U0001f511\0;}"s},
      {"[A]\n\"n\"=\"\\xd83d.\\xdd11\\x\"\n", "A{n=1:\xED\xA0\xBD.\xED\xB4\x91x\0;}"s},
      {"[A]\n\"n\"=\"gr\u00f6\u00dfe\"\n", "A{n=1:gr\u00f6\u00dfe\0;}"s},
      {"[A]\n\"n\"=str(2):\"%x%\"\n", "A{n=2:%x%\0;}"s},
      {"[A]\n\"n\"=str(7):\"one\\0two\\0\"\n", "A{n=7:one\0two\0\0;}"s},
      {"[A]\n\"n\"=dword:0000002a\n", "A{n=4:*\0\0\0;}"s},
      {"[A]\n\"n\"=hex:41,42\n\"e\"=hex:\n", "A{n=3:AB;e=3:;}"},
      {"[A]\n\"n\"=hex(b):41,42,\\\n  43,44,\\\n  45\n", "A{n=b:ABCDE;}"},
      {"[A]\r\n\"n\"=hex(1):61,00,\\\r\n  62,00\r\n", "A{n=1:ab;}"},
      {"[A]\n\"n\"=hex(1):61,00,62\n", "A{n=1:a;}"},
      {"[A]\n\"n\"=hex(ffff0007):41", "A{n=ffff0007:A;}"},
  };
  for (const Case& each : cases) {
    WineRegistry registry;
    ASSERT_EQ(DecodeWineRegistry(kHead + each.text, registry), kErrorSuccess) << each.text;
    EXPECT_EQ(Shown(*registry.tree, registry.tree->Root()), each.tree) << each.text;
    EXPECT_EQ(registry.damagedLines, 0u) << each.text;
  }
}

TEST(WineRegistry, MakesTheTreeOfKeys) {
  const Case cases[] = {
      {"", ""},
      {"[A\\\\B\\\\C] 1\n[A\\\\B\\\\D]\n[A\\\\E]\n", "A{B{C{}D{}}E{}}"},
      {"[A\\\\B]\n[C]\n[a\\\\b\\\\D]\n\"v\"=\"\"\n", "A{B{D{v=1:\0;}}}C{}"s},
      {"[A]\n\"v\"=\"1\"\n[B]\n[A]\n\"w\"=\"2\"\n\"V\"=\"3\"\n", "A{V=1:3\0;w=1:2\0;}B{}"s},
      {"[\\x0416\\\\[x\\]] 12\n#link\n", "\u0416{[x]{->}}"},
      {"[\\\\A\\\\\\\\B\\\\]\n", "A{B{}}"},
  };
  for (const Case& each : cases) {
    WineRegistry registry;
    ASSERT_EQ(DecodeWineRegistry(kHead + each.text, registry), kErrorSuccess) << each.text;
    EXPECT_EQ(Shown(*registry.tree, registry.tree->Root()), each.tree) << each.text;
    EXPECT_EQ(registry.damagedLines, 0u) << each.text;
  }
}

TEST(WineRegistry, PassesOverDamagedLinesAndNoMore) {
  const std::string good = "\"g\"=\"\"\n";
  const std::string shown = "A{g=1:\0;}"s;
  const Case cases[] = {
      {"[A]\n\"open=\"\"\n" + good, shown, 1},
      {"[A]\n\"x\"=\"open\n" + good, shown, 1},
      {"[A]\n\"x\"=\"closed\" more\n" + good, shown, 1},
      {"[A]\n\"x\"=\"ends in \\\n" + good, shown, 1},
      {"[A]\n\"x\"\n\"y\"=\n@\n" + good, shown, 3},
      {"[A]\n\"x\"=dword:zz\n\"y\"=dword:1234567890\n" + good, shown, 2},
      {"[A]\n\"x\"=hex(:00\n\"y\"=hex(1:00\n\"z\"=hex:0g\n" + good, shown, 3},
      {"[A]\n\"x\"=hex:00 11\n\"y\"=hex:00,\\ 11\n" + good, shown, 2},
      {"[A]\n\"x\"=str(4):\"what bytes?\"\n" + good, shown, 1},
      {"[A]\nnonsense\n" + good, shown, 1},
      {"[A]\n#time=now\n#class=\"open\n" + good, shown, 2},
      {"\"x\"=\"before any key\"\n#link\n[A]\n" + good, shown, 2},
      {"[A]\n" + good + "[open\n\"x\"=\"lost with its key\"\n", shown, 2},
      {"[A]\n" + good + "\"cut\"=hex:00,\\", shown, 1},
  };
  for (const Case& each : cases) {
    WineRegistry registry;
    ASSERT_EQ(DecodeWineRegistry(kHead + each.text, registry), kErrorSuccess) << each.text;
    EXPECT_EQ(Shown(*registry.tree, registry.tree->Root()), each.tree) << each.text;
    EXPECT_EQ(registry.damagedLines, each.damagedLines) << each.text;
  }
}

TEST(WineRegistry, TellsWhatTheHeadAndTheOptionsSay) {
  WineRegistry registry;
  const std::string text =
      kHead + "#arch=win64\n[A] 1795406846\n[B] 5\n#time=1dd7b00263d0182\n" +
      "#class=\"a \\\"class\\\"\"\n#later=option\n[C\\\\D]\n[E\\\\F\\\\G] 1795406846\n[E\\\\H] 7\n";
  ASSERT_EQ(DecodeWineRegistry(text, registry), kErrorSuccess);
  EXPECT_TRUE(registry.isWide);
  EXPECT_EQ(registry.relativeTo, "REGISTRY\\Machine");
  EXPECT_EQ(registry.damagedLines, 0u);
  std::vector<TreeEntry> keys;
  ASSERT_EQ(registry.tree->SubKeys(registry.tree->Root(), keys), kErrorSuccess);
  ASSERT_EQ(keys.size(), 4u);
  KeyFacts facts;
  registry.tree->Facts(keys[0].id, facts);
  constexpr uint64_t kTicks = 134398804460000000u;  // 2026-11-23 04:07:26 UTC
  EXPECT_EQ(facts.lastWriteTime.ticks, kTicks);
  registry.tree->Facts(keys[1].id, facts);
  EXPECT_EQ(facts.lastWriteTime.ticks, 0x1dd7b00263d0182u);
  EXPECT_EQ(facts.className, "a \"class\"");
  registry.tree->Facts(keys[2].id, facts);
  EXPECT_EQ(facts.lastWriteTime.ticks, 0u);
  // Without a line of its own: the time of the first key below.
  registry.tree->Facts(keys[3].id, facts);
  EXPECT_EQ(facts.lastWriteTime.ticks, kTicks);
}

TEST(WineRegistry, RefusesWhatIsNoRegistry) {
  for (const char* pText : {"", "WINE REGISTRY Version 1\n[A]\n", "REGEDIT4\n", "\0\0\0\0"}) {
    WineRegistry registry;
    EXPECT_EQ(DecodeWineRegistry(pText, registry), kErrorRegistryCorrupt) << pText;
  }
}

TEST(WineRegistry, KeepsKeysWithinTheDepthOfARegistry) {
  std::string deep;
  for (int i = 0; i < 600; ++i) deep += "k\\\\";
  WineRegistry registry;
  ASSERT_EQ(DecodeWineRegistry(kHead + "[" + deep + "]\n@=\"\"\n[A]\n", registry), kErrorSuccess);
  EXPECT_EQ(Shown(*registry.tree, 0), "A{}");
  EXPECT_EQ(registry.damagedLines, 2u);
}

}  // namespace
}  // namespace kestra::image
