#include "query/rows/ModuleRowSource.h"

#include "query/rows/Arguments.h"

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

// A source may be asked many times in one query, by a sub-select for each row, say.
void ReportSource(QueryReport& report, DiagModule& module, bool isAsBefore) {
  SourceReport source{module.GetName(), module.FormatArgs("", ",")};
  for (const SourceReport& known : report.sources) {
    if (known.moduleName == source.moduleName && known.arguments == source.arguments) return;
  }
  const FillSource now = module.FromCache ? FillSource::CacheFile : FillSource::Machine;
  source.fill = isAsBefore ? FillSource::Memory : now;
  report.sources.push_back(std::move(source));
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

bool PrepareModule(DiagModule& module, const ParseNode& node, const SourceDescriptor& descriptor) {
  QueryContext& context = *node.Context;
  const bool wasFilled = module.IsFilled();
  const bool wasFromCache = module.FromCache;
  const bool isFilled =
      module.CachedInit(true, false, descriptor.cacheAge, descriptor.anyUser,
                        IsInActiveStatement(node), *context.Root, *context.Message);
  // A statement that changes something has content of the cache filled anew.
  const bool isAsBefore = wasFilled && wasFromCache == module.FromCache;
  if (isFilled) ReportSource(context.Report, module, isAsBefore);
  return isFilled;
}

bool ModuleRowSource::Run(Value& error) {
  error.SetError();
  if (m_descriptor.arguments.IsAny()) {
    SetUndecided();
    return true;
  }
  if (!Context().Root) return false;
  const Ref<DiagModule> module = GetSourceModule(Context(), m_descriptor, error);
  return module && PrepareModule(*module, Node(), m_descriptor) &&
         WalkItems(*module, m_descriptor.className);
}

}  // namespace kestra
