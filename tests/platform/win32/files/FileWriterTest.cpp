// Writing files so that nothing is lost, on the real file system. Under Wine a file that is open
// takes the road of systems before Windows 10: two files change places.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/machine/Facilities.h"
#include "tests/support/NamesIn.h"
#include "tests/support/TempDirectory.h"

namespace kestra {
namespace {

using test::CTempDirectory;
using test::NamesIn;
using test::ReadWholeFile;
namespace fs = std::filesystem;

class WindowsFileWriter : public testing::Test {
 protected:
  SystemError Write(const std::string& name, const std::string& content, Existing existing) {
    std::unique_ptr<CFileWriter> writer;
    SystemError error =
        files->BeginWrite(directory / name, LastLink::Refuse, existing, NewRights::Usual, writer);
    if (error == kErrorSuccess) error = writer->Write(content);
    return error == kErrorSuccess ? writer->Commit() : error;
  }

  const CTempDirectory directory;
  const std::unique_ptr<CFileSystem> files = MakeWindowsFileSystem();
};

struct WriteCase {
  const char* name;
  Existing existing;
  SystemError error;
};

TEST_F(WindowsFileWriter, SaysWhatMayStandThere) {
  directory.Write("file", "old");
  directory.Write("locked", "old");
  fs::create_directory(directory / "sub");
  ASSERT_EQ(files->SetAttributes(directory / "locked", kFileAttributeReadOnly), kErrorSuccess);
  const WriteCase cases[] = {
      {"new", Existing::Refuse, 0},
      {"new2", Existing::Replace, 0},
      {"file", Existing::Refuse, kErrorFileExists},
      {"sub", Existing::Refuse, kErrorFileExists},
      {"sub", Existing::Replace, kErrorAccessDenied},
      {"sub\\", Existing::Replace, kErrorAccessDenied},
      {"locked", Existing::Replace, kErrorAccessDenied},
      {"none\\x", Existing::Replace, kErrorPathNotFound},
      {"nul", Existing::Replace, kErrorAccessDenied},
      {"file:s", Existing::Replace, kErrorInvalidName},
      {"a?b", Existing::Refuse, kErrorInvalidName},
      {"file", Existing::Replace, 0},
  };
  for (const WriteCase& c : cases) {
    EXPECT_EQ(Write(c.name, "content", c.existing), c.error) << c.name;
    if (c.error == 0) {
      EXPECT_EQ(ReadWholeFile(directory / c.name), "content") << c.name;
    }
  }
  EXPECT_EQ(NamesIn(directory.Path()),
            (std::set<std::string>{"file", "locked", "new", "new2", "sub"}));
  EXPECT_EQ(ReadWholeFile(directory / "locked"), "old");
  ASSERT_EQ(files->SetAttributes(directory / "locked", 0), kErrorSuccess);
}

TEST_F(WindowsFileWriter, TheOldOneStaysUntilTheCommit) {
  directory.Write("file", "old");
  std::unique_ptr<CFileWriter> writer;
  const auto begin = [&](const char* pName, Existing existing) {
    writer.reset();
    ASSERT_EQ(
        files->BeginWrite(directory / pName, LastLink::Refuse, existing, NewRights::Usual, writer),
        kErrorSuccess);
    EXPECT_EQ(writer->Write(std::string(3 << 20, 'n')), kErrorSuccess);
  };
  begin("file", Existing::Replace);
  EXPECT_EQ(ReadWholeFile(directory / "file"), "old");
  begin("late", Existing::Refuse);
  EXPECT_FALSE(fs::exists(directory / "late"));
  directory.Write("late", "theirs");
  EXPECT_EQ(writer->Commit(), kErrorFileExists);
  EXPECT_EQ(writer->Write("x"), kErrorFileExists);
  begin("file", Existing::Replace);
  EXPECT_EQ(writer->Commit(), kErrorSuccess);
  EXPECT_EQ(writer->Commit(), kErrorInvalidHandle);
  writer.reset();
  EXPECT_EQ(fs::file_size(directory / "file"), 3u << 20);
  EXPECT_EQ(ReadWholeFile(directory / "late"), "theirs");
  EXPECT_EQ(NamesIn(directory.Path()), (std::set<std::string>{"file", "late"}));
}

// Whether anybody has it open or not.
TEST_F(WindowsFileWriter, AttributesPassOver) {
  for (const bool isOpen : {false, true}) {
    SCOPED_TRACE(isOpen);
    const std::string path = directory.Write("file", "old");
    ASSERT_EQ(files->SetAttributes(path, kFileAttributeSystem), kErrorSuccess);
    FileInfo before, after;
    ASSERT_EQ(files->Info(path, before), kErrorSuccess);
    std::unique_ptr<CFileReader> reader;
    if (isOpen) {
      ASSERT_EQ(files->OpenFile(path, LastLink::Refuse, reader), kErrorSuccess);
    }
    Sleep(20);
    ASSERT_EQ(Write("file", "new", Existing::Replace), kErrorSuccess);
    EXPECT_EQ(ReadWholeFile(path), "new");
    std::string old;
    if (isOpen) {
      EXPECT_EQ(reader->Read(10, old), kErrorSuccess);
    }
    EXPECT_EQ(old, isOpen ? "old" : "");
    ASSERT_EQ(files->Info(path, after), kErrorSuccess);
    EXPECT_EQ(after.attributes & kFileAttributeSystem, kFileAttributeSystem);
    EXPECT_GT(after.lastWriteTime, before.lastWriteTime);
    reader.reset();
    ASSERT_EQ(files->SetAttributes(path, 0), kErrorSuccess);
    EXPECT_EQ(NamesIn(directory.Path()), std::set<std::string>{"file"});
  }
}

// Reads, has something happen, and writes.
TEST_F(WindowsFileWriter, ACommitThatWouldLoseAnotherChangeIsRefused) {
  const std::string path = directory / "file";
  const std::function<void()> nothing = [] {};
  const auto replace = [&] { EXPECT_EQ(Write("file", "they", Existing::Replace), kErrorSuccess); };
  const auto write = [&] { directory.Write("file", "old!"); };  // of the same length
  CUniqueHandle held;
  const auto openToWrite = [&] {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    held = CUniqueHandle(CreateFileW(Wide(path).c_str(), GENERIC_WRITE, kShareAll, nullptr,
                                     OPEN_EXISTING, 0, nullptr));
    EXPECT_TRUE(held);
  };
  const struct {
    const char* what;
    std::function<void()> beforeBegin, beforeCommit;
    SystemError expected;
    const char* content;
  } cases[] = {
      {"nothing", nothing, nothing, kErrorSuccess, "ours"},
      {"only read", nothing, [&] { ReadWholeFile(path); }, kErrorSuccess, "ours"},
      {"replaced before", replace, nothing, kErrorSharingViolation, "they"},
      {"replaced while we wrote", nothing, replace, kErrorSharingViolation, "they"},
      {"written before", write, nothing, kErrorSharingViolation, "old!"},
      {"written while we wrote", nothing, write, kErrorSharingViolation, "old!"},
      {"another writer has it open", nothing, openToWrite, kErrorSharingViolation, "old."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    held = CUniqueHandle();
    directory.Write("file", "old.");
    {
      std::unique_ptr<CFileReader> reader;
      FileInfo info;
      ASSERT_EQ(files->OpenFile(path, LastLink::Follow, reader), kErrorSuccess);
      ASSERT_EQ(reader->Info(info), kErrorSuccess);
      Sleep(20);  // the clock of the file system goes in steps
      c.beforeBegin();
      std::unique_ptr<CFileWriter> writer;
      ASSERT_EQ(
          files->BeginWrite(path, LastLink::Follow, Existing::Replace, NewRights::Usual, writer),
          kErrorSuccess);
      writer->ExpectUnchanged(info);
      EXPECT_EQ(writer->Write("ours"), kErrorSuccess);
      c.beforeCommit();
      EXPECT_EQ(writer->Commit(), c.expected);
    }
    held = CUniqueHandle();
    EXPECT_EQ(ReadWholeFile(path), c.content);
    EXPECT_EQ(NamesIn(directory.Path()), std::set<std::string>{"file"});
  }
}

}  // namespace
}  // namespace kestra
