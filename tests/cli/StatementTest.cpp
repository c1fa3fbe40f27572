// Where the text that is typed over several lines ends.
#include <gtest/gtest.h>

#include <vector>

#include "cli/shell/input/Statement.h"

namespace kestra::cli {
namespace {

struct StatementCase {
  std::vector<const char*> lines;
  bool ends;
  bool isBlank;
  bool isInText;
  bool isInComment;
};

TEST(Statement, WhereItEnds) {
  const StatementCase cases[] = {
      {{"SELECT 1"}, false, false, false, false},
      {{"SELECT 1;"}, true, false, false, false},
      {{"SELECT 1 ; ", " \t"}, true, false, false, false},
      {{"1; 2"}, false, false, false, false},
      {{"1 /* ; */"}, false, false, false, false},
      {{"1; /* done */"}, true, false, false, false},
      {{"1; /* not", "yet"}, false, false, false, true},
      {{"1; /* now", "it is */"}, true, false, false, false},
      {{"'a;"}, false, false, true, false},
      {{"'a", "b';"}, true, false, false, false},
      {{"'it''s;'"}, false, false, false, false},
      {{"'/*';"}, true, false, false, false},
      {{"/* ' */;"}, true, true, false, false},
      {{"", "  ", "/* c */"}, false, true, false, false},
      {{"/*/ ;"}, false, false, false, true},
      {{"1 /", "* 2;"}, true, false, false, false},
  };
  for (const StatementCase& each : cases) {
    CStatement statement;
    for (const char* line : each.lines) statement.AddLine(line);
    EXPECT_EQ(statement.EndsWithSemicolon(), each.ends) << statement.Text();
    EXPECT_EQ(statement.IsBlank(), each.isBlank) << statement.Text();
    EXPECT_EQ(statement.IsInText(), each.isInText) << statement.Text();
    EXPECT_EQ(statement.IsInComment(), each.isInComment) << statement.Text();
  }
}

TEST(Statement, WaitsForMore) {
  const std::pair<const char*, bool> cases[] = {
      {"SELECT PID", true},
      {"select PID, ' from '", true},
      {"SELECT PID from", false},
      {"UPDATE", false},
      {"1 + 1", false},
      {"SELECT fromage", true},
      {"SELECT 1 FROM x.y", false},
      {"SELECT 1 FROM x.y Where ", true},
      {"SELECT 1 FROM x.y WHERE a", false},
  };
  for (const auto& [text, expected] : cases) {
    CStatement statement;
    statement.AddLine(text);
    EXPECT_EQ(statement.WaitsForMore(), expected) << text;
  }
}

}  // namespace
}  // namespace kestra::cli
