// A file that is written again only if it is still the one that was read.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>

#include "platform/linux/UniqueFd.h"
#include "platform/linux/machine/Facilities.h"
#include "platform/machine/FileSystem.h"
#include "platform/os/Clock.h"
#include "tests/support/NamesIn.h"
#include "tests/support/TempDirectory.h"

namespace kestra {
namespace {

using test::CTempDirectory;
using test::ReadWholeFile;
namespace fs = std::filesystem;

// Reads, has something happen, and writes.
SystemError ReadAndWrite(const std::string& path, const std::function<void()>& beforeBegin,
                         const std::function<void()>& beforeCommit) {
  const auto files = MakeLinuxFileSystem();
  std::unique_ptr<CFileReader> reader;
  FileInfo info;
  EXPECT_EQ(files->OpenFile(path, LastLink::Follow, reader), kErrorSuccess);
  EXPECT_EQ(reader->Info(info), kErrorSuccess);
  os::Sleep(20);  // the clock of the file system goes in steps
  beforeBegin();
  std::unique_ptr<CFileWriter> writer;
  SystemError error =
      files->BeginWrite(path, LastLink::Follow, Existing::Replace, NewRights::Usual, writer);
  if (error != kErrorSuccess) return error;
  writer->ExpectUnchanged(info);
  EXPECT_EQ(writer->Write("ours"), kErrorSuccess);
  beforeCommit();
  return writer->Commit();
}

TEST(LinuxFileState, ACommitThatWouldLoseAnotherChangeIsRefused) {
  const CTempDirectory directory;
  const std::string path = directory / "file";
  const std::function<void()> nothing = [] {};
  const auto replace = [&] {
    directory.Write("other", "theirs");
    fs::rename(directory / "other", path);
  };
  const auto write = [&] { directory.Write("file", "old!"); };  // of the same length
  CUniqueFd held;
  const auto lock = [&] {
    held = CUniqueFd(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(flock(held.get(), LOCK_EX), 0);
  };
  const struct {
    const char* what;
    std::function<void()> beforeBegin, beforeCommit;
    SystemError expected;
    const char* content;
  } cases[] = {
      {"nothing", nothing, nothing, kErrorSuccess, "ours"},
      {"only read", nothing, [&] { ReadWholeFile(path); }, kErrorSuccess, "ours"},
      {"replaced before", replace, nothing, kErrorSharingViolation, "theirs"},
      {"replaced while we wrote", nothing, replace, kErrorSharingViolation, "theirs"},
      {"written before", write, nothing, kErrorSharingViolation, "old!"},
      {"written while we wrote", nothing, write, kErrorSharingViolation, "old!"},
      {"other rights", nothing, [&] { chmod(path.c_str(), 0600); }, kErrorSharingViolation, "old."},
      {"removed", nothing, [&] { fs::remove(path); }, kErrorSharingViolation, ""},
      {"locked by another writer", nothing, lock, kErrorSharingViolation, "old."},
  };
  for (const auto& c : cases) {
    held = CUniqueFd();
    directory.Write("file", "old.");
    EXPECT_EQ(ReadAndWrite(path, c.beforeBegin, c.beforeCommit), c.expected) << c.what;
    EXPECT_EQ(fs::exists(path) ? ReadWholeFile(path) : "", c.content) << c.what;
    EXPECT_LE(test::NamesIn(directory.Path()).size(), 1u) << c.what;
  }
}

TEST(LinuxFileState, IdentityGoesWithTheFileAndNotItsName) {
  const CTempDirectory directory;
  const std::string first = directory.Write("first", "1"), second = directory.Write("second", "1");
  const auto files = MakeLinuxFileSystem();
  FileInfo a, b, moved;
  ASSERT_EQ(files->Info(first, a), kErrorSuccess);
  ASSERT_EQ(files->Info(second, b), kErrorSuccess);
  fs::rename(first, directory / "moved");
  ASSERT_EQ(files->Info(directory / "moved", moved), kErrorSuccess);
  EXPECT_NE(a.identity, b.identity);
  EXPECT_EQ(a.identity, moved.identity);
  EXPECT_EQ(a.identity.volume, b.identity.volume);
  EXPECT_NE(a.changeStamp, 0u);
}

}  // namespace
}  // namespace kestra
