// What a query tells besides its value: columns and sources.
#include "front/capi/Barrier.h"
#include "front/capi/Handles.h"

using namespace kestra;

namespace {

// Null beyond the end.
const SourceReport* FindSource(const kestra_session& session, int32_t number) {
  const auto& sources = session.lastReport.sources;
  const bool isInside = number >= 0 && static_cast<size_t>(number) < sources.size();
  return isInside ? &sources[static_cast<size_t>(number)] : nullptr;
}

}  // namespace

kestra_status kestra_session_columns(kestra_session* session, kestra_columns** columns) {
  return Barrier(session,
                 columns)([&] { return GiveHandle(columns, session->lastReport.columns); });
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

kestra_status kestra_session_source_count(kestra_session* session, int32_t* count) {
  return Barrier(session, count)([&] {
    *count = static_cast<int32_t>(session->lastReport.sources.size());
    return KESTRA_OK;
  });
}

kestra_status kestra_session_source(kestra_session* session, int32_t number, const char** module,
                                    const char** arguments, int32_t* fill) {
  return Barrier(session, module, arguments, fill)([&] {
    const SourceReport* pSource = FindSource(*session, number);
    if (!pSource) return KESTRA_E_INVALIDARG;
    *module = pSource->moduleName.c_str();
    *arguments = pSource->arguments.c_str();
    *fill = static_cast<int32_t>(pSource->fill);
    return KESTRA_OK;
  });
}
