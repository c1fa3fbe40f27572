// CRows: a result as rows and columns. A row is an element of the result's vector: the values of a
// SELECT list stand in the columns that the query names, the properties of an item in columns of
// their own.
//
// One thread. The value that is shown must outlive the object.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "cli/render/Cell.h"
#include "cli/render/ColumnNames.h"
#include "cli/render/Items.h"
#include "cli/render/RowOrder.h"

namespace kestra::cli {

// Vectors in vectors are shown that deep, and as their text below.
constexpr int kMaxVectorDepth = 16;

struct Column {
  std::string name;    // no two are alike
  std::string unit;    // of the numbers in it; may be empty
  bool isSet = false;  // whether any row has something there
};

class CRows {
 public:
  // vector is a value that is a vector; names are those of the values of a SELECT list. The rows
  // are those that the order shows, and stand as they stand there.
  CRows(kestra_value* vector, const std::vector<std::string>& names, const CRowOrder& order);

  const std::vector<Column>& Columns() const { return m_columns; }
  int32_t Count() const { return m_order.Count(); }
  // One cell per column.
  std::vector<Cell> Read(int32_t number);

 private:
  CValueHandle Row(int32_t place) const;
  void AddNamedColumns(const std::vector<std::string>& names);
  void Survey(int32_t number);
  void SurveyItem(kestra_item* item);
  size_t ColumnOfProperty(const ItemLayout::Property& property);
  void ReadItem(kestra_item* item, std::vector<Cell>& row);

  CValuesHandle m_values;
  const CRowOrder m_order;
  size_t m_listColumns = 0;  // how many of the columns are of a SELECT list; they stand first
  std::vector<Column> m_columns;
  CColumnNames m_names;                                       // of the columns
  std::unordered_map<std::string, size_t> m_propertyColumns;  // by name
  CItemLayouts m_layouts;
};

}  // namespace kestra::cli
