// XML in the elements of the library's item dump: I is an item, P a value. An item is its dump with
// all that is below it, a row of a SELECT list an item named "Row", and the whole an item named
// "Result", so that there is one document. What is not set is left out.
#include "cli/render/Render.h"
#include "cli/render/Rows.h"

namespace kestra::cli {
namespace {

constexpr int32_t kForReading = 0;  // the dump with units and the texts of options

// As the dump escapes its values, and the quote for attributes. What XML does not allow becomes a
// reference all the same, so that it can be seen.
std::string Escape(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '&') {
      escaped += "&amp;";
    } else if (c == '<') {
      escaped += "&lt;";
    } else if (c == '>') {
      escaped += "&gt;";
    } else if (c == '"') {
      escaped += "&quot;";
    } else if (byte < 0x20 && c != '\t' && c != '\n' && c != '\r') {
      escaped += "&#" + std::to_string(byte) + ";";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

class CXmlWriter {
 public:
  CXmlWriter(const std::vector<std::string>& columns, COutput& output)
      : m_columns(columns), m_output(output) {}

  void WriteValue(kestra_value* value, const std::string& name, int depth) {
    if (const auto item = Take<CItemHandle>(kestra_value_as_vdiag_item, value)) {
      WriteItem(item.get());
      return;
    }
    const auto values = Take<CValuesHandle>(kestra_value_as_vector, value);
    if (values && depth <= kMaxVectorDepth) {
      WriteVector(values.get(), name, depth);
      return;
    }
    const Cell cell = ReadCell(value);
    if (cell.kind == CellKind::Null) return;
    m_output.Write("<P n=\"" + Escape(name) + "\">" + Escape(cell.text) + "</P>\r\n");
  }

  void WriteRow(kestra_value* row) {
    const auto values = Take<CValuesHandle>(kestra_value_as_vector, row);
    if (!values) {
      WriteValue(row, m_columns.empty() ? "Value" : m_columns.front(), 1);
      return;
    }
    m_output.Write("<I n=\"Row\">\r\n");
    const int32_t count = Ask<int32_t>(kestra_values_count, values.get());
    for (int32_t i = 0; i < count; ++i) {
      const auto element = Take<CValueHandle>(kestra_values_value, values.get(), i);
      const auto index = static_cast<size_t>(i);
      const bool isNamed = index < m_columns.size();
      WriteValue(element.get(), isNamed ? m_columns[index] : "Value" + std::to_string(i + 1), 1);
    }
    m_output.Write("</I>\r\n");
  }

 private:
  void WriteItem(kestra_item* item) {
    const char* text = nullptr;
    size_t length = 0;
    Check(kestra_item_xml_dump(item, kForReading, &text, &length));
    m_output.Write(std::string(text, length));
  }

  void WriteVector(kestra_values* values, const std::string& name, int depth) {
    m_output.Write("<I n=\"" + Escape(name) + "\">\r\n");
    const int32_t count = Ask<int32_t>(kestra_values_count, values);
    for (int32_t i = 0; i < count; ++i) {
      const auto element = Take<CValueHandle>(kestra_values_value, values, i);
      WriteValue(element.get(), "Value", depth + 1);
    }
    m_output.Write("</I>\r\n");
  }

  const std::vector<std::string>& m_columns;
  COutput& m_output;
};

}  // namespace

void RenderXml(kestra_value* value, const std::vector<std::string>& columns, const CRowOrder& order,
               COutput& output) {
  CXmlWriter writer(columns, output);
  output.Write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<I n=\"Result\">\r\n");
  const auto values = Take<CValuesHandle>(kestra_value_as_vector, value);
  for (int32_t i = 0; i < order.Count(); ++i) {
    writer.WriteRow(Take<CValueHandle>(kestra_values_value, values.get(), order.At(i)).get());
  }
  if (!values) writer.WriteValue(value, "Value", 0);
  output.Write("</I>\r\n");
}

}  // namespace kestra::cli
