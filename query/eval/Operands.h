// Operand readers: they carry the rules for NULL and Any through every operator.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "query/Value.h"
#include "query/parse/ParseTree.h"

namespace kestra {

// What an operator does with an operand: go on with it, end at once with true and the operand as
// the result (NULL, Any), or end with false (out is an Error without text).
enum class Operand { Ready, Passes, Fails };

// Each evaluates symbol i into out and delivers the operand. An Error, or an operand of another
// family, fails; the message of such an Error is lost.
Operand ReadNumber(ParseNode& node, Value& out, size_t i, int32_t& number);
Operand ReadDatime(ParseNode& node, Value& out, size_t i, uint32_t& datime);
Operand ReadString(ParseNode& node, Value& out, size_t i, std::string& text);
Operand ReadBoolean(ParseNode& node, Value& out, size_t i, bool& boolean);

// The same for a value that stands in out already.
Operand AsNumber(Value& out, int32_t& number);
Operand AsString(Value& out, std::string& text);
Operand AsBoolean(Value& out, bool& boolean);

// An Error without text, and false.
bool Fail(Value& out);
// The same, but an Error that stands in out already keeps its message.
bool FailKeepingMessage(Value& out);
// Ends an action whose operand is not ready.
inline bool EndOperator(Operand operand) {
  return operand == Operand::Passes;
}

// Evaluates a symbol and appends its value to list. A failure keeps an Error that has a message.
bool AppendSymbol(ParseNode& node, Value& out, size_t i, ValueVector& list);

// A chain of one left-associative operator, such as a + b + c, from its innermost node outwards.
// Chains are as long as the text, so they are walked and not recursed into: evaluate symbol 0 of
// front(), then apply each node's operator to what stands in out.
std::vector<ParseNode*> LeftChain(ParseNode& node);

}  // namespace kestra
