#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <map>

#include "platform/linux/machine/Facilities.h"
#include "platform/machine/FileSystem.h"
#include "platform/os/Clock.h"
#include "tests/support/TempDirectory.h"

namespace kestra {
namespace {

using test::CTempDirectory;
namespace fs = std::filesystem;

constexpr uint64_t kTicksPerSecond = 10'000'000;
constexpr uint64_t kSecondsTo1970 = 11'644'473'600;

std::map<std::string, FileInfo> List(CFileSystem& files, const std::string& path) {
  std::unique_ptr<CDirectoryListing> listing;
  std::map<std::string, FileInfo> result;
  EXPECT_EQ(files.OpenDirectory(path, listing), kErrorSuccess) << path;
  std::string name;
  while (listing && listing->Next(name) == kErrorSuccess) {
    EXPECT_EQ(listing->Info(result[name]), kErrorSuccess) << name;
  }
  return result;
}

struct EntryCase {
  const char* name;
  FileKind kind;
  uint32_t attributes;
};

TEST(LinuxFileSystem, SaysWhatEachEntryIsAndOpensNone) {
  const CTempDirectory directory;
  directory.Write("file", "12345");
  directory.Write("readonly", "");
  directory.Write(".hidden", "");
  fs::create_directory(directory / "sub");
  fs::create_symlink("sub", directory / "to-directory");
  fs::create_symlink("file", directory / "to-file");
  fs::create_symlink("nowhere", directory / "dangling");
  fs::create_symlink("loop", directory / "loop");
  ASSERT_EQ(chmod((directory / "readonly").c_str(), 0444), 0);
  ASSERT_EQ(mkfifo((directory / "fifo").c_str(), 0600), 0);
  const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{AF_UNIX, {}};
  (directory / "socket").copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  directory.Write("bytes\xFF", "");

  const auto files = MakeLinuxFileSystem();
  const auto entries = List(*files, directory.Path() + "/");
  close(descriptor);
  const EntryCase cases[] = {
      {"file", FileKind::File, kFileAttributeNormal},
      {"readonly", FileKind::File, kFileAttributeReadOnly},
      {".hidden", FileKind::File, kFileAttributeHidden},
      {"sub", FileKind::Directory, kFileAttributeDirectory},
      {"to-directory", FileKind::Link, kFileAttributeDirectory | kFileAttributeReparsePoint},
      {"to-file", FileKind::Link, kFileAttributeReparsePoint},
      {"dangling", FileKind::Link, kFileAttributeReparsePoint},
      {"loop", FileKind::Link, kFileAttributeReparsePoint},
      {"fifo", FileKind::Other, kFileAttributeNormal},
      {"socket", FileKind::Other, kFileAttributeNormal},
      {"bytes\xFF", FileKind::File, kFileAttributeNormal},
      {".", FileKind::Directory, kFileAttributeDirectory},
      {"..", FileKind::Directory, kFileAttributeDirectory},
  };
  EXPECT_EQ(entries.size(), std::size(cases));
  for (const EntryCase& test : cases) {
    ASSERT_TRUE(entries.count(test.name)) << test.name;
    EXPECT_EQ(entries.at(test.name).kind, test.kind) << test.name;
    EXPECT_EQ(entries.at(test.name).attributes, test.attributes) << test.name;
    if (test.name[0] == '.' && test.name[1] != 'h') continue;
    FileInfo direct;
    EXPECT_EQ(files->Info(directory / test.name, direct), kErrorSuccess) << test.name;
    EXPECT_EQ(direct.kind, test.kind) << test.name;
    EXPECT_EQ(direct.attributes, test.attributes) << test.name;
  }
  EXPECT_EQ(entries.at("file").size, 5u);
}

TEST(LinuxFileSystem, TimesAndSizesBeyond32Bits) {
  const CTempDirectory directory;
  const std::string path = directory.Write("big", "");
  ASSERT_EQ(truncate(path.c_str(), off_t{5} << 32), 0);
  const timespec times[] = {{1'000'000'000, 123'456'789}, {5'000'000'000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  FileInfo info;
  ASSERT_EQ(MakeLinuxFileSystem()->Info(path, info), kErrorSuccess);
  EXPECT_EQ(info.size, uint64_t{5} << 32);
  EXPECT_EQ(info.lastAccessTime.ticks,
            (1'000'000'000 + kSecondsTo1970) * kTicksPerSecond + 1'234'567);
  EXPECT_EQ(info.lastWriteTime.ticks, (5'000'000'000 + kSecondsTo1970) * kTicksPerSecond);
  // The time of birth is known or not, but it is not another one.
  const uint64_t now = os::SystemTimeAsFileTime().ticks;
  if (info.creationTime.ticks != 0) {
    EXPECT_LE(info.creationTime.ticks, now);
    EXPECT_GT(info.creationTime.ticks, now - 600 * kTicksPerSecond);
  }
}

TEST(LinuxFileSystem, AFileThatVanishesAfterItWasListed) {
  const CTempDirectory directory;
  directory.Write("a", "");
  const auto files = MakeLinuxFileSystem();
  std::unique_ptr<CDirectoryListing> listing;
  ASSERT_EQ(files->OpenDirectory(directory.Path(), listing), kErrorSuccess);
  FileInfo info;
  EXPECT_EQ(listing->Info(info), kErrorInvalidParameter);  // nothing was listed yet
  std::string name;
  while (listing->Next(name) == kErrorSuccess && name != "a") {
  }
  ASSERT_EQ(name, "a");
  fs::remove(directory / "a");
  EXPECT_EQ(listing->Info(info), kErrorFileNotFound);
  while (listing->Next(name) == kErrorSuccess) {
  }
  EXPECT_EQ(listing->Next(name), kErrorNoMoreFiles);
}

struct ErrorCase {
  std::string path;
  SystemError info;
  SystemError open;
};

TEST(LinuxFileSystem, TellsAMissingFileFromAMissingDirectory) {
  const CTempDirectory directory;
  directory.Write("file", "");
  fs::create_symlink("nowhere", directory / "dangling");
  const std::string longName(300, 'x');
  const ErrorCase cases[] = {
      {directory / "missing", kErrorFileNotFound, kErrorFileNotFound},
      {directory / "missing/", kErrorFileNotFound, kErrorFileNotFound},
      {directory / "missing/x", kErrorPathNotFound, kErrorPathNotFound},
      {directory / "file", kErrorSuccess, kErrorDirectory},
      {directory / "file/x", kErrorPathNotFound, kErrorPathNotFound},
      {directory / "dangling/x", kErrorPathNotFound, kErrorPathNotFound},
      {directory / longName, kErrorFilenameExceedsRange, kErrorFilenameExceedsRange},
      {"", kErrorPathNotFound, kErrorPathNotFound},
      {std::string("/etc\0/x", 7), kErrorInvalidName, kErrorInvalidName},
      {"/", kErrorSuccess, kErrorSuccess},
  };
  const auto files = MakeLinuxFileSystem();
  for (const ErrorCase& test : cases) {
    FileInfo info;
    std::unique_ptr<CDirectoryListing> listing;
    EXPECT_EQ(files->Info(test.path, info), test.info) << test.path;
    EXPECT_EQ(files->OpenDirectory(test.path, listing), test.open) << test.path;
  }
  std::string unused;
  EXPECT_EQ(files->ShortPath("/etc", unused), kErrorNotSupported);
}

}  // namespace
}  // namespace kestra
