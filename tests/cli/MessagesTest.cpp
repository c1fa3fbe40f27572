// What is said of a query beside its result.
#include <gtest/gtest.h>

#include "cli/messages/CaretText.h"
#include "cli/messages/MessageHints.h"
#include "cli/render/Width.h"

namespace kestra::cli {
namespace {

TEST(CaretText, StandsUnderThePiece) {
  const struct {
    const char* text;
    size_t offset, length;
    const char* expected;
  } cases[] = {
      {"SELECT x FROM y", 7, 1, "SELECT x FROM y\n       ^\n"},
      {"SELECT name FROM y", 7, 4, "SELECT name FROM y\n       ^~~~\n"},
      {"a\nb cd\r\ne", 4, 2, "b cd\n  ^~\n"},
      {"\tx", 1, 1, " x\n ^\n"},
      // two columns each, and a mark of none
      {"\xE6\x97\xA5\xE6\x9C\xAC x", 7, 1, "\xE6\x97\xA5\xE6\x9C\xAC x\n     ^\n"},
      {"e\xCC\x81 x", 4, 1, "e\xCC\x81 x\n  ^\n"},
      {"1 +", 3, 0, "1 +\n   ^\n"},
      {"'a\nb'", 0, 5, "'a\n^~\n"},
      {"x\x1By", 2, 1, "x\xEF\xBF\xBDy\n  ^\n"},
      {"", 0, 0, ""},
      {"a\n  \n", 3, 0, ""},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(CaretText(test.text, test.offset, test.length, 80), test.expected) << test.text;
  }
}

// Wherever the piece is, its first character is above the caret, and no line is too wide.
TEST(CaretText, IsCutAroundThePiece) {
  std::string text;
  for (int i = 0; i < 3000; ++i)
    text += i % 7 == 0 ? "\xE6\x97\xA5" : i % 11 == 0 ? "e\xCC\x81" : "x";
  for (const size_t width : {20u, 33u, 80u}) {
    for (size_t i = 0; i < text.size(); i += 97) {
      std::string marked = text;
      while (i < text.size() && (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80) ++i;
      marked.insert(i, "Q");
      const std::string lines = CaretText(marked, i, 1, width);
      const size_t end = lines.find('\n');
      const std::string line = lines.substr(0, end);
      EXPECT_LE(WidthOf(line), width);
      const size_t place = line.find('Q');
      ASSERT_NE(place, std::string::npos) << i << ' ' << lines;
      EXPECT_EQ(lines.substr(end + 1), std::string(WidthOf(line.substr(0, place)), ' ') + "^\n");
    }
  }
}

TEST(MessageHints, TellWhatNumbersMean) {
  const struct {
    const char* text;
    const char* expected;
  } cases[] = {
      {"<ERROR: Message Id: 11015, source: /usr/lib/libkestra.so.0.>",
       "changes are off; --active allows them"},
      {"<ERROR: Message Id: 10001, source: x, includes the following strings: Lvl.>",
       "there is no argument or property Lvl"},
      {"Message Id: 11014, source: x, includes the following strings: Process, Dance.",
       "Process has no action Dance"},
      {"Message Id: 11002, source: x, includes the following strings: Name.",
       "the value for Name cannot be"},
      {"Message Id: 11002, source: x, includes the following strings: Name, a, b.",
       "the value for Name cannot be: a, b"},
      {"<ERROR: Message Id: 10004, source: x, includes the following strings: IniFile. The path "
       "is wrong.>",
       "the module IniFile could not be read, so nothing can be added to it: The path is wrong"},
      {"Message Id: 16002, source: x, includes the following strings: /a. b.",
       "/a. b is there already"},
      {"Message Id: 11008, source: x, includes the following strings: A, B, C and D.",
       "these cannot be used together: A, B, C and D"},
      {"Message Id: 11011, source: x", " cannot be changed"},
      {"Message Id: 4, source: x", ""},
      {"Message Id: ", ""},
      {"<ERROR: Syntax error>", ""},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(MessageHint(test.text, Place::CommandLine), test.expected) << test.text;
  }
  EXPECT_EQ(MessageHint("Message Id: 11015, source: x", Place::Shell),
            "changes are off; .active on allows them");
}

TEST(MessageHints, TellWhatTheCommandHasInstead) {
  EXPECT_EQ(WordHint("Order", Place::CommandLine), "--sort COLUMN sorts what is shown");
  EXPECT_EQ(WordHint("LIMIT", Place::Shell), ".limit N shows the first N rows");
  EXPECT_EQ(WordHint("quit", Place::CommandLine), "");
  EXPECT_EQ(WordHint("", Place::Shell), "");
  EXPECT_EQ(WordHint("ORDERS", Place::Shell), "");
}

}  // namespace
}  // namespace kestra::cli
