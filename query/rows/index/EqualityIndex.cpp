#include "query/rows/index/EqualityIndex.h"

#include <new>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

constexpr size_t kMostRows = size_t{1} << 30;

}  // namespace

uint32_t CEqualityIndex::HashOf(std::string_view text) {
  uint32_t hash = 2166136261u;
  for (size_t i = 0; i < text.size();)
    hash = (hash ^ FoldCharacter(NextCharacter(text, i))) * 16777619u;
  return hash;
}

// From the last row to the first, so that each bucket lists them in their order. Rows without the
// value are in none.
CEqualityIndex::Outcome CEqualityIndex::Fill(const ValueVector& rows,
                                             const CCompiledOperand& column, bool isText,
                                             const QueryContext& context) {
  CTextHolder holder;
  for (size_t i = rows.Count(); i-- > 0;) {
    if (context.IsCancelled()) return Outcome::Cancelled;
    const CVDiagItem* pItem = rows[i].asVDIagItem();
    if (!pItem || pItem->Params.Defs().get() != column.Defs()) return Outcome::Unusable;
    const DiagParam* pParam = pItem->Params.Find(column.Def());
    if (!pParam) continue;
    const uint32_t hash =
        isText ? HashOf(CCompiledOperand::TextOf(*pParam, holder)) : pParam->DWordValue;
    uint32_t& head = m_heads[Bucket(hash)];
    m_hashes[i] = hash;
    m_next[i] = head;
    head = static_cast<uint32_t>(i);
  }
  return Outcome::Made;
}

CEqualityIndex::Outcome CEqualityIndex::Make(const ValueVector& rows,
                                             const CCompiledOperand& column,
                                             CCompiledCondition::Form form,
                                             const QueryContext& context) {
  if (rows.Count() > kMostRows) return Outcome::Unusable;
  while (m_shift > 0 && (size_t{1} << (32 - m_shift)) < rows.Count()) --m_shift;
  try {
    m_heads.assign(size_t{1} << (32 - m_shift), kNoRow);
    m_next.assign(rows.Count(), kNoRow);
    m_hashes.assign(rows.Count(), 0);
    return Fill(rows, column, form == CCompiledCondition::Form::Texts, context);
  } catch (const std::bad_alloc&) {
    return Outcome::Unusable;
  }
}

}  // namespace kestra
