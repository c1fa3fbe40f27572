// Arithmetic on signed 32-bit integers. Overflow and division by zero are Errors without text.
#include <cstdint>

#include "platform/os/Clock.h"
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"

namespace kestra {
namespace {

// One operator of a chain: the left operand is given, the result or an Error goes to out.
using Operation = bool (*)(Value& out, int32_t left, std::string_view mark, int32_t right);

bool RunChain(Value& out, ParseNode& node, Operation operation) {
  const std::vector<ParseNode*> chain = LeftChain(node);
  if (!Child(*chain.front(), out, 0)) return Fail(out);
  for (ParseNode* pNode : chain) {
    int32_t left = 0;
    if (const Operand read = AsNumber(out, left); read != Operand::Ready) return EndOperator(read);
    int32_t right = 0;
    if (const Operand read = ReadNumber(*pNode, out, 2, right); read != Operand::Ready) {
      return EndOperator(read);
    }
    Value mark;
    if (!Child(*pNode, mark, 1)) return Fail(out);
    if (!operation(out, left, mark.asString(), right)) return Fail(out);
  }
  return true;
}

// Neither end of the range can be a sum: both numbers are reserved.
bool Add(Value& out, int32_t left, std::string_view mark, int32_t right) {
  if (mark != "+" && mark != "-") return false;
  const int64_t sum = mark == "+" ? int64_t{left} + right : int64_t{left} - right;
  if (sum >= INT32_MAX || sum <= INT32_MIN) return false;
  out.SetNumber(static_cast<int32_t>(sum));
  return true;
}

bool Multiply(Value& out, int32_t left, std::string_view mark, int32_t right) {
  if (mark == "/" && right == 0) return false;
  const int64_t result = mark == "/" ? int64_t{left} / right : int64_t{left} * right;
  if (result > INT32_MAX || result < INT32_MIN) return false;
  out.SetNumber(static_cast<int32_t>(result));
  return true;
}

bool CombineBits(Value& out, int32_t left, std::string_view mark, int32_t right) {
  if (mark == "|") {
    out.SetNumber(left | right);
  } else if (mark == "^") {
    out.SetNumber(left ^ right);
  } else {
    out.SetNumber(left & right);
  }
  return true;
}

}  // namespace

bool AddOrSubtract(Value& out, ParseNode& node) {
  return RunChain(out, node, Add);
}
bool MultiplyOrDivide(Value& out, ParseNode& node) {
  return RunChain(out, node, Multiply);
}
bool BitOperation(Value& out, ParseNode& node) {
  return RunChain(out, node, CombineBits);
}

bool Complement(Value& out, ParseNode& node) {
  int32_t number = 0;
  if (const Operand read = ReadNumber(node, out, 1, number); read != Operand::Ready) {
    return EndOperator(read);
  }
  out.SetNumber(~number);
  return true;
}

bool RandomNumber(Value& out, ParseNode& node) {
  int32_t range = 0;
  if (const Operand read = ReadNumber(node, out, 4, range); read != Operand::Ready) {
    return EndOperator(read);
  }
  if (range < 2) return Fail(out);
  const auto counter = static_cast<uint32_t>(os::PerformanceCounter());
  out.SetNumber(static_cast<int32_t>(counter % static_cast<uint32_t>(range)));
  return true;
}

}  // namespace kestra
