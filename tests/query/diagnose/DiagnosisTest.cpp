// What the diagnosis says of texts that are wrong, or right and suspicious.
#include <gtest/gtest.h>

#include <algorithm>

#include "platform/os/Event.h"
#include "query/Evaluate.h"
#include "query/diagnose/Completion.h"
#include "query/diagnose/Diagnosis.h"
#include "tests/query/diagnose/DiagnoseRoot.h"
#include "tests/query/diagnose/DiagnosisCases.h"
#include "tests/query/unit/ScriptQueries.h"

namespace kestra::test {
namespace {

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

TEST(Diagnosis, TellsWhatIsWrong) {
  for (const DiagnosisCase& row : kWrong) Check(row, true);
}

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
