// Conditions: three-valued logic with two kinds of unknown. NULL is "not known"; Any is "not known
// yet", while another source of the statement is not bound.
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"

namespace kestra {
namespace {

bool IsTruth(const Value& value) {
  return value.IsBoolean() || value.IsUndefined() || value.IsAny();
}

// AND and OR, whose left operand stands in out. The operand that decides ends it. A NULL on the
// left ends it too, whatever stands on the right.
bool Decide(Value& out, ParseNode& node, bool deciding) {
  if (out.IsUndefined()) return true;
  if (out.IsBoolean() && out.asBool() == deciding) return true;
  if (!out.IsBoolean() && !out.IsAny()) return Fail(out);
  const bool leftIsAny = out.IsAny();
  if (!Child(node, out, 2) || !IsTruth(out)) return Fail(out);
  if (leftIsAny && out.IsBoolean() && out.asBool() != deciding) out.SetAny();
  return true;
}

bool RunLogicChain(Value& out, ParseNode& node, bool deciding) {
  const std::vector<ParseNode*> chain = LeftChain(node);
  if (!Child(*chain.front(), out, 0)) return Fail(out);
  for (ParseNode* pNode : chain) {
    if (!Decide(out, *pNode, deciding)) return false;
  }
  return true;
}

bool TestNull(Value& out, ParseNode& node, bool wanted) {
  if (!Child(node, out, 0)) return Fail(out);
  if (!out.IsAny()) out.SetBoolean(out.IsUndefined() == wanted);
  return true;
}

// One "=" or "<>" between conditions, whose left operand stands in out.
bool CompareTruth(Value& out, ParseNode& node) {
  bool left = false;
  if (const Operand operand = AsBoolean(out, left); operand != Operand::Ready) {
    return EndOperator(operand);
  }
  bool right = false;
  if (const Operand operand = ReadBoolean(node, out, 2, right); operand != Operand::Ready) {
    return EndOperator(operand);
  }
  if (!Child(node, out, 1)) return Fail(out);
  out.SetBoolean((left == right) == (out.asString() == "="));
  return true;
}

}  // namespace

bool Or(Value& out, ParseNode& node) {
  return RunLogicChain(out, node, true);
}
bool And(Value& out, ParseNode& node) {
  return RunLogicChain(out, node, false);
}

bool Not(Value& out, ParseNode& node) {
  bool operand = false;
  if (const Operand read = ReadBoolean(node, out, 1, operand); read != Operand::Ready) {
    return EndOperator(read);
  }
  out.SetBoolean(!operand);
  return true;
}

bool IsNullTest(Value& out, ParseNode& node) {
  return TestNull(out, node, true);
}
bool IsNotNullTest(Value& out, ParseNode& node) {
  return TestNull(out, node, false);
}

bool BooleanCompareOf(Value& out, ParseNode& node) {
  const std::vector<ParseNode*> chain = LeftChain(node);
  if (!Child(*chain.front(), out, 0)) return Fail(out);
  for (ParseNode* pNode : chain) {
    if (!CompareTruth(out, *pNode)) return false;
  }
  return true;
}

}  // namespace kestra
