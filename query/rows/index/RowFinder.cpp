#include "query/rows/index/RowFinder.h"

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

// Fewer tests than these are not worth a preparation, and fewer rows no index.
constexpr size_t kLeastTests = 32;
constexpr size_t kLeastIndexedRows = 8;

}  // namespace

CRowFinder::CRowFinder(QueryContext& context, ParseNode* pCondition, CScopeShape shape,
                       const ValueVector& rows, size_t expectedRounds)
    : m_context(context),
      m_shape(std::move(shape)),
      m_rows(rows),
      m_hasCondition(pCondition != nullptr) {
  const bool isWorthIt = rows.Count() > 0 && expectedRounds >= kLeastTests / rows.Count() + 1;
  if (!context.UsesShortcuts || !pCondition || !isWorthIt) return;
  m_pCompiled = CCompiledCondition::Make(*pCondition, m_shape);
  if (m_pCompiled && expectedRounds > 1 && rows.Count() >= kLeastIndexedRows)
    m_plan = FindEquality(*m_pCompiled, m_shape.Count() - 1);
}

bool CRowFinder::Begin() {
  m_next = 0;
  m_isByIndex = false;
  if (m_context.IsCancelled()) return false;
  if (!m_plan) return true;
  if (!m_pIndex && !MakeIndex()) return false;
  if (m_pIndex) Look();
  return true;
}

// False when the query is cancelled.
bool CRowFinder::MakeIndex() {
  const size_t lastSlot = m_shape.Count() - 1;
  for (const CCompiledOperand* pColumn : m_plan->columnsBefore) {
    if (pColumn->Slot() != lastSlot || pColumn->Defs() == m_plan->pColumn->Defs()) continue;
    m_plan.reset();
    return true;
  }
  auto index = std::make_unique<CEqualityIndex>();
  switch (index->Make(m_rows, *m_plan->pColumn, m_plan->form, m_context)) {
    case CEqualityIndex::Outcome::Made:
      m_pIndex = std::move(index);
      return true;
    case CEqualityIndex::Outcome::Unusable:
      m_plan.reset();
      return true;
    case CEqualityIndex::Outcome::Cancelled:
      break;
  }
  return false;
}

// Whether the rows that are bound now are of the classes of the columns that are read before the
// indexed one.
bool CRowFinder::IsOfClasses() const {
  for (const CCompiledOperand* pColumn : m_plan->columnsBefore) {
    const size_t slot = pColumn->Slot();
    if (slot + 1 < m_shape.Count() &&
        m_context.Scope[slot].Item->Params.Defs().get() != pColumn->Defs())
      return false;
  }
  return true;
}

// A key that is Any, or fails, is left to trying each row.
void CRowFinder::Look() {
  if (!IsOfClasses()) return;
  Known known = Known::Unknown;
  uint32_t hash = 0;
  switch (m_plan->form) {
    case CCompiledCondition::Form::Numbers: {
      int32_t number = 0;
      known = m_plan->pKey->ReadNumber(m_context, number);
      hash = static_cast<uint32_t>(number);
      break;
    }
    case CCompiledCondition::Form::Datimes:
      known = m_plan->pKey->ReadDatime(m_context, hash);
      break;
    default:
      known = m_plan->pKey->ReadText(m_context, m_holder, m_text);
      if (known == Known::Ready) hash = CEqualityIndex::HashOf(m_text);
      break;
  }
  if (known != Known::Ready && known != Known::Null) return;
  m_isByIndex = true;
  const uint32_t first = known == Known::Ready ? m_pIndex->First(hash) : CEqualityIndex::kNoRow;
  m_next = first == CEqualityIndex::kNoRow ? kNoRow : first;
}

bool CRowFinder::IsSameText(size_t row) {
  CTextHolder holder;
  const DiagParam* pParam = m_rows[row].asVDIagItem()->Params.Find(m_plan->pColumn->Def());
  return pParam && EqualsNoCase(CCompiledOperand::TextOf(*pParam, holder), m_text);
}

size_t CRowFinder::Next() {
  if (!m_isByIndex) return m_next < m_rows.Count() ? m_next++ : kNoRow;
  for (;;) {
    const size_t row = m_next;
    if (row == kNoRow) return kNoRow;
    const uint32_t next = m_pIndex->Next(static_cast<uint32_t>(row));
    m_next = next == CEqualityIndex::kNoRow ? kNoRow : next;
    if (m_plan->form != CCompiledCondition::Form::Texts || IsSameText(row)) return row;
  }
}

Verdict CRowFinder::Test() {
  if (!m_hasCondition) return Verdict::True;
  if (m_isByIndex && m_plan->isWhole) return Verdict::True;
  return m_pCompiled ? m_pCompiled->Test(m_context) : Verdict::Unknown;
}

}  // namespace kestra
