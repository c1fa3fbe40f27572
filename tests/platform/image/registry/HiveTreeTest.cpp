#include <gtest/gtest.h>

#include "platform/image/registry/hive/HiveTree.h"
#include "tests/support/TempDirectory.h"

namespace kestra::image {
namespace {

using namespace std::string_literals;

// A hive of those that make_hives.py makes, or any bytes.
struct OpenedHive {
  explicit OpenedHive(const std::string& bytes) {
    std::unique_ptr<os::CMemoryFile> file;
    EXPECT_EQ(os::MakeMemoryFile(file), kErrorSuccess);
    EXPECT_EQ(file->Write(bytes), kErrorSuccess);
    EXPECT_EQ(file->Seal(), kErrorSuccess);
    error = OpenHive(
        std::move(file),
        [this](HiveFault fault) { ++(fault == HiveFault::Limit ? limits : damage); }, tree);
  }
  std::vector<TreeEntry> SubKeys(TreeId key) {
    std::vector<TreeEntry> entries;
    listError = tree->SubKeys(key, entries);
    return entries;
  }
  std::vector<TreeEntry> Values(TreeId key) {
    std::vector<TreeEntry> entries;
    listError = tree->Values(key, entries);
    return entries;
  }
  SystemError error = kErrorSuccess;
  SystemError listError = kErrorSuccess;
  int damage = 0;
  int limits = 0;
  std::shared_ptr<CKeyTree> tree;
};

std::string Made(const std::string& name) {
  return test::ReadWholeFile(KESTRA_MADE_HIVES "/" + name);
}

TEST(HiveTree, ReadsEveryKindOfList) {
  OpenedHive hive(Made("lists"));
  ASSERT_EQ(hive.error, kErrorSuccess);
  const std::vector<TreeEntry> keys = hive.SubKeys(hive.tree->Root());
  ASSERT_EQ(keys.size(), 4u);
  for (const TreeEntry& key : keys) {
    const std::vector<TreeEntry> children = hive.SubKeys(key.id);
    ASSERT_EQ(children.size(), 40u) << key.name;
    EXPECT_EQ(children.front().name, "c000") << key.name;
    EXPECT_EQ(children.back().name, "c039") << key.name;
  }
  EXPECT_EQ(hive.damage, 0);
}

TEST(HiveTree, ReadsNamesThatAreNoCleanText) {
  OpenedHive hive(Made("names"));
  ASSERT_EQ(hive.error, kErrorSuccess);
  std::vector<std::string> names;
  for (const TreeEntry& key : hive.SubKeys(hive.tree->Root())) {
    names.push_back(key.name);
    KeyFacts facts;
    EXPECT_EQ(hive.tree->Facts(key.id, facts), kErrorSuccess);
    EXPECT_EQ(facts.className, "class of " + key.name);
    const std::vector<TreeEntry> values = hive.Values(key.id);
    ASSERT_EQ(values.size(), 1u);
    EXPECT_EQ(values[0].name, "half\xED\xB0\x80value");
  }
  const std::vector<std::string> expected = {"half\xED\xA0\x80",   "Stra\u00dfe", "with\0nul"s,
                                             "\u03a3\u0391\u03a3", "\u03a9mega",  "\U0001f511"};
  EXPECT_EQ(names, expected);
  EXPECT_EQ(hive.damage, 0);
}

TEST(HiveTree, ReadsDataInOneAndInSeveralBlocks) {
  OpenedHive hive(Made("big_data"));
  ASSERT_EQ(hive.error, kErrorSuccess);
  size_t count = 0;
  for (const TreeEntry& value : hive.Values(hive.tree->Root())) {
    uint32_t type = 0;
    std::string data;
    ASSERT_EQ(hive.tree->ReadValue(value.id, type, data), kErrorSuccess) << value.name;
    std::string expected(std::stoul(value.name), '\0');
    for (size_t i = 0; i < expected.size(); ++i) expected[i] = static_cast<char>(i * 31 & 0xFF);
    EXPECT_TRUE(data == expected) << value.name << ": " << data.size();
    ++count;
  }
  EXPECT_EQ(count, 11u);
}

TEST(HiveTree, LeavesOutWhatIsDamagedAndTellsOfIt) {
  OpenedHive child(Made("bad_child"));
  ASSERT_EQ(child.error, kErrorSuccess);
  std::string names;
  for (const TreeEntry& key : child.SubKeys(child.tree->Root())) names += key.name + ";";
  EXPECT_EQ(names, "First;Third;");
  EXPECT_GT(child.damage, 0);

  OpenedHive counts(Made("bad_counts"));
  const TreeId greedy = counts.SubKeys(counts.tree->Root()).at(0).id;
  EXPECT_TRUE(counts.SubKeys(greedy).empty());
  EXPECT_EQ(counts.listError, kErrorRegistryCorrupt);
  EXPECT_GT(counts.damage, 0);

  bool isSoundSeen = false;
  OpenedHive value(Made("bad_value"));
  for (const TreeEntry& entry : value.Values(value.tree->Root())) {
    uint32_t type = 0;
    std::string data;
    const SystemError error = value.tree->ReadValue(entry.id, type, data);
    if (entry.name == "Outside") {
      EXPECT_EQ(error, kErrorRegistryCorrupt);
    } else if (entry.name == "Sound") {
      isSoundSeen = true;
      EXPECT_EQ(error, kErrorSuccess);
      EXPECT_EQ(data, std::string(100, '\0'));
    }
  }
  EXPECT_TRUE(isSoundSeen);
  EXPECT_GT(value.damage, 0);
  EXPECT_EQ(counts.limits + value.limits, 0);  // sizes that cannot be are no large ones

  // A class name that lies outside takes nothing along.
  OpenedHive badClass(Made("bad_class"));
  KeyFacts facts;
  const TreeId key = badClass.SubKeys(badClass.tree->Root()).at(0).id;
  EXPECT_EQ(badClass.tree->Facts(key, facts), kErrorSuccess);
  EXPECT_EQ(facts.className, "");
  EXPECT_EQ(facts.lastWriteTime.ticks, 0x01D5B2F0A3C40000u);
  EXPECT_EQ(facts.valueCount, 1u);
  EXPECT_GT(badClass.damage, 0);
}

TEST(HiveTree, TellsItsLimitsFromDamage) {
  OpenedHive hive(Made("too_large"));
  ASSERT_EQ(hive.error, kErrorSuccess);
  const std::vector<TreeEntry> values = hive.Values(hive.tree->Root());
  ASSERT_EQ(values.size(), 1u);
  uint32_t type = 0;
  std::string data;
  EXPECT_EQ(hive.tree->ReadValue(values[0].id, type, data), kErrorRegistryCorrupt);
  EXPECT_EQ(hive.damage, 0);
  EXPECT_GT(hive.limits, 0);
}

TEST(HiveTree, GoesRoundInACircleStepByStepOnly) {
  OpenedHive hive(Made("cycle"));
  ASSERT_EQ(hive.error, kErrorSuccess);
  TreeId key = hive.tree->Root();
  for (int depth = 0; depth < 1000; ++depth) {
    const std::vector<TreeEntry> children = hive.SubKeys(key);
    ASSERT_EQ(children.size(), 1u);
    key = children[0].id;
  }
}

TEST(HiveTree, RefusesWhatIsNoHive) {
  const std::string hive = Made("lists");
  for (const std::string& bytes : {""s, "regf"s, "REGEDIT4"s, std::string(8192, '\0'),
                                   hive.substr(0, 4096), hive.substr(0, 4100)}) {
    EXPECT_EQ(OpenedHive(bytes).error, kErrorRegistryCorrupt) << bytes.size();
  }
}

// What is left of a hive is read wherever it was cut off.
TEST(HiveTree, ReadsTheBeginningOfACutHive) {
  const std::string bytes = Made("lists");
  OpenedHive hive(bytes.substr(0, 4096 + 4096));
  ASSERT_EQ(hive.error, kErrorSuccess);
  EXPECT_FALSE(hive.SubKeys(hive.tree->Root()).empty());
  EXPECT_GT(hive.damage, 0);
}

// A head of a bin that is lost costs the cells in it at most.
TEST(HiveTree, ReadsOnBehindABinThatIsDamaged) {
  const std::string whole = Made("lists");
  for (const auto& [place, length] : {std::pair<size_t, size_t>{0, 4}, {4, 4}, {8, 4}, {0, 4096}}) {
    for (size_t bin = 2; bin * 4096 < whole.size(); ++bin) {
      std::string bytes = whole;
      bytes.replace(bin * 4096 + place, length, length, '\x5A');
      OpenedHive hive(bytes);
      ASSERT_EQ(hive.error, kErrorSuccess) << bin << " " << place;
      EXPECT_GT(hive.damage, 0) << bin << " " << place;
      EXPECT_EQ(hive.SubKeys(hive.tree->Root()).size(), 4u) << bin << " " << place;
    }
  }
}

TEST(HiveTree, KnowsADirtyHeader) {
  std::string bytes = Made("names");
  EXPECT_FALSE(IsDirtyHive(bytes));
  ++bytes[4];
  EXPECT_TRUE(IsDirtyHive(bytes));
  EXPECT_FALSE(IsDirtyHive(bytes.substr(0, 11)));
}

}  // namespace
}  // namespace kestra::image
