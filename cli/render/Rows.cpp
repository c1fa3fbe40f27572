#include "cli/render/Rows.h"

#include <algorithm>

#include "cli/render/Render.h"

namespace kestra::cli {
namespace {

// The elements of a row that is a vector; the row itself for any other.
std::vector<CValueHandle> ElementsOf(CValueHandle row) {
  std::vector<CValueHandle> elements;
  const auto values = Take<CValuesHandle>(kestra_value_as_vector, row.get());
  if (!values) {
    elements.push_back(std::move(row));
    return elements;
  }
  const int32_t count = Ask<int32_t>(kestra_values_count, values.get());
  for (int32_t i = 0; i < count; ++i) {
    elements.push_back(Take<CValueHandle>(kestra_values_value, values.get(), i));
  }
  return elements;
}

std::string UnitOf(kestra_value* value) {
  const auto param = Take<CParamHandle>(kestra_value_as_param, value);
  return param ? Ask<const char*>(kestra_param_unit, param.get()) : "";
}

// A list in a list, as a procedure's rows are.
Cell CellOf(kestra_value* value) {
  if (!Is(kestra_value_is_vector, value)) return ReadCell(value);
  return {CellKind::Nothing, 0, JsonText(value)};
}

}  // namespace

CRows::CRows(kestra_value* vector, const std::vector<std::string>& names, const CRowOrder& order)
    : m_values(Take<CValuesHandle>(kestra_value_as_vector, vector)), m_order(order) {
  AddNamedColumns(names);
  for (int32_t i = 0; i < Count(); ++i) Survey(i);
}

CValueHandle CRows::Row(int32_t place) const {
  return Take<CValueHandle>(kestra_values_value, m_values.get(), m_order.At(place));
}

void CRows::AddNamedColumns(const std::vector<std::string>& names) {
  for (const std::string& name : names) m_columns.push_back({m_names.Fresh(name), {}});
  m_listColumns = m_columns.size();
}

void CRows::Survey(int32_t number) {
  auto row = Row(number);
  if (const auto item = Take<CItemHandle>(kestra_value_as_vdiag_item, row.get())) {
    SurveyItem(item.get());
    return;
  }
  const bool isSingle = !Is(kestra_value_is_vector, row.get());
  const auto elements = ElementsOf(std::move(row));
  while (m_listColumns < elements.size()) {
    std::string name = isSingle ? m_names.Fresh("Value") : m_names.FreshForNumber(m_listColumns);
    const auto place = m_columns.begin() + static_cast<std::ptrdiff_t>(m_listColumns++);
    m_columns.insert(place, {std::move(name), {}});
    for (auto& [property, column] : m_propertyColumns) ++column;
  }
  for (size_t i = 0; i < elements.size(); ++i) {
    m_columns[i].isSet = true;
    if (m_columns[i].unit.empty()) m_columns[i].unit = UnitOf(elements[i].get());
  }
}

void CRows::SurveyItem(kestra_item* item) {
  const ItemLayout& layout = m_layouts.Of(item);
  const auto params = ReadProperties(item, layout);
  for (size_t i = 0; i < params.size(); ++i) {
    const size_t column = ColumnOfProperty(layout.properties[i]);
    if (params[i]) m_columns[column].isSet = true;
  }
}

size_t CRows::ColumnOfProperty(const ItemLayout::Property& property) {
  const auto [found, isNew] = m_propertyColumns.try_emplace(property.name, m_columns.size());
  if (isNew) m_columns.push_back({m_names.Fresh(property.name), property.unit});
  return found->second;
}

std::vector<Cell> CRows::Read(int32_t number) {
  std::vector<Cell> cells(m_columns.size());
  auto row = Row(number);
  if (const auto item = Take<CItemHandle>(kestra_value_as_vdiag_item, row.get())) {
    ReadItem(item.get(), cells);
    return cells;
  }
  const auto elements = ElementsOf(std::move(row));
  for (size_t i = 0; i < elements.size() && i < cells.size(); ++i) {
    cells[i] = CellOf(elements[i].get());
  }
  return cells;
}

void CRows::ReadItem(kestra_item* item, std::vector<Cell>& row) {
  const ItemLayout& layout = m_layouts.Of(item);
  const auto params = ReadProperties(item, layout);
  for (size_t i = 0; i < params.size(); ++i) {
    const auto found = m_propertyColumns.find(layout.properties[i].name);
    if (params[i] && found != m_propertyColumns.end())
      row[found->second] = ReadCell(params[i].get());
  }
}

}  // namespace kestra::cli
