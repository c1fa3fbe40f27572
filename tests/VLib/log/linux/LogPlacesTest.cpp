#include <gtest/gtest.h>

#include <filesystem>

#include "VLib/src/log/LogDirectory.h"
#include "tests/VLib/log/LogTestHost.h"

namespace kestra {
namespace {

using namespace test;
namespace fs = std::filesystem;

TEST(CVLog, WithoutAnyDirectoryEntriesAreLost) {
  CVLog log("n", true, MakeLogHost({}, ""));
  EXPECT_EQ(log.Path(), "");
  log.Error("lost");
  EXPECT_FALSE(log.Error("lost").IsOpen());
}

TEST(CVLog, NothingIsOpenedThroughALink) {
  const CTempDirectory directory;
  const std::string target = directory.Write("target", "MAX_SIZE=5\nprecious");
  fs::create_symlink(target, directory / "n.log");
  CVLog log("", false, MakeLogHost({}));
  log.Open(directory.Path(), "n");
  EXPECT_EQ(log.Path(), directory / "n_2.log");
  EXPECT_EQ(log.MaxSize, 100u);
  EXPECT_EQ(ReadWholeFile(target), "MAX_SIZE=5\nprecious");
}

TEST(CVLog, LeavesADirectoryAloneThatOthersCanWrite) {
  const CTempDirectory directory;
  const CTempDirectory temporary;
  fs::permissions(directory.Path(), fs::perms::all);
  CVLog log("n", true, MakeLogHost({{LogVariable("Dir"), directory.Path()}}, temporary.Path()));
  EXPECT_EQ(log.Path(), temporary / "n.log");
}

TEST(MakeDirectories, MakesNothingBehindADanglingLink) {
  const CTempDirectory directory;
  fs::create_symlink(directory / "nowhere", directory / "dangling");
  EXPECT_FALSE(MakeDirectories(directory / "dangling/x"));
  EXPECT_FALSE(fs::exists(directory / "nowhere"));
}

}  // namespace
}  // namespace kestra
