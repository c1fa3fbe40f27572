#include <gtest/gtest.h>

#include "cli/render/Width.h"

namespace kestra::cli {
namespace {

TEST(Width, CountsColumnsOfATerminal) {
  const std::pair<const char*, size_t> cases[] = {
      {"", 0},
      {"abc", 3},
      {"\xC3\xBC", 1},                  // u with two dots
      {"u\xCC\x88", 1},                 // the same out of two characters
      {"\xE4\xB8\xAD\xE6\x96\x87", 4},  // two wide characters
      {"\xF0\x9F\x8E\x89", 2},          // an emoji
      {"a\xE2\x80\x8B"
       "b",
       2},  // a blank of no width
  };
  for (const auto& [text, width] : cases) EXPECT_EQ(WidthOf(text), width) << text;
}

TEST(Width, NothingUnprintableReachesTheTerminal) {
  const std::string bad = "\xEF\xBF\xBD";
  const std::pair<std::string, std::string> cases[] = {
      {"a\tb\r\nc", "a b  c"},
      {"\x1B[31mred", bad + "[31mred"},
      {std::string("a\0b", 3), "a" + bad + "b"},
      {"a\x7F", "a" + bad},
      {"\xC2\x9B"
       "31m",
       bad + "31m"},  // a control character of the upper half
      {"\xFF\xFE", bad + bad},
      {"\xC3", bad},                      // cut off
      {"\xED\xA0\x80", bad + bad + bad},  // a surrogate
      {"\xE2\x80\xAE"
       "txt.exe",
       bad + "txt.exe"},  // turns the direction
      {"\xC3\xBC", "\xC3\xBC"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(Printable(text), expected) << text;
  EXPECT_EQ(Printable("a\tb\nc\x1B", true), "a\tb\nc" + bad);
  EXPECT_EQ(Printable("a\r\nb\rc\r", true), "a\nb c ");
}

TEST(Width, CutsBetweenCharacters) {
  const std::string dots = "\xE2\x80\xA6";
  const std::string wide = "\xE4\xB8\xAD";
  struct {
    std::string text;
    size_t width;
    std::string expected;
  } const cases[] = {
      {"abcd", 4, "abcd"},
      {"abcde", 4, "abc" + dots},
      {"abc", 1, dots},
      {"", 3, ""},
      {wide + wide, 4, wide + wide},
      {wide + wide, 3, wide + dots},
      {wide + wide + wide, 4, wide + dots},      // the second does not leave room for the mark
      {"ae\xCC\x81xy", 3, "ae\xCC\x81" + dots},  // a mark stays with its letter
  };
  for (const auto& [text, width, expected] : cases) {
    EXPECT_EQ(CutToWidth(text, width), expected) << text << " to " << width;
  }
}

}  // namespace
}  // namespace kestra::cli
