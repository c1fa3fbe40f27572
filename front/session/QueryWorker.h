// CQCalculatorAsync: runs a session's asynchronous queries, one at a time, on a thread of its own
// that is kept between queries. A cancel is a stop of the whole thread; the next query starts a new
// one.
//
// Each thread is a CQueryWorker, which owns all that it touches: one that does not stop in time is
// left behind, and goes on alone without harm to its successor.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "VLib/src/threads/Thread.h"
#include "front/session/CompletionQueue.h"
#include "front/session/Sorrel.h"
#include "platform/os/Event.h"

namespace kestra {

// How long a session waits for a thread of its own to stop by itself.
constexpr uint32_t kStopTimeOutMs = 10000;

// What ended: the value, and what goes with it.
struct QueryOutcome {
  Value value;
  bool hasValue = false;  // false: the root could not be made, and there is no value
  QueryReport report;
  std::string message;  // the sentence of the query's message; empty if it tells nothing
};

// One query that was asked for.
struct QueryRequest {
  std::string query;
  uint32_t timeOut = kNoTimeOut;
  bool isActiveAllowed = false;
  uint32_t queryId = 0;
  Ref<CProgress> progress{};  // where it tells what it is doing; may be null
};

class CQueryWorker : public CVThread {
 public:
  CQueryWorker(std::shared_ptr<CSorrel> sorrel, Ref<CCompletionQueue> completions)
      : m_pSorrel(std::move(sorrel)), m_poCompletions(std::move(completions)) {}

  // Hands a query to the thread. False while the one before is not fetched yet.
  bool Accept(QueryRequest request, uint32_t& busyQueryId);
  // Takes the outcome of the finished query of that id and frees the worker for the next one.
  // Nothing when the worker is at another one: a late announcement of a query that was cancelled.
  std::optional<QueryOutcome> FetchOutcome(uint32_t queryId);

 protected:
  void Run() override;

 private:
  std::optional<QueryRequest> TakeRequest();
  void RunOne(const QueryRequest& request, bool isReady);
  void Evaluate(const QueryRequest& request, QueryOutcome& outcome);

  const std::shared_ptr<CSorrel> m_pSorrel;
  const Ref<CCompletionQueue> m_poCompletions;
  os::CAutoResetEvent m_requestEvent;
  std::mutex m_lock;  // guards everything below
  bool m_isBusy = false;
  QueryRequest m_request;
  QueryOutcome m_outcome;
};

// Any thread.
class CQCalculatorAsync {
 public:
  CQCalculatorAsync(std::shared_ptr<CSorrel> sorrel, Ref<CCompletionQueue> completions)
      : m_pSorrel(std::move(sorrel)), m_poCompletions(std::move(completions)) {}

  // False if a query is still in process, or no thread could be made.
  bool Run(QueryRequest request);
  // Stops the thread, with up to ten seconds for it to look. False if it had to be left behind.
  bool Cancel();
  // The outcome of the query whose end was announced. Nothing when it was cancelled meanwhile.
  std::optional<QueryOutcome> FetchOutcome(uint32_t queryId);

 private:
  const std::shared_ptr<CSorrel> m_pSorrel;
  const Ref<CCompletionQueue> m_poCompletions;
  std::mutex m_lock;  // guards the one below
  Ref<CQueryWorker> m_poWorker;
};

}  // namespace kestra
