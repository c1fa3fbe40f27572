#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "platform/os/CodeFile.h"
#include "tests/support/TempDirectory.h"

namespace kestra::os {
namespace {

using test::CTempDirectory;
namespace fs = std::filesystem;

TEST(CodeFile, ReadsALibraryAndALinkToIt) {
  const CTempDirectory directory;
  fs::create_symlink(KESTRA_COMMENTED_LIBRARY, directory / "link.so");
  for (const std::string& path : {std::string(KESTRA_COMMENTED_LIBRARY), directory / "link.so"}) {
    std::string comments, version;
    EXPECT_EQ(ReadLibraryComments(path, comments), kErrorSuccess);
    EXPECT_EQ(comments, "Diagnostic plugin");
    EXPECT_EQ(ReadLibraryVersion(path, version), kErrorSuccess);
    EXPECT_EQ(version, "00ff10a5");
  }
}

// This program has no comments, so that "none" is told from "unreadable".
TEST(CodeFile, NoCommentsIsNoFailure) {
  std::string comments = "before";
  EXPECT_EQ(ReadLibraryComments("/proc/self/exe", comments), kErrorSuccess);
  EXPECT_EQ(comments, "");
}

TEST(CodeFile, RefusesWhatIsNoLibrary) {
  const CTempDirectory directory;
  ASSERT_EQ(mkfifo((directory / "fifo").c_str(), 0600), 0);
  fs::create_symlink(directory / "fifo", directory / "link");
  directory.Write("empty", "");
  directory.Write("text", std::string(1000, 'x'));
  const std::pair<std::string, SystemError> cases[] = {
      {directory / "fifo", kErrorAccessDenied},    {directory / "link", kErrorAccessDenied},
      {"/dev/zero", kErrorAccessDenied},           {directory.Path(), kErrorAccessDenied},
      {directory / "missing", kErrorFileNotFound}, {directory / "missing/too", kErrorPathNotFound},
      {std::string("a\0b", 3), kErrorInvalidName}, {directory / "empty", kErrorInvalidData},
      {directory / "text", kErrorInvalidData},
  };
  for (const auto& [path, error] : cases) {
    std::string text = "before";
    EXPECT_EQ(ReadLibraryComments(path, text), error) << path;
    EXPECT_EQ(text, "") << path;
    EXPECT_EQ(ReadLibraryVersion(path, text), error) << path;
  }
}

TEST(CodeFile, WithoutABuildIdTheVersionFollowsTheFile) {
  const CTempDirectory directory;
  // The header alone: no tables, so no notes.
  std::string head(fs::file_size(KESTRA_COMMENTED_LIBRARY), '\0');
  head.replace(0, 4,
               "\x7f"
               "ELF");
  head[4] = 2, head[5] = 1, head[16] = 3;
  const std::string path = directory.Write("library.so", head);
  std::string before, after, longer;
  ASSERT_EQ(ReadLibraryVersion(path, before), kErrorSuccess);
  fs::last_write_time(path, fs::last_write_time(path) + std::chrono::nanoseconds(4));
  ASSERT_EQ(ReadLibraryVersion(path, after), kErrorSuccess);
  EXPECT_NE(before, after);
  const auto time = fs::last_write_time(path);
  directory.Write("library.so", head + "x");
  fs::last_write_time(path, time);
  ASSERT_EQ(ReadLibraryVersion(path, longer), kErrorSuccess);
  EXPECT_NE(longer, after);
}

}  // namespace
}  // namespace kestra::os
