#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <set>

#include "platform/linux/os/named/NamedObjects.h"
#include "tests/support/TempDirectory.h"

namespace kestra::os {
namespace {

using test::CTempDirectory;

TEST(NamedObjects, TwoNamesNeverShareAFile) {
  const std::string longName(300, 'a');
  const std::vector<std::string> names = {"",
                                          "a",
                                          "A",
                                          "a/b",
                                          "a%2fb",
                                          std::string("a\0b", 3),
                                          "..",
                                          "a b",
                                          "\xC3\xA4",
                                          "+",
                                          longName,
                                          longName + "a",
                                          "b" + longName,
                                          std::string(200, '/'),
                                          std::string(67, '/'),
                                          std::string(66, '/')};
  std::set<std::string> files;
  for (const std::string& name : names) {
    for (const char* kind : {"lock", "memory"}) {
      const std::string file = NamedObjectFileName(kind, name);
      EXPECT_TRUE(files.insert(file).second) << file;
      EXPECT_LE(file.size(), 255u);
      EXPECT_EQ(file.find_first_of(std::string("/\0", 2)), std::string::npos) << file;
    }
  }
}

// A process of another build must find the same file. The number is FNV-1a's, by another program.
TEST(NamedObjects, KeepsItsHash) {
  EXPECT_EQ(NamedObjectFileName("x", std::string(201, 'a')),
            "x+201+bde41bf94e191fa507fd06b2a4e7d57c+" + std::string(20, 'a'));
}

TEST(NamedObjects, MakesADirectoryForTheUserAlone) {
  const CTempDirectory base;
  for (int round = 0; round < 2; ++round) {
    CUniqueFd directory;
    ASSERT_EQ(OpenOwnDirectory(base.Path(), "own", directory), kErrorSuccess);
    struct stat status {};
    ASSERT_EQ(fstat(directory.get(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700u);
  }
}

TEST(NamedObjects, RefusesADirectoryThatIsNotSafe) {
  const CTempDirectory base;
  std::filesystem::create_directory(base / "target");
  chmod((base / "target").c_str(), 0700);
  std::filesystem::create_directory_symlink("target", base / "link");
  base.Write("file", "");
  std::filesystem::create_directory(base / "readable");
  chmod((base / "readable").c_str(), 0750);
  std::filesystem::create_directory(base / "open");
  chmod((base / "open").c_str(), 0777);
  CUniqueFd directory;
  for (const char* name : {"link", "file", "readable", "open"}) {
    EXPECT_EQ(OpenOwnDirectory(base.Path(), name, directory), kErrorAccessDenied) << name;
  }
  EXPECT_EQ(OpenOwnDirectory(base / "open", "own", directory), kErrorAccessDenied);
  chmod((base / "open").c_str(), 01777);
  EXPECT_EQ(OpenOwnDirectory(base / "open", "own", directory), kErrorSuccess);
  EXPECT_EQ(OpenOwnDirectory(base / "missing", "own", directory), kErrorFileNotFound);
}

TEST(NamedObjects, RefusesAnotherUsersDirectory) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can make a directory that is another user's";
  const CTempDirectory base;
  std::filesystem::create_directory(base / "own");
  chmod((base / "own").c_str(), 0700);
  ASSERT_EQ(chown((base / "own").c_str(), 65534, 65534), 0);
  CUniqueFd directory;
  EXPECT_EQ(OpenOwnDirectory(base.Path(), "own", directory), kErrorAccessDenied);
}

TEST(NamedObjects, OpensPlainFilesOnly) {
  const CTempDirectory base;
  base.Write("target", "");
  std::filesystem::create_symlink("target", base / "link");
  std::filesystem::create_directory(base / "directory");
  ASSERT_EQ(mkfifo((base / "fifo").c_str(), 0600), 0);
  const CUniqueFd directory(open(base.Path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  CUniqueFd file;
  for (const char* name : {"link", "directory", "fifo"}) {
    EXPECT_EQ(OpenNamedFile(directory.get(), name, file), kErrorAccessDenied) << name;
  }
  ASSERT_EQ(OpenNamedFile(directory.get(), "new", file), kErrorSuccess);
  EXPECT_EQ(fcntl(file.get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

}  // namespace
}  // namespace kestra::os
