// The text of a query that is being written: what is wrong with it, and what may stand at a cursor.
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/support/Require.h"
#include "query/diagnose/Completion.h"
#include "query/diagnose/Diagnosis.h"
#include "tests/query/diagnose/DiagnoseRoot.h"

// The first byte tells the place of the cursor.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  const auto& root = kestra::test::DiagnoseRoot();
  const auto found = kestra::Diagnose(text, root);
  if (found)
    kestra::fuzz::Require(found->offset + found->length <= text.size() && !found->message.empty());
  const size_t cursor = data[0] * text.size() / 255;
  const auto completions = kestra::Complete(text, cursor, root);
  kestra::fuzz::Require(completions.offset <= cursor);
  kestra::fuzz::Require(completions.offset + completions.length <= text.size());
  return 0;
}
