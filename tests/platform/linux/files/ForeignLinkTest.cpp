// Links that another user may have laid as a trap are not followed.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "platform/linux/machine/Facilities.h"
#include "platform/machine/FileSystem.h"
#include "tests/support/TempDirectory.h"
#include "tests/support/linux/ChildProcess.h"

namespace kestra {
namespace {

using test::CTempDirectory;
using test::ReadWholeFile;
namespace fs = std::filesystem;

constexpr uid_t kRoot = 0;
constexpr uid_t kCaller = 65534;  // RunAsOrdinaryUser
constexpr uid_t kOther = 12345;

struct LinkCase {
  uid_t directoryOwner;
  mode_t directoryMode;
  uid_t linkOwner;
  bool isFollowedByCaller;
  bool isFollowedByRoot;
};

const LinkCase kCases[] = {
    {kRoot, 01777, kCaller, true, false},  {kRoot, 01777, kRoot, true, true},
    {kRoot, 01777, kOther, false, false},  {kRoot, 0777, kOther, false, false},
    {kRoot, 0755, kOther, true, true},     {kOther, 0755, kOther, false, false},
    {kOther, 01777, kOther, false, false}, {kCaller, 0755, kOther, true, false},
    {kCaller, 0775, kOther, true, false},  {kOther, 0755, kRoot, true, true},
};

void MakeLink(const std::string& target, const std::string& path, uid_t owner) {
  ASSERT_EQ(symlink(target.c_str(), path.c_str()), 0);
  ASSERT_EQ(lchown(path.c_str(), owner, owner), 0);
}

// "own" is the caller's and holds the file, and a link of root's to the link of the case, which
// stands in the directory "foreign" of the case.
class CForeignLinkTest : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "needs files of other users";
  }
  void Make(const CTempDirectory& directory, const LinkCase& test) {
    ASSERT_EQ(chmod(directory.Path().c_str(), 0755), 0);
    fs::create_directory(directory / "own");
    fs::create_directory(directory / "foreign");
    directory.Write("own/file", "old");
    for (const char* name : {"own", "own/file"})
      ASSERT_EQ(chown((directory / name).c_str(), kCaller, kCaller), 0);
    MakeLink("../own/file", directory / "foreign/link", test.linkOwner);
    MakeLink("../foreign/link", directory / "own/chain", kRoot);
    MakeLink("../own", directory / "foreign/way", test.linkOwner);
    MakeLink("../foreign/way/./../own", directory / "own/longer", kRoot);
    const std::string foreign = directory / "foreign";
    ASSERT_EQ(chown(foreign.c_str(), test.directoryOwner, test.directoryOwner), 0);
    ASSERT_EQ(chmod(foreign.c_str(), test.directoryMode), 0);
  }
};

SystemError Open(const std::string& path) {
  std::unique_ptr<CFileReader> reader;
  return MakeLinuxFileSystem()->OpenFile(path, LastLink::Follow, reader);
}

SystemError Rewrite(const std::string& path) {
  std::unique_ptr<CFileWriter> writer;
  SystemError error = MakeLinuxFileSystem()->BeginWrite(path, LastLink::Follow, Existing::Replace,
                                                        NewRights::Usual, writer);
  if (error == kErrorSuccess) error = writer->Write("new");
  return error == kErrorSuccess ? writer->Commit() : error;
}

SystemError Copy(const std::string& path) {
  const SystemError error = MakeLinuxFileSystem()->CopyPlainFile(path, "own/copy", nullptr);
  unlink("own/copy");
  return error;
}

// Whatever changes something behind a link on the way. The file is there again afterwards.
SystemError Change(const std::string& way) {
  const auto files = MakeLinuxFileSystem();
  const SystemError renamed = files->Rename(way + "/file", "own/moved");
  EXPECT_EQ(files->Rename("own/moved", way + "/file"), renamed);
  EXPECT_EQ(files->SetAttributes(way + "/file", kFileAttributeNormal), renamed);
  EXPECT_EQ(files->MakeDirectory("own/empty", NewRights::Usual), kErrorSuccess);
  EXPECT_EQ(files->RemoveEmptyDirectory(way + "/empty//"), renamed);
  rmdir("own/empty");
  std::filesystem::copy_file("own/file", "own/doomed");
  EXPECT_EQ(files->RemoveFile(way + "/doomed"), renamed);
  EXPECT_EQ(std::filesystem::remove("own/doomed"), renamed != kErrorSuccess);
  return renamed;
}

bool AllAnswer(SystemError expected) {
  for (const char* path : {"foreign/link", "own/chain"})
    for (const auto operation : {Open, Rewrite, Copy})
      if (operation(path) != expected) return false;
  for (const char* way : {"foreign/way", "own/longer"})
    if (Change(way) != expected || testing::Test::HasFailure()) return false;
  return true;
}

TEST_F(CForeignLinkTest, IsFollowedWhereNobodyElseCanHavePutIt) {
  const fs::path former = fs::current_path();
  for (const LinkCase& test : kCases) {
    const CTempDirectory directory;
    ASSERT_NO_FATAL_FAILURE(Make(directory, test));
    fs::current_path(directory.Path());
    const auto message = testing::Message()
                         << test.directoryOwner << ' ' << std::oct << test.directoryMode << ' '
                         << std::dec << test.linkOwner;
    const auto expected = [](bool isFollowed) {
      return isFollowed ? kErrorSuccess : kErrorAccessDenied;
    };
    EXPECT_TRUE(AllAnswer(expected(test.isFollowedByRoot))) << message;
    EXPECT_EQ(ReadWholeFile("own/file"), test.isFollowedByRoot ? "new" : "old") << message;
    EXPECT_TRUE(test::RunAsOrdinaryUser([&] {
      return AllAnswer(expected(test.isFollowedByCaller));
    })) << message;
    fs::current_path(former);
  }
}

}  // namespace
}  // namespace kestra
