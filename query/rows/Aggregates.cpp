// COUNT, MIN, MAX and SUM. NULLs are passed over, and Any ends them.
#include <span>

#include "VLib/src/text/Text.h"
#include "VLib/src/text/VersionNumber.h"
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"
#include "query/rows/FromResult.h"
#include "query/rows/repeated/Repeats.h"

namespace kestra {
namespace {

// Merges a value into the running one; false for a failure.
using Merge = bool (*)(Value& running, const Value& value);

struct Function {
  std::string_view name;
  Merge merge;
};

bool SumNumbers(Value& running, const Value& value) {
  if (!running.IsNumber() || !value.IsNumber()) return false;
  const int64_t sum = int64_t{running.asLong()} + value.asLong();
  if (sum > INT32_MAX || sum < INT32_MIN) return false;
  running.SetNumber(static_cast<int32_t>(sum));
  return true;
}

// sign is -1 for the smallest, 1 for the greatest value.
template <int sign>
bool MergeNumbers(Value& running, const Value& value) {
  if (!value.IsNumber()) return false;
  const int32_t old = running.asLong(), fresh = value.asLong();
  if (sign < 0 ? fresh < old : fresh > old) running = value;
  return true;
}

template <int sign>
bool MergeStrings(Value& running, const Value& value) {
  if (!value.IsString()) return false;
  std::string oldBuffer, freshBuffer;
  const int order = CompareNoCase(value.asText(freshBuffer), running.asText(oldBuffer));
  if (sign < 0 ? order < 0 : order > 0) running = Value(value);
  return true;
}

// The smallest stays on a tie, and the greatest gives way.
template <int sign>
bool MergeVersions(Value& running, const Value& value) {
  const VersionNumber fresh = ParseVersion(value.asString());
  if (fresh.Count == 0) return false;
  const int order = CompareVersions(fresh, ParseVersion(running.asString()));
  if (sign < 0 ? order < 0 : order >= 0) running = value;
  return true;
}

template <int sign>
bool MergeDatimes(Value& running, const Value& value) {
  if (!value.IsDatime()) return false;
  const uint32_t old = running.asDatime(), fresh = value.asDatime();
  if (sign < 0 ? fresh < old : fresh > old) running = value;
  return true;
}

constexpr Function kNumberFunctions[] = {
    {"MIN", MergeNumbers<-1>}, {"MAX", MergeNumbers<1>}, {"SUM", SumNumbers}};
constexpr Function kStringFunctions[] = {{"MIN", MergeStrings<-1>}, {"MAX", MergeStrings<1>}};
constexpr Function kVersionFunctions[] = {{"MIN", MergeVersions<-1>}, {"MAX", MergeVersions<1>}};
constexpr Function kDatimeFunctions[] = {{"MIN", MergeDatimes<-1>}, {"MAX", MergeDatimes<1>}};

// Symbols: SELECT, function, "(", expression, ")", FROM.
constexpr size_t kFunctionSymbol = 1;
constexpr size_t kValueSymbol = 3;
constexpr size_t kFromSymbol = 5;

// Evaluates the FROM clause of an aggregate. False when the action ends here, with result as its
// answer.
bool OpenFrom(Value& out, ParseNode& node, Value& fromResult, bool& result) {
  result = Child(node, fromResult, kFromSymbol);
  if (result && fromResult.IsVector()) return true;
  result = result && (fromResult.IsUndefined() || fromResult.IsAny());
  out = std::move(fromResult);
  if (!result && !out.IsError()) out.SetError();
  return false;
}

Merge FindFunction(std::span<const Function> functions, std::string_view name) {
  for (const Function& function : functions) {
    if (EqualsNoCase(function.name, name)) return function.merge;
  }
  return nullptr;
}

bool RunAggregate(Value& out, ParseNode& node, std::span<const Function> functions) {
  Value fromResult;
  bool result = false;
  if (!OpenFrom(out, node, fromResult, result)) return result;
  if (!Child(node, out, kFunctionSymbol)) return Fail(out);
  const Merge merge = FindFunction(functions, out.asString());
  if (!merge || node.Context->CheckTimeOut(out)) return Fail(out);
  const CFromReader reader(fromResult);
  Value running;
  for (size_t r = 0; r < reader.RowCount(); ++r) {
    if (node.Context->IsCancelled()) return Fail(out);
    if (!EvalOnRow(out, r, reader, node, kValueSymbol)) return Fail(out);
    if (out.IsAny()) return true;
    if (out.IsUndefined()) continue;
    if (running.IsUndefined()) {
      running = std::move(out);
    } else if (!merge(running, out)) {
      return Fail(out);
    }
  }
  out = std::move(running);
  return true;
}

bool CountRows(Value& out, ParseNode& node) {
  Value fromResult;
  bool result = false;
  if (!OpenFrom(out, node, fromResult, result)) return result;
  out.SetNumber(static_cast<int32_t>(CFromReader(fromResult).RowCount()));
  return true;
}

bool CountNonNull(Value& out, ParseNode& node) {
  Value fromResult;
  bool result = false;
  if (!OpenFrom(out, node, fromResult, result)) return result;
  if (node.Context->CheckTimeOut(out)) return false;
  const CFromReader reader(fromResult);
  int32_t count = 0;
  for (size_t r = 0; r < reader.RowCount(); ++r) {
    if (node.Context->IsCancelled()) return Fail(out);
    if (!EvalOnRow(out, r, reader, node, kValueSymbol)) return Fail(out);
    if (out.IsAny()) return true;
    if (out.IsUndefined()) continue;
    if (!out.IsNumber() && !out.IsString() && !out.IsDatime()) return Fail(out);
    ++count;
  }
  out.SetNumber(count);
  return true;
}

}  // namespace

bool CountOfRows(Value& out, ParseNode& node) {
  return node.Context->Repeats->RunSelect(out, node, CountRows);
}
bool CountOfNonNull(Value& out, ParseNode& node) {
  return node.Context->Repeats->RunSelect(out, node, CountNonNull);
}
bool NumberAggregateOf(Value& out, ParseNode& node) {
  return node.Context->Repeats->RunSelect(out, node, [](Value& value, ParseNode& select) {
    return RunAggregate(value, select, kNumberFunctions);
  });
}
bool StringAggregateOf(Value& out, ParseNode& node) {
  return node.Context->Repeats->RunSelect(out, node, [](Value& value, ParseNode& select) {
    return RunAggregate(value, select, kStringFunctions);
  });
}
bool VersionAggregateOf(Value& out, ParseNode& node) {
  return node.Context->Repeats->RunSelect(out, node, [](Value& value, ParseNode& select) {
    return RunAggregate(value, select, kVersionFunctions);
  });
}
bool DatimeAggregateOf(Value& out, ParseNode& node) {
  return node.Context->Repeats->RunSelect(out, node, [](Value& value, ParseNode& select) {
    return RunAggregate(value, select, kDatimeFunctions);
  });
}

}  // namespace kestra
