// Which interface of a Windows system is asked for its processes, and what stands for one that
// fails.
#include <gtest/gtest.h>

#include <set>

#include "Modules/Processes/ProcessList.h"
#include "tests/Modules/Processes/windows/inspect/BlockImage.h"
#include "tests/support/FakeMachine.h"

namespace kestra {
namespace {

using test::BlockView;
using test::CFakeMachine;
using test::CFakeWindowsProcesses;
using enum ProcessLibrary;

// A machine of a system class and width, with four processes.
struct FourProcesses {
  explicit FourProcesses(uint32_t systemClass = 11, uint32_t bitness = 2) {
    machine->system.windows = test::VersionOfKind(systemClass);
    machine->system.width.isWide = bitness == 2;
    machine->processes.windows = &windows;
    windows.callerWidth = bitness == 2 ? 64 : 32;
    windows.processes = {
        {.pid = 0, .exeName = "[Idle]"},
        {.pid = 4, .exeName = "Kernel"},
        {.pid = 600,
         .parentPid = 4,
         .exeName = "a.exe",
         .sid = "ann",
         .baseName = "a.exe",
         .moduleFileName = "C:\\a.exe",
         .workingSet = 5 << 20,
         .handleCount = 7,
         .startTime = 99},
        {.pid = 601, .exeName = "b.exe", .mayBeRead = false, .mayBeOpened = false}};
    PutBlock(windows.processes[2], bitness == 2 ? BlockView::Wide : BlockView::Narrow,
             {"C:\\a.exe", "a -x", "A"});
    windows.accounts["ann"] = "HOME\\Ann";
    windows.searched["a.exe"] = "C:\\found\\a.exe";
    windows.searched["b.exe"] = "C:\\found\\b.exe";
  }

  bool Enum(bool wantUser = true, bool allSessions = true) {
    return EnumProcessList(*machine, records, wantUser, allSessions, message);
  }

  CFakeWindowsProcesses windows;
  Ref<CFakeMachine> machine = MakeRef<CFakeMachine>();
  std::vector<ProcessRecord> records;
  QueryMessage message;
};

// The calls that each of the four enumerators begins with.
std::string Asked(const CFakeWindowsProcesses& windows) {
  std::string asked;
  for (const std::string& call : windows.calls) {
    if (call == "EnumProcesses") asked += "P";
    if (call == "CreateToolhelp32Snapshot") asked += "T";
    if (call == "NtQuerySystemInformation") asked += "N";
  }
  if (asked == "T" && !windows.counts.contains("OpenProcess")) asked = "t";
  return asked;
}

struct ChoiceCase {
  std::set<uint32_t> classes;
  uint32_t bitness;
  std::set<ProcessLibrary> missing;
  const char* asked;
  bool succeeds;
};

TEST(EnumeratorChoice, IsBySystemClassWidthAndLibraries) {
  const ChoiceCase cases[] = {
      {{8, 9, 11, 12}, 1, {}, "T", true},
      {{8, 9, 11, 12}, 2, {}, "T", true},
      {{8, 9, 11, 12}, 2, {Psapi, Ntdll, VdmDbg}, "T", true},
      {{6, 7, 10, 13}, 1, {}, "P", true},
      {{6, 7, 10, 13}, 1, {Psapi}, "t", true},
      {{6, 7, 10, 13}, 2, {}, "N", true},
      {{6, 7, 10, 13}, 2, {Psapi}, "N", true},
      {{6, 7, 10, 13}, 2, {Ntdll}, "", false},
      {{0, 1, 2, 3, 4, 5}, 1, {}, "t", true},
      {{0, 1, 2, 3, 4, 5}, 1, {Psapi, Ntdll}, "t", true},
      {{2, 5, 7, 8, 10, 11}, 1, {Kernel32}, "", false},
      {{10, 12}, 2, {Kernel32}, "", false},
  };
  for (const ChoiceCase& c : cases) {
    for (const uint32_t systemClass : c.classes) {
      SCOPED_TRACE(testing::Message() << "class " << systemClass << " width " << c.bitness
                                      << " missing " << c.missing.size());
      FourProcesses stage(systemClass, c.bitness);
      stage.windows.missingLibraries = c.missing;
      EXPECT_EQ(stage.Enum(), c.succeeds);
      EXPECT_EQ(Asked(stage.windows), c.asked);
      EXPECT_EQ(stage.records.size(), c.succeeds ? 4u : 0u);
      EXPECT_EQ(stage.message.SystemError, c.succeeds ? 0 : kErrorCallNotImplemented);
      EXPECT_EQ(stage.windows.counts.contains("EnablePrivilege SeDebugPrivilege"),
                c.succeeds && c.asked[0] != 't');
    }
  }
}

struct FailureCase {
  uint32_t systemClass;
  uint32_t bitness;
  const char* function;
  bool succeeds;
};

// One that fails is not made up for by another. Numbers that PSAPI cannot give are none.
TEST(EnumeratorChoice, WhatOneThatFailsLeaves) {
  const FailureCase cases[] = {
      {11, 2, "CreateToolhelp32Snapshot", false},
      {11, 1, "Process32Next", false},
      {10, 1, "EnumProcesses", true},
      {10, 2, "NtQuerySystemInformation", false},
      {5, 1, "CreateToolhelp32Snapshot", false},
  };
  for (const FailureCase& c : cases) {
    SCOPED_TRACE(c.function);
    FourProcesses stage(c.systemClass, c.bitness);
    stage.windows.missing.insert(c.function);
    EXPECT_EQ(stage.Enum(), c.succeeds);
    EXPECT_EQ(stage.message.Success, c.succeeds);
    EXPECT_TRUE(stage.records.empty());
  }
}

std::string Shown(const ProcessRecord& r) {
  const auto text = [](const auto& value) { return value ? std::string(*value) : "-"; };
  const auto number = [](const auto& value) { return value ? std::to_string(*value) : "-"; };
  return r.ImageName + "|" + number(r.ParentPID) + "|" + text(r.FilePath) + "|" +
         text(r.CommandLine) + "|" + std::to_string(r.Width) + "|" + text(r.WindowTitle) + "|" +
         text(r.User) + "|" + number(r.WorkingSetKB) + "|" + number(r.HandleCount) + "|" +
         std::to_string(r.StartTime);
}

struct DetailCase {
  uint32_t systemClass;
  uint32_t bitness;
  bool wantUser;
  const char* kernel;
  const char* readable;
  const char* refused;
};

// What each enumerator tells of the kernel, of a process that may be read and of one that may not.
TEST(EnumeratorChoice, EachTellsWhatItsSystemDoes) {
  const DetailCase cases[] = {
      {11, 2, true, "System|0|-|-|64|-|-|-|-|0", "a.exe|4|C:\\a.exe|a -x|64|A|HOME\\Ann|5120|7|99",
       "b.exe|0|-|-|0|-|UnknownUser_SessionUnknown|-|-|0"},
      {11, 1, false, "System|0|-|-|32|-|-|-|-|0", "a.exe|4|C:\\a.exe|-|32|A|-|5120|7|99",
       "b.exe|0|C:\\found\\b.exe|-|32|-|-|-|-|0"},
      {10, 1, true, "System|-|-|-|32|-|-|-|-|0", "a.exe|-|C:\\a.exe|a -x|32|A|HOME\\Ann|5120|7|99",
       "|-|-|-|32|-|UnknownUser_SessionUnknown|-|-|0"},
      {10, 2, false, "System|0|-|-|64|-|-|0|0|0", "a.exe|4|C:\\a.exe|-|64|A|-|5120|7|99",
       "b.exe|0|-|-|0|-|-|0|0|0"},
      {5, 1, true, "Kernel|0|-|-|0|-|-|-|-|0", "a.exe|4|C:\\found\\a.exe|-|0|-|-|-|-|0",
       "b.exe|0|C:\\found\\b.exe|-|0|-|-|-|-|0"},
  };
  for (const DetailCase& c : cases) {
    SCOPED_TRACE(testing::Message() << "class " << c.systemClass << " width " << c.bitness);
    FourProcesses stage(c.systemClass, c.bitness);
    ASSERT_TRUE(stage.Enum(c.wantUser));
    ASSERT_EQ(stage.records.size(), 4u);
    EXPECT_EQ(Shown(stage.records[1]), c.kernel);
    EXPECT_EQ(Shown(stage.records[2]), c.readable);
    EXPECT_EQ(Shown(stage.records[3]), c.refused);
  }
}

struct ReusedCase {
  const char* what;
  uint32_t systemClass;
  uint64_t startTime;  // of the process that is opened; that of the list is 99
  const char* expected;
};

// A process has ended after it was listed, and its number is another's when it is opened: nothing
// of that one is shown, and its start time is not taken over, so that it cannot be ended.
TEST(EnumeratorChoice, ANumberThatIsAnothersTellsNothing) {
  constexpr uint64_t kFarAhead = uint64_t{1} << 62;
  const ReusedCase cases[] = {
      {"Toolhelp: started before the snapshot", 11, 100,
       "a.exe|4|C:\\a.exe|a -x|64|A|HOME\\Ann|5120|7|100"},
      {"Toolhelp: started after it", 11, kFarAhead,
       "a.exe|4|-|-|0|-|UnknownUser_SessionUnknown|-|-|0"},
      {"kernel: the one that was listed", 10, 99,
       "a.exe|4|C:\\a.exe|a -x|64|A|HOME\\Ann|5120|7|99"},
      {"kernel: another", 10, 100, "a.exe|4|-|-|0|-|UnknownUser_SessionUnknown|5120|7|99"},
  };
  for (const ReusedCase& c : cases) {
    SCOPED_TRACE(c.what);
    FourProcesses stage(c.systemClass);
    stage.windows.onCall = [&](const std::string& call) {
      if (call == "OpenProcess") stage.windows.processes[2].startTime = c.startTime;
    };
    ASSERT_TRUE(stage.Enum());
    ASSERT_EQ(stage.records.size(), 4u);
    EXPECT_EQ(Shown(stage.records[2]), c.expected);
  }
}

// The list grows while it is asked for: the room is doubled, but not without bound.
TEST(EnumeratorChoice, FollowsAKernelListThatGrows) {
  for (const size_t growth : {size_t{0x10000}, size_t{0x10000000}}) {
    SCOPED_TRACE(growth);
    FourProcesses stage(10, 2);
    stage.windows.listGrowth = growth;
    const bool succeeds = growth == 0x10000;
    EXPECT_EQ(stage.Enum(), succeeds);
    EXPECT_EQ(stage.message.SystemError, succeeds ? 0 : kErrorNotEnoughMemory);
    EXPECT_LT(stage.windows.counts["NtQuerySystemInformation"], 20u);
  }
}

// Whichever call fails, either the whole list fails and says so, or every process has its record.
TEST(EnumeratorChoice, AnyCallMayFail) {
  for (const auto& [systemClass, bitness] : {std::pair{11u, 2u}, {11u, 1u}, {10u, 1u}, {10u, 2u}}) {
    for (uint32_t call = 1;; ++call) {
      SCOPED_TRACE(testing::Message() << systemClass << " " << bitness << " call " << call);
      FourProcesses stage(systemClass, bitness);
      stage.windows.callerSession = 1;
      stage.windows.processes[2].session = 1;
      stage.windows.plan.FailCall(call, kErrorIoDevice, test::Facility::Any);
      const bool succeeded = stage.Enum();
      EXPECT_EQ(stage.message.Success, succeeded);
      // The third call is the list itself.
      const bool isEmptyByPsapi = systemClass == 10 && bitness == 1 && call == 3;
      EXPECT_EQ(stage.records.size(), succeeded && !isEmptyByPsapi ? 4u : 0u);
      if (!stage.windows.plan.HasFailed()) {
        EXPECT_GT(call, 10u);
        break;
      }
    }
  }
}

TEST(EnumeratorChoice, IsCancelledBetweenTwoProcesses) {
  for (const auto& [systemClass, bitness] : {std::pair{11u, 2u}, {10u, 1u}, {10u, 2u}, {5u, 1u}}) {
    SCOPED_TRACE(systemClass);
    FourProcesses stage(systemClass, bitness);
    auto termination = MakeRef<os::CEvent>();
    const char* last = systemClass == 5 ? "Process32Next" : "OpenProcess";
    stage.windows.onCall = [&](const std::string& call) {
      if (call == last) termination->Set();
    };
    QueryMessage message(termination, false);
    EXPECT_FALSE(EnumProcessList(*stage.machine, stage.records, true, true, message));
    EXPECT_EQ(message.SystemError, kErrorCancelled);
    EXPECT_TRUE(stage.records.empty());
    EXPECT_EQ(stage.windows.counts[last], 1u);
  }
}

}  // namespace
}  // namespace kestra
