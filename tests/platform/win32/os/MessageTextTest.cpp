#include <gtest/gtest.h>

#include "platform/os/HostEnvironment.h"
#include "platform/os/Library.h"
#include "platform/os/MessageText.h"
#include "tests/platform/win32/os/CommentedLibrary.h"

namespace kestra::os {
namespace {

TEST(SystemErrorText, HasALineEndAndTheLineHasNone) {
  const std::string text = SystemErrorText(kErrorFileNotFound).value_or("");
  const std::string line = SystemErrorLine(kErrorFileNotFound).value_or("");
  EXPECT_GT(line.size(), 5u);
  EXPECT_EQ(text, line + "\r\n");
  EXPECT_EQ(SystemErrorText(0x0FFFFFFF), std::nullopt);
  EXPECT_EQ(SystemErrorLine(0x0FFFFFFF), std::nullopt);
}

// "%1 is not a valid Win32 application.": nobody has the insert.
TEST(SystemErrorText, KeepsInserts) {
  EXPECT_NE(SystemErrorLine(kErrorBadExeFormat).value_or("").find("%1"), std::string::npos);
}

TEST(SystemErrorText, OfTheNetworkIsOneLineOrNone) {
  for (const SystemError code : {2100u, 2102u, 2250u, 3500u, 0xFFFFFFFFu}) {
    const std::string text = NetworkErrorText(code).value_or("x");
    EXPECT_FALSE(text.empty());
    EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos) << text;
  }
  for (const SystemError code : {0u, 600u, 650u, 2099u}) {
    EXPECT_NE(RemoteAccessErrorText(code), std::string()) << code;
  }
}

TEST(ModuleTexts, ComeFromALoadedModuleAlone) {
  const auto library = reinterpret_cast<uintptr_t>(OpenLibrary(test::CommentedLibrary()));
  EXPECT_EQ(LoadModuleString(library, 100), "Kestra");
  EXPECT_EQ(LoadModuleString(library, 10000), "%1 of \xC3\xA4\xE2\x82\xAC");
  EXPECT_EQ(LoadModuleString(library, 0x10000 + 100), std::nullopt);
  EXPECT_EQ(LoadModuleString(library, 101), std::nullopt);
  for (const uintptr_t wrong : {library + 1, uintptr_t{12345}, UINTPTR_MAX}) {
    EXPECT_EQ(LoadModuleString(wrong, 100), std::nullopt) << wrong;
    EXPECT_EQ(ModuleFileName(wrong), std::nullopt) << wrong;
  }
  EXPECT_EQ(ModuleFileName(0), LibraryPath());
  EXPECT_TRUE(ModuleFileName(library).value_or("").ends_with(".dll"));
}

TEST(ModuleTexts, AreCutBehindAWholeCharacter) {
  const auto library = reinterpret_cast<uintptr_t>(OpenLibrary(test::CommentedLibrary()));
  const std::string text = LoadModuleString(library, 10001).value_or("");
  EXPECT_EQ(text.size(), 255u) << text;
}

}  // namespace
}  // namespace kestra::os
