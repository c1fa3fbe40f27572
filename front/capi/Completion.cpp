// What may stand at a place of a text.
#include "front/capi/Barrier.h"
#include "front/capi/Handles.h"

using namespace kestra;

static_assert(static_cast<int>(CompletionKind::Keyword) == KESTRA_COMPLETION_KEYWORD &&
              static_cast<int>(CompletionKind::Module) == KESTRA_COMPLETION_MODULE &&
              static_cast<int>(CompletionKind::Class) == KESTRA_COMPLETION_CLASS &&
              static_cast<int>(CompletionKind::Column) == KESTRA_COMPLETION_COLUMN &&
              static_cast<int>(CompletionKind::Argument) == KESTRA_COMPLETION_ARGUMENT &&
              static_cast<int>(CompletionKind::Option) == KESTRA_COMPLETION_OPTION);

kestra_status kestra_session_complete(kestra_session* session, const char* text, size_t length,
                                      size_t cursor, kestra_completions** completions) {
  return Barrier(session, text, completions)([&] {
    *completions = nullptr;
    if (cursor > length) return KESTRA_E_INVALIDARG;
    Completions found;
    if (session->session.CompleteText(std::string(text, length), cursor, found) !=
        SessionStatus::Ok) {
      return KESTRA_E_FAIL;
    }
    return GiveHandle(completions, std::move(found));
  });
}

kestra_status kestra_completions_release(kestra_completions* completions) {
  return ReleaseHandle(completions);
}

kestra_status kestra_completions_place(const kestra_completions* completions, size_t* offset,
                                       size_t* length) {
  return Barrier(completions)([&] {
    Tell(offset, completions->completions.offset);
    Tell(length, completions->completions.length);
    return KESTRA_OK;
  });
}

kestra_status kestra_completions_count(const kestra_completions* completions, int32_t* count) {
  return Barrier(completions, count)([&] {
    *count = static_cast<int32_t>(completions->completions.entries.size());
    return KESTRA_OK;
  });
}

kestra_status kestra_completions_text(const kestra_completions* completions, int32_t number,
                                      const char** text, int32_t* kind, const char** description) {
  return Barrier(completions, text)([&] {
    if (!IsInside(number, completions->completions.entries.size())) return KESTRA_E_INVALIDARG;
    const Completion& entry = completions->completions.entries[static_cast<size_t>(number)];
    *text = entry.text.c_str();
    Tell(kind, static_cast<int32_t>(entry.kind));
    Tell(description, entry.description.c_str());
    return KESTRA_OK;
  });
}
