// The asynchronous road through the C interface.
#include "front/capi/Barrier.h"
#include "front/capi/Handles.h"

using namespace kestra;

namespace {

kestra_status FromSession(SessionStatus status) {
  switch (status) {
    case SessionStatus::Ok:
      return KESTRA_OK;
    case SessionStatus::Pointer:
      return KESTRA_E_POINTER;
    default:
      return KESTRA_E_FAIL;
  }
}

// Hands one outcome to the host's callback, which may destroy the session: nothing of it is touched
// afterwards.
void Fire(kestra_session& session, const QueryOutcome& outcome, kestra_query_complete callback,
          void* context) {
  session.lastMessage = outcome.message;
  session.lastReport = outcome.report;
  kestra_value value{outcome.value};
  callback(context, &value);
}

}  // namespace

kestra_status kestra_session_set_query_complete(kestra_session* session,
                                                kestra_query_complete callback, void* context) {
  return Barrier(session)([&] {
    if (callback) {
      session->session.SetQueryCompleteSink(
          [=](const QueryOutcome& outcome) { Fire(*session, outcome, callback, context); });
    } else {
      session->session.SetQueryCompleteSink(nullptr);
    }
    return KESTRA_OK;
  });
}

kestra_status kestra_session_run_query(kestra_session* session, const char* query, size_t length,
                                       uint32_t timeout_ms) {
  return Barrier(session, query)([&] {
    return FromSession(session->session.RunQuery(std::string(query, length), timeout_ms));
  });
}

kestra_status kestra_session_event_handle(kestra_session* session, intptr_t* handle) {
  return Barrier(session, handle)([&] {
    const os::NativeHandle native = session->session.EventHandle();
    if (native == os::kNoHandle) return KESTRA_E_FAIL;
    *handle = native;
    return KESTRA_OK;
  });
}

kestra_status kestra_session_dispatch_events(kestra_session* session, int32_t* count) {
  return Barrier(session)([&] {
    const size_t fired = session->session.DispatchEvents();
    if (count) *count = static_cast<int32_t>(fired);
    return KESTRA_OK;
  });
}

kestra_status kestra_session_disable_async_mode(kestra_session* session) {
  return Barrier(session)([&] {
    session->session.DisableAsyncMode();
    return KESTRA_OK;
  });
}

kestra_status kestra_session_init_diag_module(kestra_session* session, const char* module_name,
                                              const char* args, int32_t init_always) {
  return Barrier(session, module_name)([&] {
    return FromSession(
        session->session.InitDiagModule(module_name, args ? args : "", init_always != 0));
  });
}
