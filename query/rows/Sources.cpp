// Descriptors of sources, running one source, and the FROM clause.
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"
#include "query/rows/FromResult.h"
#include "query/rows/RowSource.h"

namespace kestra {
namespace {

void AppendDefaults(ValueVector& descriptor) {
  Value age;
  age.SetNumber(-1);
  descriptor.Append(age);
  Value anyUser;
  anyUser.SetBoolean(false);
  descriptor.Append(anyUser);
}

// An argument whose value is not known yet makes the whole list so.
bool HasUndecidedArgument(const ValueVector& pairs) {
  for (size_t i = 0; i < pairs.Count(); ++i) {
    const ValueVector& pair = pairs[i].asVector();
    if (pair.Count() == 2 && pair[1].IsAny()) return true;
  }
  return false;
}

bool RunOneSource(Value& out, ParseNode& node, bool isJoinMember, int32_t limit) {
  SourceDescriptor descriptor;
  if (!Child(node, out, 0)) return false;
  if (!ReadDescriptor(out, descriptor)) return Fail(out);
  const auto source = MakeRowSource(node, descriptor, limit);
  if (!source) return Fail(out);
  if (!source->Run(out)) return FailKeepingMessage(out);
  if (!isJoinMember && !source->Decided()) {
    out.SetAny();
    return true;
  }
  auto fromResult = MakeRef<ValueVector>();
  AppendSource(*fromResult, descriptor.alias, source->Rows());
  out.SetVector(std::move(fromResult));
  return true;
}

}  // namespace

bool ModuleDescriptor(Value& out, ParseNode& node) {
  auto descriptor = MakeRef<ValueVector>();
  if (!AppendSymbol(node, out, 0, *descriptor) || !AppendSymbol(node, out, 5, *descriptor)) {
    return false;
  }
  Value arguments;
  if (!Child(node, arguments, 1)) {
    out = std::move(arguments);
    return FailKeepingMessage(out);
  }
  if (HasUndecidedArgument(arguments.asVector())) arguments.SetAny();
  descriptor->Append(std::move(arguments));
  if (!AppendSymbol(node, out, 2, *descriptor) || !AppendSymbol(node, out, 3, *descriptor)) {
    return false;
  }
  out.SetVector(std::move(descriptor));
  return true;
}

bool BuiltInDescriptor(Value& out, ParseNode& node) {
  auto descriptor = MakeRef<ValueVector>();
  if (!AppendSymbol(node, out, 0, *descriptor) || !AppendSymbol(node, out, 2, *descriptor) ||
      !AppendSymbol(node, out, 4, *descriptor)) {
    return false;
  }
  AppendDefaults(*descriptor);
  out.SetVector(std::move(descriptor));
  return true;
}

bool DescriptorWithAlias(Value& out, ParseNode& node) {
  if (!Child(node, out, 0)) return false;
  if (!out.IsVector()) return Fail(out);
  const Value descriptor = out;
  if (!Child(node, out, 1)) return false;
  descriptor.asVector().Append(out);
  out = descriptor;
  return true;
}

bool RunSource(Value& out, ParseNode& node) {
  return RunOneSource(out, node, false, kNoRowLimit);
}
bool RunSourceLimit2(Value& out, ParseNode& node) {
  return RunOneSource(out, node, false, 2);
}
bool RunSourceJoinMember(Value& out, ParseNode& node) {
  return RunOneSource(out, node, true, kNoRowLimit);
}

bool From(Value& out, ParseNode& node) {
  const CFilterScope scope(*node.Context, node.ChildNode(2));
  return Child(node, out, 1);
}

// A clause that must give exactly one row.
bool ScalarFrom(Value& out, ParseNode& node) {
  if (!From(out, node)) return false;
  if (out.IsAny()) return true;
  const CFromReader reader(out);
  return reader.IsValid() && reader.RowCount() == 1 ? true : Fail(out);
}

}  // namespace kestra
