// INSERT in its four forms: the parent is found by the class tree or given by ITEMID, and the
// values stand in the text or come from a query.
#include <vector>

#include "query/eval/Actions.h"
#include "query/rows/Arguments.h"
#include "query/rows/ModuleRowSource.h"
#include "query/statements/ChangedModules.h"
#include "query/statements/Statement.h"

namespace kestra {
namespace {

// What every form finds out first.
struct InsertTarget {
  std::string className;
  Ref<DiagClass> diagClass;
  Value columns;
  Ref<CVDiagItem> parent;  // null when no item stands at the place of the class's parent
};

// The classes from top down to the one of that name, depth first; empty if there is none.
bool FindChain(DiagClass* pTop, const std::string& name, std::vector<DiagClass*>& chain) {
  chain.push_back(pTop);
  if (pTop == FindClass(pTop, name)) return true;
  for (const Ref<DiagClass>& child : pTop->ChildClasses()) {
    if (child && FindClass(child.get(), name)) return FindChain(child.get(), name, chain);
  }
  chain.pop_back();
  return false;
}

// The item that stands above the last class of a chain, by the first child of each class between.
CVDiagItem* FollowChain(CVDiagItem& module, const std::vector<DiagClass*>& chain) {
  CVDiagItem* pItem = &module;
  for (size_t i = 1; pItem && i + 1 < chain.size(); ++i) {
    pItem = pItem->Children.Find(chain[i]->Name, false);
  }
  return pItem;
}

bool FindTargetClass(Value& out, ParseNode& node, const SourceDescriptor& descriptor,
                     InsertTarget& target, std::vector<DiagClass*>& chain) {
  target.className = descriptor.className;
  DiagClass* pModule = FindClass(node.Context->RootClass.get(), descriptor.moduleName);
  if (!pModule || !FindChain(pModule, target.className, chain)) {
    return FailWithMessage(out, node, 10003, {target.className});
  }
  target.diagClass = Ref<DiagClass>(chain.back());
  if (!target.diagClass->CanBeAdded) {
    return FailWithMessage(out, node, 11013, {target.className});
  }
  return true;
}

bool PrepareInsert(Value& out, ParseNode& node, size_t columnsSymbol, InsertTarget& target) {
  SourceDescriptor descriptor;
  if (!Child(node, out, 1)) return FailKeepingMessage(out);
  if (!ReadDescriptor(out, descriptor)) return Fail(out);
  std::vector<DiagClass*> chain;
  if (!FindTargetClass(out, node, descriptor, target, chain)) return false;
  const Ref<DiagModule> module = GetSourceModule(*node.Context, descriptor, out);
  if (!module) {
    // A fault of an argument has a message of its own.
    if (out.HasErrorText()) return false;
    return FailWithMessage(out, node, 10004, {descriptor.moduleName});
  }
  if (!PrepareModule(*module, *node.ChildNode(1), descriptor)) {
    return FailWithMessage(out, node, 10004, {descriptor.moduleName});
  }
  target.parent = Ref<CVDiagItem>(FollowChain(*module, chain));
  if (!Child(node, target.columns, columnsSymbol)) return Fail(out);
  return true;
}

bool InsertRow(Value& out, ParseNode& node, CVDiagItem& parent, const InsertTarget& target,
               const ValueVector& values, CChangedModules& changed) {
  const ValueVector& columns = target.columns.asVector();
  if (columns.Count() != values.Count()) {
    return FailWithMessage(out, node, 10005, {target.className});
  }
  DiagParams params{Ref<const DiagParamDefs>(target.diagClass->Params)};
  for (size_t i = 0; i < columns.Count(); ++i) {
    if (!ApplyArgument(out, columns[i].asString(), values[i], params)) return false;
  }
  changed.Add(target.diagClass);
  if (!parent.Add(target.className, params, *node.Context->Message)) {
    return FailWithMessage(out, node);
  }
  return true;
}

// Evaluates a list of values into a Vector.
bool ReadValues(Value& out, ParseNode& node, size_t symbol, Value& values) {
  if (!Child(node, values, symbol) || !values.IsVector()) {
    out = std::move(values);
    return FailKeepingMessage(out);
  }
  return true;
}

}  // namespace

bool InsertValues(Value& out, ParseNode& node) {
  InsertTarget target;
  Value values;
  if (!PrepareInsert(out, node, 3, target)) return false;
  if (!target.parent) return FailWithMessage(out, node, 10006, {target.className});
  if (!ReadValues(out, node, 7, values)) return false;
  CChangedModules changed(*node.Context);
  return InsertRow(out, node, *target.parent, target, values.asVector(), changed) &&
         CountResult(out, 1);
}

bool InsertValuesUnderItem(Value& out, ParseNode& node) {
  InsertTarget target;
  Value fromResult, values;
  if (!PrepareInsert(out, node, 5, target)) return false;
  if (!ReadRows(out, node, 12, TextOf(node, 10), fromResult)) return false;
  if (out.asVector().Count() != 1) return FailWithMessage(out, node, 10007, {target.className});
  const Ref<CVDiagItem> parent(out.asVector()[0].asVDIagItem());
  if (!ReadValues(out, node, 14, values)) return false;
  CChangedModules changed(*node.Context);
  return InsertRow(out, node, *parent, target, values.asVector(), changed) && CountResult(out, 1);
}

bool InsertFromQueryUnderItems(Value& out, ParseNode& node) {
  InsertTarget target;
  Value fromResult;
  if (!PrepareInsert(out, node, 5, target)) return false;
  if (!ReadRows(out, node, 12, TextOf(node, 8), fromResult)) return false;
  const Value parents = out;
  const CFromReader reader(fromResult);
  CChangedModules changed(*node.Context);
  for (size_t r = 0; r < parents.asVector().Count(); ++r) {
    Value values;
    if (!EvalOnRow(values, r, reader, node, 11) || !values.IsVector()) {
      out = std::move(values);
      return FailKeepingMessage(out);
    }
    CVDiagItem& parent = *parents.asVector()[r].asVDIagItem();
    if (!InsertRow(out, node, parent, target, values.asVector(), changed)) return false;
  }
  return CountResult(out, parents.asVector().Count());
}

bool InsertFromQuery(Value& out, ParseNode& node) {
  InsertTarget target;
  Value rows;
  if (!PrepareInsert(out, node, 3, target)) return false;
  if (!target.parent) return FailWithMessage(out, node, 10006, {target.className});
  if (!ReadValues(out, node, 5, rows)) return false;
  CChangedModules changed(*node.Context);
  for (size_t r = 0; r < rows.asVector().Count(); ++r) {
    const ValueVector& values = rows.asVector()[r].asVector();
    if (!InsertRow(out, node, *target.parent, target, values, changed)) return false;
  }
  return CountResult(out, rows.asVector().Count());
}

}  // namespace kestra
