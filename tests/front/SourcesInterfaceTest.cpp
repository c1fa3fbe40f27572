// Where a result came from, and where a session's modules come from.
#include <chrono>
#include <cstddef>
#include <cstring>
#include <filesystem>

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
      const kestra_source_info info = SourceOf(asked, i);
      text +=
          std::string(info.name) + "(" + info.arguments + ") " + std::to_string(info.fill) + ";";
    }
    return text;
  }
  static kestra_source_info SourceOf(kestra_session* asked, int32_t number) {
    kestra_source_info info{};
    info.struct_size = sizeof info;
    EXPECT_EQ(kestra_session_source(asked, number, &info), KESTRA_OK);
    return info;
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
  kestra_source_info info{};
  info.struct_size = sizeof info;
  for (const int32_t number : {-1, 0, 1}) {
    EXPECT_EQ(kestra_session_source(second, number, &info), KESTRA_E_INVALIDARG);
  }
  kestra_session_destroy(second);
}

TEST_F(SourcesInterface, TellHowOldACacheFileIs) {
  const char* const query = "SELECT COUNT(*) FROM Many(Count=5)#600.Entry WHERE Id < 2";
  TextOf(session, query);
  const auto backdate = std::chrono::seconds(100);
  for (const auto& entry : std::filesystem::directory_iterator(m_cache.Path())) {
    std::filesystem::last_write_time(entry, entry.last_write_time() - backdate);
  }
  kestra_session* second = NewSession();
  TextOf(second, query);
  const kestra_source_info info = SourceOf(second, 0);
  EXPECT_EQ(info.fill, KESTRA_FILL_CACHE_FILE);
  EXPECT_GE(info.age_seconds, 100u);
  EXPECT_LE(info.age_seconds, 110u);
  EXPECT_EQ(info.rows_seen, 5u);
  EXPECT_EQ(info.rows_kept, 2u);
  // As memory it grows no younger.
  TextOf(second, query);
  EXPECT_GE(SourceOf(second, 0).age_seconds, 100u);
  kestra_session_destroy(second);
}

// A caller that was built with fewer members, or with more, gets those that both know.
TEST_F(SourcesInterface, FillsAsMuchOfTheStructAsTheCallerHas) {
  TextOf(session, "SELECT COUNT(*) FROM Many(Count=5).Entry");
  struct {
    kestra_source_info info;
    char more[16];
  } larger;
  std::memset(&larger, 'x', sizeof larger);
  larger.info.struct_size = sizeof larger;
  EXPECT_EQ(kestra_session_source(session, 0, &larger.info), KESTRA_OK);
  EXPECT_STREQ(larger.info.name, "Many");
  EXPECT_EQ(larger.info.struct_size, sizeof larger);
  EXPECT_EQ(larger.more[0], 'x');
  kestra_source_info smaller;
  std::memset(&smaller, 'x', sizeof smaller);
  smaller.struct_size = offsetof(kestra_source_info, fill);
  EXPECT_EQ(kestra_session_source(session, 0, &smaller), KESTRA_OK);
  EXPECT_STREQ(smaller.arguments, "Count=5");
  EXPECT_EQ(smaller.struct_size, offsetof(kestra_source_info, fill));
  EXPECT_EQ(smaller.fill, 0x78787878);
  smaller.struct_size = 0;
  EXPECT_EQ(kestra_session_source(session, 0, &smaller), KESTRA_E_INVALIDARG);
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
