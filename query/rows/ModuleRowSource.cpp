#include "query/rows/ModuleRowSource.h"

#include "query/eval/Actions.h"
#include "query/rows/Arguments.h"
#include "query/rows/repeated/Repeats.h"
#include "query/rows/report/SourceRun.h"

namespace kestra {
namespace {

// Whether the statement that a node belongs to changes something: the nearest one around it
// decides.
bool IsInActiveStatement(const ParseNode& node) {
  for (const ParseNode* pNode = &node; pNode; pNode = pNode->Parent) {
    const Symbol first = pNode->Rule->Symbols[0];
    if (first.Kind != SymbolKind::Keyword) continue;
    switch (first.Number) {
      case kKwSelect:
        return false;
      case kKwInsert:
      case kKwUpdate:
      case kKwDelete:
      case kKwExecute:
        return true;
      default:
        break;
    }
  }
  return true;
}

}  // namespace

Ref<DiagModule> GetSourceModule(QueryContext& context, const SourceDescriptor& descriptor,
                                Value& error) {
  error.SetError();
  const DiagClass* pClass = FindModuleClass(context.RootClass.get(), descriptor.moduleName);
  if (!pClass) return nullptr;
  DiagParams args(pClass->Args->Defs());
  if (!ApplyArguments(error, descriptor.arguments.asVector(), args)) return nullptr;
  return context.Root->GetDiagModule(descriptor.moduleName, args, *context.Message);
}

bool PrepareModule(DiagModule& module, const ParseNode& node, const SourceDescriptor& descriptor,
                   CSourceRun& run) {
  QueryContext& context = *node.Context;
  const bool isForChange = IsInActiveStatement(node);
  run.BeginModule(module, isForChange);
  const bool isFilled = module.CachedInit(true, false, descriptor.cacheAge, descriptor.anyUser,
                                          isForChange, *context.Root, *context.Message);
  run.EndFill(isFilled);
  return isFilled;
}

bool PrepareModule(DiagModule& module, const ParseNode& node, const SourceDescriptor& descriptor) {
  CSourceRun run(*node.Context);
  return PrepareModule(module, node, descriptor, run);
}

// A join of a module with itself lists the same rows twice, unless the module was filled in
// between.
bool ModuleRowSource::List(DiagModule& module, const CSourceRun& run, Value& error) {
  const ParseNode& node = Node();
  const bool isAlone = node.Rule->Action == RunSource || node.Rule->Action == RunSourceLimit2;
  if (isAlone || !IsWholeListing() || !Context().UsesShortcuts)
    return WalkItems(module, m_descriptor.className);
  CListing& listing = Context().Repeats->JoinedListing;
  if (run.WasFilledBefore() && listing.IsOf(module, m_descriptor.className)) {
    // Where a walk would look first: it does not for a module without children.
    if (module.Children.Count() > 0 && Context().CheckTimeOut(error)) return false;
    UseRows(listing.Rows());
    return true;
  }
  if (!WalkItems(module, m_descriptor.className)) return false;
  listing.Keep(module, m_descriptor.className, Rows().asVector());
  return true;
}

bool ModuleRowSource::Find(CSourceRun& run, Value& error) {
  error.SetError();
  if (m_descriptor.arguments.IsAny()) {
    SetUndecided();
    return true;
  }
  if (!Context().Root) return false;
  const Ref<DiagModule> module = GetSourceModule(Context(), m_descriptor, error);
  return module && PrepareModule(*module, Node(), m_descriptor, run) && List(*module, run, error);
}

}  // namespace kestra
