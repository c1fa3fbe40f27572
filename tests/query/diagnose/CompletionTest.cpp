// What may stand at a cursor.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "VLib/src/text/Text.h"
#include "query/diagnose/Completion.h"
#include "tests/query/diagnose/DiagnoseRoot.h"

namespace kestra::test {
namespace {

// The text with "@" at the cursor, which is taken out.
Completions CompleteAtMark(std::string text) {
  const size_t cursor = text.find('@');
  text.erase(cursor, 1);
  return Complete(text, cursor, DiagnoseRoot());
}

bool Has(const Completions& completions, std::string_view text) {
  return std::any_of(completions.entries.begin(), completions.entries.end(),
                     [&](const Completion& entry) { return entry.text == text; });
}

struct CompletionCase {
  const char* text;
  const char* begun;    // what is replaced
  const char* with;     // texts that must be there, between blanks
  const char* without;  // texts that must not
};

constexpr CompletionCase kRows[] = {
    // words
    {"@", "", "SELECT INSERT LEN( GETDATE() NOT CREATE", "FROM WHERE Test Text LEN"},
    {"sel@", "sel", "SELECT", "SUBSTRING"},
    {"SELECT @", "", "COUNT( MIN( SUM( LEN( Text PID", "FROM INSERT Test"},
    {"SELECT le@n (Text) FROM Test.Row", "le", "LEN", "LEN("},
    {"SELECT Text F@", "F", "FROM", "FILES"},
    {"SELECT Text, Id FR@", "FR", "FROM", ""},
    {"SELECT Text FROM Test.Row @", "", "WHERE", "JOIN AND FROM"},
    {"SELECT r.Text FROM Test.Row r @", "", "WHERE JOIN", "ON"},
    {"SELECT Text FROM Test.Row WHERE Text I@", "I", "IS IN", "Id ISNULL"},
    {"SELECT DATEPART(@", "", "yy ss", "LEN"},
    {"EXECUTE @", "", "ACTION", "SELECT"},
    // modules and classes
    {"SELECT Text FROM @", "", "Test Many Processes FILES REGISTRY INIFILES", "Row Text SELECT"},
    {"SELECT Text FROM p@", "p", "Processes", "Printers"},
    {"SELECT Text FROM pri@", "pri", "Printers", "Processes"},
    {"SELECT Text FROM te@", "te", "Test", "Many"},
    {"SELECT Text FROM Test.@", "", "Row Part Fixed", "Test Entry WHERE"},
    {"SELECT Text FROM Test.R@ WHERE 'broken", "R", "Row", "Part"},
    {"SELECT Text FROM Test(First=1)#5*.@", "", "Row Part Fixed", ""},
    {"SELECT * FROM FILES.@", "", "FILE(", "File Directory FILE"},
    {"SELECT * FROM FILES.@('/etc/*')", "", "FILE", "FILE("},
    {"SELECT * FROM Files.@", "", "File Directory FileLine", "FILE("},
    {"SELECT * FROM REGISTRY.@", "", "REGISTRYKEY( REGISTRYVALUE(", ""},
    {"SELECT * FROM INIFILES.@", "", "IniKey IniSection", ""},
    {"DROP MODULE Te@", "Te", "Test", ""},
    {"UPDATE @", "", "Test", "SELECT"},
    // columns
    {"SELECT @ FROM Test.Row", "", "Text Id Created COUNT(", "Label Row FROM"},
    {"SELECT te@ FROM Test.Row", "te", "Text", "Id"},
    {"SELECT Te@xt FROM Test.Row", "Te", "Text", ""},
    {"SELECT LEN(@) FROM Test.Row", "", "Text Kind", "Size Created Release"},
    {"SELECT Text FROM Test.Row WHERE @", "", "Text Id NOT", "Label WHERE JOIN"},
    {"SELECT Text FROM Test.Row WHERE Id = @", "", "Size Kind LEN(", "Text Created"},
    {"SELECT Text FROM Test.Row WHERE Created > @", "", "Created GETDATE()", "Text Size"},
    {"SELECT Text FROM Test.Row WHERE Release > @", "", "Other", "Text Size"},
    {"SELECT @ FROM Test.Row r JOIN Test.Part p ON r.Id = p.Owner", "", "Text Label r p", ""},
    {"SELECT PID, LEN(@", "", "Text ImageName", "PID"},
    {"SELECT LEN(@) FROM Processes.Process", "", "ImageName", "Text"},
    {"SELECT p.@", "", "PID Text", "LEN( p"},
    {"SELECT Text FROM Test.Row WHERE Id IN (SELECT @)", "", "Id PID", "Created"},
    {"SELECT Text FROM Test.Row WHERE Id IN (SELECT 1 FROM Test.Part) AND @", "", "Id", "PID"},
    {"SELECT (SELECT @ FROM Test.Part) FROM Test.Row", "", "Label", "PID"},
    {"LEN(@", "", "SUBSTRING(", "Text"},
    {"SELECT p.@ FROM Test.Row r JOIN Test.Part p ON r.Id = p.Owner", "", "Label Owner",
     "Text r p LEN"},
    {"SELECT r.Id FROM Test.Row r JOIN Test.Part p ON r.Id = @", "", "Owner Id r p", "Label"},
    {"SELECT Text FROM Test.Row WHERE Id IN (SELECT Own@ FROM Test.Part)", "Own", "Owner", ""},
    {"SELECT @ FROM FILES.FILE('/etc/*')", "", "FileName Size", "PID"},
    {"SELECT COUNT(*) FROM Processes.Process p WHERE p.@", "", "PID ImageName", "p COUNT"},
    {"SELECT Text FROM Test.Row; SELECT Lab@ FROM Test.Part; x", "Lab", "Label", ""},
    {"UPDATE Test.Row SET @", "", "Text Size Kind", "Id Created LEN"},
    {"INSERT Test.Part (Num@", "Num", "Number", ""},
    {"DELETE Test.Row WHERE Tex@", "Tex", "Text", ""},
    // arguments
    {"SELECT Text FROM Test(@", "", "First= Mode=", "Text LEN"},
    {"SELECT Text FROM Test(First=1, M@).Row", "M", "Mask= Mode=", "First="},
    {"EXECUTE ACTION(SELECT * FROM Test.Row, 'Touch', @)", "", "Step= Note=", "First= LEN("},
    // options
    {"EXECUTE ACTION(SELECT * FROM Test.Row WHERE Id IN (1, 2), @", "", "'Touch' 'Break'", "Text="},
    {"EXECUTE ACTION(SELECT * FROM Test.Row, 't@')", "'t'", "'Touch'", "'Break'"},
    {"EXECUTE ACTION(SELECT * FROM Test.Row WHERE Id IN (1, @", "", "LEN(", "'Touch'"},
    {"SELECT Text FROM Test(Mode=@", "", "'Plain' 'Upper'", "'Alpha'"},
    {"SELECT Text FROM Test(Mode='@').Row", "''", "'Plain' 'Upper'", "LEN"},
    {"SELECT Text FROM Test.Row WHERE Kind = @", "", "'Alpha' 'Gamma' Text", "'Red'"},
    {"SELECT Text FROM Test.Row WHERE Kind = al@", "al", "'Alpha'", "'Beta'"},
    {"SELECT Text FROM Test.Row WHERE Kind = 'be@' AND Id = 1", "'be'", "'Beta'", "'Alpha'"},
    {"SELECT Text FROM Test.Row WHERE Kind = 'be@ AND Text = 'x'", "'be", "'Beta'", "'Alpha'"},
    {"SELECT Text FROM Test.Row WHERE Kind IN ('Alpha', @", "", "'Beta'", "'Red'"},
    {"SELECT Text FROM Test.Row WHERE Kind NOT IN (@)", "", "'Beta'", ""},
    {"SELECT Text FROM Test.Row WHERE Flags LIKE '@", "'", "'Red' 'Blue'", "Flags ''"},
    {"UPDATE Test.Row SET Kind = '@", "'", "'Alpha'", ""},
};

TEST(Completion, OffersWhatFits) {
  for (const CompletionCase& row : kRows) {
    SCOPED_TRACE(row.text);
    std::string text = row.text;
    text.erase(text.find('@'), 1);
    const Completions completions = CompleteAtMark(row.text);
    EXPECT_EQ(text.substr(completions.offset, completions.length), row.begun);
    for (const std::string& with : Split(row.with, ' ')) {
      EXPECT_TRUE(Has(completions, with)) << with;
    }
    for (const std::string& without : Split(row.without, ' ')) {
      EXPECT_TRUE(without.empty() || !Has(completions, without)) << without;
    }
  }
}

TEST(Completion, OffersNothingWhereNothingFits) {
  for (const char* pText : {"1 + 12@", "SELECT 1 /* Te@ */", "SELECT foo bar @", "'text@",
                            "SELECT Text FROM Test.Row WHERE Text = 'a@'", "x ) @"}) {
    EXPECT_TRUE(CompleteAtMark(pText).entries.empty()) << pText;
  }
}

TEST(Completion, ColumnsComeFirstAndHaveDescriptions) {
  const Completions completions = CompleteAtMark("SELECT @ FROM Processes.Process");
  ASSERT_FALSE(completions.entries.empty());
  EXPECT_EQ(completions.entries.front().kind, CompletionKind::Column);
  EXPECT_FALSE(completions.entries.front().description.empty());
  EXPECT_EQ(completions.entries.back().kind, CompletionKind::Keyword);
  const auto isBefore = [](const Completion& a, const Completion& b) {
    return a.kind == b.kind ? CompareNoCase(a.text, b.text) < 0 : a.kind == CompletionKind::Column;
  };
  EXPECT_TRUE(std::is_sorted(completions.entries.begin(), completions.entries.end(), isBefore));
}

}  // namespace
}  // namespace kestra::test
