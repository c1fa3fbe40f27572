#include <algorithm>

#include "cli/render/Render.h"
#include "cli/render/Rows.h"
#include "cli/render/Width.h"

namespace kestra::cli {
namespace {

std::string LabelOf(const Column& column) {
  return Printable(column.unit.empty() ? column.name : column.name + " (" + column.unit + ")");
}

// The lines of a text stand below each other, behind its label.
void AppendText(std::string& block, const std::string& text, size_t indent) {
  for (size_t start = 0; start <= text.size();) {
    const size_t end = std::min(text.find('\n', start), text.size());
    if (start != 0) block.append(indent, ' ');
    block.append(text, start, end - start).append(1, '\n');
    start = end + 1;
  }
}

}  // namespace

void RenderVertical(kestra_value* value, const std::vector<std::string>& columns,
                    const CRowOrder& order, COutput& output) {
  if (!Is(kestra_value_is_vector, value)) return RenderTable(value, columns, order, {}, output);
  CRows rows(value, columns, order);
  WriteVertical(rows, output);
}

void WriteVertical(CRows& rows, COutput& output) {
  std::vector<std::string> labels;
  size_t width = 0;
  for (const Column& column : rows.Columns()) {
    labels.push_back(LabelOf(column));
    if (column.isSet) width = std::max(width, WidthOf(labels.back()));
  }
  for (int32_t i = 0; i < rows.Count(); ++i) {
    std::string block = "-- " + std::to_string(i + 1) + " --\n";
    const std::vector<Cell> cells = rows.Read(i);
    for (size_t column = 0; column < cells.size(); ++column) {
      if (cells[column].kind == CellKind::Null) continue;
      const std::string& label = labels[column];
      block.append(width - WidthOf(label), ' ').append(label).append(": ");
      AppendText(block, Printable(cells[column].text, true), width + 2);
    }
    output.Write(block);
  }
}

}  // namespace kestra::cli
