#include <gtest/gtest.h>

#include "platform/os/Library.h"
#include "platform/win32/base/Wide.h"
#include "tests/platform/win32/os/CommentedLibrary.h"
#include "tests/support/TempDirectory.h"

namespace kestra::os {
namespace {

template <class Function>
Function* Export(NativeLibrary library, const char* name) {
  return reinterpret_cast<Function*>(FindExport(library, name));
}

// One of the system's that nothing here needs.
constexpr char kOther[] = "lz32.dll";

bool IsLoaded() {
  return GetModuleHandleW(Wide(kOther).c_str()) != nullptr;
}

TEST(Library, IsLetGoUnlessItIsForEver) {
  const NativeLibrary library = OpenLibrary(kOther, LibraryUse::ForNow);
  ASSERT_NE(library, nullptr);
  EXPECT_NE(FindExport(library, "LZCopy"), nullptr);
  EXPECT_EQ(FindExport(library, "Missing"), nullptr);
  CloseLibrary(library);
  EXPECT_FALSE(IsLoaded());
  CloseLibrary(OpenLibrary(kOther, LibraryUse::ForEver));
  CloseLibrary(OpenLibrary(kOther, LibraryUse::ForNow));
  EXPECT_TRUE(IsLoaded());
}

TEST(Library, IsNullForWhatDoesNotLoad) {
  const test::CTempDirectory directory;
  EXPECT_EQ(OpenLibrary(directory.Write("text.dll", "no library")), nullptr);
  EXPECT_EQ(OpenLibrary(directory / "missing.dll"), nullptr);
  EXPECT_EQ(OpenLibrary("no-such-library-anywhere"), nullptr);
  EXPECT_EQ(OpenLibrary(""), nullptr);
  EXPECT_EQ(OpenLibrary(std::string("kernel32.dll\0x", 14)), nullptr);
  EXPECT_EQ(FindExport(nullptr, "Copy"), nullptr);
  CloseLibrary(nullptr);
  EXPECT_NE(FindExport(OpenLibrary("kernel32"), "Sleep"), nullptr);  // by name, without its ending
}

TEST(Library, SpeaksTheCodePage) {
  if (GetACP() != 1252) GTEST_SKIP() << "the bytes are those of code page 1252";
  const NativeLibrary library = OpenLibrary(test::CommentedLibrary());
  const auto pHex = Export<ByteString(const char*, int)>(library, "HexOfBlock");
  const auto pCopy = Export<ByteString(ByteString)>(library, "Copy");
  const auto pCount = Export<int(ByteString)>(library, "CountBytes");
  ASSERT_TRUE(pHex && pCopy && pCount);
  const std::string block("\xC3\xA4\0\xE2\x82\xAC\0", 7);  // two texts
  EXPECT_EQ(CByteString::Take(pHex(LibraryText(block).c_str(), 0)).Text(), "e40080");
  const struct {
    std::string text;
    int bytes;
    std::string back;
  } kCases[] = {
      {"", 0, ""},
      {"\xC3\xA4\xE2\x82\xAC", 2, "\xC3\xA4\xE2\x82\xAC"},
      {std::string("a\0\xC3\xA4", 4), 3, std::string("a\0\xC3\xA4", 4)},
      {"\xE4\xB8\xAD", 1, "?"},  // the code page does not have it
  };
  for (const auto& row : kCases) {
    const CByteString given(row.text);
    EXPECT_EQ(pCount(given.get()), row.bytes);
    EXPECT_EQ(CByteString::Take(pCopy(given.get())).Text(), row.back);
    EXPECT_EQ(given.Text(), row.back);
  }
  EXPECT_EQ(CByteString::Take(nullptr).Text(), std::nullopt);
}

}  // namespace
}  // namespace kestra::os
