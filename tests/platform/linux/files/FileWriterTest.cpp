#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <set>

#include "platform/linux/machine/Facilities.h"
#include "platform/machine/FileSystem.h"
#include "tests/support/NamesIn.h"
#include "tests/support/TempDirectory.h"
#include "tests/support/linux/ChildProcess.h"

namespace kestra {
namespace {

using test::CTempDirectory;
using test::NamesIn;
using test::ReadWholeFile;
namespace fs = std::filesystem;

struct stat StatusOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
  return status;
}

SystemError WriteFile(const std::string& path, const std::string& content,
                      Existing existing = Existing::Replace, LastLink lastLink = LastLink::Follow) {
  const auto files = MakeLinuxFileSystem();
  std::unique_ptr<CFileWriter> writer;
  SystemError error = files->BeginWrite(path, lastLink, existing, NewRights::Usual, writer);
  if (error == kErrorSuccess) error = writer->Write(content);
  return error == kErrorSuccess ? writer->Commit() : error;
}

// The body finds the directory as the present one, since it may not go through those above it.
bool RunAsOrdinaryUserIn(const CTempDirectory& directory, const std::function<bool()>& body) {
  const fs::path former = fs::current_path();
  fs::current_path(directory.Path());
  const bool result = test::RunAsOrdinaryUser(body);
  fs::current_path(former);
  return result;
}

TEST(LinuxFileWriter, NothingIsThereBeforeCommitOrWithoutIt) {
  const CTempDirectory directory;
  const std::string path = directory.Write("file", "old");
  const auto files = MakeLinuxFileSystem();
  for (const char* name : {"file", "new"}) {
    std::unique_ptr<CFileWriter> writer;
    ASSERT_EQ(files->BeginWrite(directory / name, LastLink::Refuse, Existing::Replace,
                                NewRights::Usual, writer),
              kErrorSuccess);
    ASSERT_EQ(writer->Write("something"), kErrorSuccess);
    EXPECT_FALSE(fs::exists(directory / "new"));
    writer.reset();
    EXPECT_EQ(NamesIn(directory.Path()), std::set<std::string>{"file"});
    EXPECT_EQ(ReadWholeFile(path), "old");
  }
  std::unique_ptr<CFileWriter> writer;
  ASSERT_EQ(files->BeginWrite(path, LastLink::Refuse, Existing::Replace, NewRights::Usual, writer),
            kErrorSuccess);
  EXPECT_EQ(writer->Write(""), kErrorSuccess);
  EXPECT_EQ(writer->Commit(), kErrorSuccess);
  EXPECT_EQ(writer->Commit(), kErrorInvalidHandle);
  EXPECT_EQ(writer->Write("x"), kErrorInvalidHandle);
  EXPECT_EQ(ReadWholeFile(path), "");
}

TEST(LinuxFileWriter, KeepsOwnerModeAndAttributesOfWhatItReplaces) {
  const CTempDirectory directory;
  const std::string path = directory.Write("file", "old");
  const bool hasAttributes = setxattr(path.c_str(), "user.kestra", "x", 1, 0) == 0;
  for (const mode_t mode : {0600, 0644, 0664, 0777, 0400}) {
    if (mode == 0400 && geteuid() != 0) continue;  // not ours to write
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
    ASSERT_EQ(WriteFile(path, "new"), kErrorSuccess) << std::oct << mode;
    EXPECT_EQ(StatusOf(path).st_mode & 07777, mode) << std::oct << mode;
  }
  EXPECT_EQ(ReadWholeFile(path), "new");
  char value = 0;
  EXPECT_EQ(getxattr(path.c_str(), "user.kestra", &value, 1), hasAttributes ? 1 : -1);
  if (geteuid() == 0) {
    ASSERT_EQ(chown(path.c_str(), 12345, 23456), 0);
    ASSERT_EQ(WriteFile(path, "newer"), kErrorSuccess);
    EXPECT_EQ(StatusOf(path).st_uid, 12345u);
    EXPECT_EQ(StatusOf(path).st_gid, 23456u);
  }
  const mode_t mask = umask(027);
  EXPECT_EQ(WriteFile(directory / "created", ""), kErrorSuccess);
  umask(mask);
  EXPECT_EQ(StatusOf(directory / "created").st_mode & 07777, 0640u);
}

// Who may not give a file its former owner does not save it; and who may not give it its former
// group takes rights away from that one and gives none to others.
TEST(LinuxFileWriter, AnOwnerOrGroupThatCannotBeKept) {
  if (geteuid() != 0) GTEST_SKIP() << "needs files of other users";
  const CTempDirectory directory;
  const std::string path = directory.Write("file", "old");
  ASSERT_EQ(chown(path.c_str(), 12345, 23456), 0);
  ASSERT_EQ(chmod(path.c_str(), 0666), 0);
  ASSERT_EQ(chmod(directory.Path().c_str(), 0777), 0);
  EXPECT_TRUE(RunAsOrdinaryUserIn(directory,
                                  [] { return WriteFile("file", "new") == kErrorAccessDenied; }));
  EXPECT_EQ(ReadWholeFile(path), "old");
  EXPECT_EQ(StatusOf(path).st_uid, 12345u);
  EXPECT_EQ(StatusOf(path).st_mode & 0777, 0666u);
  EXPECT_EQ(NamesIn(directory.Path()), std::set<std::string>{"file"});
  const mode_t cases[][2] = {{0664, 0644}, {0660, 0600}, {0604, 0600}, {0646, 0644}, {0777, 0777}};
  for (const auto& [before, after] : cases) {
    ASSERT_EQ(chown(path.c_str(), 65534, 23456), 0);
    ASSERT_EQ(chmod(path.c_str(), before), 0);
    EXPECT_TRUE(
        RunAsOrdinaryUserIn(directory, [] { return WriteFile("file", "new") == kErrorSuccess; }));
    EXPECT_EQ(StatusOf(path).st_gid, 65534u);
    EXPECT_EQ(StatusOf(path).st_mode & 0777, after) << std::oct << before;
  }
}

struct BeginCase {
  std::string path;
  LastLink lastLink;
  Existing existing;
  SystemError expected;
};

TEST(LinuxFileWriter, RefusesWhatItMayNotReplace) {
  const CTempDirectory directory;
  directory.Write("file", "old");
  fs::create_directory(directory / "sub");
  fs::create_symlink("file", directory / "to-file");
  fs::create_symlink("sub", directory / "to-directory");
  fs::create_symlink("nowhere", directory / "dangling");
  fs::create_symlink("loop", directory / "loop");
  ASSERT_EQ(mkfifo((directory / "fifo").c_str(), 0600), 0);
  constexpr auto Follow = LastLink::Follow;
  constexpr auto Refuse = LastLink::Refuse;
  constexpr auto Replace = Existing::Replace;
  constexpr auto New = Existing::Refuse;
  const BeginCase cases[] = {
      {directory / "sub", Follow, Replace, kErrorAccessDenied},
      {directory / "fifo", Follow, Replace, kErrorAccessDenied},
      {"/dev/null", Follow, Replace, kErrorAccessDenied},
      {directory / "to-file", Refuse, Replace, kErrorAccessDenied},
      {directory / "to-directory", Follow, Replace, kErrorAccessDenied},
      {directory / "dangling", Follow, Replace, kErrorFileNotFound},
      {directory / "loop", Follow, Replace, kErrorCannotResolveFilename},
      {directory / "file", Follow, New, kErrorFileExists},
      {directory / "dangling", Follow, New, kErrorFileExists},
      {directory / "sub", Refuse, New, kErrorFileExists},
      {directory / "missing/file", Follow, Replace, kErrorPathNotFound},
      {directory / "file/file", Follow, Replace, kErrorPathNotFound},
      {directory / "sub/", Follow, Replace, kErrorAccessDenied},
      {directory / "sub/..", Follow, Replace, kErrorAccessDenied},
      {directory / std::string(300, 'x'), Follow, Replace, kErrorFilenameExceedsRange},
      {directory / std::string("f\0", 2), Follow, Replace, kErrorInvalidName},
      {"", Follow, Replace, kErrorPathNotFound},
  };
  const std::set<std::string> before = NamesIn(directory.Path());
  for (const BeginCase& test : cases)
    EXPECT_EQ(WriteFile(test.path, "new", test.existing, test.lastLink), test.expected)
        << test.path;
  EXPECT_EQ(NamesIn(directory.Path()), before);
  EXPECT_EQ(ReadWholeFile(directory / "file"), "old");

  // What the caller may not write is safe also where he may write the directory.
  ASSERT_EQ(chmod((directory / "file").c_str(), 0444), 0);
  ASSERT_EQ(chmod(directory.Path().c_str(), 0777), 0);
  EXPECT_TRUE(RunAsOrdinaryUserIn(directory, [] {
    return WriteFile("new", "new") == kErrorSuccess &&
           WriteFile("file", "new") == kErrorAccessDenied;
  }));
}

// A file that cannot be put in the old one's place is refused, whatever rights it has itself.
TEST(LinuxFileWriter, APlaceThatCannotBeTaken) {
  if (geteuid() != 0) GTEST_SKIP() << "needs files of other users";
  const CTempDirectory directory;
  const std::string path = directory.Write("file", "old");
  ASSERT_EQ(chmod(path.c_str(), 0666), 0);
  ASSERT_EQ(chmod(directory.Path().c_str(), 0755), 0);
  EXPECT_TRUE(RunAsOrdinaryUserIn(directory,
                                  [] { return WriteFile("file", "new") == kErrorAccessDenied; }));
  constexpr int kNoRights = 77;
  const int status = test::RunInChild([&] {
    if (unshare(CLONE_NEWNS) != 0) return kNoRights;
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return kNoRights;
    if (mount(path.c_str(), path.c_str(), nullptr, MS_BIND, nullptr) != 0) return kNoRights;
    return WriteFile(path, "new") == kErrorBusy ? 0 : 1;
  });
  EXPECT_TRUE(status == 0 || status == kNoRights) << status;
  EXPECT_EQ(ReadWholeFile(path), "old");
  EXPECT_EQ(NamesIn(directory.Path()), std::set<std::string>{"file"});
}

TEST(LinuxFileWriter, FollowsALinkAndLeavesIt) {
  const CTempDirectory directory;
  fs::create_directory(directory / "sub");
  directory.Write("sub/file", "old");
  fs::create_symlink("sub/file", directory / "middle");
  fs::create_symlink("middle", directory / "link");
  EXPECT_EQ(WriteFile(directory / "link", "new"), kErrorSuccess);
  EXPECT_TRUE(fs::is_symlink(directory / "link"));
  EXPECT_TRUE(fs::is_symlink(directory / "middle"));
  EXPECT_FALSE(fs::is_symlink(directory / "sub/file"));
  EXPECT_EQ(ReadWholeFile(directory / "sub/file"), "new");
}

// Two writers at once, begun while there was nothing, with the rules given by how they began.
TEST(LinuxFileWriter, WhatCameWhileItWrote) {
  const CTempDirectory directory;
  const std::string path = directory / "file";
  const auto files = MakeLinuxFileSystem();
  std::unique_ptr<CFileWriter> replacing;
  std::unique_ptr<CFileWriter> refusing;
  ASSERT_EQ(
      files->BeginWrite(path, LastLink::Refuse, Existing::Replace, NewRights::Usual, replacing),
      0u);
  ASSERT_EQ(files->BeginWrite(path, LastLink::Refuse, Existing::Refuse, NewRights::Usual, refusing),
            0u);
  ASSERT_EQ(replacing->Write("replacing"), kErrorSuccess);
  ASSERT_EQ(refusing->Write("refusing"), kErrorSuccess);
  directory.Write("file", "came");
  EXPECT_EQ(refusing->Commit(), kErrorFileExists);
  EXPECT_EQ(ReadWholeFile(path), "came");
  EXPECT_EQ(replacing->Commit(), kErrorSuccess);
  EXPECT_EQ(ReadWholeFile(path), "replacing");
  refusing.reset();
  EXPECT_EQ(NamesIn(directory.Path()), std::set<std::string>{"file"});
}

// Without /proc a file that has no name can get none, and a temporary name is used instead.
TEST(LinuxFileWriter, WorksWhereFilesNeedANameFromTheBeginning) {
  const CTempDirectory directory;
  constexpr int kNoRights = 77;
  const int status = test::RunInChild([&] {
    if (geteuid() != 0 && unshare(CLONE_NEWUSER) != 0) return kNoRights;
    if (chroot(directory.Path().c_str()) != 0) return kNoRights;
    if (WriteFile("/file", "new", Existing::Refuse) != kErrorSuccess) return 1;
    if (WriteFile("/file", "other", Existing::Refuse) != kErrorFileExists) return 2;
    const auto files = MakeLinuxFileSystem();
    std::unique_ptr<CFileWriter> refusing;
    if (files->BeginWrite("/late", LastLink::Refuse, Existing::Refuse, NewRights::Usual,
                          refusing) != 0)
      return 3;
    if (NamesIn("/").size() != 2) return 4;  // the file and the temporary one
    if (WriteFile("/late", "late") != kErrorSuccess) return 5;
    if (refusing->Commit() != kErrorFileExists) return 6;
    refusing.reset();
    if (chmod("/file", 0640) != 0) return 7;
    return WriteFile("/file", "replaced") == kErrorSuccess ? 0 : 8;
  });
  if (status == kNoRights) GTEST_SKIP() << "needs the right to change the root directory";
  EXPECT_EQ(status, 0);
  EXPECT_EQ(NamesIn(directory.Path()), (std::set<std::string>{"file", "late"}));
  EXPECT_EQ(ReadWholeFile(directory / "file"), "replaced");
  EXPECT_EQ(ReadWholeFile(directory / "late"), "late");
  EXPECT_EQ(StatusOf(directory / "file").st_mode & 07777, 0640u);
}

TEST(LinuxFileSystemChanges, DirectoriesAndRemoval) {
  const CTempDirectory directory;
  directory.Write("file", "x");
  fs::create_symlink("file", directory / "link");
  const auto files = MakeLinuxFileSystem();
  EXPECT_EQ(files->MakeDirectory(directory / "sub/", NewRights::Usual), kErrorSuccess);
  EXPECT_EQ(files->MakeDirectory(directory / "sub", NewRights::Usual), kErrorAlreadyExists);
  EXPECT_EQ(files->MakeDirectory(directory / "file", NewRights::Usual), kErrorAlreadyExists);
  EXPECT_EQ(files->MakeDirectory(directory / "missing/sub", NewRights::Usual), kErrorPathNotFound);
  EXPECT_EQ(files->RemoveFile(directory / "sub"), kErrorAccessDenied);
  EXPECT_EQ(files->RemoveFile(directory / "missing"), kErrorFileNotFound);
  EXPECT_EQ(files->RemoveFile(directory / "link"), kErrorSuccess);
  EXPECT_EQ(NamesIn(directory.Path()), (std::set<std::string>{"file", "sub"}));
  EXPECT_EQ(files->RemoveFile(directory / "file"), kErrorSuccess);
  uint32_t flags = 1;
  EXPECT_EQ(files->VolumeFlags("/", flags), kErrorSuccess);
  EXPECT_EQ(flags, 0u);
  EXPECT_EQ(files->MoveAtBoot("/a", "/b"), kErrorCallNotImplemented);
}

}  // namespace
}  // namespace kestra
