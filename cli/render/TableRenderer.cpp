#include <algorithm>
#include <limits>

#include "cli/render/Render.h"
#include "cli/render/Rows.h"
#include "cli/render/Width.h"

namespace kestra::cli {
namespace {

constexpr std::string_view kGap = "  ";
constexpr size_t kLeastWidth = 8;       // no column is cut below that
constexpr size_t kLeastDateWidth = 11;  // "2024-02-29" and the mark of a cut
constexpr size_t kWidest = std::numeric_limits<size_t>::max();

struct TableColumn {
  size_t source = 0;  // its number among the columns of the rows
  std::string heading;
  size_t width = 0;
  bool isNumeric = true;  // every cell that is set is a number
  bool hasVersion = false;
  bool hasDate = false;
  size_t cellWidth = 0;  // of the widest cell
};

std::string HeadingOf(const Column& column) {
  return Printable(column.unit.empty() ? column.name : column.name + " (" + column.unit + ")");
}

// What a cell shows; empty for one that is not set.
std::string ShownText(const Cell& cell) {
  return Printable(cell.text);
}

class CTable {
 public:
  CTable(CRows& rows, size_t width) : m_rows(rows) {
    for (size_t i = 0; i < rows.Columns().size(); ++i) {
      const Column& column = rows.Columns()[i];
      if (column.isSet || rows.Count() == 0) AddColumn(i, HeadingOf(column));
    }
    Measure();
    if (width != 0) FitInto(width);
  }

  bool FitsInto(size_t width) const { return LineWidth(kWidest) <= width; }

  void Write(COutput& output) {
    if (m_columns.empty()) return;
    std::vector<std::string> headings, rules;
    for (const TableColumn& column : m_columns) {
      headings.push_back(column.heading);
      rules.push_back(std::string(column.width, '-'));
    }
    WriteLine(headings, output);
    WriteLine(rules, output);
    for (int32_t i = 0; i < m_rows.Count(); ++i) WriteLine(ReadLine(i), output);
  }

 private:
  void AddColumn(size_t source, std::string heading) {
    const size_t width = WidthOf(heading);
    m_columns.push_back({source, std::move(heading), width});
  }

  void Measure() {
    for (int32_t i = 0; i < m_rows.Count(); ++i) {
      const std::vector<Cell> cells = m_rows.Read(i);
      for (TableColumn& column : m_columns) {
        const Cell& cell = cells[column.source];
        if (cell.kind == CellKind::Null) continue;
        column.cellWidth = std::max(column.cellWidth, WidthOf(ShownText(cell)));
        if (cell.kind != CellKind::Number) column.isNumeric = false;
        if (cell.kind == CellKind::Version) column.hasVersion = true;
        if (cell.kind == CellKind::Datime) column.hasDate = true;
      }
    }
    for (TableColumn& column : m_columns) column.width = std::max(column.width, column.cellWidth);
  }

  // Cuts the widest columns to one width, the greatest with which the line fits.
  void FitInto(size_t width) {
    size_t most = 0;
    for (const TableColumn& column : m_columns) most = std::max(most, column.width);
    most = std::min(most, width);
    while (most > kLeastWidth && LineWidth(most) > width) --most;
    for (TableColumn& column : m_columns) column.width = CutWidth(column, most);
  }

  static size_t CutWidth(const TableColumn& column, size_t most) {
    if (column.hasDate) most = std::max(most, kLeastDateWidth);
    if (!column.isNumeric && !column.hasVersion) return std::min(column.width, most);
    // A number that is cut would be another number, and so would a version; the heading may be cut.
    return std::min(column.width, std::max({column.cellWidth, most, kLeastWidth}));
  }

  size_t LineWidth(size_t most) const {
    size_t width = kGap.size() * (m_columns.size() - 1);
    for (const TableColumn& column : m_columns) width += CutWidth(column, most);
    return width;
  }

  std::vector<std::string> ReadLine(int32_t number) {
    std::vector<std::string> line;
    const std::vector<Cell> cells = m_rows.Read(number);
    for (const TableColumn& column : m_columns) line.push_back(ShownText(cells[column.source]));
    return line;
  }

  void WriteLine(const std::vector<std::string>& texts, COutput& output) const {
    std::string line;
    for (size_t i = 0; i < texts.size(); ++i) {
      const std::string text = CutToWidth(texts[i], m_columns[i].width);
      const std::string padding(m_columns[i].width - std::min(WidthOf(text), m_columns[i].width),
                                ' ');
      if (i != 0) line += kGap;
      line += m_columns[i].isNumeric ? padding + text : text + padding;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    output.Write(line += '\n');
  }

  CRows& m_rows;
  std::vector<TableColumn> m_columns;
};

}  // namespace

void RenderTable(kestra_value* value, const std::vector<std::string>& columns,
                 const CRowOrder& order, const RenderOptions& options, COutput& output) {
  if (!Is(kestra_value_is_vector, value)) {
    const Cell cell = ReadCell(value);
    output.Write((cell.kind == CellKind::Null ? "<NULL>" : Printable(cell.text, true)) + "\n");
    return;
  }
  CRows rows(value, columns, order);
  CTable table(rows, options.width);
  const bool turns = options.turnsVertical && options.width != 0 && rows.Count() > 0;
  if (turns && !table.FitsInto(options.width)) return WriteVertical(rows, output);
  table.Write(output);
}

}  // namespace kestra::cli
