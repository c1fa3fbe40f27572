// Listing and describing files, on the real file system.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "platform/os/Clock.h"
#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/machine/Facilities.h"
#include "platform/win32/machine/files/DirectoryListing.h"
#include "tests/support/TempDirectory.h"

namespace kestra {
namespace {

using test::CTempDirectory;
namespace fs = std::filesystem;

constexpr uint64_t kTicksPerSecond = 10'000'000;

std::map<std::string, FileInfo> Entries(CDirectoryListing& listing) {
  std::map<std::string, FileInfo> result;
  FileInfo none;
  EXPECT_EQ(listing.Info(none), kErrorInvalidParameter);  // nothing was listed yet
  std::string name;
  SystemError error = kErrorSuccess;
  while ((error = listing.Next(name)) == kErrorSuccess) {
    EXPECT_EQ(listing.Info(result[name]), kErrorSuccess) << name;
  }
  EXPECT_EQ(error, kErrorNoMoreFiles);
  return result;
}

struct EntryCase {
  const char* name;
  FileKind kind;
  uint32_t attributes;
  uint64_t size;
};

// "archive", which new files have, says nothing.
uint32_t Telling(uint32_t attributes) {
  return attributes & (kFileAttributeReadOnly | kFileAttributeHidden | kFileAttributeSystem |
                       kFileAttributeDirectory | kFileAttributeReparsePoint);
}

class WindowsFileSystem : public testing::Test {
 protected:
  const CTempDirectory directory;
  const std::unique_ptr<CFileSystem> files = MakeWindowsFileSystem();
};

TEST_F(WindowsFileSystem, BothWaysOfListingTellTheSame) {
  directory.Write("file", "12345");
  SetFileAttributesW(Wide(directory.Write("readonly", "")).c_str(), FILE_ATTRIBUTE_READONLY);
  SetFileAttributesW(Wide(directory.Write("hidden", "")).c_str(), FILE_ATTRIBUTE_HIDDEN);
  fs::create_directory(directory / "sub");
  const std::string umlaut = "\xc3\xa4\xf0\x9f\x98\x80";
  std::unique_ptr<CFileWriter> writer;
  ASSERT_EQ(files->BeginWrite(directory / "" + umlaut, LastLink::Refuse, Existing::Refuse,
                              NewRights::Usual, writer),
            kErrorSuccess);
  ASSERT_EQ(writer->Commit(), kErrorSuccess);

  std::unique_ptr<CDirectoryListing> byHandle, byName;
  ASSERT_EQ(OpenWindowsDirectory(directory.Path() + "\\", byHandle), kErrorSuccess);
  ASSERT_EQ(OpenWindowsDirectoryByName(directory.Path(), byName), kErrorSuccess);
  const auto entries = Entries(*byHandle), named = Entries(*byName);
  const EntryCase cases[] = {
      {"file", FileKind::File, 0, 5},
      {"readonly", FileKind::File, kFileAttributeReadOnly, 0},
      {"hidden", FileKind::File, kFileAttributeHidden, 0},
      {"sub", FileKind::Directory, kFileAttributeDirectory, 0},
      {umlaut.c_str(), FileKind::File, 0, 0},
      {".", FileKind::Directory, kFileAttributeDirectory, 0},
      {"..", FileKind::Directory, kFileAttributeDirectory, 0},
  };
  EXPECT_EQ(entries.size(), std::size(cases));
  EXPECT_EQ(named.size(), std::size(cases));
  for (const EntryCase& c : cases) {
    SCOPED_TRACE(c.name);
    ASSERT_TRUE(entries.count(c.name) && named.count(c.name));
    FileInfo direct;
    ASSERT_EQ(files->Info(directory / "" + c.name, direct), kErrorSuccess);
    for (const FileInfo& info : {entries.at(c.name), named.at(c.name), direct}) {
      EXPECT_EQ(info.kind, c.kind);
      EXPECT_EQ(Telling(info.attributes), c.attributes);
      EXPECT_EQ(info.size, c.size);
      EXPECT_EQ(info.lastWriteTime, direct.lastWriteTime);
    }
    EXPECT_EQ(named.at(c.name).identity, FileIdentity{});
    if (c.name[0] == '.') continue;
    EXPECT_EQ(entries.at(c.name).identity, direct.identity);
    EXPECT_EQ(entries.at(c.name).changeStamp, direct.changeStamp);
    EXPECT_NE(direct.identity, FileIdentity{});
    EXPECT_NE(direct.changeStamp, 0u);
  }
  FileInfo own;
  EXPECT_EQ(byHandle->OwnInfo(own), kErrorSuccess);
  EXPECT_EQ(own.identity, entries.at(".").identity);
  SetFileAttributesW(Wide(directory / "readonly").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(WindowsFileSystem, IdentityGoesWithTheFileAndNotItsName) {
  const std::string first = directory.Write("first", "1"), second = directory.Write("second", "1");
  FileInfo a, b, moved;
  ASSERT_EQ(files->Info(first, a), kErrorSuccess);
  ASSERT_EQ(files->Info(second, b), kErrorSuccess);
  ASSERT_EQ(files->Rename(first, directory / "moved"), kErrorSuccess);
  ASSERT_EQ(files->Info(directory / "moved", moved), kErrorSuccess);
  EXPECT_NE(a.identity, b.identity);
  EXPECT_EQ(a.identity, moved.identity);
  EXPECT_EQ(a.identity.volume, b.identity.volume);
}

TEST_F(WindowsFileSystem, ListsMoreThanOneBlock) {
  const std::string padding(100, 'x');
  constexpr size_t kCount = 1000;  // some 300 bytes of a block of 64 KB each
  for (size_t i = 0; i < kCount; ++i) directory.Write(padding + std::to_string(i), "");
  for (const auto open : {OpenWindowsDirectory, OpenWindowsDirectoryByName}) {
    std::unique_ptr<CDirectoryListing> listing;
    ASSERT_EQ(open(directory.Path(), listing), kErrorSuccess);
    EXPECT_EQ(Entries(*listing).size(), kCount + 2);
  }
}

struct ErrorCase {
  std::string path;
  SystemError info, list, read;
};

TEST_F(WindowsFileSystem, TellsAMissingFileFromAMissingDirectory) {
  directory.Write("file", "");
  fs::create_directory(directory / "sub");
  const SystemError none = kErrorFileNotFound, noPath = kErrorPathNotFound;
  const SystemError denied = kErrorAccessDenied, invalid = kErrorInvalidName;
  const ErrorCase cases[] = {
      {directory / "file", 0, kErrorDirectory, 0},
      {directory / "file\\", noPath, kErrorDirectory, noPath},
      {directory / "sub", 0, 0, denied},
      {directory / "sub\\", 0, 0, denied},
      {directory / "missing", none, none, none},
      {directory / "missing\\", none, none, none},
      {directory / "missing\\x", noPath, noPath, noPath},
      {directory / "file\\x", noPath, noPath, noPath},
      {directory / "file*", invalid, invalid, invalid},
      {directory / "nul", denied, denied, denied},
      {directory / "file:stream", invalid, invalid, invalid},
      {"\\\\.\\pipe\\x", denied, denied, denied},
      {"C:\\", 0, 0, denied},
      {"", noPath, noPath, noPath},
  };
  for (const ErrorCase& c : cases) {
    FileInfo info;
    std::unique_ptr<CDirectoryListing> listing;
    std::unique_ptr<CFileReader> reader;
    EXPECT_EQ(files->Info(c.path, info), c.info) << c.path;
    EXPECT_EQ(files->OpenDirectory(c.path, listing), c.list) << c.path;
    EXPECT_EQ(files->OpenFile(c.path, LastLink::Follow, reader), c.read) << c.path;
    EXPECT_EQ(files->OpenFile(c.path, LastLink::Refuse, reader), c.read) << c.path;
  }
}

TEST_F(WindowsFileSystem, TakesPathsOfAnyLength) {
  std::string path = directory.Path();
  std::vector<std::string> made;
  for (int i = 0; i < 5; ++i) {
    path += "\\" + std::string(100, 'd');
    ASSERT_EQ(files->MakeDirectory(path, NewRights::Usual), kErrorSuccess) << path.size();
    made.push_back(path);
  }
  ASSERT_GT(path.size(), 500u);
  const std::string file = path + "\\file";
  std::unique_ptr<CFileWriter> writer;
  ASSERT_EQ(files->BeginWrite(file, LastLink::Refuse, Existing::Refuse, NewRights::Usual, writer),
            kErrorSuccess);
  EXPECT_EQ(writer->Write("deep"), kErrorSuccess);
  EXPECT_EQ(writer->Commit(), kErrorSuccess);
  std::unique_ptr<CDirectoryListing> listing;
  ASSERT_EQ(files->OpenDirectory(path, listing), kErrorSuccess);
  EXPECT_EQ(Entries(*listing).count("file"), 1u);
  EXPECT_EQ(files->RemoveFile(file), kErrorSuccess);
  listing.reset();
  for (; !made.empty(); made.pop_back())
    EXPECT_EQ(files->RemoveEmptyDirectory(made.back()), kErrorSuccess);
}

TEST_F(WindowsFileSystem, ReadsPiecesFromAnywhere) {
  const std::string path = directory.Write("file", "0123456789");
  std::unique_ptr<CFileReader> reader;
  ASSERT_EQ(files->OpenFile(path, LastLink::Refuse, reader), kErrorSuccess);
  std::string bytes = "<";
  EXPECT_EQ(reader->Read(4, bytes), kErrorSuccess);
  EXPECT_EQ(reader->Seek(8), kErrorSuccess);
  EXPECT_EQ(reader->Read(100, bytes), kErrorSuccess);
  EXPECT_EQ(reader->Read(100, bytes), kErrorSuccess);
  EXPECT_EQ(reader->Seek(uint64_t{1} << 40), kErrorSuccess);
  EXPECT_EQ(reader->Read(100, bytes), kErrorSuccess);
  EXPECT_EQ(reader->Seek(~uint64_t{0}), kErrorInvalidParameter);
  EXPECT_EQ(bytes, "<012389");
  // Nobody is kept from anything meanwhile, and the reader goes on telling of its file.
  EXPECT_EQ(files->Rename(path, directory / "moved"), kErrorSuccess);
  EXPECT_EQ(files->RemoveFile(directory / "moved"), kErrorSuccess);
  FileInfo info;
  EXPECT_EQ(reader->Info(info), kErrorSuccess);
  EXPECT_EQ(info.size, 10u);
  EXPECT_LT(info.lastWriteTime.ticks, os::SystemTimeAsFileTime().ticks + 2 * kTicksPerSecond);
  EXPECT_GT(info.lastWriteTime.ticks, os::SystemTimeAsFileTime().ticks - 600 * kTicksPerSecond);
}

TEST_F(WindowsFileSystem, AFileThatIsHeldByAnotherProgram) {
  const std::string path = directory.Write("file", "x");
  const CUniqueHandle held(
      CreateFileW(Wide(path).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(held);
  FileInfo info;
  std::unique_ptr<CFileReader> reader;
  std::unique_ptr<CFileWriter> writer;
  EXPECT_EQ(files->Info(path, info), kErrorSuccess);
  EXPECT_EQ(info.size, 1u);
  EXPECT_EQ(files->OpenFile(path, LastLink::Refuse, reader), kErrorSharingViolation);
  EXPECT_EQ(files->BeginWrite(path, LastLink::Refuse, Existing::Replace, NewRights::Usual, writer),
            kErrorSharingViolation);
  EXPECT_EQ(files->RemoveFile(path), kErrorSharingViolation);
  EXPECT_EQ(files->Rename(path, directory / "other"), kErrorSharingViolation);
}

TEST_F(WindowsFileSystem, ShortPathsAndVolumes) {
  const std::string path = directory.Write("a rather long name.text", "");
  std::string shortPath;
  ASSERT_EQ(files->ShortPath(path, shortPath), kErrorSuccess);
  FileInfo info, same;
  ASSERT_EQ(files->Info(shortPath, same), kErrorSuccess) << shortPath;
  ASSERT_EQ(files->Info(path, info), kErrorSuccess);
  EXPECT_EQ(same.identity, info.identity);
  EXPECT_EQ(shortPath.substr(1, 2), ":\\");
  EXPECT_EQ(files->ShortPath(directory / "missing", shortPath), kErrorFileNotFound);
  uint32_t flags = 0, ofFile = 0;
  EXPECT_EQ(files->VolumeFlags("C:\\", flags), kErrorSuccess);
  EXPECT_EQ(files->VolumeFlags(path, ofFile), kErrorSuccess);
  EXPECT_EQ(flags, ofFile);
  EXPECT_NE(flags, 0u);
}

}  // namespace
}  // namespace kestra
