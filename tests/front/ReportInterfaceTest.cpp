// What happened, what would happen, and what is happening.
#include <chrono>
#include <cstring>
#include <thread>

#include "tests/front/SessionFixture.h"
#include "tests/support/SystemWords.h"

namespace kestra::test {
namespace {

class ReportInterface : public CInterfaceTest {
 protected:
  kestra_source_info Source(int32_t number) {
    kestra_source_info info{};
    info.struct_size = sizeof info;
    EXPECT_EQ(kestra_session_source(session, number, &info), KESTRA_OK);
    return info;
  }
};

TEST_F(ReportInterface, TellsWhatCouldNotBeRead) {
  EXPECT_EQ(TextOf("SELECT COUNT(*) FROM Broken.Entry"), "<ERROR>");
  const kestra_source_info info = Source(0);
  EXPECT_EQ(info.is_filled, 0);
  EXPECT_EQ(info.problem_count, 1);
  const char* subject = nullptr;
  const char* reason = nullptr;
  EXPECT_EQ(kestra_session_source_problem(session, 0, 0, &subject, &reason), KESTRA_OK);
  EXPECT_STREQ(subject, "Broken");
  EXPECT_EQ(InWordsOfWindows(reason), "The device is not ready.");
  for (const auto& [source, problem] : {std::pair{0, 1}, {0, -1}, {1, 0}, {-1, 0}}) {
    EXPECT_EQ(kestra_session_source_problem(session, source, problem, &subject, &reason),
              KESTRA_E_INVALIDARG);
  }
  EXPECT_EQ(kestra_session_source_problem(session, 0, 0, nullptr, &reason), KESTRA_E_POINTER);
}

TEST_F(ReportInterface, TellsTheTimesOfTheLastQuery) {
  TextOf("SELECT COUNT(*) FROM Slow(Duration=30).Entry");
  uint64_t parse = 0, total = 0;
  EXPECT_EQ(kestra_session_query_times(session, &parse, &total), KESTRA_OK);
  EXPECT_GE(total, 25000u);
  EXPECT_LT(parse, total);
  EXPECT_GE(Source(0).microseconds, 25000u);
  EXPECT_LE(Source(0).microseconds, total);
  EXPECT_EQ(kestra_session_query_times(session, nullptr, nullptr), KESTRA_OK);
  EXPECT_EQ(kestra_session_query_times(nullptr, &parse, &total), KESTRA_E_POINTER);
}

TEST_F(ReportInterface, ExplainsWithoutRunning) {
  const char* const query = "SELECT * FROM Broken.Entry";
  const char* text = nullptr;
  EXPECT_EQ(kestra_session_explain(session, query, std::strlen(query), &text), KESTRA_OK);
  EXPECT_STREQ(text,
               "SELECT *: the rows\n  read Broken.Entry\n    content: what is in memory, else "
               "filled\n");
  EXPECT_EQ(kestra_session_explain(session, "SELECT", 6, &text), KESTRA_E_INVALIDARG);
  EXPECT_EQ(kestra_session_explain(session, query, 3, &text), KESTRA_E_INVALIDARG);
  EXPECT_EQ(kestra_session_explain(session, nullptr, 0, &text), KESTRA_E_POINTER);
}

TEST_F(ReportInterface, TellsWhichModulesCanShowAnything) {
  const struct {
    const char* name;
    int32_t state;
  } cases[] = {{"Files", KESTRA_MODULE_READY},
               {"pROCESSES", KESTRA_MODULE_READY},
               {"Registry", KESTRA_MODULE_NOT_HERE},
               {"DMI", KESTRA_MODULE_NOT_BUILT}};
  int32_t state = -1;
  for (const auto& c : cases) {
    EXPECT_EQ(kestra_session_module_state(session, c.name, &state), KESTRA_OK) << c.name;
    EXPECT_EQ(state, c.state) << c.name;
  }
  EXPECT_EQ(kestra_session_module_state(session, "Nonsense", &state), KESTRA_E_NOTFOUND);
  EXPECT_EQ(kestra_session_module_state(session, "", &state), KESTRA_E_NOTFOUND);
}

// From another thread, while a module is filled; and nothing before and after.
TEST_F(ReportInterface, TellsWhatIsFilled) {
  char what[32] = "as it was";
  EXPECT_EQ(kestra_session_progress(session, what, sizeof what, nullptr, nullptr),
            KESTRA_E_NOTFOUND);
  EXPECT_STREQ(what, "as it was");
  bool wasSeen = false, wasCut = false;
  std::thread reader([&] {
    for (int i = 0; i < 5000 && !(wasSeen && wasCut); ++i) {
      uint64_t done = 7, total = 7;
      char part[3] = "";
      if (kestra_session_progress(session, what, sizeof what, &done, &total) == KESTRA_OK)
        wasSeen = std::string_view(what) == "Slow" && done == 0 && total == 0;
      if (kestra_session_progress(session, part, sizeof part, nullptr, nullptr) == KESTRA_OK)
        wasCut = std::string_view(part) == "Sl";
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    kestra_session_cancel_query(session);
  });
  EXPECT_EQ(TextOf("SELECT COUNT(*) FROM Slow.Entry"), "<ERROR>");
  reader.join();
  EXPECT_TRUE(wasSeen);
  EXPECT_TRUE(wasCut);
  EXPECT_EQ(Source(0).is_cut_short, 1);
  EXPECT_EQ(Source(0).is_filled, 0);
  EXPECT_EQ(Source(0).problem_count, 0);
  EXPECT_EQ(kestra_session_progress(session, what, sizeof what, nullptr, nullptr),
            KESTRA_E_NOTFOUND);
}

}  // namespace
}  // namespace kestra::test
