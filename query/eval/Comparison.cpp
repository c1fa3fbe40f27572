// Comparisons: <, <=, =, >=, >, <> in four families, LIKE, and IN.
#include <optional>

#include "VLib/src/text/Text.h"
#include "VLib/src/text/VersionNumber.h"
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"

namespace kestra {
namespace {

// Negative, 0 or positive; nothing for operands that are not of the family.
using Order = std::optional<int> (*)(const Value& left, const Value& right);

std::optional<int> OrderStrings(const Value& left, const Value& right) {
  if (!left.IsString() || !right.IsString()) return std::nullopt;
  std::string leftBuffer, rightBuffer;
  return CompareNoCase(left.asText(leftBuffer), right.asText(rightBuffer));
}

// By the sign of the wrapping difference: numbers more than 2147483647 apart compare the wrong way
// round, and queries rely on what was always so.
std::optional<int> OrderNumbers(const Value& left, const Value& right) {
  if (!left.IsNumber() || !right.IsNumber()) return std::nullopt;
  const auto difference =
      static_cast<uint32_t>(left.asLong()) - static_cast<uint32_t>(right.asLong());
  return static_cast<int32_t>(difference);
}

// Left below right is -1. Otherwise the difference counts, as the signed number that its 32 bits
// are: times more than 2147483647 seconds apart compare the wrong way round, as numbers do.
std::optional<int> OrderDatimes(const Value& left, const Value& right) {
  if (!left.IsDatime() || !right.IsDatime()) return std::nullopt;
  if (left.asDatime() < right.asDatime()) return -1;
  return static_cast<int32_t>(left.asDatime() - right.asDatime());
}

std::optional<int> OrderVersions(const Value& left, const Value& right) {
  const VersionNumber leftVersion = ParseVersion(left.asString());
  const VersionNumber rightVersion = ParseVersion(right.asString());
  if (leftVersion.Count == 0 || rightVersion.Count == 0) return std::nullopt;
  return CompareVersions(leftVersion, rightVersion);
}

char OutcomeMark(int order) {
  if (order == 0) return '=';
  return order < 0 ? '<' : '>';
}

bool Compare(Value& out, ParseNode& node, Order order) {
  Value operation;
  if (!Child(node, operation, 1) || !Child(node, out, 0)) return Fail(out);
  if (out.IsUndefined() || out.IsAny()) return true;
  Value right;
  if (!Child(node, right, 2)) return Fail(out);
  if (right.IsUndefined() || right.IsAny()) {
    out = std::move(right);
    return true;
  }
  const std::optional<int> result = order(out, right);
  if (!result) return Fail(out);
  std::string buffer;
  out.SetBoolean(operation.asText(buffer).find(OutcomeMark(*result)) != std::string_view::npos);
  return true;
}

// With ESCAPE a backslash in the pattern must stand before "*", "?" or another backslash.
bool IsEscapedPattern(std::string_view pattern) {
  for (size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] != '\\') continue;
    if (++i == pattern.size()) return false;
    if (pattern[i] != '*' && pattern[i] != '?' && pattern[i] != '\\') return false;
  }
  return true;
}

bool RunLike(Value& out, ParseNode& node, bool escape) {
  std::string text;
  if (const Operand read = ReadString(node, out, 0, text); read != Operand::Ready) {
    return EndOperator(read);
  }
  std::string pattern;
  if (const Operand read = ReadString(node, out, 2, pattern); read != Operand::Ready) {
    return EndOperator(read);
  }
  if (escape && !IsEscapedPattern(pattern)) return Fail(out);
  const auto matches = MatchesUnlessStopped(text, pattern, true, escape,
                                            [&] { return node.Context->IsCancelled(); });
  if (!matches) return Fail(out);
  out.SetBoolean(*matches);
  return true;
}

bool HaveOneFamily(const Value& a, const Value& b) {
  return (a.IsNumber() && b.IsNumber()) || (a.IsString() && b.IsString());
}

bool RunIn(Value& out, ParseNode& node, size_t listSymbol, bool found) {
  Value left;
  if (!Child(node, left, 0)) return Fail(out);
  if (!left.IsNumber() && !left.IsString()) {
    if (!left.IsUndefined() && !left.IsAny()) return Fail(out);
    out = std::move(left);
    return true;
  }
  Value list;
  if (!Child(node, list, listSymbol) || !list.IsVector()) return Fail(out);
  const ValueVector& elements = list.asVector();
  for (size_t i = 0; i < elements.Count(); ++i) {
    if (elements[i].IsAny()) {
      out.SetAny();
      return true;
    }
    if (!HaveOneFamily(elements[i], left)) return Fail(out);
    if (Equals(elements[i], left)) {
      out.SetBoolean(found);
      return true;
    }
  }
  out.SetBoolean(!found);
  return true;
}

}  // namespace

bool CompareAsStrings(Value& out, ParseNode& node) {
  return Compare(out, node, OrderStrings);
}
bool CompareAsNumbers(Value& out, ParseNode& node) {
  return Compare(out, node, OrderNumbers);
}
bool CompareAsDatimes(Value& out, ParseNode& node) {
  return Compare(out, node, OrderDatimes);
}
bool CompareAsVersions(Value& out, ParseNode& node) {
  return Compare(out, node, OrderVersions);
}

bool Like(Value& out, ParseNode& node) {
  return RunLike(out, node, false);
}
bool LikeWithEscape(Value& out, ParseNode& node) {
  return RunLike(out, node, true);
}

bool In(Value& out, ParseNode& node) {
  return RunIn(out, node, 3, true);
}
bool NotIn(Value& out, ParseNode& node) {
  return RunIn(out, node, 4, false);
}

}  // namespace kestra
