#include <gtest/gtest.h>
#include <objbase.h>
#include <shellapi.h>

#include <filesystem>

#include "platform/os/Clock.h"
#include "platform/os/HostEnvironment.h"
#include "platform/os/process/ChildProcess.h"
#include "platform/os/process/Privileges.h"
#include "platform/win32/base/UniqueHandle.h"
#include "tests/support/TempDirectory.h"

namespace kestra::os {
namespace {

using test::CTempDirectory;

constexpr uint32_t kWaitMs = 20'000;

// 0xFFFFFFFF when there is no code.
uint32_t EndOf(const std::unique_ptr<CChildProcess>& child) {
  uint32_t exitCode = 0xFFFFFFFF;
  if (!child || WaitAny({child.get()}, kWaitMs) != 0) return exitCode;
  EXPECT_EQ(child->ExitCode(exitCode), kErrorSuccess);
  uint32_t again = 0;
  EXPECT_EQ(child->ExitCode(again), kErrorSuccess);
  EXPECT_EQ(again, exitCode);
  return exitCode;
}

uint32_t RunToEnd(const std::string& commandLine, const std::string& directory = "",
                  bool isHidden = false) {
  std::unique_ptr<CChildProcess> child;
  EXPECT_EQ(StartChild(commandLine, directory, {.isHidden = isHidden}, child), kErrorSuccess);
  return EndOf(child);
}

TEST(ChildProcess, TellsItsExitCode) {
  EXPECT_EQ(RunToEnd("cmd /c exit 0"), 0u);
  EXPECT_EQ(RunToEnd("cmd.exe /c exit 7", "", true), 7u);
  EXPECT_EQ(RunToEnd("cmd /c exit 259"), 259u);  // the number that also stands for "still runs"
  EXPECT_EQ(RunToEnd(QuotedProgram(KESTRA_LOCK_PEER) + " a b c"), 2u);
}

TEST(ChildProcess, HasNoExitCodeBeforeItsEnd) {
  const CTempDirectory directory;
  std::unique_ptr<CChildProcess> child;
  ASSERT_EQ(StartChild(QuotedProgram(KESTRA_LOCK_PEER) + " hold-lock " +
                           std::to_string(CurrentProcessId()) + " \"" + (directory / "held") + "\"",
                       "", {}, child),
            kErrorSuccess);
  uint32_t exitCode = 5;
  EXPECT_EQ(child->ExitCode(exitCode), kErrorNotReady);
  EXPECT_EQ(exitCode, 5u);
  EXPECT_EQ(WaitAny({child.get()}, 0), kWaitTimeOut);
  const CUniqueHandle process(OpenProcess(PROCESS_TERMINATE, FALSE, child->Id()));
  TerminateProcess(process.get(), 77);
  EXPECT_EQ(EndOf(child), 77u);
}

TEST(ChildProcess, ThatDoesNotStartIsAnError) {
  const CTempDirectory directory;
  const std::string noise = directory.Write("noise.exe", "no program");
  const struct {
    std::string commandLine;
    std::string directory;
    SystemError error;
  } kCases[] = {
      {QuotedProgram(directory / "missing.exe"), "", kErrorFileNotFound},
      {"no-such-program-anywhere x", "", kErrorFileNotFound},
      {QuotedProgram(noise), "", kErrorBadExeFormat},
      {"cmd /c exit 0", directory / "missing", kErrorDirectory},
      {" \t", "", kErrorBadArguments},
      {"", "", kErrorBadArguments},
      {std::string("cmd\0/c", 6), "", kErrorBadArguments},
      {"cmd", std::string("C:\0", 3), kErrorBadArguments},
      {"cmd /c exit 0 " + std::string(32'767, 'x'), "", kErrorBadArguments},
  };
  for (const auto& test : kCases) {
    std::unique_ptr<CChildProcess> child;
    EXPECT_EQ(StartChild(test.commandLine, test.directory, {}, child), test.error)
        << test.commandLine.substr(0, 100);
    EXPECT_EQ(child, nullptr);
  }
}

// A quote must not end the program's word before its time.
TEST(ChildProcess, QuotesAProgramWhatsoever) {
  std::unique_ptr<CChildProcess> child;
  EXPECT_NE(StartChild(QuotedProgram("cmd\" /c exit 0 \""), "", {}, child), kErrorSuccess);
  EXPECT_EQ(child, nullptr);
}

TEST(ChildProcess, RunsInItsDirectory) {
  const CTempDirectory directory;
  EXPECT_EQ(RunToEnd("cmd /c echo \xC3\xA4> out.txt & exit 3", directory.Path(), true), 3u);
  EXPECT_NE(test::ReadWholeFile(directory / "out.txt"), "");
}

TEST(ChildProcess, InheritsNoHandle) {
  const CTempDirectory directory;
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  CUniqueHandle file(CreateFileW(std::filesystem::path(directory / "f").c_str(), GENERIC_WRITE, 0,
                                 &inheritable, CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr));
  ASSERT_TRUE(file);
  std::unique_ptr<CChildProcess> child;
  ASSERT_EQ(
      StartChild(QuotedProgram(KESTRA_LOCK_PEER) + " hold-lock " +
                     std::to_string(CurrentProcessId()) + ".i \"" + (directory / "held") + "\"",
                 "", {}, child),
      kErrorSuccess);
  file = CUniqueHandle();
  EXPECT_EQ(GetFileAttributesW(std::filesystem::path(directory / "f").c_str()),
            INVALID_FILE_ATTRIBUTES);
  const CUniqueHandle process(OpenProcess(PROCESS_TERMINATE, FALSE, child->Id()));
  TerminateProcess(process.get(), 0);
  EndOf(child);
}

TEST(ChildProcess, OfTheShell) {
  const CTempDirectory directory;
  std::unique_ptr<CChildProcess> child;
  // SEE_MASK_FLAG_NO_UI: a failure must not wait for anybody.
  constexpr uint32_t kQuiet = SEE_MASK_FLAG_NO_UI;
  ASSERT_EQ(OpenByShell("cmd.exe", "/c exit 5", directory.Path(), kQuiet, SW_HIDE, child),
            kErrorSuccess);
  EXPECT_EQ(EndOf(child), 5u);
  // The class, the list of ids and the hot key that these bits promise are not given.
  ASSERT_EQ(OpenByShell("cmd.exe", "/c exit 6", "", kQuiet | 0x37, SW_HIDE, child), kErrorSuccess);
  EXPECT_EQ(EndOf(child), 6u);
  EXPECT_EQ(OpenByShell(directory / "missing.exe", "", "", kQuiet, 0, child), kErrorFileNotFound);
  EXPECT_EQ(OpenByShell("", "", "", kQuiet, 0, child), kErrorBadArguments);
  EXPECT_EQ(OpenByShell(std::string("a\0b", 3), "", "", kQuiet, 0, child), kErrorBadArguments);
}

TEST(Privileges, AreSwitchedByName) {
  EXPECT_EQ(EnablePrivilege("SeChangeNotifyPrivilege", true), kErrorSuccess);
  EXPECT_NE(EnablePrivilege("SeNoSuchPrivilege", true), kErrorSuccess);
  EXPECT_EQ(EnablePrivilege(std::string("a\0b", 3), true), kErrorInvalidName);
  // Two of the tools' rights that an ordinary user has not.
  EXPECT_EQ(EnablePrivilege("SeLoadDriverPrivilege", false) == kErrorSuccess, IsAdmin());
}

}  // namespace
}  // namespace kestra::os
