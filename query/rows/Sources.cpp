// Descriptors of sources, running one source, and the FROM clause.
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"
#include "query/rows/FromResult.h"
#include "query/rows/RowSource.h"
#include "query/rows/repeated/Repeats.h"

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

void FinishSource(Value& out, const std::string& alias, Value rows) {
  auto fromResult = MakeRef<ValueVector>();
  AppendSource(*fromResult, alias, std::move(rows));
  out.SetVector(std::move(fromResult));
}

// A source of a sub-select, if what was found of it before serves.
CRepeatedSource::Outcome RunRepeated(Value& out, ParseNode& node, bool isJoinMember,
                                     int32_t limit) {
  using Outcome = CRepeatedSource::Outcome;
  QueryContext& context = *node.Context;
  CRepeatedSource* pSource = context.Repeats->SourceAt(node);
  if (!pSource) return Outcome::Plain;
  ParseNode* pFilter = context.FilterStack.empty() ? nullptr : context.FilterStack.back();
  const Outcome outcome = pSource->Run(out, pFilter, limit);
  if (outcome != Outcome::Done) return outcome;
  if (!isJoinMember && !pSource->Decided()) {
    out.SetAny();
    return outcome;
  }
  auto items = MakeRef<ValueVector>();
  items->Reserve(pSource->Found().size());
  Value row;
  for (CVDiagItem* pItem : pSource->Found()) {
    row.SetDiagItem(Ref<CVDiagItem>(pItem));
    items->Append(std::move(row));
  }
  row.SetVector(std::move(items));
  FinishSource(out, pSource->Alias(), std::move(row));
  return outcome;
}

bool RunOneSource(Value& out, ParseNode& node, bool isJoinMember, int32_t limit) {
  const auto outcome = RunRepeated(out, node, isJoinMember, limit);
  if (outcome == CRepeatedSource::Outcome::Done) return true;
  if (outcome == CRepeatedSource::Outcome::Failed) return FailKeepingMessage(out);
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
  FinishSource(out, descriptor.alias, source->Rows());
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
  const CListingScope listing(node.Context->Repeats->JoinedListing);
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
