#include <nlohmann/json.hpp>

#include "cli/render/ColumnNames.h"
#include "cli/render/Items.h"
#include "cli/render/Render.h"
#include "cli/render/Rows.h"

namespace kestra::cli {
namespace {

using Json = nlohmann::ordered_json;

Json FlagsOf(const std::string& text) {
  Json flags = Json::array();
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find('|', start), text.size());
    flags.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return flags;
}

Json JsonOf(const Cell& cell) {
  switch (cell.kind) {
    case CellKind::Null:
      return nullptr;
    case CellKind::Boolean:
      return cell.number != 0;
    case CellKind::Number:
      return cell.number;
    case CellKind::Datime:
      return UtcText(cell.number);
    case CellKind::Flags:
      return FlagsOf(cell.text);
    default:
      return cell.text;
  }
}

// An object whose members come in order and have names that differ, so that none of those that
// are there is compared with one that is added.
class CJsonObject {
 public:
  explicit CJsonObject(size_t count) { Members().reserve(count); }
  void Add(const std::string& name, Json value) { Members().emplace_back(name, std::move(value)); }
  Json Take() { return std::move(m_object); }

 private:
  Json::object_t& Members() { return m_object.get_ref<Json::object_t&>(); }

  Json m_object = Json::object();
};

class CJsonRows {
 public:
  explicit CJsonRows(const std::vector<std::string>& columns) {
    for (const std::string& column : columns) m_names.push_back(m_freshNames.Fresh(column));
  }

  // A row of the result: an object where its values have names.
  Json RowOf(kestra_value* row) {
    if (m_names.empty()) return ValueOf(row, 1);
    const auto values = Take<CValuesHandle>(kestra_value_as_vector, row);
    const int32_t count = values ? Ask<int32_t>(kestra_values_count, values.get()) : 1;
    CJsonObject object(static_cast<size_t>(count));
    for (int32_t i = 0; i < count; ++i) {
      const auto element =
          values ? Take<CValueHandle>(kestra_values_value, values.get(), i) : nullptr;
      object.Add(NameOf(static_cast<size_t>(i)), ValueOf(element ? element.get() : row, 1));
    }
    return object.Take();
  }

  Json ValueOf(kestra_value* value, int depth) {
    if (const auto item = Take<CItemHandle>(kestra_value_as_vdiag_item, value)) {
      return ItemOf(item.get());
    }
    const auto values = Take<CValuesHandle>(kestra_value_as_vector, value);
    if (!values || depth > kMaxVectorDepth) return JsonOf(ReadCell(value));
    Json array = Json::array();
    const int32_t count = Ask<int32_t>(kestra_values_count, values.get());
    for (int32_t i = 0; i < count; ++i) {
      const auto element = Take<CValueHandle>(kestra_values_value, values.get(), i);
      array.push_back(ValueOf(element.get(), depth + 1));
    }
    return array;
  }

 private:
  Json ItemOf(kestra_item* item) {
    const ItemLayout& layout = m_layouts.Of(item);
    const auto params = ReadProperties(item, layout);
    CJsonObject object(params.size());
    for (size_t i = 0; i < params.size(); ++i) {
      object.Add(layout.properties[i].name, params[i] ? JsonOf(ReadCell(params[i].get())) : Json());
    }
    return object.Take();
  }

  const std::string& NameOf(size_t index) {
    while (m_names.size() <= index) {
      m_names.push_back(m_freshNames.FreshForNumber(m_names.size()));
    }
    return m_names[index];
  }

  CColumnNames m_freshNames;
  std::vector<std::string> m_names;  // of the columns; empty where the query names none
  CItemLayouts m_layouts;
};

std::string Dump(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string JsonText(kestra_value* value) {
  return Dump(CJsonRows({}).ValueOf(value, 1));
}

void RenderJson(kestra_value* value, const std::vector<std::string>& columns,
                const CRowOrder& order, bool lines, COutput& output) {
  CJsonRows rows(columns);
  const auto values = Take<CValuesHandle>(kestra_value_as_vector, value);
  if (!values) {
    output.Write(Dump(rows.ValueOf(value, 0)) + '\n');
    return;
  }
  const int32_t count = order.Count();
  if (!lines) output.Write(count == 0 ? "[" : "[\n");
  for (int32_t i = 0; i < count; ++i) {
    const auto element = Take<CValueHandle>(kestra_values_value, values.get(), order.At(i));
    // A cancel comes between two writes, and is told behind a whole line.
    output.Write(Dump(rows.RowOf(element.get())) + (!lines && i + 1 < count ? ",\n" : "\n"));
  }
  if (!lines) output.Write("]\n");
}

}  // namespace kestra::cli
