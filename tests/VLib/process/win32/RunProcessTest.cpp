#include <gtest/gtest.h>

#include <filesystem>

#include "VLib/src/log/Log.h"
#include "VLib/src/process/RunProcess.h"
#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/HostEnvironment.h"
#include "platform/os/HostFile.h"
#include "platform/os/NamedLock.h"
#include "tests/support/FakeMachine.h"
#include "tests/support/TempDirectory.h"
#include "tests/support/UniqueName.h"

namespace kestra {
namespace {

using test::CTempDirectory;

constexpr uint32_t kWaitMs = 20'000;
constexpr uint32_t kUntouched = 4711;
constexpr uint32_t kNoMessageBox = 0x400;  // SEE_MASK_FLAG_NO_UI

struct Outcome {
  bool isSuccess = false;
  uint32_t exitCode = kUntouched;
  std::unique_ptr<os::CChildProcess> process{};
};

Outcome RunFile(const std::string& file, const std::string& directory, const std::string& arguments,
                uint32_t waitMs, const os::CWaitable* stopEvent = nullptr, bool useShell = false) {
  Outcome outcome;
  outcome.isSuccess = RunProcess(file, directory, arguments, useShell, kNoMessageBox, 0, waitMs,
                                 stopEvent, &outcome.exitCode, &outcome.process);
  return outcome;
}

// A program that does not end before it may; that it ended shows in a file.
class CHeldProgram {
 public:
  CHeldProgram() {
    if (os::AcquireNamedLock(m_name, nullptr, kWaitMs, m_lock) != os::NamedLockResult::Held)
      throw std::runtime_error("the lock is not to be had");
  }
  std::string Arguments() const {
    return "count-lock \"" + std::string(m_name) + "\" \"" + m_counter + "\" 1";
  }
  // Lets all of them end, and waits for that.
  bool Release(int count) {
    m_lock.reset();
    const std::string expected = std::to_string(count);
    for (int i = 0; i < 20'000 && test::ReadWholeFile(m_counter) != expected; ++i) os::Sleep(1);
    return test::ReadWholeFile(m_counter) == expected;
  }

 private:
  const test::CUniqueName m_name;
  const CTempDirectory m_directory;
  const std::string m_counter = m_directory.Write("counter", "0");
  std::unique_ptr<os::CNamedLock> m_lock;
};

TEST(RunProcess, WaitsForTheEnd) {
  const CTempDirectory directory;
  const Outcome outcome =
      RunFile("cmd.exe", directory.Path(), "/c echo x> out.txt & exit 9", kWaitMs);
  EXPECT_TRUE(outcome.isSuccess);
  EXPECT_EQ(outcome.exitCode, 9u);
  EXPECT_NE(outcome.process, nullptr);
  EXPECT_TRUE(test::ReadWholeFile(directory / "out.txt").starts_with("x"));
  std::filesystem::copy_file(KESTRA_LOCK_PEER, test::ToPath(directory / "a program.exe"));
  EXPECT_EQ(RunFile(directory / "a program", "", "no such task", kWaitMs).exitCode, 2u);
}

TEST(RunProcess, DoesNotWaitUnlessItIsTold) {
  const Outcome outcome = RunFile("cmd", "", "/c exit 3", 0);
  EXPECT_TRUE(outcome.isSuccess);
  EXPECT_EQ(outcome.exitCode, kUntouched);
  ASSERT_NE(outcome.process, nullptr);
  EXPECT_EQ(os::WaitAny({outcome.process.get()}, kWaitMs), 0);
}

TEST(RunProcess, IsFalseWhenTheWaitEndsBefore) {
  CHeldProgram held;
  os::CEvent stop;
  const Outcome late = RunFile(KESTRA_LOCK_PEER, "", held.Arguments(), 20, &stop);
  EXPECT_FALSE(late.isSuccess);
  EXPECT_EQ(late.process, nullptr);
  stop.Set();
  const uint32_t start = os::TickCount();
  const Outcome stopped = RunFile(KESTRA_LOCK_PEER, "", held.Arguments(), os::kInfinite, &stop);
  EXPECT_LT(os::TickCount() - start, 2500u);
  EXPECT_FALSE(stopped.isSuccess);
  EXPECT_EQ(stopped.exitCode, kUntouched);
  EXPECT_EQ(stopped.process, nullptr);
  EXPECT_TRUE(held.Release(2));  // both went on
}

TEST(RunProcess, FailsWhenNothingStarts) {
  const CTempDirectory directory;
  for (const std::string& file : {std::string(), directory / "missing.exe",
                                  std::string("no-such-program"), std::string("a\0b", 3)}) {
    EXPECT_FALSE(RunFile(file, directory.Path(), "", kWaitMs).isSuccess) << file;
    EXPECT_FALSE(RunFile(file, directory.Path(), "", kWaitMs, nullptr, true).isSuccess) << file;
  }
}

// A kind of documents that this process alone knows, opened by a program that tells by its exit
// code that it ran. It is the user's own; where HKEY_CLASSES_ROOT does not show those, as in Wine,
// it is the machine's.
class CDocumentKind {
 public:
  CDocumentKind() : m_name("kestra.test" + std::to_string(os::CurrentProcessId())) {
    Add();
    if (Reg("query HKCR\\" + Extension())) return;
    Remove();
    m_root = "HKLM\\Software\\Classes\\";
    Add();
  }
  ~CDocumentKind() { Remove(); }
  CDocumentKind(const CDocumentKind&) = delete;
  CDocumentKind& operator=(const CDocumentKind&) = delete;
  std::string Extension() const { return m_name.substr(m_name.find('.')); }

 private:
  void Add() const {
    const std::string program = std::filesystem::path(KESTRA_LOCK_PEER).make_preferred().string();
    EXPECT_TRUE(Reg("add " + m_root + Extension() + " /ve /d " + m_name + " /f"));
    EXPECT_TRUE(Reg("add " + m_root + m_name + "\\shell\\open\\command /ve /d \"\\\"" + program +
                    "\\\" open \\\"%1\\\" x\" /f"));
  }
  void Remove() const {
    EXPECT_TRUE(Reg("delete " + m_root + Extension() + " /f"));
    EXPECT_TRUE(Reg("delete " + m_root + m_name + " /f"));
  }
  static bool Reg(const std::string& arguments) {
    const Outcome outcome = RunFile("reg.exe", "", arguments, kWaitMs);
    return outcome.isSuccess && outcome.exitCode == 0;
  }

  const std::string m_name;
  std::string m_root = "HKCU\\Software\\Classes\\";
};

TEST(RunProcess, GoesOnToTheShell) {
  const CTempDirectory directory;
  const CDocumentKind kind;
  const std::string document = directory.Write("a document" + kind.Extension(), "x");
  for (const bool useShell : {false, true}) {
    const Outcome outcome = RunFile(document, "", "", kWaitMs, nullptr, useShell);
    EXPECT_TRUE(outcome.isSuccess) << useShell;
    EXPECT_EQ(outcome.exitCode, 2u) << useShell;
  }
}

class RunFromSystem32 : public testing::Test {
 protected:
  RunFromSystem32() {
    // The first one opened stays, so all tests share it.
    static const CTempDirectory logDirectory;
    OpenGlobalLog(logDirectory.Path());
    GlobalLog().ErrorsOnly = false;
    m_logBefore = test::ReadWholeFile(GlobalLog().Path()).size();
    m_machine->system.folders[Folder::System] = m_folder;
  }
  uint32_t RunTool(const std::string& program, const std::string& arguments = "",
                   const os::CWaitable* stopEvent = nullptr, uint32_t timeOutMs = kWaitMs) {
    return runFromSystem32NoConsole(*m_machine, program, arguments, stopEvent, timeOutMs);
  }
  bool IsLogged(const std::string& text) const {
    const std::string log = test::ReadWholeFile(GlobalLog().Path()).substr(m_logBefore) + "\r\n";
    return log.find("runFromSystem32NoConsole - " + text + "\r\n") != std::string::npos;
  }

  const std::string m_folder = *os::ReadEnvironment("SystemRoot") + "\\system32";
  const Ref<test::CFakeMachine> m_machine = MakeRef<test::CFakeMachine>(SystemFamily::Windows);
  size_t m_logBefore = 0;
};

TEST_F(RunFromSystem32, AnswersTheExitCode) {
  EXPECT_EQ(RunTool("\\cmd.exe", " /c exit 6"), 6u);
  EXPECT_TRUE(IsLogged("executing " + m_folder + "\\cmd.exe /c exit 6"));
  EXPECT_TRUE(IsLogged("target process ended with code 6"));
}

TEST_F(RunFromSystem32, AnswersAndLogsWhatFailed) {
  EXPECT_EQ(RunTool("\\missing.exe"), kErrorFileNotFound);
  EXPECT_TRUE(IsLogged("CreateProcess failed with code 2"));
  const std::filesystem::path peer(KESTRA_LOCK_PEER);
  m_machine->system.folders[Folder::System] = peer.parent_path().string();
  const std::string program = "\\" + peer.filename().string();
  CHeldProgram held;
  EXPECT_EQ(RunTool(program, " " + held.Arguments(), nullptr, 20), kErrorWaitTimeout);
  EXPECT_TRUE(IsLogged("WaitForMultipleObjects(targetProcess) failed with code 258"));
  const os::CBorrowedEvent closed(1'000'000);
  EXPECT_EQ(RunTool(program, " " + held.Arguments(), &closed), kErrorInvalidHandle);
  EXPECT_TRUE(IsLogged("WaitForMultipleObjects(targetProcess) failed with code 6"));
  os::CEvent stop;
  stop.Set();
  const uint32_t start = os::TickCount();
  EXPECT_EQ(RunTool(program, " " + held.Arguments(), &stop), kErrorCancelled);
  EXPECT_LT(os::TickCount() - start, 2500u);
  EXPECT_TRUE(held.Release(3));
  m_machine->system.folders.erase(Folder::System);
  EXPECT_EQ(RunTool(program), kErrorPathNotFound);
}

}  // namespace
}  // namespace kestra
