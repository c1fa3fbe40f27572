#include "VLib/src/log/Log.h"
#include "front/capi/Barrier.h"
#include "front/capi/Handles.h"

using namespace kestra;

namespace kestra {

kestra_session* MakeSession(SessionSetup setup) {
  return new kestra_session(std::move(setup));
}

}  // namespace kestra

namespace {

// A member that the caller's header did not have yet counts as null.
const char* LogDirectory(const kestra_options* options) {
  constexpr size_t kEnd = offsetof(kestra_options, log_directory) + sizeof(options->log_directory);
  return options && options->struct_size >= kEnd ? options->log_directory : nullptr;
}

kestra_status RunQuery(kestra_session& session, const std::string& query,
                       const intptr_t* termination_event, uint32_t timeout_ms,
                       kestra_value** result) {
  *result = nullptr;
  session.lastMessage.clear();
  session.lastColumns.clear();
  std::optional<os::NativeHandle> event;
  if (termination_event) event = *termination_event;
  QueryOutcome outcome;
  if (session.session.RunQuerySync(query, event, timeout_ms, outcome) != SessionStatus::Ok ||
      !outcome.hasValue) {
    return KESTRA_E_FAIL;
  }
  session.lastMessage = std::move(outcome.message);
  session.lastColumns = std::move(outcome.report.columns);
  return GiveHandle(result, std::move(outcome.value));
}

}  // namespace

const char* kestra_version(void) {
  return KESTRA_VERSION;
}

int32_t kestra_abi_version(void) {
  return KESTRA_ABI_VERSION;
}

kestra_status kestra_session_create(const kestra_options* options, kestra_session** session) {
  return Barrier(session)([&] {
    *session = nullptr;
    if (const char* directory = LogDirectory(options)) OpenGlobalLog(directory);
    *session = MakeSession(LiveSetup());
    return KESTRA_OK;
  });
}

kestra_status kestra_session_destroy(kestra_session* session) {
  return ReleaseHandle(session);
}

kestra_status kestra_session_allow_active(kestra_session* session, int32_t allow) {
  return Barrier(session)([&] {
    session->session.AllowActive(allow != 0);
    return KESTRA_OK;
  });
}

kestra_status kestra_session_run_query_sync(kestra_session* session, const char* query,
                                            const intptr_t* termination_event, uint32_t timeout_ms,
                                            kestra_value** result) {
  return Barrier(session, query, result)(
      [&] { return RunQuery(*session, query, termination_event, timeout_ms, result); });
}

kestra_status kestra_session_run_query_sync_n(kestra_session* session, const char* query,
                                              size_t length, const intptr_t* termination_event,
                                              uint32_t timeout_ms, kestra_value** result) {
  return Barrier(session, query, result)([&] {
    return RunQuery(*session, std::string(query, length), termination_event, timeout_ms, result);
  });
}

kestra_status kestra_session_check_query_syntax(kestra_session* session, const char* query,
                                                size_t length, int32_t* good) {
  return Barrier(session, query, good)([&] {
    const SessionStatus status =
        session->session.CheckQuerySyntax(std::string(query, length), *good);
    return status == SessionStatus::Ok ? KESTRA_OK : KESTRA_E_FAIL;
  });
}

kestra_status kestra_session_cancel_query(kestra_session* session) {
  return Barrier(session)([&] {
    session->session.CancelQuery();
    return KESTRA_OK;
  });
}

kestra_status kestra_session_reinit_diag_root(kestra_session* session) {
  return Barrier(session)([&] {
    session->session.ReInitDiagRoot();
    return KESTRA_OK;
  });
}

kestra_status kestra_session_last_message(kestra_session* session, const char** text) {
  return Barrier(session, text)([&] {
    *text = session->lastMessage.c_str();
    return KESTRA_OK;
  });
}

kestra_status kestra_session_columns(kestra_session* session, kestra_columns** columns) {
  return Barrier(session, columns)([&] { return GiveHandle(columns, session->lastColumns); });
}

kestra_status kestra_columns_release(kestra_columns* columns) {
  return ReleaseHandle(columns);
}

kestra_status kestra_columns_count(const kestra_columns* columns, int32_t* count) {
  return Barrier(columns, count)([&] {
    *count = static_cast<int32_t>(columns->names.size());
    return KESTRA_OK;
  });
}

kestra_status kestra_columns_name(const kestra_columns* columns, int32_t number,
                                  const char** name) {
  return Barrier(columns, name)([&] {
    if (!IsInside(number, columns->names.size())) return KESTRA_E_INVALIDARG;
    *name = columns->names[static_cast<size_t>(number)].c_str();
    return KESTRA_OK;
  });
}
