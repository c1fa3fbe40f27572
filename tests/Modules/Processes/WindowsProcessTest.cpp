// The module Processes over this Windows machine, with real child processes.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include "Modules/Processes/ProcessList.h"
#include "Modules/Processes/ProcessesModule.h"
#include "Modules/Processes/windows/Enumerators.h"
#include "platform/machine/WindowsProcesses.h"
#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "platform/os/HostEnvironment.h"
#include "platform/os/process/ChildProcess.h"
#include "tests/Modules/Processes/ClockTick.h"
#include "tests/support/TempDirectory.h"

namespace kestra {
namespace {

using test::kClockTickMs;

constexpr uint32_t kLongEnough = 10000;  // milliseconds, for what should take none
constexpr uint32_t kImpatient = 300;     // milliseconds, for one that does not listen
constexpr uint32_t kAsked = 7;           // the exit code of a peer whose window was closed

// A child of tests/support/win32/window_peer.cpp. It is held, so that its number stays its own.
class CPeer {
 public:
  explicit CPeer(const std::string& mode) {
    const std::string own = os::ExecutablePath();
    m_path = own.substr(0, own.find_last_of('\\') + 1) + "kestra_window_peer.exe";
    const std::string ready = m_folder / "ready";
    m_commandLine = os::QuotedProgram(m_path) + " " + mode + " " + ready;
    if (os::StartChild(m_commandLine, "", {}, m_child) != kErrorSuccess) return;
    for (uint32_t waited = 0; waited < kLongEnough && !m_isReady; waited += 10) {
      m_isReady = std::filesystem::exists(ready);
      os::Sleep(10);
    }
  }
  ~CPeer() {
    std::unique_ptr<CProcess> process;
    if (m_child && LiveMachine()->Processes()->Open(PID(), 0, process) == kErrorSuccess) {
      process->Terminate();
      EndsWithin(kLongEnough);
    }
  }
  CPeer(const CPeer&) = delete;
  CPeer& operator=(const CPeer&) = delete;

  bool IsReady() const { return m_isReady; }
  uint32_t PID() const { return m_child->Id(); }
  const std::string& Path() const { return m_path; }
  const std::string& CommandLine() const { return m_commandLine; }
  bool EndsWithin(uint32_t milliseconds) const {
    return os::WaitAny({m_child.get()}, milliseconds) == 0;
  }
  uint32_t ExitCode() const {
    uint32_t code = 0xFFFF;
    m_child->ExitCode(code);
    return code;
  }

 private:
  test::CTempDirectory m_folder;
  std::string m_path;
  std::string m_commandLine;
  std::unique_ptr<os::CChildProcess> m_child;
  bool m_isReady = false;
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

uint32_t NumberOf(CVDiagItem& item, const char* name) {
  const DiagParam* pParam = item.Params.Find(name, false);
  return pParam ? pParam->DWordValue : 0;
}

TEST(WindowsProcess, IsFoundWithItsProperties) {
  const CPeer peer("silent");
  ASSERT_TRUE(peer.IsReady());
  auto module = LiveModule(kLongEnough);
  CVDiagItem* pItem = FindProcess(*module, peer.PID());
  ASSERT_TRUE(pItem);
  EXPECT_EQ(TextOf(*pItem, "ImageName"), "kestra_window_peer.exe");
  EXPECT_EQ(TextOf(*pItem, "FilePath"), peer.Path());
  EXPECT_EQ(TextOf(*pItem, "CommandLine"), peer.CommandLine());
  EXPECT_EQ(TextOf(*pItem, "ProcessArchitecture"), "64 bits");
  EXPECT_EQ(TextOf(*pItem, "User"), os::CurrentUserName());
  EXPECT_EQ(NumberOf(*pItem, "ParentProcessID"), os::CurrentProcessId());
  EXPECT_GT(NumberOf(*pItem, "MemoryUsage"), 100u);
}

using Enumerate = SystemError (*)(ProcessEnumContext&, std::vector<ProcessRecord>&, QueryMessage&);
constexpr uint32_t kFlags =
    kProcessWantUser | kProcessWantCommandLine | kProcessAllSessions | kProcessRepairPath;

struct Enumerator {
  const char* what;
  Enumerate run;
  bool isFull;     // it looks into the processes
  bool isKernels;  // and has the kernel's counts
};

const Enumerator kEnumerators[] = {
    {"Toolhelp", [](auto& c, auto& r, auto& m) { return EnumByToolhelp(c, kFlags, r, m); }, true,
     false},
    {"kernel", [](auto& c, auto& r, auto& m) { return EnumBySystemInformation(c, kFlags, r, m); },
     true, true},
    {"PSAPI", [](auto& c, auto& r, auto& m) { return EnumByPsapi(c, kFlags, r, m); }, true, false},
    {"Toolhelp only", [](auto& c, auto& r, auto& m) { return EnumByToolhelpOnly(c, r, m); }, false,
     false},
};

std::vector<ProcessRecord> RecordsOf(const Enumerator& enumerator) {
  const auto machine = LiveMachine();
  ProcessEnumContext context(*machine, *machine->Processes()->Windows());
  std::vector<ProcessRecord> records;
  QueryMessage message;
  EXPECT_EQ(enumerator.run(context, records, message), kErrorSuccess);
  return records;
}

std::vector<uint32_t> PidsOf(const Enumerator& enumerator) {
  std::vector<uint32_t> pids;
  for (const ProcessRecord& record : RecordsOf(enumerator)) pids.push_back(record.PID);
  // Wine's snapshot does not begin with the idle process, as one of Windows does.
  std::erase(pids, 0u);
  std::sort(pids.begin(), pids.end());
  return pids;
}

// All ways to list the processes see the same ones. The list changes now and then, so that a
// second and third look may be needed.
TEST(WindowsProcess, IsInTheListOfEachEnumerator) {
  const CPeer peer("silent");
  ASSERT_TRUE(peer.IsReady());
  for (const Enumerator& enumerator : kEnumerators) {
    SCOPED_TRACE(enumerator.what);
    const Enumerator& other = kEnumerators[&enumerator == &kEnumerators[0] ? 1 : 0];
    std::vector<uint32_t> pids, others;
    for (int look = 0; look < 10 && (look == 0 || pids != others); ++look) {
      pids = PidsOf(enumerator);
      others = PidsOf(other);
    }
    EXPECT_EQ(pids, others);
    EXPECT_GT(pids.size(), 2u);

    const auto records = RecordsOf(enumerator);
    const auto found = std::find_if(records.begin(), records.end(),
                                    [&](const auto& r) { return r.PID == peer.PID(); });
    ASSERT_NE(found, records.end());
    EXPECT_EQ(found->ImageName, "kestra_window_peer.exe");
    if (!enumerator.isFull) continue;
    EXPECT_EQ(found->FilePath, peer.Path());
    EXPECT_EQ(found->CommandLine, peer.CommandLine());
    EXPECT_EQ(found->Width, 64u);
    EXPECT_GT(found->WorkingSetKB.value_or(0), 100u);
    // Asked for one process Wine answers that it has no handles; Windows counts them.
    ASSERT_TRUE(found->HandleCount.has_value());
    if (enumerator.isKernels) {
      EXPECT_GT(*found->HandleCount, 2u);
    }
    EXPECT_GT(found->StartTime, 0u);
    EXPECT_TRUE(found->User.has_value());
  }
}

// The kernel's list and the process itself tell one start time: by it an item finds its process.
TEST(WindowsProcess, HasTheStartTimeOfTheKernelsList) {
  const auto machine = LiveMachine();
  std::unique_ptr<CProcessHandle> handle;
  ASSERT_EQ(machine->Processes()->Windows()->OpenHandle(os::CurrentProcessId(),
                                                        kProcessQueryAndRead, handle),
            kErrorSuccess);
  uint64_t startTime = 0;
  ASSERT_EQ(handle->StartTime(startTime), kErrorSuccess);
  EXPECT_GT(startTime, 0u);
  const auto records = RecordsOf(kEnumerators[1]);
  const auto found = std::find_if(records.begin(), records.end(),
                                  [](const auto& r) { return r.PID == os::CurrentProcessId(); });
  ASSERT_NE(found, records.end());
  EXPECT_EQ(found->StartTime, startTime);
  EXPECT_TRUE(found->FilePath.has_value());
}

struct PeerCase {
  const char* mode;
  uint32_t timeOutMs;
  uint32_t exitCode;
};

// One with a window ends by itself when that is closed; the others are ended by force.
TEST(WindowsProcess, IsAskedToCloseAndThenEnded) {
  const PeerCase cases[] = {
      {"window", kLongEnough, kAsked}, {"deaf", kImpatient, 0}, {"silent", kImpatient, 0}};
  for (const PeerCase& c : cases) {
    SCOPED_TRACE(c.mode);
    const CPeer peer(c.mode);
    ASSERT_TRUE(peer.IsReady());
    auto module = LiveModule(c.timeOutMs);
    CVDiagItem* pItem = FindProcess(*module, peer.PID());
    ASSERT_TRUE(pItem);
    QueryMessage message;
    message.AllowActive = true;
    const uint32_t begun = os::TickCount();
    EXPECT_TRUE(pItem->Delete(message)) << message.SystemError;
    const uint32_t taken = os::TickCount() - begun;
    if (c.timeOutMs == kImpatient) {
      EXPECT_GE(taken, kImpatient - kClockTickMs);
    }
    ASSERT_TRUE(peer.EndsWithin(kLongEnough));
    EXPECT_EQ(peer.ExitCode(), c.exitCode);
  }
}

TEST(WindowsProcess, IsLeftAloneWhenTheQueryIsCancelled) {
  const CPeer peer("deaf");
  ASSERT_TRUE(peer.IsReady());
  auto module = LiveModule(kLongEnough);
  CVDiagItem* pItem = FindProcess(*module, peer.PID());
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
  EXPECT_FALSE(peer.EndsWithin(100));
}

// A number that has come to mean another process since, and one of no process.
TEST(WindowsProcess, IsOpenedOnlyIfItIsTheOneThatWasListed) {
  const CPeer peer("silent");
  ASSERT_TRUE(peer.IsReady());
  std::vector<ProcessRecord> records;
  QueryMessage message;
  ASSERT_TRUE(EnumProcessList(*LiveMachine(), records, false, true, message));
  const auto found = std::find_if(records.begin(), records.end(),
                                  [&](const auto& r) { return r.PID == peer.PID(); });
  ASSERT_NE(found, records.end());
  CProcesses& processes = *LiveMachine()->Processes();
  std::unique_ptr<CProcess> process;
  EXPECT_EQ(processes.Open(peer.PID(), found->StartTime + 1, process), kErrorInvalidHandle);
  EXPECT_NE(processes.Open(0xFFFFFFF0, 0, process), kErrorSuccess);
  EXPECT_FALSE(process);
  EXPECT_EQ(processes.Open(peer.PID(), found->StartTime, process), kErrorSuccess);
}

}  // namespace
}  // namespace kestra
