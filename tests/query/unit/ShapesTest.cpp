// Every shape that nests or repeats, with as many tokens as a text can have, on a stack as small as
// the smallest that a thread of ours has: a value, or an Error where it nests, in seconds.
// limits_table.py prints the time and the memory that each takes.
#include <gtest/gtest.h>

#include <string>

#include "query/parse/Tokeniser.h"
#include "tests/query/unit/LongTexts.h"

namespace kestra::test {
namespace {

constexpr const char* kAnything = "*";

// head, open so often, core, close as often, tail.
struct Shape {
  const char* pName;
  std::string head, open, core, close, tail;
  std::string expected = kAnything;
};

void PrintTo(const Shape& shape, std::ostream* pStream) {
  *pStream << shape.pName;
}

size_t CountTokens(const std::string& text) {
  TokenList tokens;
  EXPECT_TRUE(Tokenise(text, tokens)) << text;
  return tokens.size();
}

// With as many tokens as fit; comments count for none and stand as often as a token could.
std::string TextOf(const Shape& shape) {
  const size_t once = CountTokens(shape.open + " " + shape.close);
  const size_t rest = kMaxTokens - CountTokens(shape.head + " " + shape.core + " " + shape.tail);
  const size_t count = once == 0 ? rest : rest / once;
  return shape.head + Nest(shape.open, shape.core, shape.close, count) + shape.tail;
}

class Shapes : public testing::TestWithParam<Shape> {};

TEST_P(Shapes, EndInAValue) {
  const Shape& shape = GetParam();
  const std::string text = TextOf(shape);
  EXPECT_GE(CountTokens(text) + 40, shape.open[0] == '/' ? 0 : kMaxTokens);
  const std::string result = RunOnSmallStack(text);
  EXPECT_FALSE(result.empty());
  if (shape.expected == kAnything) return;
  EXPECT_EQ(result.substr(0, 200), shape.expected);
}

std::string NameOf(const testing::TestParamInfo<Shape>& info) {
  return info.param.pName;
}

const std::string kRow = "SELECT Id FROM Test.Row WHERE ";

INSTANTIATE_TEST_SUITE_P(
    Repeated, Shapes,
    testing::Values(
        Shape{"StringList", "'a'", ",'b'", "", "", "", "32768 elements"},
        Shape{"NumberSet", "1 IN (2", ",3", "", "", ")", "False"},
        Shape{"StringSet", "'a' IN ('b'", ",'c'", "", "", ")", "False"},
        Shape{"Datimes", "GETDATE()>'2006-01-02'", " AND GETDATE()>'2006-01-02'", "", "", "",
              "True"},
        Shape{"Versions", kRow + "Release>'1'", " AND Release>'1.1'", "", "", "", "3 elements"},
        Shape{"SetForEachRow", kRow + "Id IN (1", ",2", "", "", ")", "2 elements"},
        Shape{"Concatenation", "LEN('ab'", "+'ab'", "", "", ")"},
        Shape{"ConcatenationOfColumns", "SELECT LEN(Text", "+Text", "", "",
              ") FROM Test.Row WHERE Id=1"},
        Shape{"Difference", "65536", "-1", "", "", "", "32769"},
        Shape{"MixedOperators", "1", "+2*3-6", "", "", "", "1"},
        Shape{"Complements", "", "~", "1", "", ""}, Shape{"Nots", "", "NOT ", "1=1", "", ""},
        Shape{"Or", "1=2", " OR 1=2", "", "", "", "False"},
        Shape{"And", "1=1", " AND 1=1", "", "", "", "True"},
        Shape{"OrOfAnds", "1=2", " OR 1=1 AND 1=2", "", "", "", "False"},
        Shape{"Likes", "'a' LIKE 'b'", " OR 'a' LIKE 'b*'", "", "", "", "False"},
        Shape{"LikesWithEscape", "'a' LIKE 'b'", " OR 'a' LIKE 'b*' ESCAPE '\\'", "", "", "",
              "False"},
        Shape{"IsNulls", kRow + "Size IS NULL", " AND Size IS NULL", "", "", "", "2"},
        Shape{"Comparisons", "(1=1)", "=(1=1)", "", "", "", "True"},
        Shape{"Conditions", kRow + "Id=1", " OR Id=1", "", "", "", "1"},
        Shape{"Columns", "SELECT Id", ",Text", "", "", " FROM Test.Row WHERE Id=1", "<Vector>"},
        Shape{"SubSelects", "SELECT Id", ",(SELECT MAX(Id) FROM Test.Row)", "", "",
              " FROM Test.Row WHERE Id=1"},
        Shape{"SubSelectsInAList", "'a'", ",(SELECT Text FROM Test.Row WHERE Id=1)", "", "", ""},
        Shape{"Joins", "SELECT a.Id FROM Test.Row a", " JOIN Test.Row b ON b.Id=1", "", "", ""},
        Shape{"JoinsOnEquality", "SELECT a.Id FROM Test.Row a", " JOIN Test.Row b ON b.Id=a.Id", "",
              "", ""},
        Shape{"Arguments", "SELECT Id FROM Test(First=1", ",First=1", "", "", ").Row"},
        Shape{"CallArguments", "CALLDLL('no such library','f'", ",'x'", "", "", ")", "<ERROR>"},
        Shape{"Statements", "", "DROP MODULE a ", "", "", ""},
        Shape{"Deletions", "", "DELETE Test.Row WHERE 1=2 ", "", "", ""},
        Shape{"Procedures", "", "CREATE PROCEDURE a AS 1 ", "", "", ""},
        Shape{"InsertedColumns", "INSERT Test.Row (Id", ",Id", "", "", ") VALUES (1)"},
        Shape{"InsertedValues", "INSERT Test.Row (Id) VALUES (1", ",1", "", "", ")"},
        Shape{"Settings", "UPDATE Test.Row SET Text='a'", ",Text='a'", "", "", ""},
        Shape{"ActionArguments", "EXECUTE ACTION(SELECT * FROM Test.Row WHERE 1=2,'Touch'",
              ",Step=1", "", "", ")"},
        Shape{"Comments", "", "/* a */ ", "1", "", "", "1"},
        Shape{"CommentsBetween", "1", "+/**/1", "", "", "", "32768"},
        Shape{"Dots", "a", ".a", "", "", ""}, Shape{"Commas", "", ",", "", "", ""}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Nested, Shapes,
    testing::Values(
        Shape{"Parentheses", "", "(", "1", ")", "", "1"},
        Shape{"ConditionsInParentheses", "", "(", "1=1", ")", "", "True"},
        Shape{"ListsInParentheses", "", "(", "'a','b'", ")", ""},
        Shape{"NotsOfParentheses", "", "NOT (", "1=1", ")", ""},
        Shape{"ComplementsOfParentheses", "", "~(", "1", ")", ""},
        Shape{"SumsToTheRight", "", "1+(", "1", ")", ""},
        Shape{"SumsToTheLeft", "", "(", "1", "+1)", ""},
        Shape{"ConcatenationsToTheRight", "", "'a'+(", "'a'", ")", ""},
        Shape{"OrsToTheRight", "", "1=2 OR (", "1=1", ")", ""},
        Shape{"AndsToTheRight", kRow, "Id=1 AND (", "Id=1", ")", ""},
        Shape{"Lens", "", "LEN(CONVERT(VARCHAR,", "1", "))", ""},
        Shape{"Rights", "", "RIGHT('abc'+", "'a'", ",2)", ""},
        Shape{"Substrings", "", "SUBSTRING(", "'abc'", ",1,2)", ""},
        Shape{"IsNullCalls", "", "ISNULL(", "1", ",2)", ""},
        Shape{"IsNullsToTheRight", "", "ISNULL(1,", "2", ")", ""},
        Shape{"DateAdds", "", "DATEADD(ss,1,", "'2006-01-02'", ")", ""},
        Shape{"DateParts", "", "DATEADD(ss,DATEPART(ss,", "'2006-01-02'", "),'2006-01-02')", ""},
        Shape{"SetsInSets", "", "1 IN (2,", "3", ")", ""},
        Shape{"SubSelects", "", "(SELECT ", "1", " FROM Test.Row WHERE Id=1)", ""},
        Shape{"SubSelectsInWhere", "", "(SELECT Id FROM Test.Row WHERE Id=", "1", ")", ""},
        Shape{"SubSelectsInSets", "", "(SELECT Id FROM Test.Row WHERE Id IN ", "(1)", ")", ""},
        Shape{"SubSelectsInArguments", "", "(SELECT Id FROM Test(First=", "1", ").Row)", ""},
        Shape{"SubSelectsInJoins", "", "(SELECT a.Id FROM Test.Row a JOIN Test.Row b ON a.Id=", "1",
              ")", ""},
        Shape{"SubSelectsInAggregates", "", "(SELECT MAX(", "1", ") FROM Test.Row)", ""},
        Shape{"CallsInCalls", "", "CALLDLL('no such library','f',", "'x'", ")", ""},
        Shape{"Procedures", "", "CREATE PROCEDURE a AS ", "1", "", ""}),
    NameOf);

}  // namespace
}  // namespace kestra::test
