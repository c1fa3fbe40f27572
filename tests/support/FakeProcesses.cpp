#include "tests/support/FakeProcesses.h"

namespace kestra::test {
namespace {

class CFakeProcess final : public CProcess {
 public:
  explicit CFakeProcess(std::shared_ptr<FakeProcessState> state) : m_state(std::move(state)) {}

  os::NativeHandle Native() const override { return m_state->hasEnded.Native(); }
  SystemError RequestClose() override {
    ++m_state->closeRequests;
    if (m_state->onCloseRequest) m_state->onCloseRequest();
    if (m_state->requestCloseError != kErrorSuccess) return m_state->requestCloseError;
    if (!m_state->ignoresCloseRequest) m_state->hasEnded.Set();
    return kErrorSuccess;
  }
  SystemError Terminate() override {
    ++m_state->terminations;
    if (m_state->terminateError != kErrorSuccess) return m_state->terminateError;
    m_state->hasEnded.Set();
    return kErrorSuccess;
  }

 private:
  std::shared_ptr<FakeProcessState> m_state;
};

class CFakeProcessList final : public CProcessList {
 public:
  CFakeProcessList(std::vector<std::shared_ptr<FakeProcessState>> states, uint32_t wanted,
                   const std::function<void(size_t)>& onNext)
      : m_states(std::move(states)), m_wanted(wanted), m_onNext(onNext) {}

  SystemError Next(ProcessRecord& record) override {
    if (m_onNext) m_onNext(m_given);
    while (m_next < m_states.size()) {
      const FakeProcessState& state = *m_states[m_next++];
      if (state.vanishes || state.hasEnded.IsSet()) continue;
      record = state.record;
      if ((m_wanted & kProcessWantUser) == 0) record.User.reset();
      if ((m_wanted & kProcessWantCommandLine) == 0) record.CommandLine.reset();
      ++m_given;
      return kErrorSuccess;
    }
    return kErrorNoMoreItems;
  }

 private:
  std::vector<std::shared_ptr<FakeProcessState>> m_states;
  uint32_t m_wanted;
  const std::function<void(size_t)>& m_onNext;
  size_t m_next = 0;
  size_t m_given = 0;
};

}  // namespace

SystemError CFakeProcesses::Enumerate(uint32_t wanted, std::unique_ptr<CProcessList>& list) {
  std::lock_guard guard(m_lock);
  lastWanted = wanted;
  list = std::make_unique<CFakeProcessList>(m_states, wanted, onNext);
  return kErrorSuccess;
}

SystemError CFakeProcesses::Open(uint32_t pid, uint64_t startTime,
                                 std::unique_ptr<CProcess>& process) {
  std::lock_guard guard(m_lock);
  for (const auto& state : m_states) {
    if (state->record.PID != pid || state->vanishes || state->hasEnded.IsSet()) continue;
    if (startTime != 0 && state->record.StartTime != startTime) continue;
    ++state->opens;
    if (state->openError != kErrorSuccess) return state->openError;
    process = std::make_unique<CFakeProcess>(state);
    return kErrorSuccess;
  }
  return kErrorInvalidHandle;
}

std::shared_ptr<FakeProcessState> CFakeProcesses::Add(ProcessRecord record) {
  auto state = std::make_shared<FakeProcessState>();
  state->record = std::move(record);
  std::lock_guard guard(m_lock);
  m_states.push_back(state);
  return state;
}

}  // namespace kestra::test
