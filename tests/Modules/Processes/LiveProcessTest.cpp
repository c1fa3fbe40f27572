// The module Processes over this machine, with real child processes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>

#include "Modules/Processes/ProcessItem.h"
#include "Modules/Processes/ProcessesModule.h"
#include "platform/os/Clock.h"
#include "platform/os/HostEnvironment.h"

namespace kestra {
namespace {

constexpr uint32_t kLongEnough = 10000;  // milliseconds, for what should take none

// A child that sleeps until it is ended, with the process held apart from the code that is tested.
class CSleeper {
 public:
  explicit CSleeper(bool ignoresRequests) {
    const auto file = std::filesystem::path(testing::TempDir()) /
                      ("kestra_sleeper_" + std::to_string(os::CurrentProcessId()));
    // What is ignored by the shell when it starts the child is ignored by the child from its first
    // instruction on.
    const std::string command = std::string(ignoresRequests ? "trap '' TERM; " : "") +
                                "sleep 1000 >/dev/null 2>&1 & echo $! >" + file.string();
    if (std::system(command.c_str()) == 0) std::ifstream(file) >> m_pid;
    std::filesystem::remove(file);
    if (m_pid > 0) LiveMachine()->Processes()->Open(m_pid, 0, m_process);
  }
  ~CSleeper() {
    if (m_process) m_process->Terminate();
  }
  CSleeper(const CSleeper&) = delete;
  CSleeper& operator=(const CSleeper&) = delete;

  bool IsThere() const { return m_process != nullptr; }
  uint32_t PID() const { return m_pid; }
  bool EndsWithin(uint32_t milliseconds) const {
    return os::WaitAny({m_process.get()}, milliseconds) == 0;
  }

 private:
  uint32_t m_pid = 0;
  std::unique_ptr<CProcess> m_process;
};

Ref<CProcessesModule> LiveModule(uint32_t closeTimeOutMs) {
  auto module = MakeRef<CProcessesModule>(kProcessesModule.Get(), LiveMachine(), closeTimeOutMs);
  EXPECT_TRUE(module->SetArgs("ShowUserAndComLine=1"));
  return module;
}

// The item of a process, out of a fresh list; null if it is not there.
CVDiagItem* FindProcess(DiagModule& module, uint32_t pid) {
  QueryMessage message;
  if (!module.Init(true, true, message)) return nullptr;
  for (size_t i = 0; CVDiagItem* pItem = module.Children.Get(i); ++i) {
    const DiagParam* pPID = pItem->Params.Find("PID", false);
    if (pPID && pPID->DWordValue == pid) return pItem;
  }
  return nullptr;
}

std::string TextOf(CVDiagItem& item, const char* name) {
  const DiagParam* pParam = item.Params.Find(name, false);
  return pParam ? pParam->GetText() : "<none>";
}

// Whether all of an item is of the program that the child becomes: what is read of a process in the
// midst of exec is partly of the one, partly of the other, and may have no memory yet.
bool IsSleeping(CVDiagItem& item) {
  const DiagParam* pMemory = item.Params.Find("MemoryUsage", false);
  return TextOf(item, "ImageName") == "sleep" && TextOf(item, "CommandLine") == "sleep 1000" &&
         pMemory && pMemory->DWordValue > 0;
}

std::string DumpOf(CVDiagItem& item) {
  std::string text;
  for (const char* pName : {"ImageName", "CommandLine", "MemoryUsage", "User"}) {
    text += std::string(pName) + "=" + TextOf(item, pName) + "; ";
  }
  return text;
}

TEST(LiveProcess, IsFoundWithItsPropertiesAndEnded) {
  const CSleeper sleeper(false);
  ASSERT_TRUE(sleeper.IsThere());
  auto module = LiveModule(kLongEnough);
  CVDiagItem* pItem = nullptr;
  for (int i = 0; i < 500; ++i) {
    pItem = FindProcess(*module, sleeper.PID());
    if (pItem && IsSleeping(*pItem)) break;
    os::Sleep(10);
  }
  ASSERT_TRUE(pItem);
  ASSERT_TRUE(IsSleeping(*pItem)) << DumpOf(*pItem);
  EXPECT_NE(TextOf(*pItem, "User"), "<none>");
  EXPECT_TRUE(pItem->Params.Find("ParentProcessID", false));

  QueryMessage message;
  message.AllowActive = true;
  EXPECT_TRUE(pItem->Delete(message));
  EXPECT_TRUE(sleeper.EndsWithin(kLongEnough));
  // Ended again, whether or not it is still in the system's table: there is nothing left to fail.
  QueryMessage second;
  second.AllowActive = true;
  const bool again = pItem->Delete(second);
  EXPECT_TRUE(again || second.SystemError == kErrorInvalidHandle);
}

TEST(LiveProcess, IsEndedByForceWhenItDoesNotListen) {
  const CSleeper sleeper(true);
  ASSERT_TRUE(sleeper.IsThere());
  auto module = LiveModule(50);
  CVDiagItem* pItem = FindProcess(*module, sleeper.PID());
  ASSERT_TRUE(pItem);
  QueryMessage message;
  message.AllowActive = true;
  EXPECT_TRUE(pItem->Delete(message));
  EXPECT_TRUE(sleeper.EndsWithin(kLongEnough));
}

TEST(LiveProcess, IsLeftAloneWhenTheQueryIsCancelled) {
  const CSleeper sleeper(true);
  ASSERT_TRUE(sleeper.IsThere());
  auto module = LiveModule(os::kInfinite);
  CVDiagItem* pItem = FindProcess(*module, sleeper.PID());
  ASSERT_TRUE(pItem);
  auto termination = MakeRef<os::CEvent>();
  QueryMessage message(termination, true);
  uint32_t cancelledAt = 0;
  std::thread canceller([&] {
    os::Sleep(50);
    cancelledAt = os::TickCount();
    termination->Set();
  });
  const bool deleted = pItem->Delete(message);
  const uint32_t answeredAt = os::TickCount();
  canceller.join();
  EXPECT_FALSE(deleted);
  EXPECT_LT(answeredAt - cancelledAt, 250u);
  EXPECT_EQ(message.SystemError, kErrorCancelled);
  EXPECT_FALSE(sleeper.EndsWithin(100));
}

// The list names this process once, and with what it knows of itself.
TEST(LiveProcess, SeesItself) {
  auto module = LiveModule(kLongEnough);
  CVDiagItem* pItem = FindProcess(*module, os::CurrentProcessId());
  ASSERT_TRUE(pItem);
  EXPECT_EQ(TextOf(*pItem, "FilePath"), os::ExecutablePath());
  EXPECT_EQ(TextOf(*pItem, "ProcessArchitecture"), sizeof(void*) == 8 ? "64 bits" : "32 bits");
  EXPECT_GT(pItem->Params.Find("HandleCount", false)->DWordValue, 2u);
}

}  // namespace
}  // namespace kestra
