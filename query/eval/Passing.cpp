// Actions that hand values on, make constants, and gather lists.
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"

namespace kestra {
bool FirstSymbol(Value& out, ParseNode& node) {
  return Child(node, out, 0);
}
bool SecondSymbol(Value& out, ParseNode& node) {
  return Child(node, out, 1);
}
bool FifthSymbol(Value& out, ParseNode& node) {
  return Child(node, out, 4);
}

bool EmptyString(Value& out, ParseNode&) {
  out.SetString({});
  return true;
}

bool EmptyVector(Value& out, ParseNode&) {
  out.SetVector(MakeRef<ValueVector>());
  return true;
}

bool TrueValue(Value& out, ParseNode&) {
  out.SetBoolean(true);
  return true;
}

bool FalseValue(Value& out, ParseNode&) {
  out.SetBoolean(false);
  return true;
}

bool NumberMinusOne(Value& out, ParseNode&) {
  out.SetNumber(-1);
  return true;
}

bool NewVector(Value& out, ParseNode& node) {
  auto list = MakeRef<ValueVector>();
  if (!AppendSymbol(node, out, 0, *list)) return false;
  out.SetVector(std::move(list));
  return true;
}

// The element is the rule's last symbol; the list before it is the first.
bool AppendToVector(Value& out, ParseNode& node) {
  const std::vector<ParseNode*> chain = LeftChain(node);
  if (!Child(*chain.front(), out, 0)) return false;
  if (!out.IsVector()) return Fail(out);
  Ref<ValueVector> list(&out.asVector());
  list->Reserve(chain.size() + 1);
  for (ParseNode* pNode : chain) {
    if (!AppendSymbol(*pNode, out, pNode->Rule->Length - 1u, *list)) return false;
  }
  out.SetVector(std::move(list));
  return true;
}

bool NameAndValuePair(Value& out, ParseNode& node) {
  auto pair = MakeRef<ValueVector>();
  if (!AppendSymbol(node, out, 0, *pair) || !AppendSymbol(node, out, 2, *pair)) return false;
  out.SetVector(std::move(pair));
  return true;
}

}  // namespace kestra
