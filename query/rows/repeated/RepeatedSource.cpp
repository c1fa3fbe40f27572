#include "query/rows/repeated/RepeatedSource.h"

#include "query/eval/Actions.h"
#include "query/eval/Operands.h"
#include "query/rows/FromResult.h"
#include "query/rows/ModuleRowSource.h"
#include "query/rows/repeated/Repeats.h"

namespace kestra {
namespace {

constexpr size_t kManyRounds = 1000;

}  // namespace

// What stands in the descriptor has to be the same each time, and what the module holds too.
bool CRepeatedSource::CanBeListed() {
  const ParseNode* pSource = m_node.ChildNode(0);
  if (pSource && pSource->Rule->Action == DescriptorWithAlias) pSource = pSource->ChildNode(0);
  return pSource && pSource->Rule->Action == ModuleDescriptor &&
         NeedsOf(*pSource->ChildNode(1)).IsConstant() && !IsInChangingStatement(m_node);
}

CRepeatedSource::Outcome CRepeatedSource::List(Value& error) {
  QueryContext& context = *m_node.Context;
  if (!CanBeListed() || !context.Root) return Outcome::Plain;
  Value descriptor;
  m_descriptor = {};
  if (!Child(m_node, descriptor, 0) || !ReadDescriptor(descriptor, m_descriptor))
    return Outcome::Plain;
  Value unused;
  m_poModule = GetSourceModule(context, m_descriptor, unused);
  if (!m_poModule || !m_poModule->IsFilled()) return Outcome::Plain;
  const CFilterScope noFilter(context, nullptr);
  // By its descriptor's node: what runs the source may want a number only.
  const auto source = MakeRowSource(*m_node.ChildNode(0), m_descriptor, kNoRowLimit);
  if (!source) return Outcome::Plain;
  if (!source->Run(error)) return Outcome::Failed;
  if (!source->Decided() || !source->Rows().IsVector()) return Outcome::Plain;
  if (!context.Repeats->TakeRoomFor(source->Rows().asVector().Count())) return Outcome::Plain;
  bool isNew = false;
  m_reportIndex = context.Sources.Find(*m_poModule, isNew);
  m_pRows = Ref<ValueVector>(&source->Rows().asVector());
  return Outcome::Done;
}

CRepeatedSource::Outcome CRepeatedSource::Run(Value& error, ParseNode* pFilter, int32_t limit) {
  if (m_runs < 2 && ++m_runs == 2) {
    const Outcome outcome = List(error);
    if (outcome != Outcome::Done) return outcome;
  }
  if (!m_pRows) return Outcome::Plain;
  return Search(error, pFilter, static_cast<size_t>(limit));
}

// As a source does whose walk ends before its end.
void CRepeatedSource::FailCutShort(Value& error) {
  m_node.Context->Sources.At(m_reportIndex).isCutShort = true;
  if (!error.IsError()) error.SetError();
}

// The aliases around a source are the same nearly always; not where one WHERE is tried on two
// sources and then on pairs of both.
void CRepeatedSource::Prepare(ParseNode* pFilter) {
  QueryContext& context = *m_node.Context;
  if (m_pFinder && m_shape.Begins(context.Scope, m_shape.Count() - 1)) return;
  m_shape = CScopeShape(context.Scope);
  m_shape.Add(m_descriptor.alias);
  m_value.reset();
  m_pFinder = std::make_unique<CRowFinder>(context, pFilter, m_shape, *m_pRows, kManyRounds);
}

bool CRepeatedSource::TestRow(ParseNode* pFilter, CVDiagItem& item, bool& passes) {
  QueryContext& context = *m_node.Context;
  const CBoundItem bound(context, m_descriptor.alias, item);
  const Verdict verdict = m_pFinder->Test();
  if (Decides(verdict, passes, m_decided)) return true;
  return verdict != Verdict::Failed && TestFilter(pFilter, passes, m_decided);
}

// The time is looked at where a walk would look: at each item that has children.
CRepeatedSource::Outcome CRepeatedSource::Search(Value& error, ParseNode* pFilter, size_t limit) {
  QueryContext& context = *m_node.Context;
  const bool isOver = m_poModule->Children.Count() > 0 && context.CheckTimeOut(error);
  m_found.clear();
  m_decided = true;
  Prepare(pFilter);
  uint64_t seen = 0;
  bool isCut = isOver || !m_pFinder->Begin();
  bool hasFailed = false;
  while (!isCut && !hasFailed && m_found.size() < limit) {
    const size_t row = m_pFinder->Next();
    if (row == CRowFinder::kNoRow) break;
    CVDiagItem& item = *(*m_pRows)[row].asVDIagItem();
    ++seen;
    bool passes = true;
    if (!TestRow(pFilter, item, passes))
      hasFailed = true;
    else if (passes)
      m_found.push_back(&item);
    isCut = context.IsCancelled() || (item.Children.Count() > 0 && context.CheckTimeOut(error));
  }
  SourceReport& report = context.Sources.At(m_reportIndex);
  report.rowsSeen += seen;
  report.rowsKept += m_found.size();
  if (isCut) FailCutShort(error);
  if (hasFailed) Fail(error);
  return isCut || hasFailed ? Outcome::Failed : Outcome::Done;
}

bool CRepeatedSource::ValueOfFound(Value& out, ParseNode& select, size_t symbol) {
  QueryContext& context = *m_node.Context;
  const CBoundItem bound(context, m_descriptor.alias, *m_found.front());
  if (!m_value) m_value.emplace(select, symbol, m_shape);
  return m_value->Read(context, out);
}

}  // namespace kestra
