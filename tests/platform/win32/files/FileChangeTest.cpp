// Renaming, copying, removing, attributes and rights, on the real file system.
#include <aclapi.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <thread>

#include "platform/os/Event.h"
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

// "file", "other", "full" with a file in it, "empty".
class WindowsFileChange : public testing::Test {
 protected:
  WindowsFileChange() {
    directory.Write("file", "text");
    directory.Write("other", "else");
    fs::create_directory(directory / "full");
    test::WriteWholeFile(directory / "full\\in", "in");
    fs::create_directory(directory / "empty");
    before = NamesIn(directory.Path());
  }
  DWORD AttributesOf(const std::string& name) const {
    return GetFileAttributesW(Wide(directory / name).c_str());
  }

  const CTempDirectory directory;
  const std::unique_ptr<CFileSystem> files = MakeWindowsFileSystem();
  std::set<std::string> before;
};

struct PairCase {
  const char* from;
  const char* to;
  SystemError error;
};

TEST_F(WindowsFileChange, RenamingNeverReplaces) {
  const PairCase refused[] = {
      {"file", "other", kErrorAlreadyExists}, {"file", "empty", kErrorAlreadyExists},
      {"full", "empty", kErrorAlreadyExists}, {"none", "new", kErrorFileNotFound},
      {"none\\x", "new", kErrorPathNotFound}, {"file", "none\\new", kErrorPathNotFound},
      {"file", "nul", kErrorAccessDenied},    {"file", "new:s", kErrorInvalidName},
      {"file\\", "new", kErrorDirectory},     {"file", "new\\", kErrorDirectory},
      {"file.", "new", kErrorInvalidName},    {"file", "new ", kErrorInvalidName},
  };
  for (const PairCase& c : refused)
    EXPECT_EQ(files->Rename(directory / c.from, directory / c.to), c.error) << c.from << c.to;
  EXPECT_EQ(NamesIn(directory.Path()), before);
  EXPECT_EQ(ReadWholeFile(directory / "other"), "else");
  for (const char* pName : {"file", "full"})
    EXPECT_EQ(files->Rename(directory / pName, directory / (std::string("empty\\") + pName)),
              kErrorSuccess);
  EXPECT_EQ(ReadWholeFile(directory / "empty\\full\\in"), "in");
  EXPECT_EQ(files->Rename(directory / "other", directory / "OTHER"), kErrorSuccess);
  EXPECT_EQ(ReadWholeFile(directory / "OTHER"), "else");  // Wine goes on writing it small
  EXPECT_EQ(NamesIn(directory.Path()).size(), 2u);
}

TEST_F(WindowsFileChange, CopiesPlainFilesAndReplacesNothing) {
  const PairCase refused[] = {
      {"file", "other", kErrorFileExists},   {"file", "empty", kErrorFileExists},
      {"file", "file", kErrorFileExists},    {"none", "new", kErrorFileNotFound},
      {"full", "new", kErrorAccessDenied},   {"file", "none\\new", kErrorPathNotFound},
      {"nul", "new", kErrorAccessDenied},    {"file", "nul", kErrorAccessDenied},
      {"file", "new\\", kErrorAccessDenied},
  };
  for (const PairCase& c : refused)
    EXPECT_EQ(files->CopyPlainFile(directory / c.from, directory / c.to, nullptr), c.error)
        << c.from << c.to;
  EXPECT_EQ(NamesIn(directory.Path()), before);
  EXPECT_EQ(ReadWholeFile(directory / "other"), "else");
}

TEST_F(WindowsFileChange, ACopyHasTheAttributesAndTheTime) {
  FileInfo source, copy;
  for (const uint32_t attributes : {0u, kFileAttributeHidden, kFileAttributeReadOnly}) {
    SCOPED_TRACE(attributes);
    ASSERT_EQ(files->SetAttributes(directory / "file", attributes), kErrorSuccess);
    ASSERT_EQ(files->Info(directory / "file", source), kErrorSuccess);
    Sleep(20);
    const os::CEvent notSignalled;
    ASSERT_EQ(files->CopyPlainFile(directory / "file", directory / "new", &notSignalled),
              kErrorSuccess);
    EXPECT_EQ(ReadWholeFile(directory / "new"), "text");
    ASSERT_EQ(files->Info(directory / "new", copy), kErrorSuccess);
    EXPECT_EQ(copy.lastWriteTime, source.lastWriteTime);
    constexpr uint32_t kLooked = kFileAttributeHidden | kFileAttributeReadOnly;
    EXPECT_EQ(copy.attributes & kLooked, attributes);
    ASSERT_EQ(files->SetAttributes(directory / "new", 0), kErrorSuccess);
    ASSERT_EQ(files->RemoveFile(directory / "new"), kErrorSuccess);
  }
  ASSERT_EQ(files->SetAttributes(directory / "file", 0), kErrorSuccess);
}

// Of a read-only file as well, which does not go so easily.
TEST_F(WindowsFileChange, ACopyThatIsCancelledLeavesNothing) {
  test::WriteWholeFile(directory / "file", std::string(3 << 20, 'x'));
  ASSERT_EQ(files->SetAttributes(directory / "file", kFileAttributeReadOnly), kErrorSuccess);
  os::CEvent event;
  event.Set();
  EXPECT_EQ(files->CopyPlainFile(directory / "file", directory / "new", &event), kErrorCancelled);
  EXPECT_EQ(NamesIn(directory.Path()), before);
  ASSERT_EQ(files->SetAttributes(directory / "file", 0), kErrorSuccess);
}

// Wherever the cancel falls: the whole copy, or none.
TEST_F(WindowsFileChange, ACopyThatIsCancelledOnTheWayLeavesNothingHalf) {
  constexpr size_t kSize = 32 << 20;
  test::WriteWholeFile(directory / "file", std::string(kSize, 'x'));
  os::CEvent event;
  std::thread canceller([&] {
    for (int i = 0; i < 5000 && NamesIn(directory.Path()) == before; ++i) Sleep(1);
    event.Set();
  });
  const SystemError error = files->CopyPlainFile(directory / "file", directory / "new", &event);
  canceller.join();
  if (error == kErrorSuccess) {
    EXPECT_EQ(fs::file_size(directory / "new"), kSize);
    ASSERT_EQ(files->RemoveFile(directory / "new"), kErrorSuccess);
  } else {
    EXPECT_EQ(error, kErrorCancelled);
  }
  EXPECT_EQ(NamesIn(directory.Path()), before);
}

// The entry that a directory can list as "file." is another one than "file".
TEST_F(WindowsFileChange, ANameWithADotAtItsEndChangesNothing) {
  std::unique_ptr<CFileWriter> writer;
  const std::string path = directory / "file.";
  EXPECT_EQ(files->RemoveFile(path), kErrorInvalidName);
  EXPECT_EQ(files->RemoveEmptyDirectory(directory / "empty "), kErrorInvalidName);
  EXPECT_EQ(files->MakeDirectory(directory / "made.", NewRights::Usual), kErrorInvalidName);
  EXPECT_EQ(files->CopyPlainFile(path, directory / "new", nullptr), kErrorInvalidName);
  EXPECT_EQ(files->SetAttributes(path, kFileAttributeHidden), kErrorInvalidName);
  EXPECT_EQ(files->GrantEveryone(path), kErrorInvalidName);
  EXPECT_EQ(files->MoveAtBoot(path, ""), kErrorInvalidName);
  EXPECT_EQ(files->BeginWrite(path, LastLink::Follow, Existing::Replace, NewRights::Usual, writer),
            kErrorInvalidName);
  EXPECT_EQ(NamesIn(directory.Path()), before);
}

TEST_F(WindowsFileChange, SetsThreeAttributesAndNoOther) {
  const DWORD archive = AttributesOf("file") & FILE_ATTRIBUTE_ARCHIVE;
  const struct {
    const char* name;
    uint32_t attributes;
    DWORD expected;
  } cases[] = {
      {"file", kFileAttributeReadOnly | kFileAttributeHidden,
       archive | FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN},
      {"file", kFileAttributeSystem | kFileAttributeCompressed | kFileAttributeDirectory,
       archive | FILE_ATTRIBUTE_SYSTEM},
      {"file", 0, archive ? archive : FILE_ATTRIBUTE_NORMAL},
      {"empty", kFileAttributeHidden, FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_HIDDEN},
      {"empty", kFileAttributeDirectory, FILE_ATTRIBUTE_DIRECTORY},
  };
  FileInfo first, last;
  ASSERT_EQ(files->Info(directory / "file", first), kErrorSuccess);
  for (const auto& c : cases) {
    EXPECT_EQ(files->SetAttributes(directory / c.name, c.attributes), kErrorSuccess) << c.name;
    EXPECT_EQ(AttributesOf(c.name), c.expected) << c.name << c.attributes;
  }
  ASSERT_EQ(files->Info(directory / "file", last), kErrorSuccess);
  EXPECT_EQ(first.lastWriteTime, last.lastWriteTime);
  EXPECT_EQ(first.creationTime, last.creationTime);
  EXPECT_EQ(files->SetAttributes(directory / "none", 0), kErrorFileNotFound);
  EXPECT_EQ(files->SetAttributes(directory / "none\\x", 0), kErrorPathNotFound);
}

TEST_F(WindowsFileChange, RemovesFilesAndEmptyDirectories) {
  directory.Write("readonly", "");
  ASSERT_EQ(files->SetAttributes(directory / "readonly", kFileAttributeReadOnly), kErrorSuccess);
  const struct {
    const char* name;
    SystemError file, emptyDirectory;
  } cases[] = {
      {"full", kErrorAccessDenied, kErrorDirNotEmpty},
      {"full\\", kErrorAccessDenied, kErrorDirNotEmpty},
      {"readonly", kErrorAccessDenied, kErrorDirectory},
      {"none", kErrorFileNotFound, kErrorFileNotFound},
      {"none\\x", kErrorPathNotFound, kErrorPathNotFound},
      {"nul", kErrorAccessDenied, kErrorAccessDenied},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(files->RemoveFile(directory / c.name), c.file) << c.name;
    EXPECT_EQ(files->RemoveEmptyDirectory(directory / c.name), c.emptyDirectory) << c.name;
  }
  EXPECT_EQ(files->RemoveEmptyDirectory(directory / "file"), kErrorDirectory);
  EXPECT_EQ(files->RemoveFile(directory / "file"), kErrorSuccess);
  EXPECT_EQ(files->RemoveFile(directory / "empty"), kErrorAccessDenied);
  EXPECT_EQ(files->RemoveEmptyDirectory(directory / "empty\\"), kErrorSuccess);
  EXPECT_EQ(NamesIn(directory.Path()), (std::set<std::string>{"full", "other", "readonly"}));
  EXPECT_EQ(files->MakeDirectory(directory / "other", NewRights::Usual), kErrorAlreadyExists);
  EXPECT_EQ(files->MakeDirectory(directory / "full", NewRights::Usual), kErrorAlreadyExists);
  EXPECT_EQ(files->MakeDirectory(directory / "none\\x", NewRights::Usual), kErrorPathNotFound);
  ASSERT_EQ(files->SetAttributes(directory / "readonly", 0), kErrorSuccess);
}

TEST_F(WindowsFileChange, EverybodyIsGranted) {
  // Wine has no lists, and tells of one that it makes up out of the file's mode: with the owner.
  const bool makesUpEntries =
      GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
  const DWORD wanted = makesUpEntries
                           ? FILE_GENERIC_READ | FILE_GENERIC_WRITE | FILE_GENERIC_EXECUTE
                           : FILE_ALL_ACCESS;
  for (const char* pName : {"file", "empty"}) {
    ASSERT_EQ(files->GrantEveryone(directory / pName), kErrorSuccess) << pName;
    PACL pList = nullptr;
    PSECURITY_DESCRIPTOR pDescriptor = nullptr;
    std::wstring path = Wide(directory / pName);
    ASSERT_EQ(GetNamedSecurityInfoW(path.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                    nullptr, &pList, nullptr, &pDescriptor),
              DWORD{ERROR_SUCCESS});
    const CUniqueLocal owner(pDescriptor);
    int full = 0;
    for (DWORD i = 0; pList && i < pList->AceCount; ++i) {
      void* pEntry = nullptr;
      ASSERT_TRUE(GetAce(pList, i, &pEntry));
      auto* const pAllowed = static_cast<ACCESS_ALLOWED_ACE*>(pEntry);
      if ((pAllowed->Header.AceFlags & INHERITED_ACE) != 0) continue;
      ASSERT_EQ(pAllowed->Header.AceType, ACCESS_ALLOWED_ACE_TYPE);
      const bool isEveryone = IsWellKnownSid(&pAllowed->SidStart, WinWorldSid);
      EXPECT_TRUE(isEveryone || makesUpEntries) << pName;
      const bool isForItself = (pAllowed->Header.AceFlags & INHERIT_ONLY_ACE) == 0;
      full += isEveryone && isForItself && (pAllowed->Mask & wanted) == wanted;
    }
    EXPECT_EQ(full, 1) << pName;
  }
  const std::wstring second = Wide(directory / "second");
  ASSERT_TRUE(CreateHardLinkW(second.c_str(), Wide(directory / "other").c_str(), nullptr));
  EXPECT_EQ(files->GrantEveryone(directory / "other"), kErrorAccessDenied);
  EXPECT_EQ(files->GrantEveryone(directory / "none"), kErrorFileNotFound);
}

// What was planned before stays planned, and this plan goes with the test.
TEST_F(WindowsFileChange, PlansARenameForTheNextStart) {
  constexpr const wchar_t* kManager = L"SYSTEM\\CurrentControlSet\\Control\\Session Manager";
  constexpr const wchar_t* kPending = L"PendingFileRenameOperations";
  const auto registry = MakeWindowsRegistry();
  std::unique_ptr<CRegistryKey> root, key;
  ASSERT_EQ(registry->OpenRoot(RegistryRoot::LocalMachine, root), kErrorSuccess);
  ASSERT_EQ(root->OpenSubKey(Narrow(kManager), kKeyQueryValue | kKeySetValue, key), kErrorSuccess);
  uint32_t type = 0;
  std::string planned, now;
  const SystemError former = key->QueryValue(Narrow(kPending), type, planned);
  EXPECT_EQ(files->MoveAtBoot(directory / "file", directory / "other"), kErrorSuccess);
  EXPECT_EQ(files->MoveAtBoot(directory / "full\\in", ""), kErrorSuccess);
  EXPECT_EQ(files->MoveAtBoot("", directory / "other"), kErrorPathNotFound);
  EXPECT_EQ(key->QueryValue(Narrow(kPending), type, now), kErrorSuccess);
  const std::string added = "\\??\\" + (directory / "file") + '\0' + "!\\??\\" +
                            (directory / "other") + '\0' + "\\??\\" + (directory / "full\\in") +
                            '\0' + '\0';
  EXPECT_NE(now.find(added), std::string::npos) << now;
  if (former == kErrorSuccess)
    EXPECT_EQ(key->SetValue(Narrow(kPending), kRegMultiSz, planned), kErrorSuccess);
  else
    EXPECT_EQ(key->DeleteValue(Narrow(kPending)), kErrorSuccess);
}

}  // namespace
}  // namespace kestra
