#include <gtest/gtest.h>

#include <limits>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

struct Utf8Case {
  std::string_view bytes;
  std::vector<uint32_t> characters;
};

TEST(NextCharacter, StepsByCharacterAndByBrokenByte) {
  constexpr uint32_t kByte = 0x110000;
  const Utf8Case cases[] = {
      {"aé€😀", {'a', 0xE9, 0x20AC, 0x1F600}},
      {"\xC0\xAF", {kByte + 0xC0, kByte + 0xAF}},                    // overlong
      {"\xE0\x80\x80", {kByte + 0xE0, kByte + 0x80, kByte + 0x80}},  // overlong
      {"\xED\xA0\x80", {kByte + 0xED, kByte + 0xA0, kByte + 0x80}},  // surrogate
      {"\xF4\x90\x80\x80", {kByte + 0xF4, kByte + 0x90, kByte + 0x80, kByte + 0x80}},
      {"\xE2\x82", {kByte + 0xE2, kByte + 0x82}},  // cut off
      {"\xE2z", {kByte + 0xE2, 'z'}},
      {"\xF0\x90\x80\x80", {0x10000}},
      {"\xFF", {kByte + 0xFF}},
  };
  for (const Utf8Case& test : cases) {
    std::vector<uint32_t> found;
    for (size_t position = 0; position < test.bytes.size();)
      found.push_back(NextCharacter(test.bytes, position));
    EXPECT_EQ(found, test.characters) << test.bytes;
    EXPECT_EQ(CountCharacters(test.bytes), test.characters.size()) << test.bytes;
  }
}

struct Int32Case {
  const char* text;
  int32_t value;
  size_t consumed;
};

TEST(ParseInt32, ReadsAsStrtolWith32Bits) {
  constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
  constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
  const Int32Case cases[] = {
      {"", 0, 0},
      {"x", 0, 0},
      {"-", 0, 0},
      {" +", 0, 0},
      {"- 1", 0, 0},
      {"0", 0, 1},
      {" \t\n-12x", -12, 6},
      {"+007", 7, 4},
      {"2147483646", 2147483646, 10},
      {"2147483647", kMost, 10},
      {"2147483648", kMost, 10},
      {"-2147483648", kLeast, 11},
      {"-2147483649", kLeast, 11},
      {"99999999999999999999999999", kMost, 26},
      {"-99999999999999999999999999", kLeast, 27},
      {"0x10", 0, 1},
  };
  for (const Int32Case& test : cases) {
    size_t consumed = 99;
    EXPECT_EQ(ParseInt32(test.text, consumed), test.value) << test.text;
    EXPECT_EQ(consumed, test.consumed) << test.text;
  }
}

struct UInt32Case {
  const char* text;
  uint32_t value;
  size_t consumed;
};

TEST(ParseUInt32, ReadsAsStrtoulWith32Bits) {
  constexpr uint32_t kMost = std::numeric_limits<uint32_t>::max();
  const UInt32Case cases[] = {
      {"", 0, 0},
      {"4294967295", kMost, 10},
      {"4294967296", kMost, 10},
      {"-1", kMost, 2},
      {"-4294967295", 1, 11},
      {"-4294967296", kMost, 11},
      {"12,", 12, 2},
      {"18446744073709551617", kMost, 20},
  };
  for (const UInt32Case& test : cases) {
    size_t consumed = 99;
    EXPECT_EQ(ParseUInt32(test.text, consumed), test.value) << test.text;
    EXPECT_EQ(consumed, test.consumed) << test.text;
  }
}

using Pieces = std::vector<std::string>;

TEST(Split, AtEverySeparator) {
  EXPECT_EQ(Split("", '|'), Pieces{""});
  EXPECT_EQ(Split("a|b||", '|'), (Pieces{"a", "b", "", ""}));
  EXPECT_EQ(SplitQuoted("", ',', '"'), Pieces{""});
  EXPECT_EQ(SplitQuoted("a,\"b,c\",d", ',', '"'), (Pieces{"a", "\"b,c\"", "d"}));
  EXPECT_EQ(SplitQuoted("a\",\"b,", ',', '"'), (Pieces{"a\",\"b", ""}));
  EXPECT_EQ(SplitQuoted("a,\"b", ',', '"'), Pieces{});
}

TEST(Trim, TakesBlanksOnly) {
  EXPECT_EQ(TrimBlanks("  a b "), "a b");
  EXPECT_EQ(TrimBlanks("   "), "");
  EXPECT_EQ(TrimBlanks("\ta"), "\ta");
  EXPECT_EQ(TrimRight("a, ,", ", "), "a");
  EXPECT_EQ(TrimRight(", ", ", "), "");
}

TEST(AsciiTests, HoldForAsciiAlone) {
  int letters = 0;
  int digits = 0;
  int punctuation = 0;
  for (int c = -128; c < 128; ++c) {
    letters += IsAsciiLetter(static_cast<char>(c));
    digits += IsAsciiDigit(static_cast<char>(c));
    punctuation += IsAsciiPunct(static_cast<char>(c));
  }
  EXPECT_EQ(letters, 52);
  EXPECT_EQ(digits, 10);
  EXPECT_EQ(punctuation, 32);
}

}  // namespace
}  // namespace kestra
