#include "cli/shell/TextTable.h"

#include <algorithm>

#include "cli/render/Width.h"

namespace kestra::cli {
namespace {

constexpr size_t kGap = 2;
constexpr size_t kLeastWrapped = 24;  // narrower text is not wrapped: it would be a column of words

}  // namespace

std::string FirstSentence(const std::string& text) {
  const size_t end = text.find(". ");
  return end == std::string::npos ? text : text.substr(0, end + 1);
}

std::string CTextTable::Text(size_t width) const {
  std::vector<size_t> widths;
  for (const auto& line : m_lines) {
    widths.resize(std::max(widths.size(), line.size()));
    for (size_t i = 0; i + 1 < line.size(); ++i) {
      widths[i] = std::max(widths[i], WidthOf(Printable(line[i])));
    }
  }
  std::string text;
  for (const auto& line : m_lines) {
    size_t indent = 0;
    std::string shown;
    for (size_t i = 0; i + 1 < line.size(); ++i) {
      const std::string cell = Printable(line[i]);
      shown.append(cell).append(widths[i] - WidthOf(cell) + kGap, ' ');
      indent += widths[i] + kGap;
    }
    if (!line.empty()) {
      const bool isWrapped = width >= indent + kLeastWrapped;
      const std::string last = Printable(line.back());
      shown += isWrapped ? Wrapped(last, width - indent, indent) : last;
    }
    shown.erase(shown.find_last_not_of(' ') + 1);
    text += shown += '\n';
  }
  return text;
}

}  // namespace kestra::cli
