#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "VLib/src/log/Log.h"
#include "VLib/src/process/RunProcess.h"
#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/HostEnvironment.h"
#include "platform/os/HostFile.h"
#include "tests/support/FakeMachine.h"
#include "tests/support/TempDirectory.h"

namespace kestra {
namespace {

using test::CTempDirectory;

constexpr uint32_t kWaitMs = 20'000;
constexpr uint32_t kUntouched = 4711;
// Holds nothing open that the test's own parent waits for.
constexpr char kLongSleep[] = "-c 'exec sleep 5 > /dev/null 2>&1'";

void WriteScript(const CTempDirectory& directory, const std::string& name,
                 const std::string& script) {
  directory.Write(name, "#!/bin/sh\n" + script + "\n");
  std::filesystem::permissions(directory / name, std::filesystem::perms::owner_all);
}

struct Outcome {
  bool isSuccess = false;
  uint32_t exitCode = kUntouched;
  std::unique_ptr<os::CChildProcess> process{};
};

Outcome RunFile(const std::string& file, const std::string& directory, const std::string& arguments,
                uint32_t waitMs, const os::CWaitable* stopEvent = nullptr, bool useShell = false) {
  Outcome outcome;
  outcome.isSuccess = RunProcess(file, directory, arguments, useShell, 0, 0, waitMs, stopEvent,
                                 &outcome.exitCode, &outcome.process);
  return outcome;
}

TEST(RunProcess, WaitsForTheEnd) {
  const CTempDirectory directory;
  WriteScript(directory, "a program", "printf '[%s]' \"$@\" > out; exit 9");
  const Outcome outcome = RunFile(directory / "a program", directory.Path(), "x 'y z'", kWaitMs);
  EXPECT_TRUE(outcome.isSuccess);
  EXPECT_EQ(outcome.exitCode, 9u);
  EXPECT_NE(outcome.process, nullptr);
  EXPECT_EQ(test::ReadWholeFile(directory / "out"), "[x][y z]");
  EXPECT_TRUE(RunProcess("true", "", "", false, 0, 0, kWaitMs, nullptr, nullptr, nullptr));
}

TEST(RunProcess, DoesNotWaitUnlessItIsTold) {
  const Outcome outcome = RunFile("sleep", "", "0.1", 0);
  EXPECT_TRUE(outcome.isSuccess);
  EXPECT_EQ(outcome.exitCode, kUntouched);
  ASSERT_NE(outcome.process, nullptr);
  EXPECT_EQ(os::WaitAny({outcome.process.get()}, kWaitMs), 0);
}

TEST(RunProcess, IsFalseWhenTheWaitEndsBefore) {
  os::CEvent stop;
  const Outcome late = RunFile("sh", "", kLongSleep, 20, &stop);
  EXPECT_FALSE(late.isSuccess);
  EXPECT_EQ(late.process, nullptr);
  stop.Set();
  const uint32_t start = os::TickCount();
  const Outcome stopped = RunFile("sh", "", kLongSleep, os::kInfinite, &stop);
  EXPECT_FALSE(stopped.isSuccess);
  EXPECT_EQ(stopped.exitCode, kUntouched);
  EXPECT_EQ(stopped.process, nullptr);
  EXPECT_LT(os::TickCount() - start, 2500u);
}

TEST(RunProcess, FailsWhenNothingStarts) {
  const CTempDirectory directory;
  for (const std::string& file : {std::string(), directory / "missing",
                                  std::string("no-such-program"), std::string("a\0b", 3)}) {
    EXPECT_FALSE(RunFile(file, directory.Path(), "", kWaitMs).isSuccess) << file;
    EXPECT_FALSE(RunFile(file, directory.Path(), "", kWaitMs, nullptr, true).isSuccess) << file;
  }
}

class CScopedPath {
 public:
  explicit CScopedPath(const std::string& path) : m_former(*os::ReadEnvironment("PATH")) {
    setenv("PATH", path.c_str(), 1);
  }
  ~CScopedPath() { setenv("PATH", m_former.c_str(), 1); }
  CScopedPath(const CScopedPath&) = delete;
  CScopedPath& operator=(const CScopedPath&) = delete;

 private:
  std::string m_former;
};

TEST(RunProcess, GoesOnToTheShell) {
  const CTempDirectory directory;
  const std::string document = directory.Write("document.txt", "x");
  directory.Write("-dash", "x");
  {
    const CScopedPath path(directory.Path());
    EXPECT_FALSE(RunFile(document, "", "", kWaitMs).isSuccess);  // there is no shell
  }
  WriteScript(directory, "xdg-open", "printf '[%s]' \"$@\" >> '" + directory / "out" + "'; exit 3");
  const CScopedPath path(directory.Path() + ":" + *os::ReadEnvironment("PATH"));
  const std::string program = directory / "xdg-open";
  for (const std::string& file : {document, std::string("http://localhost/x y")}) {
    const Outcome outcome = RunFile(file, "", "", kWaitMs);
    EXPECT_TRUE(outcome.isSuccess) << file;
    EXPECT_EQ(outcome.exitCode, 3u) << file;
  }
  // With the shell even a program is only a document.
  EXPECT_TRUE(RunFile(program, "", "", kWaitMs, nullptr, true).isSuccess);
  EXPECT_TRUE(RunFile("-dash", directory.Path(), "", kWaitMs, nullptr, true).isSuccess);
  EXPECT_EQ(test::ReadWholeFile(directory / "out"),
            "[" + document + "][http://localhost/x y][" + program + "][./-dash]");
}

class RunFromSystem32 : public testing::Test {
 protected:
  RunFromSystem32() {
    // The first one opened stays, so all tests share it.
    static const CTempDirectory logDirectory;
    OpenGlobalLog(logDirectory.Path());
    GlobalLog().ErrorsOnly = false;
    m_logBefore = test::ReadWholeFile(GlobalLog().Path()).size();
    m_machine->system.folders[Folder::System] = m_directory.Path();
    WriteScript(m_directory, "tool", "echo noise; [ $# -eq 0 ] || exec \"$@\"; exit 5");
  }
  uint32_t RunTool(const std::string& program, const std::string& arguments = "",
                   const os::CWaitable* stopEvent = nullptr, uint32_t timeOutMs = kWaitMs) {
    return runFromSystem32NoConsole(*m_machine, program, arguments, stopEvent, timeOutMs);
  }
  bool IsLogged(const std::string& text) const {
    const std::string log = test::ReadWholeFile(GlobalLog().Path()).substr(m_logBefore) + "\r\n";
    return log.find("runFromSystem32NoConsole - " + text + "\r\n") != std::string::npos;
  }

  const CTempDirectory m_directory;
  const Ref<test::CFakeMachine> m_machine = MakeRef<test::CFakeMachine>(SystemFamily::Linux);
  size_t m_logBefore = 0;
};

TEST_F(RunFromSystem32, AnswersTheExitCode) {
  EXPECT_EQ(RunTool("/tool"), 5u);
  EXPECT_TRUE(IsLogged("executing " + m_directory.Path() + "/tool"));
  EXPECT_TRUE(IsLogged("target process ended with code 5"));
  EXPECT_EQ(RunTool("/tool", " sh -c 'exit 6'"), 6u);
  EXPECT_TRUE(IsLogged("executing " + m_directory.Path() + "/tool sh -c 'exit 6'"));
}

TEST_F(RunFromSystem32, AnswersAndLogsWhatFailed) {
  EXPECT_EQ(RunTool("/missing"), kErrorFileNotFound);
  EXPECT_TRUE(IsLogged("CreateProcess failed with code 2"));
  EXPECT_EQ(RunTool("/tool", " sleep 5", nullptr, 20), kErrorWaitTimeout);
  EXPECT_TRUE(IsLogged("WaitForMultipleObjects(targetProcess) failed with code 258"));
  const os::CBorrowedEvent closed(1'000'000);
  EXPECT_EQ(RunTool("/tool", " sleep 5", &closed), kErrorInvalidHandle);
  EXPECT_TRUE(IsLogged("WaitForMultipleObjects(targetProcess) failed with code 6"));
  m_machine->system.folders.erase(Folder::System);
  EXPECT_EQ(RunTool("/tool"), kErrorPathNotFound);
}

TEST_F(RunFromSystem32, EndsItsWaitOnTheStopEvent) {
  os::CEvent stop;
  stop.Set();
  const uint32_t start = os::TickCount();
  EXPECT_EQ(RunTool("/tool", " sleep 5", &stop), kErrorCancelled);
  EXPECT_LT(os::TickCount() - start, 2500u);
}

}  // namespace
}  // namespace kestra
