#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "platform/os/HostFile.h"
#include "tests/support/TempDirectory.h"

namespace kestra::os {
namespace {

using test::CTempDirectory;
namespace fs = std::filesystem;

TEST(OpenExclusive, NewFilesAreTheUsersAlone) {
  const CTempDirectory directory;
  std::unique_ptr<CHostFile> file;
  ASSERT_EQ(OpenExclusive(directory / "f", file), kErrorSuccess);
  struct stat status {};
  ASSERT_EQ(stat((directory / "f").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST(OpenExclusive, RefusesWhatIsNoPlainFileOfOneName) {
  const CTempDirectory directory;
  const std::string target = directory.Write("target", "x");
  fs::create_symlink(target, directory / "link");
  fs::create_symlink(directory / "nowhere", directory / "dangling");
  fs::create_hard_link(target, directory / "second-name");
  ASSERT_EQ(mkfifo((directory / "fifo").c_str(), 0600), 0);
  std::unique_ptr<CHostFile> file;
  for (const char* name : {"link", "dangling", "second-name", "fifo"}) {
    EXPECT_EQ(OpenExclusive(directory / name, file), kErrorAccessDenied) << name;
  }
  EXPECT_FALSE(fs::exists(directory / "nowhere"));
  std::string content;
  EXPECT_EQ(ReadFileHead(directory / "link", 10, content), kErrorAccessDenied);
  EXPECT_EQ(ReadFileHead(directory / "fifo", 10, content), kErrorAccessDenied);
  EXPECT_EQ(ReadFileHead("/dev/zero", 10, content), kErrorAccessDenied);
}

TEST(OpenExclusive, FullDisk) {
  std::unique_ptr<CHostFile> file;
  EXPECT_EQ(OpenExclusive("/dev/full", file), kErrorAccessDenied);
}

struct ModeCase {
  mode_t mode;
  bool othersCanWrite;
};

TEST(OthersCanWrite, LooksAtOwnerAndMode) {
  const CTempDirectory directory;
  const std::string path = directory / "d";
  ASSERT_EQ(MakeDirectory(path), kErrorSuccess);
  for (const ModeCase& test :
       {ModeCase{0700, false}, {0755, false}, {0777, true}, {01777, true}, {0702, true}}) {
    ASSERT_EQ(chmod(path.c_str(), test.mode), 0);
    EXPECT_EQ(OthersCanWrite(path), test.othersCanWrite) << std::oct << test.mode;
  }
  EXPECT_TRUE(OthersCanWrite(directory / "missing"));
  EXPECT_FALSE(OthersCanWrite("/etc"));
  if (geteuid() != 0) return;
  constexpr uid_t kOther = 12345;
  ASSERT_EQ(chmod(path.c_str(), 0700), 0);
  ASSERT_EQ(chown(path.c_str(), kOther, kOther), 0);
  EXPECT_TRUE(OthersCanWrite(path));
  ASSERT_EQ(chown(path.c_str(), 0, kOther), 0);
  ASSERT_EQ(chmod(path.c_str(), 0770), 0);
  EXPECT_TRUE(OthersCanWrite(path));
}

}  // namespace
}  // namespace kestra::os
