#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>

#include "VLib/src/log/Log.h"
#include "front/capi/Barrier.h"
#include "front/capi/Handles.h"
#include "platform/os/HostFile.h"
#include "platform/os/ThreadLocal.h"

using namespace kestra;

namespace kestra {

kestra_session* MakeSession(SessionSetup setup) {
  return new kestra_session(std::move(setup));
}

}  // namespace kestra

namespace {

// A text among the options; one that the caller's header did not have yet counts as null.
const char* TextOption(const kestra_options* options, size_t offset) {
  if (!options || options->struct_size < offset + sizeof(const char*)) return nullptr;
  const char* text = nullptr;
  std::memcpy(&text, reinterpret_cast<const char*>(options) + offset, sizeof text);
  return text;
}

std::string& CreateError() {
  static os::CThreadLocal<std::string> texts;
  return texts.Get();
}

// Whether a member is set that the caller's header had and this library does not know.
bool IsForALaterLibrary(const kestra_options& options) {
  constexpr size_t kLongest = 4096;
  if (options.struct_size > kLongest) return true;
  const auto* const pBytes = reinterpret_cast<const unsigned char*>(&options);
  const auto* const pEnd = pBytes + std::max(options.struct_size, sizeof options);
  return std::any_of(pBytes + sizeof options, pEnd, [](unsigned char byte) { return byte != 0; });
}

kestra_status Refuse(const char* sentence) {
  CreateError() = sentence;
  return KESTRA_E_INVALIDARG;
}

// The machine that the options name.
kestra_status MakeSetup(const kestra_options* options, SessionSetup& setup) {
  const char* cache = TextOption(options, offsetof(kestra_options, cache_directory));
  const char* image = TextOption(options, offsetof(kestra_options, image_directory));
  const char* user = TextOption(options, offsetof(kestra_options, image_user));
  if (user && !image) return Refuse("image_user needs an image_directory");
  if (image) {
    if (!*image) return Refuse("image_directory is empty");
    if (cache) return Refuse("cache_directory does not go with an image_directory");
    return ImageSetup(image, user ? user : "", setup, CreateError()) ? KESTRA_OK
                                                                     : KESTRA_E_NOTFOUND;
  }
  setup = LiveSetup();
  // What the host calls its directory must not change its meaning when the host goes elsewhere.
  if (cache && *cache) setup.cacheDirectory = os::FullPath(cache);
  return KESTRA_OK;
}

kestra_status RunQuery(kestra_session& session, const std::string& query,
                       const intptr_t* termination_event, uint32_t timeout_ms,
                       kestra_value** result) {
  *result = nullptr;
  session.lastMessage.clear();
  session.lastReport = {};
  std::optional<os::NativeHandle> event;
  if (termination_event) event = *termination_event;
  QueryOutcome outcome;
  if (session.session.RunQuerySync(query, event, timeout_ms, outcome) != SessionStatus::Ok ||
      !outcome.hasValue) {
    return KESTRA_E_FAIL;
  }
  session.lastMessage = std::move(outcome.message);
  session.lastReport = std::move(outcome.report);
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
    CreateError().clear();
    // A caller that leaves the size out would get another machine than the one it names.
    if (options && options->struct_size < sizeof options->struct_size)
      return Refuse("struct_size of the options is not set");
    if (options && IsForALaterLibrary(*options))
      return Refuse("the options say something that only a later version knows");
    const char* log = TextOption(options, offsetof(kestra_options, log_directory));
    if (log) OpenGlobalLog(log);
    SessionSetup setup;
    if (const kestra_status status = MakeSetup(options, setup); status != KESTRA_OK) return status;
    std::unique_ptr<kestra_session> made(MakeSession(std::move(setup)));
    if (!made->session.IsReady()) {
      CreateError() = "no descriptor is left: the process has too many open";
      return KESTRA_E_FAIL;
    }
    *session = made.release();
    return KESTRA_OK;
  });
}

const char* kestra_create_error(void) {
  return CreateError().c_str();
}

kestra_status kestra_session_next_notice(kestra_session* session, const char** text) {
  return Barrier(session, text)([&] {
    if (!session->notices || !session->notices->Take(session->lastNotice)) return KESTRA_E_NOTFOUND;
    *text = session->lastNotice.c_str();
    return KESTRA_OK;
  });
}

kestra_status kestra_session_destroy(kestra_session* session) {
  if (!session) return KESTRA_OK;
  return Barrier(session)([&] { return ReleaseHandle(session); });
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
  return BarrierOfAnyThread(session)([&] {
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

kestra_status kestra_session_set_plugins_dir(kestra_session* session, const char* directory) {
  return Barrier(session, directory)([&] {
    if (session->isReadOnly) return KESTRA_E_INVALIDARG;
    if (session->session.SetPluginsDir(directory)) return KESTRA_OK;
    return os::DirectoryExists(directory) ? KESTRA_E_FAIL : KESTRA_E_NOTFOUND;
  });
}

kestra_status kestra_session_clear_plugins(kestra_session* session) {
  return Barrier(session)([&] {
    session->session.ClearPlugins();
    return KESTRA_OK;
  });
}

kestra_status kestra_session_last_message(kestra_session* session, const char** text) {
  return Barrier(session, text)([&] {
    *text = session->lastMessage.c_str();
    return KESTRA_OK;
  });
}
