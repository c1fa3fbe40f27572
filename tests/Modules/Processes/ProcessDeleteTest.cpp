// Ending a process: the order of the steps, over a machine in memory.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "Modules/Processes/ProcessItem.h"
#include "Modules/Processes/ProcessesModule.h"
#include "tests/Modules/Processes/ClockTick.h"
#include "tests/support/FakeMachine.h"

namespace kestra {
namespace {

using test::CFakeMachine;
using test::kClockTickMs;

constexpr uint32_t kShortTimeOut = 30;
constexpr uint64_t kStartTime = 4711;

Ref<CProcessItem> MakeItem(const Ref<CFakeMachine>& machine, const ProcessRecord& record,
                           uint32_t closeTimeOutMs = kShortTimeOut) {
  const Ref<DiagClass> diagClass = kProcessClass.Get();
  auto item = MakeRef<CProcessItem>(diagClass, Ref<CMachine>(machine), closeTimeOutMs);
  item->Fill(ProcessRecord(record), 0, ProcessDefs(*diagClass->Params), nullptr);
  return item;
}

ProcessRecord Record(uint32_t pid) {
  ProcessRecord record;
  record.PID = pid;
  record.StartTime = kStartTime;
  return record;
}

std::string Calls(const test::FakeProcessState& state) {
  std::string calls = state.opens > 0 ? "open" : "";
  if (state.closeRequests > 0) calls += " close";
  if (state.terminations > 0) calls += " terminate";
  return calls;
}

struct RefusalCase {
  const char* what;
  uint32_t pid;
  std::optional<uint32_t> threadID;
  uint32_t messageId;
  const char* insert;
  SystemError error;
};

// None of these reaches a process.
TEST(ProcessDelete, RefusesWhatIsNoOrdinaryProcess) {
  const RefusalCase cases[] = {
      {"idle", 0, std::nullopt, 11000, "PID", 0},
      {"kernel", 4, std::nullopt, 11000, "PID", 0},
      {"a task without a thread", 600, 0, 11000, "ThreadID", 0},
      {"a task, which this machine cannot end", 600, 12, 0, nullptr, kErrorCallNotImplemented},
  };
  for (const SystemFamily family : {SystemFamily::Windows, SystemFamily::Linux}) {
    for (const RefusalCase& c : cases) {
      SCOPED_TRACE(c.what);
      auto machine = MakeRef<CFakeMachine>(family);
      ProcessRecord record = Record(c.pid);
      record.ThreadID = c.threadID;
      const auto state = machine->processes.Add(record);
      QueryMessage message;
      message.AllowActive = true;
      EXPECT_FALSE(MakeItem(machine, record)->Delete(message));
      EXPECT_FALSE(message.Success);
      EXPECT_EQ(message.MessageId, c.messageId);
      EXPECT_EQ(message.SystemError, c.error);
      if (c.insert) {
        EXPECT_EQ(message.Args, std::vector<std::string>{c.insert});
      }
      EXPECT_EQ(state->opens, 0);
    }
  }
}

TEST(ProcessDelete, NeedsActiveMode) {
  auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  const auto state = machine->processes.Add(Record(500));
  QueryMessage message;
  EXPECT_FALSE(MakeItem(machine, Record(500))->Delete(message));
  EXPECT_EQ(message.MessageId, 11015u);
  EXPECT_EQ(state->opens, 0);
}

TEST(ProcessDelete, AMachineWithoutProcessesHasNoneToEnd) {
  auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  machine->hasProcesses = false;
  QueryMessage message;
  message.AllowActive = true;
  EXPECT_FALSE(MakeItem(machine, Record(500))->Delete(message));
  EXPECT_EQ(message.SystemError, kErrorCallNotImplemented);
}

struct DeleteCase {
  const char* what;
  SystemError openError;
  SystemError closeError;
  SystemError terminateError;
  bool listens;       // ends when it is asked
  bool endsByItself;  // at the moment in which it is asked
  bool isCancelled;   // at that moment too
  SystemError error;  // kErrorSuccess: the delete succeeds
  const char* calls;
};

TEST(ProcessDelete, AsksThenWaitsThenForces) {
  const DeleteCase cases[] = {
      {"ends when asked", 0, 0, 0, true, false, false, 0, "open close"},
      {"ends by itself, and asking it fails", 0, kErrorAccessDenied, 0, false, true, false, 0,
       "open close"},
      {"may not be opened", kErrorAccessDenied, 0, 0, true, false, false, kErrorInvalidHandle,
       "open"},
      {"may not be asked", 0, kErrorAccessDenied, 0, true, false, false, kErrorAccessDenied,
       "open close"},
      {"does not listen", 0, 0, 0, false, false, false, 0, "open close terminate"},
      {"does not listen and may not be ended", 0, 0, kErrorAccessDenied, false, false, false,
       kErrorAccessDenied, "open close terminate"},
      {"cancelled: left alone", 0, 0, 0, false, false, true, kErrorCancelled, "open close"},
      {"cancelled as it ends: the cancel counts", 0, 0, 0, true, false, true, kErrorCancelled,
       "open close"},
  };
  for (const DeleteCase& c : cases) {
    SCOPED_TRACE(c.what);
    auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
    auto termination = MakeRef<os::CEvent>();
    const auto state = machine->processes.Add(Record(500));
    state->openError = c.openError;
    state->requestCloseError = c.closeError;
    state->terminateError = c.terminateError;
    state->ignoresCloseRequest = !c.listens;
    state->onCloseRequest = [&] {
      if (c.endsByItself) state->hasEnded.Set();
      if (c.isCancelled) termination->Set();
    };
    QueryMessage message(termination, true);
    // Only one that does not listen is waited for; a cancel must not wait for the time-out.
    const uint32_t timeOut = c.isCancelled ? os::kInfinite : kShortTimeOut;
    const bool isSuccess = c.error == kErrorSuccess;
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(MakeItem(machine, Record(500), timeOut)->Delete(message), isSuccess);
    const auto taken = std::chrono::steady_clock::now() - begun;
    // It has had its time; a wait may end a tick of the system's clock early.
    if (state->terminations > 0) {
      EXPECT_GE(taken, std::chrono::milliseconds(kShortTimeOut - kClockTickMs));
    }
    EXPECT_EQ(message.Success, isSuccess);
    EXPECT_EQ(message.SystemError, c.error);
    EXPECT_EQ(Calls(*state), c.calls);
  }
}

struct UnknownStartCase {
  const char* what;
  SystemFamily family;
  uint32_t systemClass;  // of Windows
  bool isEnded;
};

// Without a start time nobody can tell whose the PID is by now. Only the 9x family has none at all.
TEST(ProcessDelete, NeedsToKnowWhichProcessWasListed) {
  const UnknownStartCase cases[] = {{"Linux", SystemFamily::Linux, 0, false},
                                    {"NT", SystemFamily::Windows, 11, false},
                                    {"9x", SystemFamily::Windows, 3, true}};
  for (const UnknownStartCase& c : cases) {
    SCOPED_TRACE(c.what);
    auto machine = MakeRef<CFakeMachine>(c.family);
    if (c.systemClass != 0) machine->system.windows = test::VersionOfKind(c.systemClass);
    ProcessRecord record = Record(500);
    const auto state = machine->processes.Add(record);
    record.StartTime = 0;
    QueryMessage message;
    message.AllowActive = true;
    EXPECT_EQ(MakeItem(machine, record)->Delete(message), c.isEnded);
    EXPECT_EQ(message.SystemError, c.isEnded ? 0 : kErrorInvalidHandle);
    EXPECT_EQ(Calls(*state), c.isEnded ? "open close" : "");
  }
}

// The PID of the list belongs to another process by now: that one is not touched.
TEST(ProcessDelete, EndsOnlyTheProcessThatWasListed) {
  auto machine = MakeRef<CFakeMachine>(SystemFamily::Linux);
  ProcessRecord other = Record(500);
  other.StartTime = kStartTime + 1;
  const auto state = machine->processes.Add(other);
  QueryMessage message;
  message.AllowActive = true;
  EXPECT_FALSE(MakeItem(machine, Record(500))->Delete(message));
  EXPECT_EQ(message.SystemError, kErrorInvalidHandle);
  EXPECT_EQ(Calls(*state), "");
  EXPECT_FALSE(state->hasEnded.IsSet());
}

}  // namespace
}  // namespace kestra
