// One file as an item, over a file system in memory and over a real file.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "Modules/Files/FileItem.h"
#include "platform/os/HostEnvironment.h"
#include "tests/Modules/Show.h"
#include "tests/support/FailingMachine.h"
#include "tests/support/FakeMachine.h"

namespace kestra {
namespace {

using test::CFailingMachine;
using test::CFakeMachine;
using test::FakeFile;

// The file time of a Datime.
FileTime TimeOf(uint64_t secondsSince1970) {
  return FileTime{(secondsSince1970 + 11'644'473'600) * 10'000'000};
}

FakeFile File(uint64_t size, uint32_t attributes, FileTime creation, FileTime access,
              FileTime write) {
  FakeFile file;
  file.size = size;
  file.attributes = attributes;
  file.creationTime = creation;
  file.lastAccessTime = access;
  file.lastWriteTime = write;
  return file;
}

struct InfoCase {
  const char* what;
  FakeFile file;
  const char* expected;
};

TEST(FileItem, ShowsWhatFits) {
  const FileTime some = TimeOf(1000);
  const InfoCase cases[] = {
      {"all known", File(12, kFileAttributeNormal, TimeOf(1), TimeOf(2), TimeOf(3)),
       "Size=12 CreationTime=1 LastAccessTime=2 LastWriteTime=3 Attributes=0"},
      {"empty file", File(0, 0, some, some, some),
       "Size=0 CreationTime=1000 LastAccessTime=1000 LastWriteTime=1000 Attributes=0"},
      {"the greatest size", File(4294967295, 0, {}, {}, {}), "Size=4294967295 Attributes=0"},
      {"4 GiB", File(4294967296, 0, {}, {}, {}), "Attributes=0"},
      {"times before 1970 and after 2106", File(1, 0, FileTime{1}, TimeOf(4294967296), TimeOf(0)),
       "Size=1 LastWriteTime=0 Attributes=0"},
      {"the last second of 32 bits", File(1, 0, TimeOf(4294967295), {}, {}),
       "Size=1 CreationTime=4294967295 Attributes=0"},
      {"read-only", File(1, kFileAttributeReadOnly, {}, {}, {}), "Size=1 Attributes=1"},
      {"hidden", File(1, kFileAttributeHidden, {}, {}, {}), "Size=1 Attributes=2"},
      {"system", File(1, kFileAttributeSystem, {}, {}, {}), "Size=1 Attributes=4"},
      {"compressed", File(1, kFileAttributeCompressed, {}, {}, {}), "Size=1 Attributes=8"},
      {"every bit there is", File(1, 0xFFFFFFFF, {}, {}, {}), "Size=1 Attributes=15"},
  };
  for (const InfoCase& c : cases) {
    SCOPED_TRACE(c.what);
    auto machine = MakeRef<CFakeMachine>(SystemFamily::Windows);
    machine->files.Add("C:\\x\\a.txt", c.file);
    auto file = MakeRef<CFileItem>(machine, "C:\\x", "a.txt");
    QueryMessage message;
    ASSERT_TRUE(file->Init(false, false, message));
    EXPECT_EQ(Show(*file), std::string("Path=C:\\x\\a.txt FileName=a.txt ") + c.expected);
    EXPECT_EQ(file->GetName(), "File");
  }
}

struct PathCase {
  SystemFamily family;
  const char* directory;
  const char* expected;
};

TEST(FileItem, JoinsDirectoryAndNameAsTheMachineDoes) {
  const PathCase cases[] = {
      {SystemFamily::Linux, "/etc", "/etc/hosts"},
      {SystemFamily::Linux, "/etc/", "/etc/hosts"},
      {SystemFamily::Linux, "/", "/hosts"},
      {SystemFamily::Linux, "/a\\", "/a\\/hosts"},  // a directory whose name ends in a backslash
      {SystemFamily::Windows, "C:\\", "C:\\hosts"},
      {SystemFamily::Windows, "C:\\etc", "C:\\etc\\hosts"},
  };
  for (const PathCase& c : cases) {
    auto machine = MakeRef<CFakeMachine>(c.family);
    machine->files.Add(c.expected, {.size = 7});
    auto file = MakeRef<CFileItem>(machine, c.directory, "hosts");
    QueryMessage message;
    EXPECT_TRUE(file->Init(false, false, message)) << c.expected;
    EXPECT_EQ(Show(*file),
              std::string("Path=") + c.expected + " FileName=hosts Size=7 Attributes=0");
  }
}

struct ErrorCase {
  SystemError error;
  bool filled;
  const char* expected;
};

TEST(FileItem, TellsWhatIsGoneFromWhatMayNotBeRead) {
  const ErrorCase cases[] = {
      {kErrorFileNotFound, false, ""},
      {kErrorPathNotFound, false, ""},
      {kErrorAccessDenied, true, "Path=/x/a FileName=a"},
      {kErrorGenFailure, true, "Path=/x/a FileName=a"},
  };
  for (const ErrorCase& c : cases) {
    SCOPED_TRACE(c.error);
    auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
    machine->files.Add("/x/a", {.error = c.error});
    auto file = MakeRef<CFileItem>(machine, "/x", "a");
    QueryMessage message;
    EXPECT_EQ(file->Init(false, false, message), c.filled);
    EXPECT_EQ(file->HasVanished(), !c.filled);
    EXPECT_EQ(file->IsInitialized, c.filled);
    EXPECT_EQ(Show(*file), c.expected);
  }
}

TEST(FileItem, AMachineWithoutFilesHasNone) {
  auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  machine->hasFiles = false;
  auto file = MakeRef<CFileItem>(machine, "/x", "a");
  QueryMessage message;
  EXPECT_FALSE(file->Init(false, false, message));
  EXPECT_TRUE(file->HasVanished());
}

// What the listing said is taken once; a refill asks the system, and sees that the file is gone.
TEST(FileItem, TakesWhatTheListingSaidAndAsksAgainWhenForced) {
  auto inner = MakeRef<CFakeMachine>(SystemFamily::Windows);
  FakeFile onDisk;
  onDisk.size = 6;
  onDisk.shortPath = "C:\\LONGNA~1";
  inner->files.Add("C:\\long name", onDisk);
  auto machine = MakeRef<CFailingMachine>(inner);  // counts
  FileInfo listed;
  listed.size = 5;
  listed.attributes = kFileAttributeHidden;
  auto file = MakeRef<CFileItem>(machine, "C:\\", "long name", listed);

  QueryMessage message;
  machine->FailCall(0, kErrorSuccess);
  ASSERT_TRUE(file->Init(false, false, message));
  EXPECT_EQ(machine->Calls(), 1u);  // the short name alone
  EXPECT_EQ(Show(*file),
            "Path=C:\\long name ShortPathName=C:\\LONGNA~1 FileName=long name Size=5 Attributes=2");

  ASSERT_TRUE(file->Init(false, true, message));
  EXPECT_EQ(Show(*file),
            "Path=C:\\long name ShortPathName=C:\\LONGNA~1 FileName=long name Size=6 Attributes=0");

  inner->files.Remove("C:\\long name");
  EXPECT_FALSE(file->Init(false, true, message));
  EXPECT_TRUE(file->HasVanished());
  EXPECT_EQ(Show(*file), "");
}

TEST(FileItem, ShowsARealFile) {
  const std::string name = "kestra_file_item_" + std::to_string(os::CurrentProcessId());
  const std::filesystem::path path = std::filesystem::path(testing::TempDir()) / name;
  std::ofstream(path) << "hello";
  auto file = MakeRef<CFileItem>(LiveMachine(), testing::TempDir(), name);
  QueryMessage message;
  ASSERT_TRUE(file->Init(false, false, message));
  EXPECT_EQ(file->Params.Find("Size", false)->DWordValue, 5u);
  EXPECT_TRUE(file->Params.Find("LastWriteTime", false));
  ASSERT_TRUE(std::filesystem::remove(path));
  EXPECT_FALSE(file->Init(false, true, message));
  EXPECT_TRUE(file->HasVanished());
}

}  // namespace
}  // namespace kestra
