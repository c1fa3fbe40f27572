#include "cli/render/Render.h"
#include "cli/render/Rows.h"

namespace kestra::cli {
namespace {

std::string Field(std::string_view text) {
  if (!text.empty() && text.find_first_of(",\"\r\n") == std::string_view::npos) {
    return std::string(text);
  }
  std::string field = "\"";
  for (const char c : text) {
    if (c == '"') field += '"';
    field += c;
  }
  return field += '"';
}

void WriteRecord(const std::vector<std::string>& fields, COutput& output) {
  std::string record;
  for (size_t i = 0; i < fields.size(); ++i) {
    if (i != 0) record += ',';
    record += fields[i];
  }
  // An empty line would be no record to most readers.
  if (record.empty()) record = "\"\"";
  output.Write(record += "\r\n");
}

// A date says its time zone, since a file may be read elsewhere than where it was written.
std::string FieldOf(const Cell& cell) {
  if (cell.kind == CellKind::Null) return {};
  return Field(cell.kind == CellKind::Datime ? UtcText(cell.number) : cell.text);
}

}  // namespace

void RenderCsv(kestra_value* value, const std::vector<std::string>& columns, const CRowOrder& order,
               COutput& output) {
  if (!Is(kestra_value_is_vector, value)) {
    WriteRecord({"Value"}, output);
    WriteRecord({FieldOf(ReadCell(value))}, output);
    return;
  }
  CRows rows(value, columns, order);
  std::vector<std::string> fields;
  for (const Column& column : rows.Columns()) fields.push_back(Field(column.name));
  if (!fields.empty()) WriteRecord(fields, output);
  for (int32_t i = 0; i < rows.Count(); ++i) {
    fields.clear();
    for (const Cell& cell : rows.Read(i)) fields.push_back(FieldOf(cell));
    WriteRecord(fields, output);
  }
}

}  // namespace kestra::cli
