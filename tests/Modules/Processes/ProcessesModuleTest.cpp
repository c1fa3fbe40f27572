// Filling the module Processes over a machine in memory.
#include <gtest/gtest.h>

#include <string>

#include "Modules/Processes/ProcessesModule.h"
#include "tests/Modules/Show.h"
#include "tests/support/FailingMachine.h"
#include "tests/support/FakeMachine.h"

namespace kestra {
namespace {

using test::CFailingMachine;
using test::CFakeMachine;

ProcessRecord FullRecord(uint32_t pid) {
  ProcessRecord record;
  record.PID = pid;
  record.ParentPID = 1;
  record.ImageName = "tool";
  record.FilePath = "/opt/tool";
  record.CommandLine = "tool -x";
  record.Width = 64;
  record.WindowTitle = "Tool";
  record.User = "ann";
  record.WorkingSetKB = 2048;
  record.HandleCount = 3;
  record.StartTime = 77;
  return record;
}

ProcessRecord BareRecord(uint32_t pid) {
  ProcessRecord record;
  record.PID = pid;
  return record;
}

ProcessRecord EmptyValuesRecord() {
  ProcessRecord record = BareRecord(9);
  record.FilePath = "";
  record.CommandLine = "";
  record.User = "";
  record.WorkingSetKB = 0;
  record.HandleCount = 0;
  record.Width = 128;
  return record;
}

ProcessRecord OldTaskRecord() {
  ProcessRecord record = BareRecord(600);  // the PID of the process that runs the task
  record.ThreadID = 12;
  record.TaskId = 7;
  record.ImageName = "OLD.EXE";
  record.FilePath = "C:\\OLD.EXE";
  record.Width = 16;
  return record;
}

ProcessRecord OfWidth(uint32_t width) {
  ProcessRecord record = BareRecord(9);
  record.Width = width;
  return record;
}

struct FillCase {
  const char* what;
  SystemFamily family;
  const char* args;
  ProcessRecord record;
  const char* expected;
};

TEST(ProcessesModule, ShowsWhatARecordKnows) {
  const FillCase cases[] = {
      {"all of it", SystemFamily::Linux, "ShowUserAndComLine=1", FullRecord(500),
       "PID=500 ParentProcessID=1 ImageName=tool FilePath=/opt/tool MemoryUsage=2048 "
       "HandleCount=3 User=ann CommandLine=tool -x ProcessArchitecture=2 WindowTitle=Tool"},
      {"user and command line not asked for", SystemFamily::Linux, "", FullRecord(500),
       "PID=500 ParentProcessID=1 ImageName=tool FilePath=/opt/tool MemoryUsage=2048 "
       "HandleCount=3 ProcessArchitecture=2 WindowTitle=Tool"},
      {"a low PID is an ordinary one on Linux", SystemFamily::Linux, "ShowUserAndComLine=1",
       FullRecord(4),
       "PID=4 ParentProcessID=1 ImageName=tool FilePath=/opt/tool MemoryUsage=2048 "
       "HandleCount=3 User=ann CommandLine=tool -x ProcessArchitecture=2 WindowTitle=Tool"},
      {"the idle process", SystemFamily::Windows, "ShowUserAndComLine=1", FullRecord(0),
       "PID=0 ImageName=System Idle Process"},
      {"the kernel", SystemFamily::Windows, "ShowUserAndComLine=1", FullRecord(4),
       "PID=4 ImageName=System"},
      {"the first ordinary one", SystemFamily::Windows, "", FullRecord(5),
       "PID=5 ParentProcessID=1 ImageName=tool FilePath=/opt/tool MemoryUsage=2048 "
       "HandleCount=3 ProcessArchitecture=2 WindowTitle=Tool"},
      {"a 16-bit task", SystemFamily::Windows, "", OldTaskRecord(),
       "ThreadID=12 ImageName=OLD.EXE FilePath=C:\\OLD.EXE ProcessArchitecture=0"},
      {"may not be read", SystemFamily::Linux, "ShowUserAndComLine=1", BareRecord(9), "PID=9"},
      {"zero and empty are not shown", SystemFamily::Linux, "ShowUserAndComLine=1",
       EmptyValuesRecord(), "PID=9"},
      {"32 bits", SystemFamily::Linux, "", OfWidth(32), "PID=9 ProcessArchitecture=1"},
  };
  for (const FillCase& c : cases) {
    SCOPED_TRACE(c.what);
    auto machine = MakeRef<CFakeMachine>(c.family);
    machine->processes.Add(c.record);
    auto module = MakeRef<CProcessesModule>(kProcessesModule.Get(), machine);
    ASSERT_TRUE(module->SetArgs(c.args));
    QueryMessage message;
    ASSERT_TRUE(module->Init(true, false, message));
    EXPECT_TRUE(module->IsInitialized);
    ASSERT_EQ(module->Children.Count(), 1u);
    CVDiagItem& item = *module->Children.Get(0);
    EXPECT_TRUE(item.IsInitialized);
    EXPECT_EQ(item.GetName(), "Process");
    EXPECT_EQ(Show(item), c.expected);
    // What costs opening every process is asked for only when it is wanted.
    const uint32_t wanted =
        std::string(c.args).empty() ? 0 : kProcessWantUser | kProcessWantCommandLine;
    EXPECT_EQ(machine->processes.lastWanted, wanted);
  }
}

TEST(ProcessesModule, KeepsTheOrderOfTheListAndRefillsOnlyWhenForced) {
  auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  machine->processes.Add(BareRecord(30));
  machine->processes.Add(BareRecord(7));
  machine->processes.Add(BareRecord(20));
  auto module = MakeRef<CProcessesModule>(kProcessesModule.Get(), machine);
  QueryMessage message;
  ASSERT_TRUE(module->Init(true, false, message));
  ASSERT_EQ(module->Children.Count(), 3u);
  EXPECT_EQ(Show(*module->Children.Get(1)), "PID=7");

  machine->processes.Add(BareRecord(8));
  ASSERT_TRUE(module->Init(true, false, message));
  EXPECT_EQ(module->Children.Count(), 3u);
  ASSERT_TRUE(module->Init(true, true, message));
  EXPECT_EQ(module->Children.Count(), 4u);
}

TEST(ProcessesModule, AProcessThatVanishesMakesNoItem) {
  auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  machine->processes.Add(BareRecord(6));
  machine->processes.Add(BareRecord(7))->vanishes = true;
  machine->processes.Add(BareRecord(8));
  auto module = MakeRef<CProcessesModule>(kProcessesModule.Get(), machine);
  QueryMessage message;
  ASSERT_TRUE(module->Init(true, false, message));
  EXPECT_TRUE(message.Success);
  ASSERT_EQ(module->Children.Count(), 2u);
  EXPECT_EQ(Show(*module->Children.Get(1)), "PID=8");
}

TEST(ProcessesModule, AMachineWithoutProcessesShowsNone) {
  auto machine = MakeRef<CFakeMachine>(SystemFamily::Windows);
  machine->hasProcesses = false;
  auto module = MakeRef<CProcessesModule>(kProcessesModule.Get(), machine);
  QueryMessage message;
  EXPECT_TRUE(module->Init(true, false, message));
  EXPECT_TRUE(module->IsInitialized);
  EXPECT_EQ(module->Children.Count(), 0u);
  EXPECT_TRUE(message.Success);
}

// Whichever call fails, nothing is left behind, the message says why, and the next filling tries
// again.
TEST(ProcessesModule, AListThatFailsLeavesNothing) {
  auto inner = MakeRef<CFakeMachine>(SystemFamily::Linux);
  for (uint32_t pid : {6u, 7u, 8u}) inner->processes.Add(BareRecord(pid));
  auto machine = MakeRef<CFailingMachine>(inner);
  uint32_t failed = 0;
  for (uint32_t call = 1; call < 100; ++call) {
    SCOPED_TRACE(call);
    auto module = MakeRef<CProcessesModule>(kProcessesModule.Get(), machine);
    machine->FailCall(call, kErrorAccessDenied);
    QueryMessage message;
    const bool filled = module->Init(true, false, message);
    if (!machine->HasFailed()) {
      EXPECT_TRUE(filled);
      break;
    }
    ++failed;
    EXPECT_FALSE(filled);
    EXPECT_FALSE(module->IsInitialized);
    EXPECT_EQ(module->Children.Count(), 0u);
    EXPECT_FALSE(message.Success);
    EXPECT_EQ(message.SystemError, kErrorAccessDenied);

    machine->FailCall(0, kErrorSuccess);
    QueryMessage second;
    EXPECT_TRUE(module->Init(true, false, second));
    EXPECT_EQ(module->Children.Count(), 3u);
  }
  EXPECT_EQ(failed, 5u);  // taking the list, each process, and the end of the list
}

// A cancelled query stops at the next process, however long the list is, and leaves nothing.
TEST(ProcessesModule, LooksAtTheTerminationEventPerProcess) {
  constexpr size_t kProcessCount = 1000;
  for (const size_t cancelAt : {size_t{0}, size_t{10}, kProcessCount}) {
    SCOPED_TRACE(cancelAt);
    auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
    for (uint32_t pid = 5; pid < 5 + kProcessCount; ++pid) machine->processes.Add(BareRecord(pid));
    auto termination = MakeRef<os::CEvent>();
    size_t lastRead = 0;
    machine->processes.onNext = [&](size_t index) {
      lastRead = index;
      if (index == cancelAt) termination->Set();
    };
    auto module = MakeRef<CProcessesModule>(kProcessesModule.Get(), machine);
    QueryMessage message(termination, false);
    EXPECT_FALSE(module->Init(true, false, message));
    EXPECT_EQ(lastRead, cancelAt);
    EXPECT_FALSE(module->IsInitialized);
    EXPECT_EQ(module->Children.Count(), 0u);
    EXPECT_EQ(message.SystemError, kErrorCancelled);
  }
}

}  // namespace
}  // namespace kestra
