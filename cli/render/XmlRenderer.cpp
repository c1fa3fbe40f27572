// XML in the elements of the library's item dump: I is an item, P a value. An item is its dump with
// all that is below it, a row of a SELECT list an item named "Row", and the whole an item named
// "Result", so that there is one document. What is not set is left out.
#include <algorithm>
#include <charconv>
#include <cstdint>

#include "cli/render/Character.h"
#include "cli/render/Render.h"
#include "cli/render/Rows.h"
#include "cli/render/Width.h"

namespace kestra::cli {
namespace {

constexpr int32_t kForReading = 0;  // the dump with units and the texts of options

// Whether XML 1.0 has a place for the character that stands there, as it is or by its number.
bool IsAllowed(std::string_view character) {
  const auto byte = static_cast<unsigned char>(character[0]);
  if (character.size() == 1)
    return byte < 0x80 && (byte >= 0x20 || byte == '\t' || byte == '\n' || byte == '\r');
  return character != "\xEF\xBF\xBE" && character != "\xEF\xBF\xBF";  // U+FFFE, U+FFFF
}

// What stands for a character that must not stand there itself; empty for all others. A reader
// takes an end of line for LF, and for a blank in an attribute, unless it is written as a number.
std::string_view ReferenceFor(char c, bool isAttribute) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\r':
      return "&#13;";
    case '\n':
      return isAttribute ? "&#10;" : "";
    case '\t':
      return isAttribute ? "&#9;" : "";
    default:
      return {};
  }
}

// What XML does not allow, not even by its number, becomes U+FFFD, so that the document can be
// read.
std::string Escape(std::string_view text, bool isAttribute) {
  std::string escaped;
  while (!text.empty()) {
    const std::string_view character = text.substr(0, FirstCharacter(text).bytes);
    const std::string_view reference = ReferenceFor(character[0], isAttribute);
    if (!reference.empty()) {
      escaped += reference;
    } else {
      escaped += IsAllowed(character) ? character : kReplacement;
    }
    text.remove_prefix(character.size());
  }
  return escaped;
}

// Whether a reference "&#27;" that a dump writes is to a character that XML does not allow.
bool IsForbiddenReference(std::string_view digits) {
  uint32_t code = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code);
  if (error != std::errc() || end != digits.data() + digits.size()) return true;
  const bool isLayout = code == '\t' || code == '\n' || code == '\r';
  return (code < 0x20 && !isLayout) || code == 0xFFFE || code == 0xFFFF || code > 0x10FFFF;
}

// Dumps refer by number to every character of the machine that XML does not know, which other
// readers of XML refuse; "&" in a value is "&amp;" there, so that "&#" is nothing else.
std::string Readable(std::string_view dump) {
  constexpr std::string_view kBegin = "&#";
  std::string readable;
  for (size_t found; (found = dump.find(kBegin)) != std::string_view::npos;) {
    const size_t end = std::min(dump.find(';', found), dump.size() - 1);
    const std::string_view digits = dump.substr(found + kBegin.size(), end - found - kBegin.size());
    readable += dump.substr(0, found);
    readable += IsForbiddenReference(digits) ? kReplacement : dump.substr(found, end + 1 - found);
    dump.remove_prefix(end + 1);
  }
  return readable += dump;
}

class CXmlWriter {
 public:
  CXmlWriter(const std::vector<std::string>& columns, COutput& output) : m_output(output) {
    for (const std::string& column : columns) m_columns.push_back(m_names.Fresh(column));
  }

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
    m_output.Write("<P n=\"" + Escape(name, true) + "\">" + Escape(cell.text, false) + "</P>\r\n");
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
      WriteValue(element.get(), NameOf(static_cast<size_t>(i)), 1);
    }
    m_output.Write("</I>\r\n");
  }

 private:
  void WriteItem(kestra_item* item) {
    const char* text = nullptr;
    size_t length = 0;
    Check(kestra_item_xml_dump(item, kForReading, &text, &length));
    m_output.Write(Readable({text, length}));
  }

  void WriteVector(kestra_values* values, const std::string& name, int depth) {
    m_output.Write("<I n=\"" + Escape(name, true) + "\">\r\n");
    const int32_t count = Ask<int32_t>(kestra_values_count, values);
    for (int32_t i = 0; i < count; ++i) {
      const auto element = Take<CValueHandle>(kestra_values_value, values, i);
      WriteValue(element.get(), "Value", depth + 1);
    }
    m_output.Write("</I>\r\n");
  }

  const std::string& NameOf(size_t column) {
    while (m_columns.size() <= column) {
      m_columns.push_back(m_names.FreshForNumber(m_columns.size()));
    }
    return m_columns[column];
  }

  CColumnNames m_names;
  std::vector<std::string> m_columns;
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
