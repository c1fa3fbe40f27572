#include <gtest/gtest.h>

#include "platform/os/CodeFile.h"
#include "platform/win32/base/Wide.h"
#include "tests/platform/win32/os/CommentedLibrary.h"
#include "tests/support/TempDirectory.h"

namespace kestra::os {
namespace {

TEST(CodeFile, TellsWhatTheVersionResourceSays) {
  const test::CTempDirectory directory;
  const std::string path =
      directory.Write("plugin.dll", test::ReadWholeFile(test::CommentedLibrary()));
  std::string text;
  ASSERT_EQ(ReadLibraryComments(path, text), kErrorSuccess);
  EXPECT_EQ(text, "Diagnostic plugin \xE2\x80\x93 of the tests");
  ASSERT_EQ(ReadLibraryVersion(path, text), kErrorSuccess);
  EXPECT_EQ(text, "3.14.15.9265");
  EXPECT_EQ(GetModuleHandleW(Wide(path).c_str()), nullptr);  // it is not loaded
}

TEST(CodeFile, KnowsALibraryWithoutTheResource) {
  std::string text = "old";
  EXPECT_EQ(ReadLibraryComments(KESTRA_LOCK_PEER, text), kErrorSuccess);
  EXPECT_EQ(text, "");
  EXPECT_EQ(ReadLibraryVersion(KESTRA_LOCK_PEER, text), kErrorSuccess);
  EXPECT_NE(text.find('-'), std::string::npos) << text;  // size and time
}

TEST(CodeFile, TellsWhatIsNoLibrary) {
  const test::CTempDirectory directory;
  const std::string image = test::ReadWholeFile(test::CommentedLibrary());
  const struct {
    std::string path;
    SystemError error;
  } kCases[] = {
      {directory.Write("empty.dll", ""), kErrorInvalidData},
      {directory.Write("text.dll", "no library at all"), kErrorInvalidData},
      {directory.Write("head.dll", image.substr(0, 100)), kErrorInvalidData},
      {directory / "missing.dll", kErrorFileNotFound},
      {directory / std::string("a\0b", 3), kErrorInvalidName},
  };
  for (const auto& row : kCases) {
    std::string text = "old";
    EXPECT_EQ(ReadLibraryComments(row.path, text), row.error) << row.path;
    EXPECT_EQ(text, "");
    EXPECT_EQ(ReadLibraryVersion(row.path, text), row.error) << row.path;
  }
}

// Whatever is wrong with the resource, the answer is a text or an error.
TEST(CodeFile, SurvivesDamagedResources) {
  const test::CTempDirectory directory;
  const std::string image = test::ReadWholeFile(test::CommentedLibrary());
  const std::string key("V\0S\0_\0V\0E\0R", 11);
  const size_t block = image.find(key);
  ASSERT_NE(block, std::string::npos);
  for (size_t offset = block - 6; offset < block + 400; offset += 6) {
    std::string damaged = image;
    damaged[offset] = '\xFF';
    damaged[offset + 1] = '\x7F';
    const std::string path = directory.Write("damaged.dll", damaged);
    std::string text;
    ReadLibraryComments(path, text);
    EXPECT_LE(text.size(), image.size());
    ReadLibraryVersion(path, text);
  }
}

}  // namespace
}  // namespace kestra::os
