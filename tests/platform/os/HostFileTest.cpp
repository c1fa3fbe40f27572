#include <gtest/gtest.h>

#include "platform/os/HostFile.h"
#include "tests/support/TempDirectory.h"

namespace kestra::os {
namespace {

using test::CTempDirectory;
using test::ReadWholeFile;

TEST(OpenExclusive, KeepsOutASecondOpen) {
  const CTempDirectory directory;
  const std::string path = directory / "f";
  std::unique_ptr<CHostFile> first;
  std::unique_ptr<CHostFile> second;
  ASSERT_EQ(OpenExclusive(path, first), kErrorSuccess);
  EXPECT_EQ(OpenExclusive(path, second), kErrorSharingViolation);
  EXPECT_FALSE(second);
  first.reset();
  EXPECT_EQ(OpenExclusive(path, second), kErrorSuccess);
}

TEST(OpenExclusive, WritesSeeksAndCuts) {
  const CTempDirectory directory;
  const std::string path = directory.Write("f", "0123456789");
  std::unique_ptr<CHostFile> file;
  ASSERT_EQ(OpenExclusive(path, file), kErrorSuccess);
  uint64_t size = 0;
  size_t written = 0;
  EXPECT_EQ(file->Size(size), kErrorSuccess);
  EXPECT_EQ(size, 10u);
  EXPECT_EQ(file->Write("ab", written), kErrorSuccess);
  EXPECT_EQ(written, 2u);
  EXPECT_EQ(file->SetEnd(5), kErrorSuccess);
  EXPECT_EQ(file->Write("c", written), kErrorSuccess);
  EXPECT_EQ(ReadWholeFile(path), "ab234c");
  EXPECT_EQ(file->SetEnd(8), kErrorSuccess);
  EXPECT_EQ(file->Seek(0), kErrorSuccess);
  EXPECT_EQ(file->Write("X", written), kErrorSuccess);
  EXPECT_EQ(ReadWholeFile(path), std::string("Xb234c\0\0", 8));
}

TEST(OpenExclusive, TellsWhyNot) {
  const CTempDirectory directory;
  directory.Write("file", "");
  std::unique_ptr<CHostFile> file;
  EXPECT_EQ(OpenExclusive(directory / "missing/f", file), kErrorPathNotFound);
  EXPECT_EQ(OpenExclusive(directory / "file/f", file), kErrorPathNotFound);
  EXPECT_EQ(OpenExclusive(directory.Path(), file), kErrorAccessDenied);
  EXPECT_EQ(OpenExclusive(directory / std::string("a\0b", 3), file), kErrorInvalidName);
  EXPECT_EQ(OpenExclusive("", file), kErrorPathNotFound);
  EXPECT_FALSE(file);
}

TEST(ReadFileHead, ReadsNoMoreThanTheLimit) {
  const CTempDirectory directory;
  const std::string path = directory.Write("f", std::string(10'000, 'x'));
  std::string content = "old";
  EXPECT_EQ(ReadFileHead(path, 9'000, content), kErrorSuccess);
  EXPECT_EQ(content.size(), 9'000u);
  EXPECT_EQ(ReadFileHead(path, 20'000, content), kErrorSuccess);
  EXPECT_EQ(content.size(), 10'000u);
  EXPECT_EQ(ReadFileHead(directory / "missing", 10, content), kErrorFileNotFound);
  EXPECT_EQ(content, "");
}

TEST(HostFiles, TellDirectoriesFromFiles) {
  const CTempDirectory directory;
  directory.Write("f", "");
  EXPECT_TRUE(DirectoryExists(directory.Path()));
  EXPECT_FALSE(DirectoryExists(directory / "f"));
  EXPECT_TRUE(PathExists(directory / "f"));
  EXPECT_FALSE(PathExists(directory / "g"));
  EXPECT_FALSE(PathExists(directory.Path() + std::string("\0x", 2)));
  EXPECT_EQ(MakeDirectory(directory / "d"), kErrorSuccess);
  EXPECT_EQ(MakeDirectory(directory / "d"), kErrorAlreadyExists);
  EXPECT_EQ(MakeDirectory(directory / "e/f"), kErrorPathNotFound);
  EXPECT_TRUE(DirectoryExists(directory / "d"));
}

}  // namespace
}  // namespace kestra::os
