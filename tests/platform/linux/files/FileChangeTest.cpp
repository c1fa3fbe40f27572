// Renaming, copying, attributes and the removal of directories, on a real file system.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <set>

#include "platform/linux/machine/Facilities.h"
#include "platform/machine/FileSystem.h"
#include "platform/os/Event.h"
#include "tests/support/NamesIn.h"
#include "tests/support/TempDirectory.h"

namespace kestra {
namespace {

using test::CTempDirectory;
using test::NamesIn;
using test::ReadWholeFile;
namespace fs = std::filesystem;

struct stat LinkStatusOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
  return status;
}

// "file", "other", "link" to file, "loose" to nowhere, "pipe", "full" with a file in it, "empty".
class LinuxFileChange : public testing::Test {
 protected:
  LinuxFileChange() {
    directory.Write("file", "text");
    directory.Write("other", "else");
    fs::create_symlink("file", directory / "link");
    fs::create_symlink("nowhere", directory / "loose");
    EXPECT_EQ(mkfifo((directory / "pipe").c_str(), 0600), 0);
    fs::create_directories(directory / "full");
    test::WriteWholeFile(directory / "full/in", "in");
    fs::create_directory(directory / "empty");
    before = NamesIn(directory.Path());
  }
  const CTempDirectory directory;
  const std::unique_ptr<CFileSystem> files = MakeLinuxFileSystem();
  std::set<std::string> before;
};

struct PairCase {
  const char* from;
  const char* to;
  SystemError error;
};

TEST_F(LinuxFileChange, RenamingNeverReplaces) {
  const PairCase refused[] = {
      {"file", "other", kErrorAlreadyExists},   {"file", "loose", kErrorAlreadyExists},
      {"full", "empty", kErrorAlreadyExists},   {"file", "file", kErrorAlreadyExists},
      {"none", "new", kErrorFileNotFound},      {"none/x", "new", kErrorPathNotFound},
      {"file", "none/new", kErrorPathNotFound}, {"full", "full/self", kErrorNotSupported},
  };
  for (const PairCase& c : refused)
    EXPECT_EQ(files->Rename(directory / c.from, directory / c.to), c.error) << c.from << c.to;
  EXPECT_EQ(NamesIn(directory.Path()), before);
  EXPECT_EQ(ReadWholeFile(directory / "other"), "else");
  for (const char* name : {"file", "link", "pipe", "full"})
    EXPECT_EQ(files->Rename(directory / name, directory / (std::string("empty/") + name)),
              kErrorSuccess);
  EXPECT_EQ(NamesIn(directory / "empty"), (std::set<std::string>{"file", "link", "pipe", "full"}));
  EXPECT_EQ(ReadWholeFile(directory / "empty/full/in"), "in");
}

TEST_F(LinuxFileChange, CopiesPlainFilesAndReplacesNothing) {
  const PairCase refused[] = {
      {"file", "other", kErrorFileExists},      {"file", "loose", kErrorFileExists},
      {"file", "empty", kErrorFileExists},      {"file", "file", kErrorFileExists},
      {"none", "new", kErrorFileNotFound},      {"loose", "new", kErrorFileNotFound},
      {"full", "new", kErrorAccessDenied},      {"pipe", "new", kErrorAccessDenied},
      {"file", "none/new", kErrorPathNotFound},
  };
  for (const PairCase& c : refused)
    EXPECT_EQ(files->CopyPlainFile(directory / c.from, directory / c.to, nullptr), c.error)
        << c.from << c.to;
  EXPECT_EQ(NamesIn(directory.Path()), before);
  EXPECT_EQ(files->CopyPlainFile(directory / "link", directory / "new", nullptr), kErrorSuccess);
  EXPECT_TRUE(S_ISREG(LinkStatusOf(directory / "new").st_mode));
  EXPECT_EQ(ReadWholeFile(directory / "new"), "text");
}

TEST_F(LinuxFileChange, ACopyHasTheModeAndTheTime) {
  const timespec times[] = {{1000, 0}, {2000, 123456789}};
  ASSERT_EQ(utimensat(AT_FDCWD, (directory / "file").c_str(), times, 0), 0);
  const mode_t former = umask(027);
  for (const auto& [mode, expected] : {std::pair(0600, 0600), {0777, 0750}, {0444, 0440}}) {
    fs::remove(directory / "new");
    ASSERT_EQ(chmod((directory / "file").c_str(), static_cast<mode_t>(mode)), 0);
    EXPECT_EQ(files->CopyPlainFile(directory / "file", directory / "new", nullptr), kErrorSuccess);
    const struct stat status = LinkStatusOf(directory / "new");
    EXPECT_EQ(status.st_mode & 07777, static_cast<mode_t>(expected));
    EXPECT_EQ(status.st_mtim.tv_sec, 2000);
    EXPECT_EQ(status.st_mtim.tv_nsec, 123456789);
  }
  umask(former);
}

TEST_F(LinuxFileChange, ACopyThatIsCutOffLeavesNothing) {
  test::WriteWholeFile(directory / "file", std::string(3 << 20, 'x'));
  os::CEvent event;
  event.Set();
  EXPECT_EQ(files->CopyPlainFile(directory / "file", directory / "new", &event), kErrorCancelled);
  // A limit of the process stands for a disk that is full in the middle.
  rlimit former{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &former), 0);
  const rlimit small{1 << 20, former.rlim_max};
  const auto handler = signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const SystemError error = files->CopyPlainFile(directory / "file", directory / "new", nullptr);
  setrlimit(RLIMIT_FSIZE, &former);
  signal(SIGXFSZ, handler);
  EXPECT_EQ(error, kErrorFileTooLarge);
  EXPECT_EQ(NamesIn(directory.Path()), before);
}

TEST_F(LinuxFileChange, ReadOnlyIsTheMissingRightToWrite) {
  struct Case {
    const char* name;
    uint32_t attributes;
    SystemError error;
    mode_t mode;
  };
  ASSERT_EQ(chmod((directory / "file").c_str(), 0764), 0);
  ASSERT_EQ(chmod((directory / "empty").c_str(), 01777), 0);
  const Case cases[] = {
      {"file", kFileAttributeNormal, kErrorSuccess, 0764},
      {"file", kFileAttributeReadOnly, kErrorSuccess, 0544},
      {"file", kFileAttributeReadOnly | kFileAttributeHidden, kErrorNotSupported, 0544},
      {"file", kFileAttributeSystem, kErrorNotSupported, 0544},
      {"file", 0, kErrorSuccess, 0744},
      {"empty", kFileAttributeReadOnly | kFileAttributeDirectory, kErrorSuccess, 01555},
      {"empty", kFileAttributeDirectory, kErrorSuccess, 01755},
      {"link", kFileAttributeReadOnly, kErrorNotSupported, 0777},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(files->SetAttributes(directory / c.name, c.attributes), c.error) << c.name;
    EXPECT_EQ(LinkStatusOf(directory / c.name).st_mode & 07777, c.mode) << c.name;
  }
  EXPECT_EQ(files->SetAttributes(directory / "none", 0), kErrorFileNotFound);
  EXPECT_EQ(files->SetAttributes(directory / "none/x", 0), kErrorPathNotFound);
}

TEST_F(LinuxFileChange, RemovesOnlyEmptyDirectories) {
  fs::create_directory_symlink("empty", directory / "linkdir");
  const std::pair<const char*, SystemError> cases[] = {
      {"full", kErrorDirNotEmpty},  {"file", kErrorDirectory},      {"linkdir", kErrorDirectory},
      {"none", kErrorFileNotFound}, {"none/x", kErrorPathNotFound}, {"file/x", kErrorPathNotFound},
      {"empty", kErrorSuccess},
  };
  for (const auto& [name, error] : cases)
    EXPECT_EQ(files->RemoveEmptyDirectory(directory / name), error) << name;
  before.erase("empty");
  before.insert("linkdir");
  EXPECT_EQ(NamesIn(directory.Path()), before);
}

}  // namespace
}  // namespace kestra
