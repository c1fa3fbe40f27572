#include <gtest/gtest.h>

#include <filesystem>

#include "VLib/src/log/LogDirectory.h"
#include "platform/os/HostEnvironment.h"
#include "tests/VLib/log/LogTestHost.h"

namespace kestra {
namespace {

using namespace test;
namespace fs = std::filesystem;

// The last resort is the root of the drive, which not every user may write into.
TEST(CVLog, WithoutAnyDirectoryTheDriveIsTried) {
  const std::string name = "kestra-test-" + std::to_string(os::CurrentProcessId());
  const std::string path = "C:\\" + name + ".log";
  {
    CVLog log(name, true, MakeLogHost({}, ""));
    EXPECT_TRUE(log.Path() == path || log.Path().empty()) << log.Path();
    EXPECT_EQ(log.Error("lost").IsOpen(), !log.Path().empty());
  }
  fs::remove(path);
}

TEST(MakeDirectories, TakesBothSeparators) {
  const CTempDirectory directory;
  EXPECT_TRUE(MakeDirectories(directory / "a/b\\c\\/"));
  EXPECT_TRUE(fs::is_directory(directory / "a\\b\\c"));
  EXPECT_FALSE(MakeDirectories("Q:\\no\\such\\drive"));
}

}  // namespace
}  // namespace kestra
