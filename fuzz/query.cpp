// The text of a query, checked, explained and run, over the test modules and the machine in memory.
//
// The first byte says whether the query may change that machine, how its result is read, and
// whether the text is checked and explained too. A module's time is its own affair, so those of the
// tests that make as many items as they are told are left out; everything else ends with the
// query's time.
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/support/QueryMachine.h"
#include "fuzz/support/Require.h"
#include "model/dump/Dump.h"
#include "query/Evaluate.h"
#include "query/explain/Explain.h"
#include "query/parse/Tokeniser.h"

namespace {

using namespace kestra;
using kestra::fuzz::Require;

constexpr uint32_t kTimeOutMs = 50;
constexpr size_t kMostRows = 200;

// Reads all that a result shows.
void ReadResult(const Value& value, DumpFormat format, int depth) {
  value.asString();
  if (CVDiagItem* pItem = value.asVDIagItem()) {
    std::string text;
    QueryMessage message;
    Dump(*pItem, text, message, format);
  }
  const ValueVector& elements = value.asVector();
  if (depth == 0) return;
  for (size_t i = 0; i < elements.Count() && i < kMostRows; ++i) {
    ReadResult(elements[i], format, depth - 1);
  }
}

bool IsSyntaxError(const Value& value) {
  return value.IsError() && value.asString() == "<ERROR: Syntax error>";
}

// What looks at a text without running it says the same of it.
void CheckAndExplain(const std::string& text, const Ref<DiagRoot>& root, bool isQuery) {
  Value checked;
  EvaluateQuery(checked, text, root, 0, nullptr);
  Require(isQuery ? checked.IsUndefined() : IsSyntaxError(checked));
  std::string plan;
  Require(ExplainQuery(text, root, plan) == isQuery);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  TokenList tokens;
  const bool hasTokens = Tokenise(text, tokens);
  const auto root = fuzz::MakeQueryRoot(fuzz::CallsLibrary(tokens));
  const auto message = MakeRef<QueryMessage>(Ref<os::CEvent>(), (data[0] & 1) != 0);

  Value result;
  EvaluateQuery(result, text, root, kTimeOutMs, message);
  const bool isQuery = !IsSyntaxError(result);
  Require(!isQuery || hasTokens);
  ReadResult(result, static_cast<DumpFormat>((data[0] >> 1) % 5), 3);
  if ((data[0] & 0xF0) == 0) CheckAndExplain(text, root, isQuery);
  fuzz::RestoreModules();
  return 0;
}
