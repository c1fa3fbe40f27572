#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "platform/linux/machine/Facilities.h"
#include "platform/machine/FileSystem.h"
#include "tests/support/TempDirectory.h"

namespace kestra {
namespace {

using test::CTempDirectory;
namespace fs = std::filesystem;

struct OpenCase {
  std::string path;
  SystemError follow;
  SystemError refuse;
};

TEST(LinuxFileReader, OpensPlainFilesAlone) {
  const CTempDirectory directory;
  directory.Write("file", "12345");
  fs::create_directory(directory / "sub");
  fs::create_symlink("file", directory / "to-file");
  fs::create_symlink("to-file", directory / "to-link");
  fs::create_symlink("sub", directory / "to-directory");
  fs::create_symlink("nowhere", directory / "dangling");
  fs::create_symlink("loop", directory / "loop");
  fs::create_symlink(directory.Path(), directory / "here");
  ASSERT_EQ(mkfifo((directory / "fifo").c_str(), 0600), 0);
  const OpenCase cases[] = {
      {directory / "file", kErrorSuccess, kErrorSuccess},
      {directory / "here/file", kErrorSuccess, kErrorSuccess},  // a link on the way is none
      {directory / "to-file", kErrorSuccess, kErrorAccessDenied},
      {directory / "to-link", kErrorSuccess, kErrorAccessDenied},
      {directory / "to-directory", kErrorAccessDenied, kErrorAccessDenied},
      {directory / "dangling", kErrorFileNotFound, kErrorAccessDenied},
      {directory / "loop", kErrorCannotResolveFilename, kErrorAccessDenied},
      {directory / "sub", kErrorAccessDenied, kErrorAccessDenied},
      {directory / "fifo", kErrorAccessDenied, kErrorAccessDenied},
      {"/dev/zero", kErrorAccessDenied, kErrorAccessDenied},
      {directory / "missing", kErrorFileNotFound, kErrorFileNotFound},
      {directory / "missing/x", kErrorPathNotFound, kErrorPathNotFound},
      {directory / "file/x", kErrorPathNotFound, kErrorPathNotFound},
      {"", kErrorPathNotFound, kErrorPathNotFound},
      {directory / std::string("file\0x", 6), kErrorInvalidName, kErrorInvalidName},
  };
  const auto files = MakeLinuxFileSystem();
  for (const OpenCase& test : cases) {
    std::unique_ptr<CFileReader> reader;
    EXPECT_EQ(files->OpenFile(test.path, LastLink::Follow, reader), test.follow) << test.path;
    EXPECT_EQ(reader != nullptr, test.follow == kErrorSuccess) << test.path;
    reader.reset();
    EXPECT_EQ(files->OpenFile(test.path, LastLink::Refuse, reader), test.refuse) << test.path;
    EXPECT_EQ(reader != nullptr, test.refuse == kErrorSuccess) << test.path;
  }
}

TEST(LinuxFileReader, ReadsFromItsPosition) {
  const CTempDirectory directory;
  const std::string content = std::string(3'000'000, 'x') + "end";
  const std::string path = directory.Write(".file", content);
  const auto files = MakeLinuxFileSystem();
  std::unique_ptr<CFileReader> reader;
  ASSERT_EQ(files->OpenFile(path, LastLink::Refuse, reader), kErrorSuccess);
  // The open file stays the same, whatever happens to its name.
  fs::rename(path, directory / "other");
  directory.Write(".file", "new");
  FileInfo info;
  ASSERT_EQ(reader->Info(info), kErrorSuccess);
  EXPECT_EQ(info.size, content.size());
  EXPECT_EQ(info.attributes, kFileAttributeHidden);
  std::string read = "before";
  size_t size = 0;
  do {
    size = read.size();
    ASSERT_EQ(reader->Read(SIZE_MAX, read), kErrorSuccess);
  } while (read.size() > size);
  EXPECT_EQ(read, "before" + content);
  read.clear();
  ASSERT_EQ(reader->Seek(3'000'000), kErrorSuccess);
  EXPECT_EQ(reader->Read(2, read), kErrorSuccess);
  EXPECT_EQ(read, "en");
  EXPECT_EQ(reader->Seek(UINT64_MAX), kErrorInvalidParameter);
  EXPECT_EQ(reader->Seek(content.size() + 5), kErrorSuccess);
  EXPECT_EQ(reader->Read(2, read), kErrorSuccess);
  EXPECT_EQ(read, "en");
}

bool IsTrusted(const std::string& path) {
  FileInfo byPath;
  FileInfo byFile;
  const auto files = MakeLinuxFileSystem();
  EXPECT_EQ(files->Info(path, byPath), kErrorSuccess);
  std::unique_ptr<CFileReader> reader;
  if (files->OpenFile(path, LastLink::Refuse, reader) == kErrorSuccess) {
    EXPECT_EQ(reader->Info(byFile), kErrorSuccess);
    EXPECT_EQ(byFile.isTrusted, byPath.isTrusted);
  }
  return byPath.isTrusted;
}

TEST(LinuxFileReader, TrustsWhatOthersCannotWrite) {
  const CTempDirectory directory;
  const std::string path = directory.Write("file", "");
  for (const mode_t mode : {0600, 0644, 0400, 0604}) {
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
    EXPECT_TRUE(IsTrusted(path)) << std::oct << mode;
  }
  for (const mode_t mode : {0646, 0602, 0666}) {
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
    EXPECT_FALSE(IsTrusted(path)) << std::oct << mode;
  }
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  fs::create_symlink("file", directory / "link");
  EXPECT_FALSE(IsTrusted(directory / "link"));
  EXPECT_TRUE(IsTrusted("/etc/passwd"));
  EXPECT_FALSE(IsTrusted("/tmp"));
  if (geteuid() != 0) return;
  constexpr uid_t kOther = 12345;
  ASSERT_EQ(chown(path.c_str(), kOther, kOther), 0);
  EXPECT_FALSE(IsTrusted(path));
  ASSERT_EQ(chown(path.c_str(), 0, kOther), 0);
  EXPECT_TRUE(IsTrusted(path));
  ASSERT_EQ(chmod(path.c_str(), 0660), 0);
  EXPECT_FALSE(IsTrusted(path));
}

}  // namespace
}  // namespace kestra
