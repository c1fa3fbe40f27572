// Any text ends in a value: long ones, deep ones, and ones that are no text at all, on a stack as
// small as the smallest that a thread of ours has.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/query/unit/LongTexts.h"

namespace kestra::test {
namespace {

constexpr const char* kSyntaxError = "<ERROR: Syntax error>";
constexpr const char* kAnything = "*";

struct Case {
  const char* pName;
  std::string text;
  std::string expected;  // kAnything: a right value or an Error, but an end
};

void PrintTo(const Case& c, std::ostream* pStream) {
  *pStream << c.pName;
}

class Limits : public testing::TestWithParam<Case> {};

TEST_P(Limits, EndInAValue) {
  const std::string result = RunOnSmallStack(GetParam().text);
  EXPECT_FALSE(result.empty());
  if (GetParam().expected == kAnything) return;
  EXPECT_EQ(result.substr(0, 200), GetParam().expected.substr(0, 200));
  EXPECT_EQ(result.size(), GetParam().expected.size());
}

std::string NameOf(const testing::TestParamInfo<Case>& info) {
  return info.param.pName;
}

// Lists and chains of operators work at any length.
INSTANTIATE_TEST_SUITE_P(
    Long, Limits,
    testing::Values(
        Case{"SumOfAllTokens", Chain("1", "+1", 32767), "32768"},
        Case{"OneTokenTooMany", "~" + Chain("1", "+1", 32767), kSyntaxError},
        Case{"Sum", Chain("1", " + 1", 29999), "30000"},
        Case{"Difference", Chain("30000", "-1", 29999), "1"},
        Case{"Product", Chain("7", "*1", 29999), "7"},
        Case{"Quotient", Chain("7", "/1", 29999), "7"}, Case{"BitOr", Chain("1", "|2", 29999), "3"},
        Case{"BitXor", Chain("0", "^1", 29999), "1"}, Case{"BitAnd", Chain("7", "&3", 29999), "3"},
        Case{"Concatenation", "LEN(" + Chain("'ab'", "+'ab'", 29999) + ")", "60000"},
        Case{"ConcatenationOfCalls", "LEN(" + Chain("'ab'", "+RIGHT('ab',1)", 8000) + ")", "8002"},
        Case{"StringList", Chain("'a'", ",'b'", 29999), "30000 elements"},
        Case{"StringListTooLong", Chain("'a'", ",'b'", 59999), kSyntaxError},
        Case{"NumberSet", "1 IN (" + Chain("2", ",3", 29999) + ")", "False"},
        Case{"StringSet", "'a' NOT IN (" + Chain("'b'", ",'c'", 29999) + ")", "True"},
        Case{"And", Chain("1=1", " AND 1=1", 12999), "True"},
        Case{"Or", Chain("1=2", " OR 1=2", 12999), "False"},
        Case{"BooleanCompare", Chain("(1=1)", "=(1=1)", 8000), "True"},
        Case{"Procedures", Repeat("CREATE PROCEDURE a AS 1 ", 5000), "5000 elements"},
        Case{"Statements", Repeat("DROP MODULE * ", 20000), "20000 elements"},
        Case{"ValueList", "SELECT " + Chain("Id", ",Id", 29999) + " FROM Test.Row WHERE Id=1",
             "<Vector>"},
        Case{"SumOfColumns", "SELECT " + Chain("Id", "+Id", 29999) + " FROM Test.Row WHERE Id=1",
             "30000"},
        Case{"ColumnsOfAnAlias",
             "SELECT " + Chain("a.Id", "+a.Id", 15999) + " FROM Test.Row a WHERE a.Id=1", "16000"},
        Case{"Filter", "SELECT Id FROM Test.Row WHERE " + Chain("Id=1", " AND Id=1", 12999), "1"},
        Case{"Arguments", "SELECT Id FROM Test(" + Chain("First=1", ",First=1", 12999) + ").Row",
             kAnything},
        Case{"Columns", "INSERT Test.Row (" + Chain("Id", ",Id", 29999) + ") VALUES (1)",
             kAnything}),
    NameOf);

// Parentheses leave nothing behind, so they work at any depth; what computes at each level may end
// in an Error.
INSTANTIATE_TEST_SUITE_P(
    Deep, Limits,
    testing::Values(
        Case{"Numbers", Nest("(", "1", ")", 20000), "1"},
        Case{"AllTokens", Nest("(", "1", ")", 32767), "1"},
        Case{"Strings", Nest("(", "'a'", ")", 20000), "a"},
        Case{"Conditions", Nest("(", "1=1", ")", 20000), "True"},
        Case{"Versions", Nest("(", "CONVERT(VERSION,'1.2')", ")", 20000), "1.2"},
        Case{"Datimes", Nest("(", "DATEADD(ss,0,'2006-01-02')", ")", 20000), "2006-01-02 00:00:00"},
        Case{"NeverClosed", Repeat("(", 65535), kSyntaxError},
        Case{"NeverOpened", Repeat(")", 65535), kSyntaxError},
        Case{"ClosedOnceTooOften", Nest("(", "1)", ")", 20000), kSyntaxError},
        Case{"Complements", Nest("~(", "1", ")", 16000), kAnything},
        Case{"Negations", Nest("NOT (", "1=1", ")", 16000), kAnything},
        Case{"SumsInParentheses", Nest("(1+", "1", ")", 16000), kAnything},
        Case{"Concatenations", Nest("('a'+", "'a'", ")", 16000), kAnything},
        Case{"IsNull", Nest("ISNULL(", "1", ",1)", 10000), kAnything},
        Case{"Converts", Nest("LEN(CONVERT(VARCHAR,", "1", "))", 7000), kAnything},
        Case{"DateAdds", Nest("DATEADD(ss,1,", "GETDATE()", ")", 9000), kAnything},
        Case{"SubSelects", Nest("(SELECT ", "1", " FROM Test.Row WHERE Id=1)", 2000), kAnything},
        Case{"SubSelectsInWhere", Nest("(SELECT Id FROM Test.Row WHERE Id=", "1", ")", 2000),
             kAnything},
        Case{"SubSelectsAsArguments",
             Nest("(SELECT Id FROM Test(First=", "1", ").Row WHERE Id=1)", 2000), kAnything},
        Case{"SubSelectsInLists", Nest("(SELECT Id FROM Test.Row WHERE Id IN (1,", "1", "))", 2000),
             kAnything},
        // Deeper than any stack: what fits on one is evaluated for each row on each level. (Wine
        // makes no stack smaller than two MiB.)
        Case{"Aggregates", Nest("(SELECT MAX(", "1", ") FROM Test.Row)", 6000), kAnything},
        Case{"Procedures", Repeat("CREATE PROCEDURE a AS ", 16000) + "1", kSyntaxError}),
    NameOf);

std::string JoinChain(const std::string& condition, size_t count) {
  std::string text = "SELECT a0.Id FROM Test.Row a0";
  for (size_t i = 1; i <= count; ++i) {
    std::string on = condition;
    const std::string here = "a" + std::to_string(i), before = "a" + std::to_string(i - 1);
    for (size_t at; (at = on.find('$')) != std::string::npos;) on.replace(at, 1, here);
    for (size_t at; (at = on.find('@')) != std::string::npos;) on.replace(at, 1, before);
    text += " JOIN Test.Row " + here + " ON " + on;
  }
  return text;
}

INSTANTIATE_TEST_SUITE_P(
    Joins, Limits,
    testing::Values(Case{"Some", JoinChain("$.Id=@.Id", 40), "5 elements"},
                    Case{"Many", JoinChain("$.Id=@.Id", 5000), kAnything},
                    Case{"OfTheFirst", JoinChain("$.Id=a0.Id", 2000), kAnything},
                    Case{"ByParent", JoinChain("$.ATTACHEDTO=@.ITEMID", 5000), kAnything},
                    Case{"OfNothing", JoinChain("1=2", 6000), kAnything},
                    Case{"OfOneAlias",
                         "SELECT a.Id FROM Test.Row a" + Repeat(" JOIN Test.Row a ON a.Id=1", 2000),
                         kAnything}),
    NameOf);

std::string RandomText(uint32_t seed, size_t size, const std::string& alphabet) {
  std::mt19937 random(seed);
  std::string text(size, ' ');
  for (char& c : text) {
    c = alphabet.empty() ? static_cast<char>(random()) : alphabet[random() % alphabet.size()];
  }
  return text;
}

constexpr size_t kMiB = 1024 * 1024;

INSTANTIATE_TEST_SUITE_P(
    NoText, Limits,
    testing::Values(
        Case{"RandomBytes", RandomText(1, kMiB, {}), kSyntaxError},
        Case{"OtherRandomBytes", RandomText(2, kMiB, {}), kSyntaxError},
        Case{"RandomMarks", RandomText(3, 60000, "()+,=.*1a"), kSyntaxError},
        Case{"RandomOpenings", RandomText(4, 60000, "(((1)+"), kSyntaxError},
        Case{"NulBytes", std::string(kMiB, '\0'), kSyntaxError},
        Case{"NulBytesInside",
             std::string("1\0+\0"
                         "2",
                         5),
             "3"},
        Case{"NulBytesInAString", std::string("LEN('a\0b')", 10), "3"},
        Case{"NoUtf8", "LEN('\xFF\xC3\x80\xE2\x82')", "4"},
        Case{"HighBytesOnly", std::string(kMiB, '\xE9'), kSyntaxError},
        Case{"Quotes", std::string(kMiB, '\''), std::string(kMiB / 2 - 1, '\'')},
        Case{"OddQuotes", std::string(kMiB + 1, '\''), kSyntaxError},
        Case{"CommentsOnly", Repeat("/**/", kMiB), kSyntaxError},
        Case{"OpenComment", "/*" + std::string(10 * kMiB, '*'), kSyntaxError},
        Case{"LongWord", std::string(10 * kMiB, 'a'), kSyntaxError},
        Case{"LongNumber", std::string(10 * kMiB, '1'), kSyntaxError},
        Case{"LongString", "'" + std::string(10 * kMiB, 'a') + "'", std::string(10 * kMiB, 'a')},
        Case{"LongStringsLength", "LEN('" + std::string(10 * kMiB, 'a') + "')", "10485760"}),
    NameOf);

// Each name is looked for in every source before the last.
TEST(LimitsOfColumns, ManySourcesBeforeTheOneThatHasTheName) {
  std::string text = "SELECT " + Chain("Name", "+Name", 5000) + " FROM Many(Count=1).Part a";
  for (size_t i = 0; i < 2000; ++i) text += " JOIN Test.Row b ON 1=2";
  text += " JOIN Many(Count=1).Entry c ON 1=2";
  EXPECT_FALSE(RunOnSmallStack(text).empty());
}

// As many groups to skip on the way to each source as a text can hold.
TEST(LimitsOfColumns, SourcesWithNestedGroups) {
  const std::string text = "SELECT " + Chain("Id", "+Id", 8000) +
                           Nest(" FROM Test(First=(SELECT Id", " FROM Test.Row", ")).Row", 2500);
  EXPECT_FALSE(RunOnSmallStack(text).empty());
}

}  // namespace
}  // namespace kestra::test
