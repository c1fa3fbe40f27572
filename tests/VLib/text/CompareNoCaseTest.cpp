#include <gtest/gtest.h>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

int Sign(int number) {
  return (number > 0) - (number < 0);
}

struct Comparison {
  std::string_view a;
  std::string_view b;
  int sign;
};

TEST(CompareNoCase, OrdersByFoldedCodePoint) {
  using namespace std::string_view_literals;
  const Comparison cases[] = {
      {"", "", 0},
      {"", "a", -1},
      {"Hello", "hELLO", 0},
      {"abc", "abcd", -1},
      {"abd", "ABC", 1},
      {"_", "A", -1},  // folding is to lower case, which stands behind "_"
      {"Z", "[", 1},
      {"ÄÖÜ", "äöü", 0},
      {"z", "ä", -1},
      {"ΣΑΣ", "σας", 0},    // the final sigma folds to the other one
      {"\u212A", "k", 0},   // the Kelvin sign, of three bytes
      {"\u1E9E", "ß", 0},   // a mapping of status S
      {"ß", "ss", 1},       // full folding is not used
      {"I", "\u0131", -1},  // nor is the Turkish one
      {"\U00010400", "\U00010428", 0},
      {"\xFF", "\U0010FFFF", 1},  // bytes that are no UTF-8 stand behind all characters
      {"\xFE", "\xFF", -1},
      {"a\xC3", "a\xC3\xA4", 1},  // cut off character
      {"a\0b"sv, "A\0B"sv, 0},
      {"a\0b"sv, "a\0c"sv, -1},
  };
  for (const Comparison& test : cases) {
    EXPECT_EQ(Sign(CompareNoCase(test.a, test.b)), test.sign) << test.a << " | " << test.b;
    EXPECT_EQ(Sign(CompareNoCase(test.b, test.a)), -test.sign) << test.b << " | " << test.a;
  }
}

// Number and check sum over the mappings of status C and S, computed from CaseFolding.txt 15.0.0
// apart from the program that writes the table.
TEST(FoldCharacter, AgreesWithTheUnicodeDatabase) {
  uint32_t count = 0;
  uint32_t checkSum = 0;
  for (uint32_t character = 0; character < 0x110100; ++character) {
    const uint32_t folded = FoldCharacter(character);
    if (folded == character) continue;
    ++count;
    checkSum = checkSum * 31 + character * 7 + folded;
    EXPECT_EQ(FoldCharacter(folded), folded) << character;
  }
  EXPECT_EQ(count, 1454u);
  EXPECT_EQ(checkSum, 2794485037u);
}

}  // namespace
}  // namespace kestra
