#include "query/eval/Operands.h"

#include <algorithm>

namespace kestra {
namespace {

Operand NotWanted(Value& out) {
  if (out.IsUndefined() || out.IsAny()) return Operand::Passes;
  out.SetError();
  return Operand::Fails;
}

}  // namespace

bool Fail(Value& out) {
  out.SetError();
  return false;
}

bool FailKeepingMessage(Value& out) {
  if (!out.IsError()) out.SetError();
  return false;
}

Operand AsNumber(Value& out, int32_t& number) {
  if (!out.IsNumber()) return NotWanted(out);
  number = out.asLong();
  return Operand::Ready;
}

Operand AsString(Value& out, std::string& text) {
  if (!out.IsString()) return NotWanted(out);
  text = out.asString();
  return Operand::Ready;
}

Operand AsBoolean(Value& out, bool& boolean) {
  if (!out.IsBoolean()) return NotWanted(out);
  boolean = out.asBool();
  return Operand::Ready;
}

namespace {

// Evaluates a symbol; a failure makes out an Error without text, so that no reader takes it.
bool Evaluate(ParseNode& node, Value& out, size_t i) {
  return Child(node, out, i) || Fail(out);
}

}  // namespace

Operand ReadNumber(ParseNode& node, Value& out, size_t i, int32_t& number) {
  return Evaluate(node, out, i) ? AsNumber(out, number) : Operand::Fails;
}

Operand ReadDatime(ParseNode& node, Value& out, size_t i, uint32_t& datime) {
  if (!Evaluate(node, out, i)) return Operand::Fails;
  if (!out.IsDatime()) return NotWanted(out);
  datime = out.asDatime();
  return Operand::Ready;
}

Operand ReadString(ParseNode& node, Value& out, size_t i, std::string& text) {
  return Evaluate(node, out, i) ? AsString(out, text) : Operand::Fails;
}

Operand ReadBoolean(ParseNode& node, Value& out, size_t i, bool& boolean) {
  return Evaluate(node, out, i) ? AsBoolean(out, boolean) : Operand::Fails;
}

bool AppendSymbol(ParseNode& node, Value& out, size_t i, ValueVector& list) {
  if (!Child(node, out, i)) return FailKeepingMessage(out);
  list.Append(std::move(out));
  return true;
}

std::vector<ParseNode*> LeftChain(ParseNode& node) {
  std::vector<ParseNode*> chain{&node};
  for (;;) {
    ParseNode* pLeft = chain.back()->ChildNode(0);
    if (!pLeft || pLeft->Rule->Action != node.Rule->Action) break;
    chain.push_back(pLeft);
  }
  std::reverse(chain.begin(), chain.end());
  return chain;
}

}  // namespace kestra
