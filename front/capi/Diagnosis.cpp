// Why a text is no query.
#include "front/capi/Barrier.h"
#include "front/capi/Handles.h"

using namespace kestra;

namespace {

kestra_status TellText(const std::vector<std::string>& texts, int32_t number, const char** text) {
  if (!IsInside(number, texts.size())) return KESTRA_E_INVALIDARG;
  *text = texts[static_cast<size_t>(number)].c_str();
  return KESTRA_OK;
}

}  // namespace

kestra_status kestra_session_diagnose(kestra_session* session, const char* query, size_t length,
                                      kestra_diagnosis** diagnosis) {
  return Barrier(session, query, diagnosis)([&] {
    *diagnosis = nullptr;
    std::optional<Diagnosis> found;
    if (session->session.DiagnoseText(std::string(query, length), found) != SessionStatus::Ok) {
      return KESTRA_E_FAIL;
    }
    return found ? GiveHandle(diagnosis, std::move(*found)) : KESTRA_E_NOTFOUND;
  });
}

kestra_status kestra_diagnosis_release(kestra_diagnosis* diagnosis) {
  return ReleaseHandle(diagnosis);
}

kestra_status kestra_diagnosis_is_error(const kestra_diagnosis* diagnosis, int32_t* result) {
  return Barrier(diagnosis, result)([&] {
    *result = diagnosis->diagnosis.isError ? 1 : 0;
    return KESTRA_OK;
  });
}

kestra_status kestra_diagnosis_place(const kestra_diagnosis* diagnosis, size_t* offset,
                                     size_t* length, int32_t* line, int32_t* column) {
  return Barrier(diagnosis)([&] {
    Tell(offset, diagnosis->diagnosis.offset);
    Tell(length, diagnosis->diagnosis.length);
    Tell(line, diagnosis->diagnosis.line);
    Tell(column, diagnosis->diagnosis.column);
    return KESTRA_OK;
  });
}

kestra_status kestra_diagnosis_message(const kestra_diagnosis* diagnosis, const char** text) {
  return Barrier(diagnosis, text)([&] {
    *text = diagnosis->diagnosis.message.c_str();
    return KESTRA_OK;
  });
}

kestra_status kestra_diagnosis_expected_count(const kestra_diagnosis* diagnosis, int32_t* count) {
  return Barrier(diagnosis, count)([&] {
    *count = static_cast<int32_t>(diagnosis->diagnosis.expected.size());
    return KESTRA_OK;
  });
}

kestra_status kestra_diagnosis_expected(const kestra_diagnosis* diagnosis, int32_t number,
                                        const char** text) {
  return Barrier(diagnosis,
                 text)([&] { return TellText(diagnosis->diagnosis.expected, number, text); });
}

kestra_status kestra_diagnosis_suggestion_count(const kestra_diagnosis* diagnosis, int32_t* count) {
  return Barrier(diagnosis, count)([&] {
    *count = static_cast<int32_t>(diagnosis->diagnosis.suggestions.size());
    return KESTRA_OK;
  });
}

kestra_status kestra_diagnosis_suggestion(const kestra_diagnosis* diagnosis, int32_t number,
                                          const char** text) {
  return Barrier(diagnosis,
                 text)([&] { return TellText(diagnosis->diagnosis.suggestions, number, text); });
}
