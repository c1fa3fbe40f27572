#include "cli/shell/input/LineLayout.h"

#include "cli/render/Character.h"
#include "cli/render/Width.h"

namespace kestra::cli {
namespace {

class CLayout {
 public:
  explicit CLayout(size_t columns) : m_columns(columns) { m_layout.rows.emplace_back(); }

  void Add(const std::string& text, size_t cursor) {
    for (size_t i = 0; i < text.size();) {
      const size_t bytes = FirstCharacter(std::string_view(text).substr(i)).bytes;
      AddCharacter(text.substr(i, bytes), i == cursor);
      i += bytes;
    }
  }
  void PutCursor() {
    if (m_used == m_columns) BeginRow();
    m_layout.cursorRow = m_layout.rows.size() - 1;
    m_layout.cursorColumn = m_used;
  }
  LineLayout Take() { return std::move(m_layout); }

 private:
  void BeginRow() {
    m_layout.rows.emplace_back();
    m_used = 0;
  }
  void AddCharacter(const std::string& character, bool hasCursor) {
    const std::string shown = character == "\n" ? std::string() : Printable(character);
    const size_t width = WidthOf(shown);
    if (m_used > 0 && m_used + width > m_columns) BeginRow();
    if (hasCursor) PutCursor();
    if (character == "\n") BeginRow();
    m_layout.rows.back() += shown;
    m_used += width;
  }

  const size_t m_columns;
  LineLayout m_layout;
  size_t m_used = 0;  // columns of the last row
};

}  // namespace

LineLayout LayOut(const std::string& prompt, const std::string& text, size_t cursor,
                  size_t columns) {
  CLayout layout(columns == 0 ? 1 : columns);
  layout.Add(prompt, prompt.size());
  layout.Add(text, cursor);
  if (cursor >= text.size()) layout.PutCursor();
  return layout.Take();
}

}  // namespace kestra::cli
