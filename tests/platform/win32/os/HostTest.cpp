// The host process's surroundings and files, in what is Windows' own.
#include <gtest/gtest.h>

#include "platform/os/HostEnvironment.h"
#include "platform/os/HostFile.h"
#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"
#include "tests/support/TempDirectory.h"

namespace kestra::os {
namespace {

TEST(HostEnvironment, RootLength) {
  const struct {
    const char* path;
    size_t length;
  } kCases[] = {
      {"", 0},
      {"C:", 0},
      {"C:\\", 3},
      {"c:/x", 3},
      {"C:x\\", 0},
      {"1:\\", 0},
      {"\\x", 0},
      {"\\\\", 0},
      {"\\\\server", 0},
      {"\\\\server\\share", 0},
      {"\\\\server\\share\\", 15},
      {"\\\\server\\share\\x", 15},
      {"\\\\\\share\\x", 0},
      {"\\\\?\\C:\\x", 7},
  };
  for (const auto& test : kCases) EXPECT_EQ(RootLength(test.path), test.length) << test.path;
}

TEST(HostEnvironment, ReadsVariables) {
  const std::string longText(5000, 'x');
  for (const std::string& value : {std::string(), std::string("\xC3\xA4 b"), longText}) {
    SetEnvironmentVariableW(L"KESTRA_TEST", Wide(value).c_str());
    EXPECT_EQ(ReadEnvironment("KESTRA_TEST"), value);
  }
  SetEnvironmentVariableW(L"KESTRA_TEST", nullptr);
  EXPECT_EQ(ReadEnvironment("KESTRA_TEST"), std::nullopt);
  EXPECT_EQ(ReadEnvironment(""), std::nullopt);
  EXPECT_EQ(ReadEnvironment(std::string("PATH\0x", 6)), std::nullopt);
}

TEST(HostEnvironment, KnowsItsPlace) {
  EXPECT_TRUE(ExecutablePath().ends_with(".exe")) << ExecutablePath();
  EXPECT_EQ(LibraryPath(), ExecutablePath());
  EXPECT_EQ(LibraryLoadAddress(), reinterpret_cast<uintptr_t>(GetModuleHandleW(nullptr)));
  EXPECT_TRUE(DirectoryExists(TemporaryDirectory()));
  EXPECT_FALSE(TemporaryDirectory().ends_with('\\'));
  const std::string user = CurrentUserName().value_or("");
  const size_t separator = user.find('\\');
  EXPECT_TRUE(separator != std::string::npos && separator > 0 && separator + 1 < user.size())
      << user;
}

TEST(OpenExclusive, TakesPlainFilesOnly) {
  const test::CTempDirectory directory;
  const std::string path = directory.Write("f", "x");
  const std::string second = directory / "second";
  ASSERT_TRUE(CreateHardLinkW(Wide(second).c_str(), Wide(path).c_str(), nullptr));
  std::unique_ptr<CHostFile> file;
  EXPECT_EQ(OpenExclusive(path, file), kErrorAccessDenied);
  EXPECT_EQ(OpenExclusive(second, file), kErrorAccessDenied);
  EXPECT_EQ(OpenExclusive("NUL", file), kErrorAccessDenied);
  std::string content;
  EXPECT_EQ(ReadFileHead("NUL", 10, content), kErrorAccessDenied);
  EXPECT_EQ(ReadFileHead(path, 10, content), kErrorSuccess);  // a second name does no harm here
  ASSERT_TRUE(DeleteFileW(Wide(second).c_str()));
  EXPECT_EQ(OpenExclusive(path, file), kErrorSuccess);
  EXPECT_EQ(ReadFileHead(path, 10, content), kErrorSuccess);  // readers are let in
}

TEST(OpenExclusive, RefusesLinks) {
  const test::CTempDirectory directory;
  const std::string path = directory.Write("f", "x");
  const std::string link = directory / "link";
  if (!CreateSymbolicLinkW(Wide(link).c_str(), Wide(path).c_str(), 0))
    GTEST_SKIP() << "the system makes no links, or not for this user";
  const CUniqueHandle opened(CreateFileW(Wide(link).c_str(), 0, FILE_SHARE_READ, nullptr,
                                         OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  BY_HANDLE_FILE_INFORMATION info{};
  GetFileInformationByHandle(opened.get(), &info);
  // Wine opens what the link leads to, whatever the flag says.
  if ((info.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
    GTEST_SKIP() << "links cannot be opened themselves here";
  std::unique_ptr<CHostFile> file;
  EXPECT_EQ(OpenExclusive(link, file), kErrorAccessDenied);
  std::string content;
  EXPECT_EQ(ReadFileHead(link, 10, content), kErrorAccessDenied);
}

TEST(HostFiles, NamesAreUnicode) {
  const test::CTempDirectory directory;
  const std::string path = directory / "\xC3\xA4\xE4\xB8\xAD";
  std::unique_ptr<CHostFile> file;
  ASSERT_EQ(OpenExclusive(path, file), kErrorSuccess);
  EXPECT_EQ(GetFileAttributesW((Wide(directory.Path()) + L"\\\u00E4\u4E2D").c_str()) &
                FILE_ATTRIBUTE_DIRECTORY,
            0u);
  file.reset();
  DeleteFileW(Wide(path).c_str());
}

}  // namespace
}  // namespace kestra::os
