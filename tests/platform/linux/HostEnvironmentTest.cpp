#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

#include "platform/os/HostEnvironment.h"
#include "tests/support/TempDirectory.h"

namespace kestra::os {
namespace {

using test::CTempDirectory;
namespace fs = std::filesystem;

class TemporaryDirectoryTest : public testing::Test {
 protected:
  void TearDown() override {
    if (m_former) {
      setenv("TMPDIR", m_former->c_str(), 1);
    } else {
      unsetenv("TMPDIR");
    }
  }
  static void Set(const std::string& value) { setenv("TMPDIR", value.c_str(), 1); }

  std::optional<std::string> m_former = ReadEnvironment("TMPDIR");
  CTempDirectory m_directory;
};

TEST_F(TemporaryDirectoryTest, IsTMPDIRWhereOthersCannotWrite) {
  Set(m_directory.Path() + "//");
  EXPECT_EQ(TemporaryDirectory(), m_directory.Path());
}

TEST_F(TemporaryDirectoryTest, IsTheUsersOwnBelowWhatAllShare) {
  const std::string shared = m_directory / "shared";
  fs::create_directory(shared);
  ASSERT_EQ(chmod(shared.c_str(), 01777), 0);
  Set(shared);
  const std::string own = TemporaryDirectory();
  EXPECT_EQ(own.find(shared + "/kestra-"), 0u);
  struct stat status {};
  ASSERT_EQ(stat(own.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0700u);
  EXPECT_EQ(TemporaryDirectory(), own);

  // Somebody else's trap under the name.
  ASSERT_EQ(chmod(own.c_str(), 0777), 0);
  EXPECT_EQ(TemporaryDirectory(), "");
  fs::remove(own);
  fs::create_directory(m_directory / "elsewhere");
  ASSERT_EQ(chmod((m_directory / "elsewhere").c_str(), 0700), 0);
  fs::create_symlink(m_directory / "elsewhere", own);
  EXPECT_EQ(TemporaryDirectory(), "");
  fs::remove(own);

  // Without the sticky bit anybody could put another directory in its place.
  ASSERT_EQ(chmod(shared.c_str(), 0777), 0);
  EXPECT_EQ(TemporaryDirectory(), "");
}

TEST_F(TemporaryDirectoryTest, PassesOverWhatIsNoDirectory) {
  m_directory.Write("file", "");
  for (const std::string& value :
       {std::string(), m_directory / "file", m_directory / "missing", std::string("relative")}) {
    Set(value);
    EXPECT_EQ(TemporaryDirectory().find("/tmp/kestra-"), 0u) << value;
  }
}

TEST(HostEnvironment, KnowsThisProgram) {
  EXPECT_EQ(ExecutablePath(), fs::read_symlink("/proc/self/exe").string());
  // The library is linked into the program here.
  EXPECT_EQ(LibraryPath(), ExecutablePath());
  EXPECT_NE(LibraryLoadAddress(), 0u);
  EXPECT_EQ(HostRegistry(), nullptr);
  EXPECT_EQ(RootLength("/x"), 1u);
  EXPECT_EQ(RootLength("x"), 0u);
  EXPECT_EQ(ReadEnvironment("NO_SUCH_VARIABLE_HERE"), std::nullopt);
}

}  // namespace
}  // namespace kestra::os
