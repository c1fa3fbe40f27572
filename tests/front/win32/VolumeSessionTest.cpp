#include <string>

#include "tests/front/SessionFixture.h"
#include "tests/support/TempDirectory.h"

namespace kestra::test {
namespace {

// The library that reads hives is of other systems.
TEST(SessionOverAVolume, IsRefusedWithASentence) {
  const CTempDirectory directory;
  const std::string volume = directory.Path();
  kestra_options options{};
  options.struct_size = sizeof options;
  options.image_directory = volume.c_str();
  kestra_session* session = nullptr;
  EXPECT_EQ(kestra_session_create(&options, &session), KESTRA_E_NOTFOUND);
  EXPECT_EQ(session, nullptr);
  EXPECT_STREQ(kestra_create_error(), "volumes on a disk can be read by Kestra for Linux only");
}

}  // namespace
}  // namespace kestra::test
