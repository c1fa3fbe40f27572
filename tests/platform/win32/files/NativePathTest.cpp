#include <gtest/gtest.h>

#include "platform/win32/base/Wide.h"
#include "platform/win32/machine/files/NativePath.h"

namespace kestra {
namespace {

struct PathCase {
  std::string path;
  SystemError error;
  const char* native;  // '!' in front: a directory by its end, '/': a root
};

TEST(NativePath, MakesPathsWholeAndKeepsDevicesOut) {
  const PathCase cases[] = {
      {"C:\\a\\b.txt", 0, "\\\\?\\C:\\a\\b.txt"},
      {"c:/a/./b/../c", 0, "\\\\?\\c:\\a\\c"},
      {"C:\\a\\", 0, "!\\\\?\\C:\\a"},
      {"C:\\a\\\\", 0, "!\\\\?\\C:\\a"},
      {"C:\\", 0, "/\\\\?\\C:\\"},
      {"C:\\..\\..", 0, "/\\\\?\\C:\\"},
      {"C:\\a. .", 0, "\\\\?\\C:\\a"},
      {"\\\\?\\C:\\a\\..\\b", 0, "\\\\?\\C:\\b"},
      {"\\\\?\\C:\\a.", kErrorInvalidName, ""},
      {"\\\\?\\C:\\a \\b", kErrorInvalidName, ""},
      {"\\\\srv\\share\\a\\b", 0, "\\\\?\\UNC\\srv\\share\\a\\b"},
      {"\\\\srv\\share", 0, "/\\\\?\\UNC\\srv\\share\\"},
      {"\\\\srv\\share\\", 0, "/\\\\?\\UNC\\srv\\share\\"},
      {"\\\\?\\UNC\\srv\\share\\x", 0, "\\\\?\\UNC\\srv\\share\\x"},
      {"\\\\?\\Volume{0-1}\\x", 0, "\\\\?\\Volume{0-1}\\x"},
      {"C:\\\xc3\xa4\xf0\x9f\x98\x80", 0, "\\\\?\\C:\\\xc3\xa4\xf0\x9f\x98\x80"},
      {"", kErrorPathNotFound, ""},
      {"\\\\srv", kErrorPathNotFound, ""},
      {"\\\\srv\\", kErrorPathNotFound, ""},
      {std::string("C:\\a\0b", 6), kErrorInvalidName, ""},
      {"C:\\a:stream", kErrorInvalidName, ""},
      {"C:\\a::$DATA", kErrorInvalidName, ""},
      {"C:\\a\\b:c\\d", kErrorInvalidName, ""},
      {"CON", kErrorAccessDenied, ""},
      {"C:\\a\\nul", kErrorAccessDenied, ""},
      {"\\\\.\\C:", kErrorAccessDenied, ""},
      {"\\\\.\\PhysicalDrive0", kErrorAccessDenied, ""},
      {"\\\\.\\pipe\\x", kErrorAccessDenied, ""},
      {"//./pipe/x", kErrorAccessDenied, ""},
      {"\\\\?\\pipe\\x", kErrorAccessDenied, ""},
      {"\\\\?\\GLOBALROOT\\Device\\Null", kErrorAccessDenied, ""},
      {"\\\\?\\Volume{0-1}", kErrorAccessDenied, ""},
      {"\\\\srv\\PIPE\\x", kErrorAccessDenied, ""},
      {"\\\\srv\\IPC$\\x", kErrorAccessDenied, ""},
      {"C:\\" + std::string(40000, 'x'), kErrorFilenameExceedsRange, ""},
      {"C:\\" + std::string(400000, 'x'), kErrorFilenameExceedsRange, ""},
  };
  for (const PathCase& c : cases) {
    NativePath native;
    EXPECT_EQ(ReadNativePath(c.path, native), c.error) << c.path.substr(0, 80);
    if (c.error != 0) continue;
    const std::string mark = native.isRoot ? "/" : native.isDirectoryOnly ? "!" : "";
    EXPECT_EQ(mark + Narrow(native.text), c.native) << c.path;
  }
}

TEST(NativePath, WhatIsToBeChangedEndsInNoDotOrBlank) {
  const std::pair<const char*, SystemError> cases[] = {
      {"C:\\a", 0},
      {"C:\\.a\\ b\\c.d e", 0},
      {"C:\\a\\.\\b\\..\\c", 0},
      {"C:\\a\\", 0},
      {"C:\\a. .", kErrorInvalidName},
      {"C:\\a.", kErrorInvalidName},
      {"C:\\a ", kErrorInvalidName},
      {"C:\\a.\\", kErrorInvalidName},
      {"C:/a /b", kErrorInvalidName},
      {"C:\\...", kErrorInvalidName},
      {"C:\\ \\b", kErrorInvalidName},
      {"", kErrorPathNotFound},
  };
  for (const auto& [path, error] : cases) {
    NativePath native;
    EXPECT_EQ(ReadPathToChange(path, native), error) << path;
  }
}

TEST(NativePath, KnowsWhereTheRootEnds) {
  const std::pair<const char*, const wchar_t*> cases[] = {
      {"C:\\a\\b", L"\\a\\b"},
      {"C:\\", L"\\"},
      {"\\\\srv\\share\\a", L"\\a"},
      {"\\\\?\\Volume{0-1}\\x", L"\\x"},
  };
  for (const auto& [path, rest] : cases) {
    NativePath native;
    ASSERT_EQ(ReadNativePath(path, native), kErrorSuccess) << path;
    EXPECT_EQ(native.text.substr(native.rootLength), rest) << path;
  }
}

TEST(NativePath, ShowsPathsWithoutThePrefix) {
  const std::pair<const wchar_t*, const char*> cases[] = {
      {L"\\\\?\\C:\\a", "C:\\a"},
      {L"\\\\?\\UNC\\srv\\share\\a", "\\\\srv\\share\\a"},
      {L"\\\\?\\Volume{0}\\a", "\\\\?\\Volume{0}\\a"},
  };
  for (const auto& [native, plain] : cases) EXPECT_EQ(PlainPath(native), plain);
}

}  // namespace
}  // namespace kestra
