// What is known before a query runs: its plan, and whether a module can show anything.
#include "front/capi/Barrier.h"
#include "front/capi/Handles.h"

using namespace kestra;

kestra_status kestra_session_explain(kestra_session* session, const char* query, size_t length,
                                     const char** text) {
  return Barrier(session, query, text)([&] {
    std::string plan;
    if (!session->session.Explain(std::string(query, length), plan)) return KESTRA_E_INVALIDARG;
    session->lastPlan = std::move(plan);
    *text = session->lastPlan.c_str();
    return KESTRA_OK;
  });
}

kestra_status kestra_session_module_state(kestra_session* session, const char* module_name,
                                          int32_t* state) {
  return Barrier(session, module_name, state)([&] {
    const auto known = session->session.StateOf(module_name);
    if (!known) return KESTRA_E_NOTFOUND;
    *state = static_cast<int32_t>(*known);
    return KESTRA_OK;
  });
}
