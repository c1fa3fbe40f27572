// CRowOrder: which rows of a result are shown, and in which order.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/Handles.h"
#include "cli/Interrupt.h"

namespace kestra::cli {

// By a column of the result. Numbers stand by their value, before texts; dates by their time;
// versions part by part; texts without regard to case; what is not set comes last, either way.
// Rows that are equal stay in the order of the result.
struct SortOrder {
  std::string column;  // its name, in any case unless two columns differ in nothing else
  bool isDescending = false;
};

// "COLUMN", "COLUMN:desc" or "COLUMN:asc".
SortOrder ParseSortOrder(const std::string& text);

struct RowSelection {
  std::optional<SortOrder> sort;  // nothing: as the rows come
  std::optional<int32_t> limit;   // how many rows are shown at most
  // Whoever asks for a row after that was cancelled gets CCancelled. Null: nobody cancels.
  const CCancellation* pCancellation = nullptr;
};

// A column to sort by that the result does not have; the sentence names the nearest ones.
class CUnknownColumn : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class CRowOrder {
 public:
  // Of a result without rows.
  CRowOrder() = default;
  // Of a value that is a vector; names are those of the values of a SELECT list. Throws
  // CUnknownColumn. A result without rows and columns has any column.
  CRowOrder(kestra_value* vector, const std::vector<std::string>& names,
            const RowSelection& selection);

  int32_t Total() const { return m_total; }
  int32_t Count() const { return m_count; }
  // The number in the result of the row that is shown at that place, from 0 to Count() - 1.
  int32_t At(int32_t place) const {
    if (m_pCancellation && m_pCancellation->WasCancelled()) throw CCancelled();
    return m_rows.empty() ? place : m_rows[static_cast<size_t>(place)];
  }

 private:
  int32_t m_total = 0;
  int32_t m_count = 0;
  std::vector<int32_t> m_rows;  // empty: as they come
  const CCancellation* m_pCancellation = nullptr;
};

}  // namespace kestra::cli
