// String functions. Lengths and positions count characters.
#include <algorithm>

#include "VLib/src/text/Text.h"
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"

namespace kestra {
namespace {

// The byte position behind so many characters, or the end of the text.
size_t SkipCharacters(std::string_view text, size_t position, size_t count) {
  while (count-- > 0 && position < text.size()) NextCharacter(text, position);
  return position;
}

}  // namespace

bool Concatenate(Value& out, ParseNode& node) {
  const std::vector<ParseNode*> chain = LeftChain(node);
  if (!Child(*chain.front(), out, 0)) return Fail(out);
  for (ParseNode* pNode : chain) {
    if (out.IsUndefined() || out.IsAny()) return true;
    if (!out.IsString()) return Fail(out);
    Value right;
    std::string buffer;
    if (!Child(*pNode, right, 2)) return Fail(out);
    if (right.IsUndefined() || right.IsAny()) {
      out = std::move(right);
      return true;
    }
    if (!right.IsString()) return Fail(out);
    if (out.Kind() != ValueKind::String) out.SetString(out.asString());
    out.AppendText(right.asText(buffer));
  }
  return true;
}

bool Length(Value& out, ParseNode& node) {
  std::string text;
  if (const Operand read = ReadString(node, out, 2, text); read != Operand::Ready) {
    return EndOperator(read);
  }
  out.SetNumber(static_cast<int32_t>(CountCharacters(text)));
  return true;
}

bool Substring(Value& out, ParseNode& node) {
  std::string text;
  if (const Operand read = ReadString(node, out, 2, text); read != Operand::Ready) {
    return EndOperator(read);
  }
  int32_t start = 0;
  if (const Operand read = ReadNumber(node, out, 4, start); read != Operand::Ready) {
    return EndOperator(read);
  }
  int32_t count = 0;
  if (const Operand read = ReadNumber(node, out, 6, count); read != Operand::Ready) {
    return EndOperator(read);
  }
  if (start < 1 || count < 0) return Fail(out);
  const size_t from = SkipCharacters(text, 0, static_cast<size_t>(start) - 1);
  const size_t to = SkipCharacters(text, from, static_cast<size_t>(count));
  out.SetString(text.substr(from, to - from));
  return true;
}

bool Right(Value& out, ParseNode& node) {
  std::string text;
  if (const Operand read = ReadString(node, out, 2, text); read != Operand::Ready) {
    return EndOperator(read);
  }
  int32_t count = 0;
  if (const Operand read = ReadNumber(node, out, 4, count); read != Operand::Ready) {
    return EndOperator(read);
  }
  if (count < 0) return Fail(out);
  const size_t length = CountCharacters(text);
  const auto wanted = static_cast<size_t>(count);
  out.SetString(text.substr(SkipCharacters(text, 0, length - std::min(length, wanted))));
  return true;
}

}  // namespace kestra
