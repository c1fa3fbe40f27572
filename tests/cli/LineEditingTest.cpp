// A line that is typed, its history, and how it stands on a terminal.
#include <gtest/gtest.h>

#include <functional>

#include "cli/shell/commands/DotArguments.h"
#include "cli/shell/input/CompletionList.h"
#include "cli/shell/input/EditedLine.h"
#include "cli/shell/input/LineLayout.h"

namespace kestra::cli {
namespace {

using Edit = void (CEditedLine::*)();

// The text with "|" at the cursor.
std::string Shown(const CEditedLine& line) {
  std::string text = line.Text();
  return text.insert(line.Cursor(), "|");
}

TEST(EditedLine, Edits) {
  const auto left = &CEditedLine::GoLeft;
  const auto back = &CEditedLine::DeleteBefore;
  const auto wordLeft = &CEditedLine::GoWordLeft;
  const struct {
    const char* typed;
    std::vector<Edit> edits;
    const char* expected;
  } cases[] = {
      {"ab", {left}, "a|b"},
      {"a日本", {left, back}, "a|本"},
      {"e\u0301x", {left, left}, "|e\u0301x"},
      {"e\u0301", {back, back}, "|"},
      {"a\xFF\xE6", {left, left, left, left}, "|a\xFF\xE6"},
      {"a b", {left, left, &CEditedLine::DeleteBehind}, "a|b"},
      {"", {back, &CEditedLine::DeleteBehind, left, &CEditedLine::GoRight, wordLeft}, "|"},
      {"one two.x1", {wordLeft, wordLeft}, "one |two.x1"},
      {"one  twö", {wordLeft, &CEditedLine::DeleteWordBefore}, "|twö"},
      {"one two", {&CEditedLine::GoToStart, &CEditedLine::GoWordRight}, "one| two"},
      {"one two", {wordLeft, &CEditedLine::DeleteToEnd}, "one |"},
      {"one two", {wordLeft, &CEditedLine::DeleteToStart}, "|two"},
  };
  for (const auto& row : cases) {
    CEditedLine line;
    line.Begin();
    line.Insert(row.typed);
    for (const Edit edit : row.edits) (line.*edit)();
    EXPECT_EQ(Shown(line), row.expected) << row.typed;
  }
}

TEST(EditedLine, BringsBackWhatWasTyped) {
  CEditedLine line;
  for (const char* pEntry : {"one", "SELECT 1", "two", "SELECT 2", "one"}) line.AddHistory(pEntry);
  line.Begin();
  line.Insert("SEL");
  const std::pair<Edit, const char*> steps[] = {
      {&CEditedLine::ShowOlder, "one|"},           {&CEditedLine::ShowOlder, "SELECT 2|"},
      {&CEditedLine::ShowNewer, "one|"},           {&CEditedLine::ShowNewer, "SEL|"},
      {&CEditedLine::ShowNewer, "SEL|"},           {&CEditedLine::ShowOlderAlike, "SEL|ECT 2"},
      {&CEditedLine::ShowOlderAlike, "SEL|ECT 1"}, {&CEditedLine::ShowOlderAlike, "SEL|ECT 1"},
      {&CEditedLine::ShowOlder, "SEL|ECT 1"},
  };
  for (const auto& [edit, expected] : steps) {
    (line.*edit)();
    EXPECT_EQ(Shown(line), expected);
  }
}

TEST(LineLayout, RowsAndCursor) {
  const struct {
    const char* text;
    size_t cursor;
    size_t columns;
    std::vector<std::string> rows;
    size_t row, column;
  } cases[] = {
      {"", 0, 10, {"> "}, 0, 2},
      {"abc", 1, 10, {"> abc"}, 0, 3},
      {"abcdef", 6, 5, {"> abc", "def"}, 1, 3},
      {"abc", 3, 5, {"> abc", ""}, 1, 0},
      {"a日本", 4, 5, {"> a日", "本"}, 1, 0},
      {"ab日", 2, 5, {"> ab", "日"}, 1, 0},
      {"a\nb", 3, 10, {"> a", "b"}, 1, 1},
      {"a\nb", 1, 10, {"> a", "b"}, 0, 3},
      {"a\tb\x1B", 4, 10, {"> a b\uFFFD"}, 0, 6},
      {"日", 0, 1, {">", " ", "日"}, 2, 0},
  };
  for (const auto& row : cases) {
    const LineLayout layout = LayOut("> ", row.text, row.cursor, row.columns);
    EXPECT_EQ(layout.rows, row.rows) << row.text;
    EXPECT_EQ(layout.cursorRow, row.row) << row.text;
    EXPECT_EQ(layout.cursorColumn, row.column) << row.text;
  }
}

TEST(CompletionList, WhatIsPutIn) {
  const auto made = [](std::vector<std::string> texts, size_t length, bool isExact = false) {
    Completion completion{0, length, {}, " ", isExact};
    for (std::string& text : texts) completion.candidates.push_back({std::move(text), ""});
    return completion;
  };
  using Text = std::optional<std::string>;
  EXPECT_EQ(TextToPutIn(made({"FROM"}, 2), "fr"), Text("FROM "));
  EXPECT_EQ(TextToPutIn(made({"FROM"}, 2), "fr x"), Text("FROM"));
  EXPECT_EQ(TextToPutIn(made({"PID", "pidx"}, 1), "p"), Text("PID"));
  EXPECT_EQ(TextToPutIn(made({"PID", "pidx"}, 0, true), ""), std::nullopt);
  EXPECT_EQ(TextToPutIn(made({"日a", "月a"}, 0), ""), std::nullopt);
}

TEST(DotArguments, PartsAndQuotes) {
  const struct {
    const char* text;
    std::vector<std::string> words;
    bool isWhole;
    size_t last;
  } cases[] = {
      {"", {}, true, 0},
      {" a  b ", {"a", "b"}, true, 6},
      {" a  bc", {"a", "bc"}, true, 4},
      {" 'a b' c;", {"a b", "c"}, true, 7},
      {" \"it's\"", {"it's"}, true, 1},
      {" it's", {"it's"}, true, 1},
      {" x 'a b", {"x", "a b"}, false, 3},
      {" ''", {""}, true, 1},
  };
  for (const auto& row : cases) {
    const DotArguments arguments = ParseArguments(row.text);
    EXPECT_EQ(arguments.words, row.words) << row.text;
    EXPECT_EQ(arguments.isWhole, row.isWhole) << row.text;
    EXPECT_EQ(LastArgument(row.text), row.last) << row.text;
  }
}

}  // namespace
}  // namespace kestra::cli
