// CSorrelCOM: a query session. A host hands it a query text and gets one typed value back, on its
// own thread or through an event.
//
// This is the session itself, without the binding: the C interface and the COM class stand in
// front of it.
//
// Threads: methods are called from the thread that made the session; CancelQuery from any. Events
// are fired on the owner's thread, from DispatchEvents.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "front/session/CompletionQueue.h"
#include "front/session/ModuleInitThread.h"
#include "front/session/QueryWorker.h"
#include "front/session/Sorrel.h"
#include "platform/os/Event.h"

namespace kestra {

// The public edge turns each into its own code.
enum class SessionStatus { Ok, Fail, Pointer };

class CSorrelCOM {
 public:
  // Called with the outcome of an asynchronous query. It must not throw, and may call the session.
  using QueryCompleteSink = std::function<void(const QueryOutcome&)>;

  explicit CSorrelCOM(SessionSetup setup = LiveSetup());
  // Stops what runs, with up to ten seconds for each thread, then drops the root, and logs each
  // step.
  ~CSorrelCOM();
  CSorrelCOM(const CSorrelCOM&) = delete;
  CSorrelCOM& operator=(const CSorrelCOM&) = delete;

  // Whether it could get what a query needs of the system. Every query fails without it.
  bool IsReady() const { return m_poCancelEvent->IsValid(); }
  // Whether queries that are accepted afterwards may change the machine.
  void AllowActive(bool allow);
  // Runs a query on the calling thread. hostEvent is a termination event of the caller's, which is
  // polled and not closed; without one CancelQuery ends the query. A query with an error in it is
  // no failure here: its value is an Error.
  SessionStatus RunQuerySync(const std::string& query,
                             const std::optional<os::NativeHandle>& hostEvent, uint32_t timeOut,
                             QueryOutcome& outcome);
  // Starts a query on the session's worker thread; its end is announced. Fail while the query
  // before is not dispatched yet, and after DisableAsyncMode.
  SessionStatus RunQuery(const std::string& query, uint32_t timeOut);
  // From here on RunQuery fails.
  void DisableAsyncMode();
  // Makes the queue of announcements now, and tells of each one (see CCompletionQueue::Announce).
  // Before the first RunQuery and EventHandle, once; nothing happens later.
  void AnnounceBy(CCompletionQueue::Announce announce);
  // A handle that is readable while an event waits for DispatchEvents; kNoHandle after
  // DisableAsyncMode. Lives until then or until the session ends.
  os::NativeHandle EventHandle();
  // Who gets the outcome of asynchronous queries.
  void SetQueryCompleteSink(QueryCompleteSink sink) { m_sink = std::move(sink); }
  // Fires the events that wait, at most so many; answers how many. On the owner's thread. The sink
  // may end the session, after which nothing more is fired.
  size_t DispatchEvents(size_t most = SIZE_MAX);
  // Starts filling a module on a thread of its own; nothing to do for one that is filled already,
  // unless initAlways. Pointer for a module that there is not.
  SessionStatus InitDiagModule(const std::string& name, const std::string& args, bool initAlways);
  // good is -1 for a text that parses, 0 for one that does not.
  SessionStatus CheckQuerySyntax(const std::string& query, int32_t& good);
  // What is wrong with a text or suspicious in it, and what may stand in it. CancelQuery ends the
  // work with nothing found. Fail when the root could not be made.
  SessionStatus DiagnoseText(const std::string& query, std::optional<Diagnosis>& diagnosis);
  SessionStatus CompleteText(const std::string& text, size_t cursor,
                             kestra::Completions& completions);
  // How a text would be run, for a reader; false for one that does not parse. Nothing is run.
  bool Explain(const std::string& query, std::string& plan);
  // Whether a module of that name in any case can show anything; nothing if there is none.
  std::optional<ModuleState> StateOf(const std::string& moduleName);
  // What the queries of this session are doing now. From any thread.
  const CProgress& Progress() const { return *m_poProgress; }
  // Ends the queries of this session, and drops the announcement of one that has just ended. From
  // any thread. Waits for the worker, up to ten seconds.
  void CancelQuery();
  void ReInitDiagRoot();
  // False for a path that is no directory, and for one that cannot be read.
  bool SetPluginsDir(const std::string& directory);
  void ClearPlugins();
  // The class tree; null when the root could not be made.
  Ref<DiagClass> RootClass();

 private:
  Ref<QueryMessage> MakeMessage(const std::optional<os::NativeHandle>& hostEvent);
  Ref<CCompletionQueue> Completions();
  bool IsAsyncModeUsed();
  std::shared_ptr<CQCalculatorAsync> Calculator();
  void ForgetEndedThreads();
  void CancelCalculator();
  void OnRunQueryCompleted(const QueryOutcome& outcome, uint32_t queryId);

  std::shared_ptr<CSorrel> m_pSorrel;
  std::atomic<bool> m_isActiveAllowed{false};
  const Ref<os::CEvent> m_poCancelEvent;
  const Ref<CProgress> m_poProgress;
  QueryCompleteSink m_sink;
  std::vector<Ref<CModuleInitThread>> m_initThreads;
  std::shared_ptr<bool> m_pIsAlive;  // tells DispatchEvents that a sink has ended the session

  std::mutex m_lock;                      // guards everything below
  Ref<CCompletionQueue> m_poCompletions;  // null until it is needed, and when async mode is off
  bool m_isAsyncDisabled = false;
  std::shared_ptr<CQCalculatorAsync> m_pQCalculator;
};

}  // namespace kestra
