// Diagnosis and completion through the C interface.
#include <cstring>

#include "tests/front/SessionFixture.h"

namespace kestra::test {
namespace {

using DiagnosisInterface = CInterfaceTest;

TEST_F(DiagnosisInterface, TellsOfABadText) {
  const std::string query = "SELECT Text\nFROM Test.Row WHERE \xC3\xBC = Txt";
  kestra_diagnosis* diagnosis = nullptr;
  ASSERT_EQ(kestra_session_diagnose(session, query.data(), query.size(), &diagnosis), KESTRA_OK);
  int32_t isError = 0, line = 0, column = 0, count = 0;
  size_t offset = 0, length = 0;
  EXPECT_EQ(kestra_diagnosis_is_error(diagnosis, &isError), KESTRA_OK);
  EXPECT_EQ(isError, 1);
  EXPECT_EQ(kestra_diagnosis_place(diagnosis, &offset, &length, &line, &column), KESTRA_OK);
  EXPECT_EQ(kestra_diagnosis_place(diagnosis, nullptr, nullptr, nullptr, nullptr), KESTRA_OK);
  EXPECT_EQ(query.substr(offset, length), "\xC3\xBC");
  EXPECT_EQ(line, 2);
  EXPECT_EQ(column, 21);  // characters, not bytes
  const char* text = nullptr;
  EXPECT_EQ(kestra_diagnosis_message(diagnosis, &text), KESTRA_OK);
  EXPECT_NE(std::strlen(text), 0u);
  EXPECT_EQ(kestra_diagnosis_expected_count(diagnosis, &count), KESTRA_OK);
  EXPECT_GT(count, 0);
  EXPECT_EQ(kestra_diagnosis_expected(diagnosis, count - 1, &text), KESTRA_OK);
  EXPECT_EQ(kestra_diagnosis_expected(diagnosis, count, &text), KESTRA_E_INVALIDARG);
  EXPECT_EQ(kestra_diagnosis_suggestion_count(diagnosis, &count), KESTRA_OK);
  EXPECT_EQ(kestra_diagnosis_suggestion(diagnosis, count, &text), KESTRA_E_INVALIDARG);
  EXPECT_EQ(kestra_diagnosis_suggestion(diagnosis, -1, &text), KESTRA_E_INVALIDARG);
  EXPECT_EQ(kestra_diagnosis_release(diagnosis), KESTRA_OK);
}

TEST_F(DiagnosisInterface, SuggestsAndHasNothingToSay) {
  kestra_diagnosis* diagnosis = nullptr;
  const std::string bad = "SELECT text FROM Test.Row";
  ASSERT_EQ(kestra_session_diagnose(session, bad.data(), bad.size(), &diagnosis), KESTRA_OK);
  const char* text = nullptr;
  EXPECT_EQ(kestra_diagnosis_suggestion(diagnosis, 0, &text), KESTRA_OK);
  EXPECT_STREQ(text, "Text");
  kestra_diagnosis_release(diagnosis);
  EXPECT_EQ(kestra_session_diagnose(session, "1", 1, &diagnosis), KESTRA_E_NOTFOUND);
  EXPECT_EQ(diagnosis, nullptr);
  EXPECT_EQ(kestra_session_diagnose(nullptr, "1", 1, &diagnosis), KESTRA_E_POINTER);
  EXPECT_EQ(kestra_session_diagnose(session, nullptr, 0, &diagnosis), KESTRA_E_POINTER);
}

TEST_F(DiagnosisInterface, Completes) {
  const std::string query = "SELECT Te FROM Test.Row";
  kestra_completions* completions = nullptr;
  ASSERT_EQ(kestra_session_complete(session, query.data(), query.size(), 9, &completions),
            KESTRA_OK);
  size_t offset = 0, length = 0;
  int32_t count = 0, kind = -1;
  const char* text = nullptr;
  const char* description = nullptr;
  EXPECT_EQ(kestra_completions_place(completions, &offset, &length), KESTRA_OK);
  EXPECT_EQ(query.substr(offset, length), "Te");
  EXPECT_EQ(kestra_completions_count(completions, &count), KESTRA_OK);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(kestra_completions_text(completions, 0, &text, &kind, &description), KESTRA_OK);
  EXPECT_STREQ(text, "Text");
  EXPECT_EQ(kind, KESTRA_COMPLETION_COLUMN);
  EXPECT_EQ(kestra_completions_text(completions, 1, &text, nullptr, nullptr), KESTRA_E_INVALIDARG);
  EXPECT_EQ(kestra_completions_release(completions), KESTRA_OK);
  EXPECT_EQ(kestra_session_complete(session, "SE", 2, 3, &completions), KESTRA_E_INVALIDARG);
  EXPECT_EQ(completions, nullptr);
}

// The text is looked at, and no module is filled for it.
TEST_F(DiagnosisInterface, FillsNothing) {
  const std::string query = "SELECT x FROM Many.Entry WHERE Id = (SELECT Id FROM Many.Entry";
  kestra_diagnosis* diagnosis = nullptr;
  EXPECT_EQ(kestra_session_diagnose(session, query.data(), query.size(), &diagnosis), KESTRA_OK);
  kestra_diagnosis_release(diagnosis);
  kestra_completions* completions = nullptr;
  EXPECT_EQ(kestra_session_complete(session, query.data(), query.size(), 7, &completions),
            KESTRA_OK);
  kestra_completions_release(completions);
  EXPECT_EQ(TextOf("SELECT COUNT(*) FROM Many.Entry"), "1000");
  kestra_source_info info{};
  info.struct_size = sizeof info;
  ASSERT_EQ(kestra_session_source(session, 0, &info), KESTRA_OK);
  EXPECT_EQ(info.fill, KESTRA_FILL_MACHINE);
}

}  // namespace
}  // namespace kestra::test
