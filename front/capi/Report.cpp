// What a query tells besides its value: columns and sources.
#include <algorithm>
#include <cstring>

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

int32_t Clamped(uint64_t count) {
  return static_cast<int32_t>(std::min<uint64_t>(count, INT32_MAX));
}

kestra_source_info InfoOf(const SourceReport& source, size_t structSize) {
  kestra_source_info info{};
  info.struct_size = structSize;
  info.name = source.name.c_str();
  info.arguments = source.arguments.c_str();
  info.fill = static_cast<int32_t>(source.fill);
  info.state = static_cast<int32_t>(source.state);
  info.is_filled = source.isFilled ? 1 : 0;
  info.is_cut_short = source.isCutShort ? 1 : 0;
  info.age_seconds = source.ageSeconds;
  info.problem_count = Clamped(source.problemCount);
  info.hiding_count = Clamped(source.hidingCount);
  info.rows_seen = source.rowsSeen;
  info.rows_kept = source.rowsKept;
  info.microseconds = source.microseconds;
  return info;
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

kestra_status kestra_session_source(kestra_session* session, int32_t number,
                                    kestra_source_info* info) {
  return Barrier(session, info)([&] {
    const SourceReport* pSource = FindSource(*session, number);
    // Members that the caller's header did not have yet are left out; one that has none at all was
    // not told about its size.
    if (!pSource || info->struct_size < sizeof info->struct_size) return KESTRA_E_INVALIDARG;
    const kestra_source_info full = InfoOf(*pSource, info->struct_size);
    std::memcpy(info, &full, std::min(info->struct_size, sizeof full));
    return KESTRA_OK;
  });
}

kestra_status kestra_session_source_problem(kestra_session* session, int32_t number,
                                            int32_t problem, const char** subject,
                                            const char** reason) {
  return Barrier(session, subject, reason)([&] {
    const SourceReport* pSource = FindSource(*session, number);
    if (!pSource || !IsInside(problem, pSource->problems.size())) return KESTRA_E_INVALIDARG;
    const FillProblem& told = pSource->problems[static_cast<size_t>(problem)];
    *subject = told.subject.c_str();
    *reason = told.reason.c_str();
    return KESTRA_OK;
  });
}

kestra_status kestra_session_query_times(kestra_session* session, uint64_t* parse_microseconds,
                                         uint64_t* total_microseconds) {
  return Barrier(session)([&] {
    if (parse_microseconds) *parse_microseconds = session->lastReport.parseMicroseconds;
    if (total_microseconds) *total_microseconds = session->lastReport.totalMicroseconds;
    return KESTRA_OK;
  });
}
