// Tasks of 16 bits: listed behind the process that runs them, and ended one by one.
#include <gtest/gtest.h>

#include "Modules/Processes/ProcessesModule.h"
#include "Modules/Processes/windows/OldTasks.h"
#include "tests/Modules/Show.h"
#include "tests/support/FakeMachine.h"
#include "tests/support/FakeWindowsProcesses.h"

namespace kestra {
namespace {

using test::CFakeMachine;
using test::CFakeWindowsProcesses;

constexpr uint32_t kShortTimeOut = 20;

struct OldTaskHost {
  explicit OldTaskHost(bool isWide = false, uint32_t systemClass = 9) {
    machine->system.windows = test::VersionOfKind(systemClass);
    machine->system.width.isWide = isWide;
    machine->processes.windows = &windows;
    windows.callerWidth = isWide ? 64 : 32;
    windows.processes = {{.pid = 300,
                          .exeName = "ntvdm.exe",
                          .oldTasks = {{12, 7, "OLD", "C:\\OLD\\OLD.EXE"},
                                       {13, 8, "BARE", "BARE.EXE"},
                                       {14, 9, "LOST", "LOST.EXE"}}},
                         {.pid = 301, .exeName = "a.exe", .oldTasks = {{15, 1, "NO", "NO.EXE"}}}};
    windows.searched["BARE.EXE"] = "C:\\Windows\\BARE.EXE";
  }

  Ref<CProcessesModule> Fill(uint32_t closeTimeOutMs = kShortTimeOut) {
    auto module = MakeRef<CProcessesModule>(kProcessesModule.Get(), machine, closeTimeOutMs);
    QueryMessage message;
    EXPECT_TRUE(module->Init(true, false, message));
    windows.calls.clear();
    return module;
  }

  CFakeWindowsProcesses windows;
  Ref<CFakeMachine> machine = MakeRef<CFakeMachine>();
};

TEST(OldTasks, AreListedBehindTheirProcess) {
  OldTaskHost stage;
  const auto module = stage.Fill();
  ASSERT_EQ(module->Children.Count(), 5u);
  EXPECT_EQ(Show(*module->Children.Get(1)),
            "ThreadID=12 ImageName=OLD.EXE FilePath=C:\\OLD\\OLD.EXE ProcessArchitecture=0");
  EXPECT_EQ(Show(*module->Children.Get(2)),
            "ThreadID=13 ImageName=BARE.EXE FilePath=C:\\Windows\\BARE.EXE ProcessArchitecture=0");
  EXPECT_EQ(Show(*module->Children.Get(3)), "ThreadID=14 ImageName=LOST.EXE ProcessArchitecture=0");

  stage.windows.missingLibraries = {ProcessLibrary::VdmDbg};
  EXPECT_EQ(stage.Fill()->Children.Count(), 2u);
}

std::string Changes(const CFakeWindowsProcesses& windows) {
  std::string changes;
  for (const std::string& call : windows.calls) {
    if (call.starts_with("WM_CLOSE")) changes += call + ";";
    if (call.starts_with("VDMTerminate")) changes += call + ";";
  }
  return changes;
}

struct EndCase {
  const char* what;
  void (*change)(OldTaskHost&);                  // after the list was taken
  void (*whenAsked)(OldTaskHost&, os::CEvent&);  // as its windows are asked to close
  SystemError error;  // kErrorCancelled: it must not wait for the time-out
  const char* changes;
};

void Leave(OldTaskHost& stage) {
  auto& tasks = stage.windows.processes[0].oldTasks;
  tasks.erase(tasks.begin());
}
void EndHost(OldTaskHost& stage) {
  stage.windows.processes.erase(stage.windows.processes.begin());
}
void LoseTheTasks(OldTaskHost& stage) {
  stage.windows.missing = {"VDMEnumTaskWOWEx"};
}
void Stay(OldTaskHost&) {}
void StayToo(OldTaskHost&, os::CEvent&) {}

TEST(OldTasks, AreAskedThenEnded) {
  const EndCase cases[] = {
      {"stays", Stay, StayToo, 0, "WM_CLOSE 12;VDMTerminateTaskWOW 300 7;"},
      {"goes when asked", Stay, [](OldTaskHost& s, os::CEvent&) { Leave(s); }, 0, "WM_CLOSE 12;"},
      {"goes with its process", Stay, [](OldTaskHost& s, os::CEvent&) { EndHost(s); }, 0,
       "WM_CLOSE 12;"},
      {"had gone", Leave, StayToo, kErrorInvalidHandle, ""},
      {"nobody can tell whether it had", LoseTheTasks, StayToo, kErrorCallNotImplemented, ""},
      {"nobody can tell whether it went", Stay,
       [](OldTaskHost& s, os::CEvent&) { LoseTheTasks(s); }, kErrorCallNotImplemented,
       "WM_CLOSE 12;"},
      {"cannot be ended", [](OldTaskHost& s) { s.windows.missing = {"VDMTerminateTaskWOW 300 7"}; },
       StayToo, kErrorCallNotImplemented, "WM_CLOSE 12;VDMTerminateTaskWOW 300 7;"},
      {"its process has gone", EndHost, StayToo, kErrorInvalidHandle, ""},
      {"its process is another now",
       [](OldTaskHost& s) { s.windows.processes[0].exeName = "b.exe"; }, StayToo,
       kErrorInvalidHandle, ""},
      {"no list", [](OldTaskHost& s) { s.windows.missing = {"CreateToolhelp32Snapshot"}; }, StayToo,
       kErrorCallNotImplemented, ""},
      {"no library", [](OldTaskHost& s) { s.windows.missingLibraries = {ProcessLibrary::VdmDbg}; },
       StayToo, kErrorInvalidFunction, ""},
      {"cancelled", Stay, [](OldTaskHost&, os::CEvent& e) { e.Set(); }, kErrorCancelled,
       "WM_CLOSE 12;"},
  };
  for (const EndCase& c : cases) {
    SCOPED_TRACE(c.what);
    OldTaskHost stage;
    const auto module = stage.Fill(c.error == kErrorCancelled ? os::kInfinite : kShortTimeOut);
    c.change(stage);
    auto termination = MakeRef<os::CEvent>();
    stage.windows.onCall = [&](const std::string& call) {
      if (call.starts_with("WM_CLOSE")) c.whenAsked(stage, *termination);
    };
    QueryMessage message(termination, true);
    EXPECT_EQ(module->Children.Get(1)->Delete(message), c.error == kErrorSuccess);
    EXPECT_EQ(message.SystemError, c.error);
    EXPECT_EQ(Changes(stage.windows), c.changes);
  }
}

// Systems of 64 bits and those of the 9x family have no such process.
TEST(OldTasks, AreEndedWhereThereAreAny) {
  for (const auto& [isWide, systemClass] : {std::pair{true, 9u}, {false, 3u}}) {
    OldTaskHost stage;
    const auto module = stage.Fill();
    stage.machine->system.windows = test::VersionOfKind(systemClass);
    stage.machine->system.width.isWide = isWide;
    QueryMessage message;
    message.AllowActive = true;
    EXPECT_FALSE(module->Children.Get(1)->Delete(message));
    EXPECT_EQ(message.SystemError, kErrorCallNotImplemented);
    EXPECT_EQ(Changes(stage.windows), "");
  }
}

}  // namespace
}  // namespace kestra
