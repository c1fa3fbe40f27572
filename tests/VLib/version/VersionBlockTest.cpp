#include <gtest/gtest.h>

#include <vector>

#include "VLib/src/version/VersionBlock.h"
#include "tests/VLib/version/BlockWriter.h"

namespace kestra {
namespace {

using namespace test;

std::string SampleBlock() {
  return Node("VS_VERSION_INFO", NodeType::Binary, Fixed({1, 2, 3, 4}, {5, 6, 7, 65535}), 52,
              {Node("StringFileInfo", NodeType::Text, "", 0,
                    {Node("040904b0", NodeType::Text, "", 0,
                          {TextNode("CompanyName", u"Caf\u00e9 \U0001F326"),
                           TextNode("Comments", u"first"), TextNode("comments", u"second")}),
                     Node("040704b0", NodeType::Text, "", 0,
                          {TextNode("CompanyName", u"other language")})}),
               Node("VarFileInfo", NodeType::Text, "", 0,
                    {Node("Translation", NodeType::Binary, "\x07\x04\xb0\x04", 4, {})})});
}

TEST(VersionBlock, FindsByPath) {
  const std::string sample = SampleBlock();
  const CVersionBlock block(sample);
  const std::pair<const char*, std::optional<std::string>> cases[] = {
      {"\\StringFileInfo\\040904b0\\CompanyName", "Caf\u00e9 \U0001F326"},
      {"StringFileInfo\\040904B0\\COMMENTS", "first"},
      {"\\stringfileinfo\\040704b0\\CompanyName\\", "other language"},
      {"\\StringFileInfo\\040704b0\\Comments", std::nullopt},
      {"\\StringFileInfo\\040704b0", ""},
      {"\\StringFileInfo\\040904b0\\CompanyName\\x", std::nullopt},
      {"CompanyName", std::nullopt},
      {"\\", std::nullopt},
      {"", std::nullopt},
      {"\\VarFileInfo\\Translation\\", std::nullopt},
  };
  for (const auto& [path, text] : cases) EXPECT_EQ(block.FindText(path), text) << path;
  EXPECT_EQ(block.FirstTranslation(), 0x040704b0u);
  const auto fixed = block.Fixed();
  ASSERT_TRUE(fixed);
  EXPECT_EQ(std::vector<uint16_t>(fixed->file, fixed->file + 4),
            (std::vector<uint16_t>{1, 2, 3, 4}));
  EXPECT_EQ(std::vector<uint16_t>(fixed->product, fixed->product + 4),
            (std::vector<uint16_t>{5, 6, 7, 65535}));
}

// What resource compilers are known to write, and what nobody should.
TEST(VersionBlock, OddStrings) {
  const std::pair<std::string, std::optional<std::string>> cases[] = {
      {Node("a", NodeType::Text, Utf16(u"counted in bytes\0"), 34, {}), "counted in bytes"},
      {Node("a", NodeType::Text, Utf16(u"too short"), 3, {}), "too short"},
      {Node("a", NodeType::Text, Utf16(u"too long"), 60000, {}), "too long"},
      {Node("a", NodeType::Text, Utf16(u"stops\0here"), 10, {}), "stops"},
      {Node("a", NodeType::Binary, Utf16(u"not marked as text\0"), 38, {}), "not marked as text"},
      {Node("a", NodeType::Text, "", 0, {}), ""},
      {Node("a", NodeType::Text, "x", 1, {}), ""},
      {Node("a", NodeType::Text, Utf16(u"a\xD83Cz\xDF26"), 5, {}), "a\xED\xA0\xBCz\xED\xBC\xA6"},
      {Node("a", NodeType::Text, Utf16(u"\xD83C"), 2, {}), "\xED\xA0\xBC"},
  };
  for (const auto& [node, text] : cases) {
    const std::string sample = Node("VS_VERSION_INFO", NodeType::Binary, "", 0,
                                    {Node("StringFileInfo", NodeType::Text, "", 0,
                                          {Node("040904b0", NodeType::Text, "", 0, {node})})});
    EXPECT_EQ(CVersionBlock(sample).FindText("\\StringFileInfo\\040904b0\\a"), text);
  }
}

TEST(VersionBlock, FixedVersionsNeedTheirSignatureAndLength) {
  const std::string good = Fixed({1, 2, 3, 4}, {5, 6, 7, 8});
  std::string unsigned_ = good;
  unsigned_[0] = 0;
  for (const auto& [value, isThere] :
       std::vector<std::pair<std::string, bool>>{{good, true},
                                                 {good.substr(0, 24), true},
                                                 {good.substr(0, 23), false},
                                                 {unsigned_, false},
                                                 {"", false}}) {
    const std::string sample = Node("VS_VERSION_INFO", NodeType::Binary, value, value.size(), {});
    EXPECT_EQ(CVersionBlock(sample).Fixed().has_value(), isThere) << value.size();
  }
}

// Every part that is found in a block that was cut off is right or a beginning of what is right.
TEST(VersionBlock, CutOffAtEveryByte) {
  const std::string sample = SampleBlock();
  const std::string company = "Caf\u00e9 \U0001F326";
  bool wasFound = false;
  for (size_t length = 0; length <= sample.size(); ++length) {
    const std::string part = sample.substr(0, length);
    const CVersionBlock block(part);
    const auto text = block.FindText("\\StringFileInfo\\040904b0\\CompanyName");
    EXPECT_TRUE(!text || company.starts_with(*text) || *text == "Caf\u00e9 \xED\xA0\xBC") << length;
    EXPECT_TRUE(text || !wasFound) << length;
    wasFound = text.has_value();
    const auto fixed = block.Fixed();
    EXPECT_TRUE(!fixed || fixed->product[3] == 65535) << length;
  }
  EXPECT_TRUE(wasFound);
}

TEST(VersionBlock, LengthsThatLeadNowhereEnd) {
  // Children of length 0, of less than their head, and one that promises more than there is.
  for (const uint16_t length : {uint16_t{0}, uint16_t{5}, uint16_t{0xFFFF}}) {
    std::string child = TextNode("CompanyName", u"x");
    child[0] = static_cast<char>(length & 0xFF), child[1] = static_cast<char>(length >> 8);
    std::string sample = Node("VS_VERSION_INFO", NodeType::Binary, "", 0, {child, child});
    EXPECT_EQ(CVersionBlock(sample).FindText("missing"), std::nullopt);
  }
}

}  // namespace
}  // namespace kestra
