#include <filesystem>
#include <string>

#include "tests/front/SessionFixture.h"
#include "tests/support/TempDirectory.h"

namespace kestra::test {
namespace {

// Windows folder and hive are there, and the hive is none: enough to be taken for a system.
TEST(SessionOverAVolume, IsMadeOrRefusedWithASentence) {
  const CTempDirectory directory;
  const std::string empty = directory / "empty", volume = directory / "volume";
  std::filesystem::create_directories(empty);
  std::filesystem::create_directories(volume + "/WINDOWS/System32/config");
  WriteWholeFile(volume + "/WINDOWS/System32/config/software", "no hive");
  kestra_options options{};
  options.struct_size = sizeof options;
  kestra_session* session = nullptr;
  for (const std::string& none : {empty, directory / "nowhere", volume + "/WINDOWS"}) {
    options.image_directory = none.c_str();
    EXPECT_EQ(kestra_session_create(&options, &session), KESTRA_E_NOTFOUND) << none;
    EXPECT_NE(std::string_view(kestra_create_error()).find(none), std::string_view::npos);
  }
  options.image_directory = "";
  EXPECT_EQ(kestra_session_create(&options, &session), KESTRA_E_INVALIDARG);
  options.image_directory = volume.c_str();
  options.cache_directory = empty.c_str();
  EXPECT_EQ(kestra_session_create(&options, &session), KESTRA_E_INVALIDARG);
  options.cache_directory = nullptr;
  options.image_directory = nullptr;
  options.image_user = "alice";
  EXPECT_EQ(kestra_session_create(&options, &session), KESTRA_E_INVALIDARG);
  options.image_user = nullptr;
  options.image_directory = volume.c_str();
  options.struct_size = 0;
  EXPECT_EQ(kestra_session_create(&options, &session), KESTRA_E_INVALIDARG);
  EXPECT_STRNE(kestra_create_error(), "");
  options.struct_size = sizeof options;
  ASSERT_EQ(kestra_session_create(&options, &session), KESTRA_OK);
  EXPECT_STREQ(kestra_create_error(), "");
  EXPECT_EQ(kestra_session_set_plugins_dir(session, empty.c_str()), KESTRA_E_INVALIDARG);
  const char* text = nullptr;
  EXPECT_EQ(kestra_session_next_notice(session, &text), KESTRA_E_NOTFOUND);
  kestra_value* value = nullptr;
  const char* const query = "SELECT Name FROM REGISTRY.REGISTRYKEY('HKLM\\Software\\*')";
  EXPECT_EQ(kestra_session_run_query_sync(session, query, nullptr, KESTRA_NO_TIMEOUT, &value),
            KESTRA_OK);
  kestra_value_release(value);
  std::string notices;
  while (kestra_session_next_notice(session, &text) == KESTRA_OK) notices += text;
  EXPECT_NE(notices.find("SOFTWARE is no registry file"), std::string::npos) << notices;
  kestra_session_destroy(session);
}

}  // namespace
}  // namespace kestra::test
