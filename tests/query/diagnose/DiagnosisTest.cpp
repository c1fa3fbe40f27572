// What the diagnosis says of texts that are wrong, or right and suspicious.
#include <gtest/gtest.h>

#include <algorithm>

#include "platform/os/Event.h"
#include "query/Evaluate.h"
#include "query/diagnose/Completion.h"
#include "query/diagnose/Diagnosis.h"
#include "tests/query/diagnose/DiagnoseRoot.h"
#include "tests/query/unit/ScriptQueries.h"

namespace kestra::test {
namespace {

struct DiagnosisCase {
  const char* text;
  int line;
  int column;
  size_t length;
  const char* piece;       // of the sentence
  const char* suggestion;  // the first; empty for none
};

void Check(const DiagnosisCase& row, bool isError) {
  SCOPED_TRACE(row.text);
  const auto diagnosis = Diagnose(row.text, DiagnoseRoot());
  if (!diagnosis) {
    ADD_FAILURE() << "nothing was found";
    return;
  }
  EXPECT_EQ(diagnosis->isError, isError);
  EXPECT_EQ(diagnosis->line, row.line);
  EXPECT_EQ(diagnosis->column, row.column);
  EXPECT_EQ(diagnosis->length, row.length);
  EXPECT_NE(diagnosis->message.find(row.piece), std::string::npos) << diagnosis->message;
  const std::string first = diagnosis->suggestions.empty() ? "" : diagnosis->suggestions.front();
  EXPECT_EQ(first, row.suggestion);
}

constexpr DiagnosisCase kWrong[] = {
    {"SELCT Text FROM Test.Row", 1, 1, 5,
     "\"SELCT\" is no word of the language; did you mean SELECT?", "SELECT"},
    {"SELECT Text FORM Test.Row", 1, 13, 4,
     "\"FORM\" is no word of the language; did you mean FROM?", "FROM"},
    {"SELECT Text FROM Test.Row WEHRE Id = 1", 1, 27, 5,
     "\"WEHRE\" is no word of the language; did you mean WHERE?", "WHERE"},
    {"SELECT name FROM Many.Entry", 1, 8, 4, "there is no column \"name\" here; did you mean Name?",
     "Name"},
    {"SELECT text FROM Test.Row", 1, 8, 4, "there is no column \"text\" here; did you mean Text?",
     "Text"},
    {"SELECT Txt FROM Test.Row", 1, 8, 3, "there is no column \"Txt\" here; did you mean Text?",
     "Text"},
    {"SELECT name FROM Processes.Process", 1, 8, 4,
     "there is no column \"name\" here; did you mean ImageName,", "ImageName"},
    {"SELECT r.Txt FROM Test.Row r", 1, 10, 3,
     "there is no column \"Txt\" here; did you mean Text?", "Text"},
    {"SELECT x.Text FROM Test.Row r", 1, 8, 1, "there is no alias \"x\" here; there is r", ""},
    {"SELECT Row.Text FROM Test.Row", 1, 8, 3,
     "a column has only an alias before it; write Text alone, or", ""},
    {"SELECT Text FROM Tset.Row", 1, 18, 4, "there is no module \"Tset\"; did you mean Test?",
     "Test"},
    {"SELECT * FROM Tset.Row", 1, 15, 4, "there is no module \"Tset\"; did you mean Test?", "Test"},
    {"SELECT * FROM Proceses.Process", 1, 15, 8,
     "there is no module \"Proceses\"; did you mean Processes?", "Processes"},
    {"SELECT Text FROM test.Row", 1, 18, 4,
     "the module is spelt Test; columns are found under exactly", "Test"},
    {"SELECT Text FROM Test.Rwo", 1, 23, 3, "Test has no class \"Rwo\"; did you mean Row?", "Row"},
    {"SELECT * FROM Process.Process", 1, 15, 7,
     "\"Process\" is a class of the module Processes, and no module", "Processes"},
    {"SELECT Text FROM Test WHERE Id = 1", 1, 18, 4,
     "a class is missing behind Test; write Test.Row, Test.Part or", "Test.Row"},
    {"SELECT * FROM Test", 1, 15, 4, "a class is missing behind Test; write Test.Row, Test.Part or",
     "Test.Row"},
    {"SELECT Size FROM FILES.FILE", 1, 24, 4, "FILES.FILE needs a path: FILES.FILE('...')", ""},
    {"SELECT * FROM FILES", 1, 15, 5, "a class and a path are missing: FILES.FILE('...')",
     "FILES.FILE('...')"},
    {"SELECT * FROM FILES.FIEL('/etc')", 1, 21, 4, "FILES has no class \"FIEL\"; it has FILE",
     "FILE"},
    {"SELECT * FROM INIFILES.IniKey", 1, 24, 6,
     "INIFILES.IniKey needs a path: INIFILES.IniKey('...')", ""},
    {"SELECT * FROM Test(Frist=1).Row", 1, 20, 5,
     "Test has no argument \"Frist\"; did you mean First?", "First"},
    {"SELECT * FROM Test(First='a').Row", 1, 26, 3, "First takes a number", ""},
    {"SELECT * FROM Test(Mode='plane').Row", 1, 25, 7, "Mode takes 'Plain' or 'Upper'", "'Plain'"},
    {"SELECT * FROM Test(First=1, first=2).Row", 1, 29, 5, "the argument first is given twice", ""},
    {"SELECT * FROM Test(First=-1).Row", 1, 26, 2, "there are no negative literals; write 0 - 1",
     "(0 - 1)"},
    {"SELECT Text FROM Test.Row WHERE Text = bash", 1, 40, 4,
     "there is no column \"bash\" here; text stands in quotes:", "'bash'"},
    {"SELECT Text FROM Test.Row WHERE Text = \"bash\"", 1, 40, 6,
     "text stands in single quotes: 'bash'", "'bash'"},
    {"SELECT \"Text\" FROM Test.Row", 1, 8, 6, "names are written without quotes: Text", "Text"},
    {"SELECT Text FROM Test.Row WHERE Text = “bash”", 1, 40, 3,
     "the quote here is a typographic one; text stands in plain", "'"},
    {"SELECT Txt /* “x” ä */ FROM Test.Row", 1, 8, 3, "there is no column \"Txt\" here", "Text"},
    {"SELECT Text FROM Test.Row /* “ */ WHERE Id ≥ 2", 1, 44, 3, "\"≥\" is no mark of", ">="},
    {"5 – 3", 1, 3, 3, "\"–\" is no mark of the language; did you mean -?", "-"},
    {"SELECT r.Id FROM Test.Row r, Test.Part p", 1, 28, 1, "two sources are joined by JOIN", ""},
    {"SELECT Id FROM Test.Row r WHERE r,Id = 1", 1, 33, 1, "r is an alias; a column of its", ""},
    {"SELECT größe FROM Test.Row", 1, 10, 2, "\"ö\" cannot stand outside of a text in quotes", ""},
    {"SELECT Text FROM Test.Row WHERE Größe = 1", 1, 35, 2, "\"ö\" cannot stand outside", ""},
    {"SELECT Text FROM Test.Row WHERE Text = größe", 1, 40, 7, "text stands in quotes: 'größe'",
     "'größe'"},
    {"SELECT Text FROM Test.Row WHERE Text = 日本 AND Id = 1", 1, 40, 6,
     "text stands in quotes: '日本'", "'日本'"},
    {"SEL\x01"
     "ECT Text FROM Test.Row",
     1, 4, 1, "the character U+0001 cannot stand", ""},
    {"SEL\u200B"
     "ECT Text FROM Test.Row",
     1, 4, 3, "the character U+200B cannot stand", ""},
    {"1 + \xFF", 1, 5, 1, "the byte 0xFF cannot stand", ""},
    {"SELECT\u00A0Txt FROM Test.Row", 1, 8, 3, "there is no column \"Txt\" here", "Text"},
    {"SELECT Text FROM Test.Row WHERE Text = 'bash", 1, 40, 1,
     "the text that begins with 'bash has no closing quote", ""},
    {"SELECT Text FROM Test.Row WHERE Text = 'it's'", 1, 40, 6,
     "a quote inside a text is doubled; did you mean 'it''s'?", "'it''s'"},
    {"SELECT Text FROM Test.Row /* all", 1, 27, 2, "the comment that begins here has no \"*/\"",
     ""},
    {"SELECT Text FROM Test.Row WHERE Release > 10.0.19041", 1, 43, 10,
     "there are no fractions, and a version is quoted:", "'10.0.19041'"},
    {"SELECT Text FROM Test.Row WHERE Release = 'new'", 1, 43, 5,
     "Release holds a version; 'new' is no version; one is written", ""},
    {"SELECT Text FROM Test.Row WHERE Created > 2024-01-31", 1, 43, 10,
     "Created holds a date; a date is written in quotes:", "'2024-01-31'"},
    {"SELECT Text FROM Test.Row WHERE Created > '2024-01-31T12:30'", 1, 43, 18,
     "a date is written as '2024-01-31 12:30:00'", "'2024-01-31 12:30:00'"},
    {"SELECT Text FROM Test.Row WHERE Created > '31.1.2024'", 1, 43, 11,
     "a date is written as '2024-01-31'", "'2024-01-31'"},
    {"SELECT Text FROM Test.Row WHERE Created > '2024-02-30'", 1, 43, 12,
     "'2024-02-30' is no moment of the years 1970 to 2106", ""},
    {"SELECT Text FROM Test.Row WHERE Created > 5", 1, 43, 1,
     "Created holds a date; a date is written in quotes:", ""},
    {"SELECT Text FROM Test.Row WHERE '2024-01-01' < Created", 1, 33, 12,
     "a date in quotes stands on the right side of a comparison: x", ""},
    {"SELECT Text FROM Test.Row WHERE Id = -1", 1, 38, 2,
     "there are no negative literals; write 0 - 1", "(0 - 1)"},
    {"SELECT Text FROM Test.Row WHERE Id = 99999999999", 1, 38, 11,
     "the number is too large; the largest is 2147483646", ""},
    {"SELECT Text FROM Test.Row WHERE Id = 0x1F", 1, 38, 4, "numbers are decimal: 31", "31"},
    {"SELECT Text FROM Test.Row WHERE Size > 10KB", 1, 40, 4,
     "\"10KB\" is neither a number nor a name", ""},
    {"SELECT Text FROM Test.Row WHERE Size = 'big'", 1, 40, 5,
     "Size holds a number; a number is wanted here", ""},
    {"SELECT Text FROM Test.Row WHERE Size = '10'", 1, 40, 4,
     "Size holds a number; a number is wanted here, without", "10"},
    {"SELECT Text FROM Test.Row WHERE Text = 10", 1, 40, 2,
     "Text holds text; text is wanted here: '10'", "'10'"},
    {"SELECT Text FROM Test.Row WHERE Text = Size", 1, 40, 4,
     "Size holds a number; text is wanted here: CONVERT(varchar,", "CONVERT(varchar, Size)"},
    {"SELECT Text FROM Test.Row WHERE Size = Text", 1, 40, 4,
     "Text holds text; a number is wanted here: CONVERT(int, Text)", "CONVERT(int, Text)"},
    {"SELECT LEN(Size) FROM Test.Row", 1, 12, 4,
     "Size holds a number; text is wanted here: CONVERT(varchar,", "CONVERT(varchar, Size)"},
    {"SELECT r.Text FROM Test.Row r WHERE r.Text = r.Size", 1, 46, 6,
     "Size holds a number; text is wanted here: CONVERT(varchar,", "CONVERT(varchar, r.Size)"},
    {"SELECT Text FROM Test.Row WHERE Text = Created", 1, 40, 7,
     "Created holds a date; text is wanted here", ""},
    {"SELECT 1", 1, 9, 0, "a SELECT needs FROM Module.Class; to compute a value, write", ""},
    {"SELECT", 1, 7, 0, "a SELECT needs FROM Module.Class", ""},
    {"SELECT FROM Test.Row", 1, 8, 4, "a SELECT needs columns, or \"*\" for all, before FROM", ""},
    {"SELECT Text, FROM Test.Row", 1, 12, 1, "a column is missing behind the comma", ""},
    {"SELECT *, Text FROM Test.Row", 1, 9, 1,
     "\"*\" stands alone in a SELECT; name the columns instead", ""},
    {"SELECT Text FROM Test.Row WHERE Id != 1", 1, 36, 2, "\"not equal\" is written <>", "<>"},
    {"SELECT Text FROM Test.Row WHERE Id == 1", 1, 36, 2, "equality is written with one =", "="},
    {"SELECT Text FROM Test.Row WHERE Id = 1 && Size = 2", 1, 40, 2,
     "two conditions are joined by AND", "AND"},
    {"SELECT Text FROM Test.Row WHERE Id = 1 || Size = 2", 1, 40, 2,
     "two conditions are joined by OR, and two texts by +", "OR"},
    {"SELECT Text FROM Test.Row; SELECT 1", 1, 26, 1,
     "\";\" does not belong to a query: one text is one query", ""},
    {"SELECT Text FROM Test.Row -- all", 1, 27, 2, "a comment is written /* ... */", ""},
    {"SELECT Text FROM Test.Row WHERE Id = 1 # all", 1, 40, 1,
     "\"#\" stands only behind a module, before the age of a cached", ""},
    {"SELECT Text FROM Test.Row LIMIT 5", 1, 27, 5, "there is no LIMIT; a SELECT gives", ""},
    {"SELECT Text FROM Test.Row WHERE Id = 1 LIMIT 5", 1, 40, 5,
     "there is no LIMIT; a SELECT gives", ""},
    {"SELECT Text FROM Test.Row ORDER BY Text", 1, 27, 5,
     "there is no ORDER BY; rows come in the order", ""},
    {"SELECT Text FROM Test.Row GROUP BY Text", 1, 27, 5,
     "there is no GROUP BY; COUNT, MIN, MAX and SUM take all rows", ""},
    {"SELECT DISTINCT Text FROM Test.Row", 1, 8, 8, "there is no DISTINCT; every row is given", ""},
    {"SELECT COUNT(DISTINCT Text) FROM Test.Row", 1, 14, 8,
     "there is no DISTINCT; every row is given", ""},
    {"SELECT TOP 5 Text FROM Test.Row", 1, 8, 3, "there is no TOP; a SELECT gives", ""},
    {"SELECT Text FROM Test.Row WHERE Id BETWEEN 1 AND 2", 1, 36, 7,
     "there is no BETWEEN; write x >= a AND x <= b", ""},
    {"SELECT Text AS t FROM Test.Row", 1, 13, 2,
     "an alias stands behind its source without AS, and columns", ""},
    {"SELECT r.Text FROM Test.Row AS r", 1, 29, 2,
     "an alias stands behind its source without AS, and columns", ""},
    {"SELECT a.Text FROM Test.Row a LEFT JOIN Test.Part b ON a.Id = b.Owner", 1, 31, 4,
     "there is no LEFT JOIN; a JOIN gives the rows that match", ""},
    {"SELECT Text FROM Test.Row UNION SELECT Text FROM Test.Row", 1, 27, 5,
     "there is no UNION; run two queries", ""},
    {"SELECT UPPER(Text) FROM Test.Row", 1, 8, 5,
     "there is no UPPER; texts are compared without regard to case", ""},
    {"SELECT FOO(Size) FROM Test.Row", 1, 8, 3, "there is no function \"FOO\" here", ""},
    {"SELECT CUONT(*) FROM Test.Row", 1, 8, 5,
     "\"CUONT\" is no word of the language; did you mean COUNT?", "COUNT"},
    {"SELECT Text FROM Test.Row WHERE (Id = 1", 1, 33, 1, "there is no \")\" for this \"(\"", ""},
    {"SELECT Text FROM Test.Row WHERE Id = 1)", 1, 39, 1, "there is no \"(\" for this \")\"", ""},
    {"1 + 2)", 1, 6, 1, "there is no \"(\" for this \")\"", ""},
    {"SELECT a.Text FROM Test.Row a JOIN Test.Part b", 1, 47, 0,
     "a JOIN needs ON and a condition, such as ON a.Column =", ""},
    {"SELECT a.Text FROM Test.Row JOIN Test.Part ON Id = Owner", 1, 29, 4,
     "both sources of a JOIN need an alias: FROM A.B x JOIN C.D y", ""},
    {"SELECT a.Text FROM Test.Row a JOIN Test.Part ON a.Id = 1", 1, 46, 2,
     "both sources of a JOIN need an alias: FROM A.B x JOIN C.D y", ""},
    {"SELECT Text FROM Test.Row WHERE Text = NULL", 1, 38, 6, "NULL is asked for by IS NULL",
     "IS NULL"},
    {"SELECT Text FROM Test.Row WHERE Text <> NULL AND Id = 1", 1, 38, 7,
     "NULL is asked for by IS NOT NULL", "IS NOT NULL"},
    {"INSERT Test.Row (Id, Text)", 1, 27, 0,
     "an INSERT needs VALUES (...) or a SELECT behind its columns", ""},
    {"INSERT INTO Test.Row (Id) VALUES (1)", 1, 8, 4, "write INSERT Module.Class without INTO", ""},
    {"INSERT Test.Row VALUES (1)", 1, 17, 6,
     "an INSERT names its columns: INSERT Module.Class (A, B)", ""},
    {"INSERT Test.Row (Idd) VALUES (1)", 1, 18, 3, "Row has no property \"Idd\"; did you mean Id?",
     "Id"},
    {"DELETE FROM Test.Row", 1, 8, 4, "write DELETE Module.Class without FROM", ""},
    {"DELETE Tset.Row", 1, 8, 4, "there is no module \"Tset\"; did you mean Test?", "Test"},
    {"UPDATE Tset.Row SET Size = 1", 1, 8, 4, "there is no module \"Tset\"; did you mean Test?",
     "Test"},
    {"UPDATE Test.Row ST Size = 1", 1, 17, 2,
     "\"ST\" is no word of the language; did you mean SET?", "SET"},
    {"EXECUTE Action(SELECT * FROM Test.Row)", 1, 38, 1,
     "\")\" cannot stand here; expected WHERE, \",\" or an alias", ""},
    {"DROP MODULE Tset", 1, 13, 4, "there is no module \"Tset\"; did you mean Test?", "Test"},
    {"1 +", 1, 4, 0, "the text ends too early; expected a function, a number or a", ""},
    {"1.5", 1, 1, 3, "there are no fractions, and a version is quoted: '1.5'", "'1.5'"},
    {"'a' = ", 1, 6, 0, "the text ends too early; expected a function, text in quotes", ""},
    {"-1", 1, 1, 2, "there are no negative literals; write 0 - 1", "(0 - 1)"},
    {"SELECT Text FROM Test.Row WHERE Id = 1 AND", 1, 43, 0,
     "the text ends too early; expected NOT, a function, a number,", ""},
    {"SELECT Text FROM Test.Row WHERE Id", 1, 35, 0,
     "the text ends too early; expected NOT or an operator", ""},
    {"SELECT Text FROM Test*.Row", 1, 22, 1,
     "columns of a source with \"*\" cannot be named; write an age", "#0*"},
    {"SELECT Text FROM Test.Row WHERE Kind = 'Alpha' AND Flags IN (Red, Green)", 1, 62, 3,
     "there is no column \"Red\" here; text stands in quotes: 'Red'", "'Red'"},
    {"SELECT Text FROM Test.Row WHERE Text IS EMPTY", 1, 41, 5,
     "\"EMPTY\" cannot stand here; expected NOT or NULL", ""},
    {"SELECT Text FROM Test.Row r, Test.Part p", 1, 28, 1,
     "two sources are joined by JOIN: FROM A.B x JOIN C.D y ON ...", ""},
    {"SELECT Text FROM Test.Row WHERE Text LIKE 5", 1, 43, 1,
     "Text holds text; text is wanted here: '5'", "'5'"},
    {"SELECT Text FROM (SELECT * FROM Test.Row)", 1, 18, 1,
     "FROM takes a Module.Class; a SELECT cannot stand in its", ""},
    {"DATEADD(year, 1, GETDATE())", 1, 9, 4, "this part of a date is called yy", "yy"},
    {"SELECT Text FROM Test.Row WHERE Text = BÄR", 1, 40, 4, "text stands in quotes: 'BÄR'",
     "'BÄR'"},
    {"SELECT a.Text FROM Test.Row a WHERE a.Id IN (1, 2, x)", 1, 52, 1,
     "there is no column \"x\" here; a number is wanted", ""},
    {"SELECT Name FROM FILES.FILE('/etc/*')", 1, 8, 4,
     "there is no column \"Name\" here; did you mean ResName,", "ResName"},
    {"SELECT FileName FROM FILES.FILE('/etc/*') WHERE Size > '1'", 1, 56, 3,
     "Size holds a number; a number is wanted here, without", "1"},
    {"EXECUTE Action(SELECT * FROM Proceses.Process, 'x')", 1, 30, 8,
     "there is no module \"Proceses\"; did you mean Processes?", "Processes"},
    {"INSERT Test.Fixed (Number) VALUES (1)", 1, 13, 5, "items of the class Fixed cannot be added",
     ""},
    {"SELECT MAX(Text, Id) FROM Test.Row", 1, 16, 1,
     "\",\" cannot stand here; expected \")\" or \"+\"", ""},
    {"", 1, 1, 0, "the text is empty", ""},
    {"  /* x */ ", 1, 1, 0, "the text is empty", ""},
    {"SELECT Text\n  FROM Test.Row\n\tWHERE Id = bad", 3, 13, 3,
     "there is no column \"bad\" here; a number is wanted", ""},
    {"select id from test.row", 1, 16, 4, "the module is spelt Test", "Test"},
    {"SELECT Text FROM Test.Row WHERE Release LIKE '1*'", 1, 33, 7,
     "Release holds a version, and LIKE takes text", "CONVERT(varchar, Release)"},
    {"SELECT r.Id FROM Test.Row r WHERE r.Size LIKE '1*'", 1, 35, 6, "Size holds a number",
     "CONVERT(varchar, r.Size)"},
    {"SELECT Text FROM Test(First=true).Row", 1, 29, 4, "no literals TRUE and FALSE", "1"},
    {"SELECT PID FROM Processes.Process WHERE ParentPID = 1", 1, 41, 9, "no column",
     "ParentProcessID"},
    {".modules", 1, 1, 8, "a query does not begin with a dot", ""},
};

TEST(Diagnosis, TellsWhatIsWrong) {
  for (const DiagnosisCase& row : kWrong) Check(row, true);
}

// These parse, and can be run.
constexpr DiagnosisCase kSuspicious[] = {
    {"SELECT * FROM Test.Rwo", 1, 20, 3, "Test has no class \"Rwo\"; did you mean Row?", "Row"},
    {"SELECT * FROM FILES.FILE", 1, 21, 4, "FILES.FILE needs a path: FILES.FILE('...')", ""},
    {"SELECT Text FROM Test.Row WHERE Text LIKE '%one%'", 1, 43, 7,
     "the wildcards of LIKE are * and ?; did you mean '*one*'?", "'*one*'"},
    {"SELECT Text FROM Test.Row WHERE Text LIKE 'a_b'", 1, 43, 5,
     "the wildcards of LIKE are * and ?; did you mean 'a?b'?", "'a?b'"},
    {"UPDATE Test.Row SET Szie = 1", 1, 21, 4, "Row has no property \"Szie\"; did you mean Size?",
     "Size"},
    {"SELECT Text FROM Test.Row WHERE", 1, 27, 5,
     "\"WHERE\" is an alias here, since nothing follows it", ""},
    {"INSERT Test.Row (Idd, Text) SELECT Id, Text FROM Test.Row", 1, 18, 3,
     "Row has no property \"Idd\"; did you mean Id?", "Id"},
    {"UPDATE Test.Row SET Kind = 'Alfa' WHERE Id = 1", 1, 28, 6,
     "Kind takes 'Alpha', 'Beta' or 'Gamma'", "'Alpha'"},
    {"SELECT Text FROM Test.Row WHERE Id IN (SELECT Owner FROM Test(Frist=1).Part)", 1, 63, 5,
     "Test has no argument \"Frist\"; did you mean First?", "First"},
    {"SELECT * FROM INIFILES.Key('/etc/x')", 1, 24, 3,
     "INIFILES has no class \"Key\"; did you mean IniKey?", "IniKey"},
};

TEST(Diagnosis, TellsWhatIsSuspicious) {
  for (const DiagnosisCase& row : kSuspicious) Check(row, false);
}

TEST(Diagnosis, TellsWhatWouldHaveBeenAccepted) {
  const struct {
    const char* text;
    std::vector<std::string> expected;
  } cases[] = {
      {"SELECT Text FROM Test.Row WHERE LEN(Size) = 1",
       {"a column that holds text", "text in quotes", "SUBSTRING", "("}},
      {"SELECT * FROM Test.Row r r", {"WHERE", "JOIN", "the end of the text"}},
      {"SELECT * FROM 5", {"a module name", "FILES", "REGISTRY", "INIFILES"}},
      {"1 +", {"a number", "a column that holds a number", "LEN"}},
      {"SELECT Text FROM Test.Row WHERE Created > 5", {"a date in quotes", "GETDATE"}},
  };
  for (const auto& test : cases) {
    const auto diagnosis = Diagnose(test.text, DiagnoseRoot());
    ASSERT_TRUE(diagnosis) << test.text;
    for (const std::string& text : test.expected) {
      EXPECT_NE(std::find(diagnosis->expected.begin(), diagnosis->expected.end(), text),
                diagnosis->expected.end())
          << test.text << ": " << text;
    }
  }
}

// A suggestion that stands for a token mends the text, where that was its only fault.
TEST(Diagnosis, SuggestionsMendTheText) {
  size_t mended = 0;
  for (const DiagnosisCase& row : kWrong) {
    const auto diagnosis = Diagnose(row.text, DiagnoseRoot());
    if (!diagnosis || diagnosis->suggestions.empty()) continue;
    std::string text = row.text;
    text.replace(diagnosis->offset, diagnosis->length, diagnosis->suggestions.front());
    const auto after = Diagnose(text, DiagnoseRoot());
    if (!after || !after->isError) ++mended;
    EXPECT_FALSE(after && after->offset == diagnosis->offset &&
                 after->message == diagnosis->message)
        << text;
  }
  EXPECT_GT(mended, 20u);
}

TEST(Diagnosis, IsSilentAboutGoodTexts) {
  for (const char* pText :
       {"1 + 1", "SELECT Text FROM Test.Row WHERE Text LIKE '*100%*'",
        "SELECT Text FROM Test(First=1, Mode='Upper', Mask='One|Two').Row",
        "UPDATE Test.Row SET Size = 1, Kind = 'Beta' WHERE Id = 1",
        "INSERT Test.Part (ATTACHEDTO, Number) VALUES (SELECT r.ITEMID FROM Test.Row r WHERE "
        "r.Id = 1, 5)",
        "SELECT IniKey.Name FROM INIFILES.IniKey('/etc/x') IniKey",
        "SELECT Text FROM Files(FilePath='/etc/passwd', LineFrom=1).FileLine"}) {
    const auto diagnosis = Diagnose(pText, DiagnoseRoot());
    EXPECT_FALSE(diagnosis) << pText << ": " << diagnosis->message;
  }
}

// What is said to fail whenever it is run does fail, and every prefix of every query is looked at.
TEST(Diagnosis, AgreesWithTheScripts) {
  for (const ScriptQuery& query : ReadScriptQueries(KESTRA_QUERY_SCRIPTS)) {
    SCOPED_TRACE(query.place + " " + query.text);
    Value parsed;
    EvaluateQuery(parsed, query.text, DiagnoseRoot(), 0, nullptr);
    const auto diagnosis = Diagnose(query.text, DiagnoseRoot());
    if (parsed.IsError()) {
      EXPECT_TRUE(diagnosis && diagnosis->isError);
    } else if (diagnosis && diagnosis->isError) {
      Value result;
      EvaluateQuery(result, query.text, DiagnoseRoot(), 2000, nullptr);
      EXPECT_TRUE(result.IsError()) << diagnosis->message;
    }
    for (size_t length = 0; length <= query.text.size(); ++length) {
      const std::string prefix = query.text.substr(0, length);
      const auto cut = Diagnose(prefix, DiagnoseRoot());
      if (cut) {
        EXPECT_LE(cut->offset + cut->length, length);
        EXPECT_FALSE(cut->message.empty());
        EXPECT_EQ(cut->message.find('\n'), std::string::npos);
      }
      const Completions completions = Complete(query.text, length, DiagnoseRoot());
      EXPECT_LE(completions.offset, length);
      EXPECT_LE(completions.offset + completions.length, query.text.size());
      Complete(prefix, length, DiagnoseRoot());
    }
    if (HasFailure()) return;
  }
}

// The longest texts, and deep ones: each ends in the time of a parse or two.
TEST(Diagnosis, LooksAtLongTexts) {
  const auto repeated = [](const char* pText, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) text += pText;
    return text;
  };
  for (const std::string& text :
       {repeated("'a',", 32000) + "b", repeated("(", 10000), repeated("NOT ", 65535),
        repeated("1 + ", 40000), repeated("'", 70001), repeated("UPDATE Test.Row SET A = 1 ", 8000),
        repeated("SELECT * FROM Test(First=(", 2000), repeated("FROM a.b ", 16000),
        "SELECT Id FROM Test.Row WHERE " + repeated("id = 1 AND ", 16000) + "Id == 1"}) {
    const auto diagnosis = Diagnose(text, DiagnoseRoot());
    ASSERT_TRUE(diagnosis);
    EXPECT_LT(diagnosis->message.size(), 1000u);
    Complete(text, text.size(), DiagnoseRoot());
  }
}

TEST(Diagnosis, EndsWhenItIsCancelled) {
  const auto event = MakeRef<os::CEvent>();
  event->Set();
  std::string text;
  for (int i = 0; i < 30000; ++i) text += "'a',";
  EXPECT_FALSE(Diagnose(text + "b", DiagnoseRoot(), MakeRef<QueryMessage>(event, false)));
}

}  // namespace
}  // namespace kestra::test
