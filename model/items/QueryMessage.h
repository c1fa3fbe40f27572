// QueryMessage: what is carried through everything below a query: how it is cancelled, what it may
// do, and how it ended.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "VLib/src/errors/DiagMessage.h"
#include "model/items/FillNotes.h"
#include "model/items/Progress.h"
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

  // A message for work of the same query on another thread: it is cancelled with this one, shares
  // its notes and progress, and ends in its own way.
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
  // Something could not be read, and the filling goes on without it: a directory that may not be
  // listed, a process that may not be opened. Not for what has gone meanwhile. Kept where the one
  // who asked for the filling wants to know.
  void NoteProblem(std::string_view subject, kestra::SystemError error,
                   Missing missing = Missing::Items) {
    if (Notes) Notes->NoteProblem(subject, error, missing);
  }
  // Why the arguments of a module do not fit, where a failure says no more than that it is one.
  // Answers false, so that a hook can return it.
  bool RefuseArguments(std::string_view module, std::string_view reason) {
    if (Notes) Notes->NoteProblem(module, reason);
    return false;
  }
  // A limit of the module's own ends the filling, and what was found until then stays.
  void NoteCutShort() {
    if (Notes) Notes->NoteCutShort();
  }
  // Where a filling is, with so many items more than at the last call; cheap enough for each
  // directory. Or how far it is.
  void TellPlace(std::string_view place, uint64_t more) {
    if (Progress) Progress->TellPlace(place, more);
  }
  void TellAmount(uint64_t done, uint64_t total) {
    if (Progress) Progress->TellAmount(done, total);
  }

  Ref<CFillNotes> Notes;    // of the filling that runs; null: nobody asks
  Ref<CProgress> Progress;  // of the session; null: nobody looks

  // Sets failure with a system error. Answers false, so that a hook can return it.
  bool Fail(kestra::SystemError error);

 private:
  Ref<os::CEvent> m_poOwnEvent;
  Ref<os::CBorrowedEvent> m_poHostEvent;
  uint32_t m_lastPoll = 0;  // tick count of the last look at a host's event
};

// Has a message's notes kept in an object for a scope.
class CNotesScope {
 public:
  CNotesScope(QueryMessage& message, Ref<CFillNotes> notes)
      : m_message(message), m_before(std::exchange(message.Notes, std::move(notes))) {}
  ~CNotesScope() { m_message.Notes = std::move(m_before); }
  CNotesScope(const CNotesScope&) = delete;
  CNotesScope& operator=(const CNotesScope&) = delete;

 private:
  QueryMessage& m_message;
  Ref<CFillNotes> m_before;
};

// Tells for a scope that something is filled.
class CFillProgress {
 public:
  CFillProgress(QueryMessage& message, std::string_view what) : m_message(message) {
    if (message.Progress) m_before = message.Progress->Begin(what);
  }
  ~CFillProgress() {
    if (m_message.Progress) m_message.Progress->End(std::move(m_before));
  }
  CFillProgress(const CFillProgress&) = delete;
  CFillProgress& operator=(const CFillProgress&) = delete;

 private:
  QueryMessage& m_message;
  CProgress::Told m_before;
};

}  // namespace kestra
