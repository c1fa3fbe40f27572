#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/HostEnvironment.h"
#include "platform/os/HostFile.h"
#include "platform/os/Thread.h"
#include "platform/os/process/ChildProcess.h"
#include "tests/support/TempDirectory.h"
#include "tests/support/linux/ChildProcess.h"

namespace kestra::os {
namespace {

using test::CTempDirectory;

constexpr uint32_t kWaitMs = 20'000;

std::string Shell(const std::string& script) {
  return "/bin/sh -c " + QuotedProgram(script);
}

// 0xFFFFFFFF when there is no code.
uint32_t RunToEnd(const std::string& commandLine, const std::string& directory = "",
                  bool isHidden = false) {
  std::unique_ptr<CChildProcess> child;
  EXPECT_EQ(StartChild(commandLine, directory, {.isHidden = isHidden}, child), kErrorSuccess);
  if (!child || WaitAny({child.get()}, kWaitMs) != 0) return 0xFFFFFFFF;
  uint32_t exitCode = 0xFFFFFFFF;
  EXPECT_EQ(child->ExitCode(exitCode), kErrorSuccess);
  uint32_t again = 0;
  EXPECT_EQ(child->ExitCode(again), kErrorSuccess);
  EXPECT_EQ(again, exitCode);
  return exitCode;
}

bool IsInProcessTable(uint32_t pid) {
  return PathExists("/proc/" + std::to_string(pid));
}

TEST(ChildProcess, TellsItsExitCode) {
  EXPECT_EQ(RunToEnd(Shell("exit 0")), 0u);
  EXPECT_EQ(RunToEnd(Shell("exit 127")), 127u);
  EXPECT_EQ(RunToEnd(Shell("exit 255")), 255u);
  EXPECT_EQ(RunToEnd(Shell("kill -KILL $$")), 137u);
  EXPECT_EQ(RunToEnd("sh -c 'exit 7'"), 7u);  // by PATH
}

TEST(ChildProcess, HasNoExitCodeBeforeItsEnd) {
  std::unique_ptr<CChildProcess> child;
  ASSERT_EQ(StartChild("sleep 30", "", {}, child), kErrorSuccess);
  uint32_t exitCode = 5;
  EXPECT_EQ(child->ExitCode(exitCode), kErrorNotReady);
  EXPECT_EQ(WaitAny({child.get()}, 0), kWaitTimeOut);
  kill(static_cast<pid_t>(child->Id()), SIGKILL);
  EXPECT_EQ(WaitAny({child.get()}, kWaitMs), 0);
  EXPECT_EQ(child->ExitCode(exitCode), kErrorSuccess);
  EXPECT_EQ(exitCode, 137u);
}

TEST(ChildProcess, ThatDoesNotStartIsAnError) {
  const CTempDirectory directory;
  const std::string plain = directory.Write("plain", "x");
  const std::string noise = directory.Write("noise", "\x7F\x01noise");
  chmod(noise.c_str(), 0755);
  const struct {
    std::string commandLine;
    std::string directory;
    SystemError error;
  } kCases[] = {
      {"/missing/program", "", kErrorFileNotFound},
      {"no-such-program-anywhere x", "", kErrorFileNotFound},
      {QuotedProgram(plain), "", kErrorAccessDenied},
      {QuotedProgram(directory.Path()), "", kErrorAccessDenied},
      {QuotedProgram(noise), "", kErrorBadExeFormat},
      {"/bin/sh", directory / "missing", kErrorFileNotFound},
      {"\"\"", "", kErrorFileNotFound},
      {" ", "", kErrorBadArguments},
      {"/bin/sh 'x", "", kErrorBadArguments},
      {"/bin/sh", std::string("/\0", 2), kErrorBadArguments},
  };
  for (const auto& test : kCases) {
    std::unique_ptr<CChildProcess> child;
    EXPECT_EQ(StartChild(test.commandLine, test.directory, {}, child), test.error)
        << test.commandLine;
    EXPECT_EQ(child, nullptr);
  }
}

TEST(ChildProcess, GetsItsWordsAndItsDirectory) {
  const CTempDirectory directory;
  directory.Write("script", "#!/bin/sh\nprintf '[%s]' \"$@\" > out\n");
  chmod((directory / "script").c_str(), 0755);
  EXPECT_EQ(RunToEnd("./script 'a b' \"c\\\"d\" '' $HOME", directory.Path()), 0u);
  EXPECT_EQ(test::ReadWholeFile(directory / "out"), "[a b][c\"d][][$HOME]");
}

TEST(ChildProcess, OfTheShellTellsWhatIsMissing) {
  const CTempDirectory directory;
  const std::string document = directory.Write("document", "x");
  const std::string former = *ReadEnvironment("PATH");
  setenv("PATH", directory.Path().c_str(), 1);
  const struct {
    std::string file;
    std::string directory;
    SystemError error;
  } kCases[] = {
      {document, "", kErrorCallNotImplemented},
      {"http://localhost/", directory.Path(), kErrorCallNotImplemented},
      {"http://localhost/", directory / "missing", kErrorFileNotFound},
      {document, directory / "missing", kErrorFileNotFound},
      {"12:30", "", kErrorFileNotFound},  // no scheme: it does not begin with a letter
      {"+x:30", "", kErrorFileNotFound},
      {"x+1:30", "", kErrorCallNotImplemented},
  };
  for (const auto& test : kCases) {
    std::unique_ptr<CChildProcess> child;
    EXPECT_EQ(OpenByShell(test.file, "", test.directory, 0, 0, child), test.error)
        << test.file << " in " << test.directory;
  }
  setenv("PATH", former.c_str(), 1);
}

TEST(ChildProcess, InheritsNothing) {
  const CTempDirectory directory;
  const int leak = open("/dev/null", O_RDONLY);  // without O_CLOEXEC
  ASSERT_GE(leak, 0);
  const std::string descriptor = "/proc/$$/fd/" + std::to_string(leak);
  const std::string script = "[ -e " + descriptor + " ] && echo leak > out;" +
                             "readlink /proc/$$/fd/0 /proc/$$/fd/2 >> out; cat >> out";
  EXPECT_EQ(RunToEnd(Shell(script), directory.Path(), true), 0u);
  close(leak);
  EXPECT_EQ(test::ReadWholeFile(directory / "out"), "/dev/null\n/dev/null\n");
}

// Threads of the library run with all signals blocked, and a host may ignore some.
TEST(ChildProcess, HearsSignals) {
  struct sigaction ignored {};
  struct sigaction former {};
  ignored.sa_handler = SIG_IGN;
  sigaction(SIGTERM, &ignored, &former);
  uint32_t exitCode = 0;
  const auto thread = StartThread([&] { exitCode = RunToEnd(Shell("kill -TERM $$; exit 1")); }, 0);
  ASSERT_NE(thread, nullptr);
  EXPECT_EQ(WaitAny({thread.get()}, kWaitMs), 0);
  thread->Join();
  sigaction(SIGTERM, &former, nullptr);
  EXPECT_EQ(exitCode, 143u);
}

TEST(ChildProcess, LeavesNoZombieWhenItIsDropped) {
  std::vector<uint32_t> pids;
  for (const char* commandLine : {"sleep 0.2", "sleep 0.05", "true", "sleep 0.1"}) {
    std::unique_ptr<CChildProcess> child;
    ASSERT_EQ(StartChild(commandLine, "", {}, child), kErrorSuccess);
    pids.push_back(child->Id());
  }
  for (int i = 0; i < 10'000; ++i) {
    std::erase_if(pids, [](uint32_t pid) { return !IsInProcessTable(pid); });
    if (pids.empty()) break;
    Sleep(1);
  }
  EXPECT_TRUE(pids.empty());
}

int64_t ProcessorMs() {
  timespec used{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  return used.tv_sec * 1000 + used.tv_nsec / 1'000'000;
}

// poll(2) refuses more descriptors than the process may have.
TEST(ChildProcess, IsReapedWhereTheSystemRefusesToPoll) {
  if (!test::kCanRunWithoutDescriptors) GTEST_SKIP() << "a sanitizer needs descriptors";
  std::vector<uint32_t> pids;
  for (const char* commandLine : {"sleep 0.7", "sleep 0.7", "sleep 0.7", "sleep 0.7", "true"}) {
    std::unique_ptr<CChildProcess> child;
    ASSERT_EQ(StartChild(commandLine, "", {}, child), kErrorSuccess);
    pids.push_back(child->Id());
  }
  rlimit former{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &former), 0);
  const rlimit few{3, former.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
  const uint32_t fifth = pids.back();
  const int64_t before = ProcessorMs();
  Sleep(600);
  const int64_t used = ProcessorMs() - before;
  const bool isFifthReaped = !IsInProcessTable(fifth);
  for (int i = 0; i < 1000 && std::any_of(pids.begin(), pids.end(), IsInProcessTable); ++i)
    Sleep(10);
  setrlimit(RLIMIT_NOFILE, &former);
  EXPECT_TRUE(isFifthReaped);
  EXPECT_LT(used, 100);
  EXPECT_TRUE(std::none_of(pids.begin(), pids.end(), IsInProcessTable));
}

TEST(ChildProcess, HasNoCodeWhereTheHostIgnoresChildren) {
  const auto former = signal(SIGCHLD, SIG_IGN);
  for (int i = 0; i < 20; ++i) {
    std::unique_ptr<CChildProcess> child;
    ASSERT_EQ(StartChild("true", "", {}, child), kErrorSuccess);
    EXPECT_EQ(WaitAny({child.get()}, kWaitMs), 0);
    uint32_t exitCode = 5;
    EXPECT_EQ(child->ExitCode(exitCode), kErrorInvalidHandle);
    EXPECT_EQ(exitCode, 5u);
  }
  signal(SIGCHLD, former);
}

}  // namespace
}  // namespace kestra::os
