// ISNULL and the forms of CONVERT that change something.
#include <fmt/format.h>

#include "VLib/src/text/Text.h"
#include "VLib/src/text/VersionNumber.h"
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"

namespace kestra {

bool IsNullFunction(Value& out, ParseNode& node) {
  if (!Child(node, out, 2)) return Fail(out);
  return !out.IsUndefined() || Child(node, out, 4) || Fail(out);
}

bool TextToNumber(Value& out, ParseNode& node) {
  std::string text;
  if (const Operand read = ReadString(node, out, 4, text); read != Operand::Ready) {
    return EndOperator(read);
  }
  size_t consumed = 0;
  const int32_t number = ParseInt32(text, consumed);
  if (text.empty() || consumed != text.size()) return Fail(out);
  if (number == INT32_MAX || number == INT32_MIN) return Fail(out);
  out.SetNumber(number);
  return true;
}

// Signed, unlike the text form of a Number.
bool NumberToText(Value& out, ParseNode& node) {
  int32_t number = 0;
  if (const Operand read = ReadNumber(node, out, 4, number); read != Operand::Ready) {
    return EndOperator(read);
  }
  out.SetString(fmt::to_string(number));
  return true;
}

bool TextAsVersion(Value& out, ParseNode& node) {
  std::string text;
  if (const Operand read = ReadString(node, out, 4, text); read != Operand::Ready) {
    return EndOperator(read);
  }
  const std::string_view trimmed = TrimBlanks(text);
  if (!IsVersion(trimmed)) return Fail(out);
  out.SetString(std::string(trimmed));
  return true;
}

}  // namespace kestra
