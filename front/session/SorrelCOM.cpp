#include "front/session/SorrelCOM.h"

#include "VLib/src/log/Log.h"

namespace kestra {
namespace {

// Tells the queries of the whole process apart in the log; the first has id 1.
std::atomic<uint32_t> g_lastQueryId{0};

int NewQueryId() { return static_cast<int>(++g_lastQueryId); }

}  // namespace

CSorrelCOM::CSorrelCOM(SessionSetup setup) {
  OpenGlobalLog();
  m_pSorrel = std::make_unique<CSorrel>(std::move(setup));
  m_poCancelEvent = MakeRef<os::CEvent>();
}

CSorrelCOM::~CSorrelCOM() {
  g_Log.Info("~CSorrelCOM() - started.");
  m_poDiagRoot = nullptr;
  g_Log.Info("~CSorrelCOM() - m_poDiagRoot destroyed.");
  m_pSorrel.reset();
  g_Log.Info("~CSorrelCOM() - m_pSorrel has been destroyed.");
  m_poCancelEvent = nullptr;
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
  const int queryId = NewQueryId();
  g_Log.Info("CSorrelCOM::RunQuerySync, started. q_id = %d, query = %s", queryId, query.c_str());
  const Ref<QueryMessage> message = MakeMessage(hostEvent);
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

SessionStatus CSorrelCOM::CheckQuerySyntax(const std::string& query, int32_t& good) {
  good = m_pSorrel->CheckSyntax(query) ? -1 : 0;
  return SessionStatus::Ok;
}

void CSorrelCOM::CancelQuery() {
  g_Log.Info("CSorrelCOM::CancelQuery(), started.");
  m_poCancelEvent->Set();
  g_Log.Info("CSorrelCOM::CancelQuery(), finished.");
}

void CSorrelCOM::ReInitDiagRoot() { m_pSorrel->ReInitRoot(); }

Ref<DiagClass> CSorrelCOM::RootClass() { return m_pSorrel->GetClass(); }

}  // namespace kestra
