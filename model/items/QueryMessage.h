// QueryMessage: what is carried through everything below a query: how it is cancelled, what it may
// do, and how it ended.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>

#include "VLib/src/errors/DiagMessage.h"
#include "platform/base/Ref.h"
#include "platform/os/Event.h"

namespace kestra {

// One query's, on one thread. The termination event may be signalled from any thread.
class QueryMessage : public DiagMessage, public CCounted<QueryMessage> {
 public:
  QueryMessage() = default;
  QueryMessage(Ref<os::CEvent> termination, bool allowActive)
      : AllowActive(allowActive), m_poOwnEvent(std::move(termination)) {}
  QueryMessage(Ref<os::CBorrowedEvent> termination, bool allowActive)
      : AllowActive(allowActive), m_poHostEvent(std::move(termination)) {}

  // A message for work of the same query on another thread: it is cancelled with this one, and ends
  // in its own way.
  Ref<QueryMessage> ForHelper() const;

  bool AllowActive = false;
  bool IsMachineReadOnly = false;  // nothing of the machine can be changed, allowed or not
  bool Restart = false;            // the change needs a restart of the machine

  // The termination event, for waits; null if there is none.
  const os::CWaitable* TerminationEvent() const;

  // True when the termination event is signalled; the message is then set to failure with system
  // error 1223. A wait that fails counts as not signalled. Costs one atomic read for an event of
  // ours and one system call for a host's.
  bool IsTerminated();
  // The same for loops that look at every turn: a host's event is polled every few milliseconds
  // only.
  bool IsTerminatedInLoop();
  bool MayChange() const { return AllowActive && !IsMachineReadOnly; }
  // Whether an active operation may begin. False with message 11015 unless they are allowed, and
  // with kErrorWriteProtect for a machine that is only read.
  bool RequireActive();
  // Sets failure with a message of this library's.
  void RaiseMessage(uint32_t id, std::initializer_list<std::string> inserts = {});
  // Sets failure with a system error. Answers false, so that a hook can return it.
  bool Fail(kestra::SystemError error);

 private:
  Ref<os::CEvent> m_poOwnEvent;
  Ref<os::CBorrowedEvent> m_poHostEvent;
  uint32_t m_lastPoll = 0;  // tick count of the last look at a host's event
};

}  // namespace kestra
