// CSorrelCOM: a query session. A host hands it a query text and gets one typed value back.
//
// This is the session itself, without the binding: the C interface and the COM class stand in
// front of it.
//
// Threads: methods are called from the thread that made the session; CancelQuery from any.
#pragma once

#include "front/session/Sorrel.h"
#include "platform/os/Event.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace kestra {

enum class SessionStatus { Ok, Fail, Pointer };

// What ended: the value, and what goes with it.
struct QueryOutcome {
  Value value;
  bool hasValue = false;     // false: the root could not be made, and there is no value
  QueryReport report;
  std::string message;       // the sentence of the query's message; empty if it tells nothing
};

class CSorrelCOM {
 public:
  explicit CSorrelCOM(SessionSetup setup = LiveSetup());
  // Stops what runs, drops the root, and logs each step.
  ~CSorrelCOM();
  CSorrelCOM(const CSorrelCOM&) = delete;
  CSorrelCOM& operator=(const CSorrelCOM&) = delete;

  // Whether queries that are accepted afterwards may change the machine.
  void AllowActive(bool allow);
  // Runs a query on the calling thread. hostEvent is a termination event of the caller's, which is
  // polled and not closed; without one CancelQuery ends the query. A query with an error in it is
  // no failure here: its value is an Error.
  SessionStatus RunQuerySync(const std::string& query,
                             const std::optional<os::NativeHandle>& hostEvent, uint32_t timeOut,
                             QueryOutcome& outcome);
  // good is -1 for a text that parses, 0 for one that does not.
  SessionStatus CheckQuerySyntax(const std::string& query, int32_t& good);
  void CancelQuery();
  void ReInitDiagRoot();
  // The class tree; null when the root could not be made.
  Ref<DiagClass> RootClass();

 private:
  Ref<QueryMessage> MakeMessage(const std::optional<os::NativeHandle>& hostEvent);

  // Handed out by nobody; kept because its release is a step of the destruction.
  Ref<DiagRoot> m_poDiagRoot;
  std::unique_ptr<CSorrel> m_pSorrel;
  std::atomic<bool> m_isActiveAllowed{false};
  Ref<os::CEvent> m_poCancelEvent;
};

}  // namespace kestra
