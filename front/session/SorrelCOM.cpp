#include "front/session/SorrelCOM.h"

#include "VLib/src/log/Log.h"

namespace kestra {
namespace {

// Tells the queries of the whole process apart in the log; the first has id 1.
std::atomic<uint32_t> g_lastQueryId{0};

// The result's text; a list's elements stand below it.
std::string LogText(const Value& value) {
  std::string text = value.asString();
  const ValueVector& elements = value.asVector();
  for (size_t i = 0; value.IsVector() && i < elements.Count(); ++i) {
    text += "\r\n\t" + elements[i].asString();
  }
  return text;
}

}  // namespace

CSorrelCOM::CSorrelCOM(SessionSetup setup)
    : m_poCancelEvent(MakeRef<os::CEvent>()),
      m_poProgress(MakeRef<CProgress>()),
      m_pIsAlive(std::make_shared<bool>(true)) {
  OpenGlobalLog();
  m_pSorrel = std::make_shared<CSorrel>(std::move(setup));
}

CSorrelCOM::~CSorrelCOM() {
  g_Log.Info("~CSorrelCOM() - started.");
  *m_pIsAlive = false;
  g_Log.Info("~CSorrelCOM() - m_poDiagRoot destroyed.");
  if (m_pQCalculator) {
    g_Log.Info("~CSorrelCOM() - before cancelling of m_pQCalculator.");
    m_pQCalculator->Cancel();
    g_Log.Info("~CSorrelCOM() - before destroying of m_pQCalculator.");
    m_pQCalculator.reset();
    g_Log.Info("~CSorrelCOM() - m_pQCalculator has been destroyed.");
  }
  for (const auto& thread : m_initThreads) thread->Stop(kStopTimeOutMs);
  m_initThreads.clear();
  m_pSorrel.reset();
  g_Log.Info("~CSorrelCOM() - m_pSorrel has been destroyed.");
  if (m_poCompletions) m_poCompletions->Close();
  g_Log.Info("~CSorrelCOM() - finished.");
}

void CSorrelCOM::AllowActive(bool allow) {
  m_isActiveAllowed = allow;
  g_Log.Info("AllowActive(%d) initiated.", allow ? 1 : 0);
}

Ref<QueryMessage> CSorrelCOM::MakeMessage(const std::optional<os::NativeHandle>& hostEvent) {
  if (hostEvent) {
    return MakeRef<QueryMessage>(MakeRef<os::CBorrowedEvent>(*hostEvent), m_isActiveAllowed);
  }
  m_poCancelEvent->Reset();
  return MakeRef<QueryMessage>(m_poCancelEvent, m_isActiveAllowed);
}

SessionStatus CSorrelCOM::RunQuerySync(const std::string& query,
                                       const std::optional<os::NativeHandle>& hostEvent,
                                       uint32_t timeOut, QueryOutcome& outcome) {
  if (!IsReady()) return SessionStatus::Fail;
  if (IsAsyncModeUsed()) g_Log.Error("CSorrelCOM::RunQuerySync, window handle is not NULL");
  const int queryId = static_cast<int>(++g_lastQueryId);
  g_Log.Info("CSorrelCOM::RunQuerySync, started. q_id = %d, query = %s", queryId, query.c_str());
  const Ref<QueryMessage> message = MakeMessage(hostEvent);
  message->Progress = m_poProgress;
  outcome = {};
  outcome.hasValue =
      m_pSorrel->ProcessQuery(query, outcome.value, timeOut, message, &outcome.report);
  if (outcome.hasValue) {
    g_Log.Success("CSorrelCOM::RunQuerySync, ProcessQuery finished OK.");
    if (!message->Success) outcome.message = message->GetText();
  } else {
    outcome.value.SetError();
    g_Log.Error("CSorrelCOM::RunQuerySync, ProcessQuery failed.");
  }
  g_Log.Info("CSorrelCOM::RunQuerySync, finished. q_id = %d", queryId);
  return SessionStatus::Ok;
}

// Made when it is first needed, so that a host of synchronous queries never has one.
Ref<CCompletionQueue> CSorrelCOM::Completions() {
  std::lock_guard lock(m_lock);
  if (!m_poCompletions && !m_isAsyncDisabled) m_poCompletions = MakeRef<CCompletionQueue>();
  return m_poCompletions;
}

void CSorrelCOM::AnnounceBy(CCompletionQueue::Announce announce) {
  std::lock_guard lock(m_lock);
  if (m_poCompletions || m_isAsyncDisabled) return;
  m_poCompletions = MakeRef<CCompletionQueue>(std::move(announce));
}

bool CSorrelCOM::IsAsyncModeUsed() {
  std::lock_guard lock(m_lock);
  return static_cast<bool>(m_poCompletions);
}

std::shared_ptr<CQCalculatorAsync> CSorrelCOM::Calculator() {
  std::lock_guard lock(m_lock);
  return m_pQCalculator;
}

SessionStatus CSorrelCOM::RunQuery(const std::string& query, uint32_t timeOut) {
  const Ref<CCompletionQueue> completions = Completions();
  if (!completions) return SessionStatus::Fail;
  std::shared_ptr<CQCalculatorAsync> calculator = Calculator();
  if (!calculator) {
    calculator = std::make_shared<CQCalculatorAsync>(m_pSorrel, completions);
    std::lock_guard lock(m_lock);
    m_pQCalculator = calculator;
  }
  const uint32_t queryId = ++g_lastQueryId;
  return calculator->Run({query, timeOut, m_isActiveAllowed, queryId, m_poProgress})
             ? SessionStatus::Ok
             : SessionStatus::Fail;
}

void CSorrelCOM::DisableAsyncMode() {
  g_Log.Info("CSorrelCOM::DisableAsyncMode, initiated.");
  std::lock_guard lock(m_lock);
  m_isAsyncDisabled = true;
  if (m_poCompletions) m_poCompletions->Close();
  m_poCompletions = nullptr;
}

os::NativeHandle CSorrelCOM::EventHandle() {
  const Ref<CCompletionQueue> completions = Completions();
  return completions ? completions->Handle() : os::kNoHandle;
}

size_t CSorrelCOM::DispatchEvents(size_t most) {
  const Ref<CCompletionQueue> completions = Completions();
  const std::shared_ptr<bool> isAlive = m_pIsAlive;
  size_t count = 0;
  while (completions && *isAlive && count < most) {
    const std::optional<uint32_t> queryId = completions->Fetch();
    if (!queryId) break;
    const auto calculator = Calculator();
    auto outcome = calculator ? calculator->FetchOutcome(*queryId) : std::nullopt;
    if (!outcome) continue;
    OnRunQueryCompleted(*outcome, *queryId);
    ++count;
  }
  return count;
}

void CSorrelCOM::OnRunQueryCompleted(const QueryOutcome& outcome, uint32_t queryId) {
  g_Log.Info("CSorrelCOM::OnRunQueryCompleted, started. q_id = %d", static_cast<int>(queryId));
  if (!g_Log.ErrorsOnly) {
    g_Log.Info("CSorrelCOM::OnRunQueryCompleted, q_id = %d, result: \r\n%s",
               static_cast<int>(queryId), LogText(outcome.value).c_str());
  }
  const QueryCompleteSink sink = m_sink;  // it may end the session, and itself with it
  if (sink) sink(outcome);
  g_Log.Info("CSorrelCOM::OnRunQueryCompleted, finished. q_id = %d", static_cast<int>(queryId));
}

void CSorrelCOM::ForgetEndedThreads() {
  std::erase_if(m_initThreads, [](const Ref<CModuleInitThread>& thread) {
    return !thread->IsRunning() && thread->Stop(0);
  });
}

// A module that is filled may be walked by a query at this moment, so it is not filled again under
// its reader: a fresh one takes its place, and who holds the old one keeps it as it was.
SessionStatus CSorrelCOM::InitDiagModule(const std::string& name, const std::string& args,
                                         bool initAlways) {
  ForgetEndedThreads();
  Ref<DiagModule> module = m_pSorrel->GetModule(name, args);
  if (module && module->IsFilled()) {
    if (!initAlways) return SessionStatus::Ok;
    module = m_pSorrel->GetFreshModule(*module, args);
  }
  if (!module) return SessionStatus::Pointer;
  auto thread = MakeRef<CModuleInitThread>(std::move(module));
  if (!thread->Start()) return SessionStatus::Fail;
  m_initThreads.push_back(std::move(thread));
  return SessionStatus::Ok;
}

SessionStatus CSorrelCOM::CheckQuerySyntax(const std::string& query, int32_t& good) {
  good = m_pSorrel->CheckSyntax(query) ? -1 : 0;
  return SessionStatus::Ok;
}

SessionStatus CSorrelCOM::DiagnoseText(const std::string& query,
                                       std::optional<Diagnosis>& diagnosis) {
  if (!IsReady()) return SessionStatus::Fail;
  return m_pSorrel->DiagnoseText(query, MakeMessage({}), diagnosis) ? SessionStatus::Ok
                                                                    : SessionStatus::Fail;
}

SessionStatus CSorrelCOM::CompleteText(const std::string& text, size_t cursor,
                                       kestra::Completions& completions) {
  if (!IsReady()) return SessionStatus::Fail;
  return m_pSorrel->CompleteText(text, cursor, MakeMessage({}), completions) ? SessionStatus::Ok
                                                                             : SessionStatus::Fail;
}

bool CSorrelCOM::Explain(const std::string& query, std::string& plan) {
  return m_pSorrel->Explain(query, plan);
}

std::optional<ModuleState> CSorrelCOM::StateOf(const std::string& moduleName) {
  return m_pSorrel->StateOf(moduleName);
}

void CSorrelCOM::CancelQuery() {
  g_Log.Info("CSorrelCOM::CancelQuery(), started.");
  m_poCancelEvent->Set();
  CancelCalculator();
  g_Log.Info("CSorrelCOM::CancelQuery(), finished.");
}

void CSorrelCOM::CancelCalculator() {
  // The next query may begin, and end, before we are through: its announcement stays.
  const uint32_t lastQueryId = g_lastQueryId;
  const auto calculator = Calculator();
  // A thread that was left behind may hold locks in the root.
  if (calculator && !calculator->Cancel()) m_pSorrel->RebuildRoot();
  std::lock_guard lock(m_lock);
  if (m_poCompletions) m_poCompletions->RemoveUpTo(lastQueryId);
}

void CSorrelCOM::ReInitDiagRoot() {
  m_pSorrel->ReInitRoot();
}

bool CSorrelCOM::SetPluginsDir(const std::string& directory) {
  return m_pSorrel->SetPluginsDir(directory);
}

void CSorrelCOM::ClearPlugins() {
  m_pSorrel->ClearPlugins();
}

Ref<DiagClass> CSorrelCOM::RootClass() {
  return m_pSorrel->GetClass();
}

}  // namespace kestra
