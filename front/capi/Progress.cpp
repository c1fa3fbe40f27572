// What a query is doing.
#include <cstring>

#include "VLib/src/text/Text.h"
#include "front/capi/Barrier.h"
#include "front/capi/Handles.h"

using namespace kestra;

namespace {

// As much of the text as fits, cut at the end of a character.
void CopyText(const std::string& text, char* place, size_t size) {
  if (!place || size == 0) return;
  size_t end = 0;
  for (size_t next = 0; next < text.size(); end = next) {
    NextCharacter(text, next);
    if (next >= size) break;
  }
  std::memcpy(place, text.data(), end);
  place[end] = '\0';
}

}  // namespace

kestra_status kestra_session_progress(kestra_session* session, char* what, size_t size,
                                      uint64_t* done, uint64_t* total) {
  return BarrierOfAnyThread(session)([&] {
    std::string text;
    uint64_t doneNow = 0, totalNow = 0;
    if (!session->session.Progress().Read(text, doneNow, totalNow)) return KESTRA_E_NOTFOUND;
    CopyText(text, what, size);
    if (done) *done = doneNow;
    if (total) *total = totalNow;
    return KESTRA_OK;
  });
}
