#include "front/session/QueryWorker.h"

#include <utility>

#include "VLib/src/log/Log.h"
#include "platform/os/Apartment.h"
#include "platform/os/Thread.h"

namespace kestra {
bool CQueryWorker::Accept(QueryRequest request, uint32_t& busyQueryId) {
  std::lock_guard lock(m_lock);
  if (m_isBusy) {
    busyQueryId = m_request.queryId;
    return false;
  }
  // Busy from here on, and not only once the thread has taken it: of two requests in a row the
  // second is refused, however fast it comes.
  m_isBusy = true;
  m_request = std::move(request);
  m_requestEvent.Set();
  return true;
}

std::optional<QueryOutcome> CQueryWorker::FetchOutcome(uint32_t queryId) {
  std::lock_guard lock(m_lock);
  if (!m_isBusy || m_request.queryId != queryId) return std::nullopt;
  m_isBusy = false;
  return std::exchange(m_outcome, {});
}

std::optional<QueryRequest> CQueryWorker::TakeRequest() {
  const Ref<os::CEvent> stop = StopEvent();
  if (os::WaitAny({&m_requestEvent, stop.get()}, os::kInfinite) != 0) return std::nullopt;
  std::lock_guard lock(m_lock);
  return m_request;
}

// isReady: the thread may run queries. Otherwise an Error is all that comes.
void CQueryWorker::RunOne(const QueryRequest& request, bool isReady) {
  QueryOutcome outcome;
  outcome.value.SetError();
  try {
    if (isReady) Evaluate(request, outcome);
  } catch (...) {
    // No memory, as a rule. The host waits for an answer all the same.
    outcome = {};
    outcome.value.SetError();
  }
  std::lock_guard lock(m_lock);
  m_outcome = std::move(outcome);
}

void CQueryWorker::Evaluate(const QueryRequest& request, QueryOutcome& outcome) {
  g_Log.Info(
      "CSorrelCOM::CQCalculatorAsync::ThreadProc, time-out = %d, ActiveAllowed = %d, q_id = %d, "
      "thread_id = 0x%x, query = %s",
      static_cast<int>(request.timeOut), request.isActiveAllowed ? 1 : 0,
      static_cast<int>(request.queryId), os::CurrentThreadId(), request.query.c_str());
  if (request.query.empty()) {
    g_Log.Warning("CSorrelCOM::CQCalculatorAsync::ThreadProc, invalid parameter(s). thread_id = %d",
                  static_cast<int>(os::CurrentThreadId()));
  } else {
    const auto message = MakeRef<QueryMessage>(StopEvent(), request.isActiveAllowed);
    message->Progress = request.progress;
    outcome.hasValue = m_pSorrel->ProcessQuery(request.query, outcome.value, request.timeOut,
                                               message, &outcome.report);
    if (!outcome.hasValue) {
      outcome.value.SetError();
      g_Log.Warning(
          "CSorrelCOM::CQCalculatorAsync::ThreadProc, ProcessQuery failed. q_id = %d, thread_id = "
          "%d",
          static_cast<int>(request.queryId), static_cast<int>(os::CurrentThreadId()));
    } else if (!message->Success) {
      outcome.message = message->GetText();
    }
  }
}

void CQueryWorker::Run() {
  const os::CApartmentScope apartment;
  const Ref<os::CEvent> stop = StopEvent();
  for (;;) {
    const std::optional<QueryRequest> request = TakeRequest();
    if (!request) {
      g_Log.Info("CQCalculatorAsync - thread terminated. thread_id = %d",
                 static_cast<int>(os::CurrentThreadId()));
      break;
    }
    RunOne(*request, apartment.IsReady());
    if (stop->IsSet()) break;  // a query that was cancelled announces nothing
    m_poCompletions->Post(request->queryId);
  }
  g_Log.Info("CQCalculatorAsync - thread finished. thread_id = 0x%x", os::CurrentThreadId());
}

bool CQCalculatorAsync::Run(QueryRequest request) {
  std::lock_guard lock(m_lock);
  if (!m_poWorker || !m_poWorker->IsRunning()) {
    auto worker = MakeRef<CQueryWorker>(m_pSorrel, m_poCompletions);
    if (!worker->Start()) return false;
    m_poWorker = std::move(worker);
  }
  const int newId = static_cast<int>(request.queryId);
  const std::string query = request.query;
  uint32_t busyId = 0;
  if (m_poWorker->Accept(std::move(request), busyId)) return true;
  g_Log.Error(
      "CSorrelCOM::CQCalculatorAsync::Run, previous query (q_id = %d) still in process. new q_id = "
      "%d, query = %s",
      static_cast<int>(busyId), newId, query.c_str());
  return false;
}

// The wait is made without the lock, so that the owner is not held up by a cancel from elsewhere.
bool CQCalculatorAsync::Cancel() {
  Ref<CQueryWorker> worker;
  {
    std::lock_guard lock(m_lock);
    worker = std::exchange(m_poWorker, nullptr);
  }
  const uint32_t threadId = worker ? worker->ThreadId() : 0;
  g_Log.Info("CSorrelCOM::CQCalculatorAsync::Cancel() - started. thread_id = 0x%x", threadId);
  const bool hasEnded = !worker || worker->Stop(kStopTimeOutMs);
  g_Log.Info("CSorrelCOM::CQCalculatorAsync::Cancel() - thread terminated. thread_id = 0x%x",
             threadId);
  return hasEnded;
}

std::optional<QueryOutcome> CQCalculatorAsync::FetchOutcome(uint32_t queryId) {
  std::lock_guard lock(m_lock);
  if (!m_poWorker) return std::nullopt;
  return m_poWorker->FetchOutcome(queryId);
}

}  // namespace kestra
