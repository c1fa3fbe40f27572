// Processes in memory.
//
//   CFakeProcesses processes;
//   auto state = processes.Add({.PID = 12, .ImageName = "a.exe", .StartTime = 7});
//   state->ignoresCloseRequest = true;
//   ... state->hasEnded.IsSet(), state->closeRequests ...
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/machine/Processes.h"
#include "platform/os/Event.h"

namespace kestra::test {

// One process of the script. The knobs are set before it is used; the rest may be read any time.
struct FakeProcessState {
  ProcessRecord record;
  bool vanishes = false;             // in the list when it was taken, gone when it is read
  bool ignoresCloseRequest = false;  // otherwise it ends at the request
  SystemError openError = 0;
  SystemError requestCloseError = 0;
  SystemError terminateError = 0;
  std::function<void()> onCloseRequest;  // runs on the caller's thread

  os::CEvent hasEnded;
  std::atomic<int> closeRequests{0};
  std::atomic<int> terminations{0};
  std::atomic<int> opens{0};
};

class CFakeProcesses final : public CProcesses {
 public:
  // User and CommandLine are given only to who wants them.
  SystemError Enumerate(uint32_t wanted, std::unique_ptr<CProcessList>& list) override;
  SystemError Open(uint32_t pid, uint64_t startTime, std::unique_ptr<CProcess>& process) override;

  CWindowsProcesses* Windows() override { return windows; }

  std::shared_ptr<FakeProcessState> Add(ProcessRecord record);

  // Runs before each record of a list is given, with its index; set before use. A test cancels or
  // changes the script here.
  std::function<void(size_t)> onNext;
  std::atomic<uint32_t> lastWanted{0};
  CWindowsProcesses* windows = nullptr;  // borrowed; set before use

 private:
  std::mutex m_lock;  // guards the list
  std::vector<std::shared_ptr<FakeProcessState>> m_states;
};

}  // namespace kestra::test
