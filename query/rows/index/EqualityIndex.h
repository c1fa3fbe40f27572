// Which rows of a source have a value in one of its columns: a hash of all of them.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "query/eval/compiled/Condition.h"

namespace kestra {

class CEqualityIndex {
 public:
  static constexpr uint32_t kNoRow = UINT32_MAX;
  enum class Outcome { Made, Unusable, Cancelled };

  // Of a column's values in rows, as a comparison of that form sees them. Unusable when a row is
  // not of the column's class, there are too many, or memory is short. The rows must stay.
  Outcome Make(const ValueVector& rows, const CCompiledOperand& column,
               CCompiledCondition::Form form, const QueryContext& context);

  // The rows that may have the value, in their order: those with the same hash. A number or time is
  // its own hash.
  uint32_t First(uint32_t hash) const { return Skip(m_heads[Bucket(hash)], hash); }
  uint32_t Next(uint32_t row) const { return Skip(m_next[row], m_hashes[row]); }
  // The same for all texts that are equal without regard to case.
  static uint32_t HashOf(std::string_view text);

 private:
  Outcome Fill(const ValueVector& rows, const CCompiledOperand& column, bool isText,
               const QueryContext& context);
  size_t Bucket(uint32_t hash) const { return (hash * 2654435769u) >> m_shift; }
  uint32_t Skip(uint32_t row, uint32_t hash) const {
    while (row != kNoRow && m_hashes[row] != hash) row = m_next[row];
    return row;
  }

  uint32_t m_shift = 31;
  std::vector<uint32_t> m_heads;   // by bucket: its first row
  std::vector<uint32_t> m_next;    // by row: the next one of its bucket
  std::vector<uint32_t> m_hashes;  // by row
};

}  // namespace kestra
