// Where a result came from, and where a session's modules come from.
#include "platform/machine/Machine.h"
#include "tests/front/SessionFixture.h"
#include "tests/support/TempDirectory.h"

namespace kestra::test {
namespace {

class SourcesInterface : public testing::Test {
 protected:
  ~SourcesInterface() override { kestra_session_destroy(session); }

  kestra_session* NewSession() const {
    return MakeSession({ModulesWithTests(), LiveMachine(), m_cache.Path()});
  }
  std::string TextOf(kestra_session* asked, const char* pQuery) {
    kestra_value* value = nullptr;
    EXPECT_EQ(kestra_session_run_query_sync(asked, pQuery, nullptr, KESTRA_NO_TIMEOUT, &value),
              KESTRA_OK);
    return CInterfaceTextOf(value);
  }
  // "Many(Count=5) 2" for each source.
  static std::string SourcesOf(kestra_session* asked) {
    int32_t count = 0;
    EXPECT_EQ(kestra_session_source_count(asked, &count), KESTRA_OK);
    std::string text;
    for (int32_t i = 0; i < count; ++i) {
      const char* pModule = nullptr;
      const char* pArguments = nullptr;
      int32_t fill = -1;
      EXPECT_EQ(kestra_session_source(asked, i, &pModule, &pArguments, &fill), KESTRA_OK);
      text += std::string(pModule) + "(" + pArguments + ") " + std::to_string(fill) + ";";
    }
    return text;
  }

  CTempDirectory m_cache;
  kestra_session* session = NewSession();

 private:
  static std::string CInterfaceTextOf(kestra_value* value) {
    const char* pText = nullptr;
    EXPECT_EQ(kestra_value_as_string(value, &pText, nullptr), KESTRA_OK);
    std::string text(pText);
    kestra_value_release(value);
    return text;
  }
};

TEST_F(SourcesInterface, TellWhereTheContentCameFrom) {
  const char* const query =
      "SELECT COUNT(*) FROM Many(Count=5)#60.Entry a JOIN Many(Count=7).Entry b ON a.Id = b.Id";
  EXPECT_EQ(TextOf(session, query), "5");
  EXPECT_EQ(SourcesOf(session), "Many(Count=5) 0;Many(Count=7) 0;");
  EXPECT_EQ(TextOf(session, query), "5");
  EXPECT_EQ(SourcesOf(session), "Many(Count=5) 1;Many(Count=7) 1;");
  kestra_session* second = NewSession();
  EXPECT_EQ(TextOf(second, query), "5");
  EXPECT_EQ(SourcesOf(second), "Many(Count=5) 2;Many(Count=7) 0;");
  // A change wants the module as it is now.
  EXPECT_EQ(kestra_session_allow_active(second, 1), KESTRA_OK);
  TextOf(second, "UPDATE Many(Count=5)#60.Entry SET Name = 'x' WHERE Id = 99");
  EXPECT_EQ(SourcesOf(second), "Many(Count=5) 0;");
  EXPECT_EQ(TextOf(second, "1 + 1"), "2");
  EXPECT_EQ(SourcesOf(second), "");
  const char* pText = nullptr;
  int32_t fill = 0;
  for (const int32_t number : {-1, 0, 1}) {
    EXPECT_EQ(kestra_session_source(second, number, &pText, &pText, &fill), KESTRA_E_INVALIDARG);
  }
  kestra_session_destroy(second);
}

TEST_F(SourcesInterface, PluginDirectoriesMakeTheRootAnew) {
  const std::string notes = m_cache.Write("notes", "call Ann\n");
  const std::string plugin = "(SELECT COUNT(*) FROM Notes(File='" + notes + "').Note) = 1";
  // Whether the module had to be filled for a query.
  const auto fill = [&] {
    EXPECT_EQ(TextOf(session, "SELECT COUNT(*) FROM Test.Row"), "5");
    return SourcesOf(session);
  };
  EXPECT_EQ(fill(), "Test() 0;");
  // What is no directory changes nothing, nor does clearing when there is none.
  const std::string file = m_cache.Write("file", "");
  EXPECT_EQ(kestra_session_set_plugins_dir(session, file.c_str()), KESTRA_E_NOTFOUND);
  EXPECT_EQ(kestra_session_set_plugins_dir(session, "/no/such"), KESTRA_E_NOTFOUND);
  EXPECT_EQ(kestra_session_set_plugins_dir(session, ""), KESTRA_E_NOTFOUND);
  EXPECT_EQ(kestra_session_clear_plugins(session), KESTRA_OK);
  EXPECT_EQ(fill(), "Test() 1;");
  EXPECT_EQ(TextOf(session, plugin.c_str()), "<ERROR: Syntax error>");
  EXPECT_EQ(kestra_session_set_plugins_dir(session, KESTRA_EXAMPLE_PLUGINS "///"), KESTRA_OK);
  EXPECT_EQ(fill(), "Test() 0;");
  EXPECT_EQ(fill(), "Test() 1;");
  EXPECT_EQ(TextOf(session, plugin.c_str()), "True");
  EXPECT_EQ(kestra_session_clear_plugins(session), KESTRA_OK);
  EXPECT_EQ(fill(), "Test() 0;");
  EXPECT_EQ(TextOf(session, plugin.c_str()), "<ERROR: Syntax error>");
}

}  // namespace
}  // namespace kestra::test
