#include "model/items/QueryMessage.h"

#include "platform/os/Clock.h"

namespace kestra {
namespace {

// How often a loop asks the system about a host's event. A cancel is answered within 250 ms, and
// this is a small part of that.
constexpr uint32_t kPollIntervalMs = 10;

}  // namespace

const os::CWaitable* QueryMessage::TerminationEvent() const {
  if (m_poOwnEvent) return m_poOwnEvent.get();
  return m_poHostEvent.get();
}

bool QueryMessage::IsTerminated() {
  if (m_poOwnEvent) {
    if (!m_poOwnEvent->IsSet()) return false;
  } else if (!m_poHostEvent || os::WaitAny({m_poHostEvent.get()}, 0) != 0) {
    return false;
  }
  Fail(kErrorCancelled);
  return true;
}

Ref<QueryMessage> QueryMessage::ForHelper() const {
  auto message = m_poHostEvent ? MakeRef<QueryMessage>(m_poHostEvent, AllowActive)
                               : MakeRef<QueryMessage>(m_poOwnEvent, AllowActive);
  message->IsMachineReadOnly = IsMachineReadOnly;
  message->Notes = Notes;
  message->Progress = Progress;
  return message;
}

bool QueryMessage::IsTerminatedInLoop() {
  if (!m_poHostEvent) return IsTerminated();
  const uint32_t now = os::TickCount();
  if (now - m_lastPoll < kPollIntervalMs) return false;
  m_lastPoll = now;
  return IsTerminated();
}

bool QueryMessage::RequireActive() {
  if (AllowActive) return !IsMachineReadOnly || Fail(kErrorWriteProtect);
  RaiseMessage(11015);
  return false;
}

void QueryMessage::RaiseMessage(uint32_t id, std::initializer_list<std::string> inserts) {
  Success = false;
  Source = 0;
  MessageId = id;
  Args.assign(inserts);
}

bool QueryMessage::Fail(kestra::SystemError error) {
  Success = false;
  this->SystemError = error;
  return false;
}

}  // namespace kestra
