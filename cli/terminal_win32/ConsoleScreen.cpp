#include "cli/terminal_win32/ConsoleScreen.h"

#include <algorithm>

#include "cli/render/Width.h"
#include "cli/terminal_win32/Text.h"

namespace kestra::cli {
namespace {

// Coordinates of the console are 16 bits wide.
SHORT Short(size_t number) {
  return static_cast<SHORT>(std::min<size_t>(number, 0x7FFF));
}

void WriteText(HANDLE output, const std::string& text) {
  const std::wstring wide = Wide(text);
  DWORD count = 0;
  WriteConsoleW(output, wide.data(), static_cast<DWORD>(wide.size()), &count, nullptr);
}

}  // namespace

// Not standard output: that may go elsewhere.
CConsoleScreen::CConsoleScreen()
    : m_output(CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                           FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                           nullptr)) {}

CConsoleScreen::~CConsoleScreen() {
  if (m_output != INVALID_HANDLE_VALUE) CloseHandle(m_output);
}

size_t CConsoleScreen::Columns() const {
  constexpr size_t kUsual = 80;
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(m_output, &info) || info.dwSize.X < 2) return kUsual;
  return static_cast<size_t>(info.dwSize.X - 1);
}

void CConsoleScreen::Begin() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(m_output, &info)) return;
  if (info.dwCursorPosition.X != 0) {
    WriteText(m_output, "\n");
    GetConsoleScreenBufferInfo(m_output, &info);
  }
  m_top = info.dwCursorPosition.Y;
  m_cursorRow = 0;
  m_shown.clear();
}

// Where the line would go beyond the last row of the screen buffer, everything moves up.
void CConsoleScreen::MakeRoom(SHORT rows, SHORT height) {
  const int missing = m_top + rows - height;
  if (missing <= 0) return;
  SetConsoleCursorPosition(m_output, {0, static_cast<SHORT>(height - 1)});
  WriteText(m_output, std::string(static_cast<size_t>(missing), '\n'));
  m_top = static_cast<SHORT>(m_top - missing);
}

void CConsoleScreen::Clear(SHORT column, SHORT row, SHORT columns) {
  DWORD count = 0;
  if (column < columns) {
    FillConsoleOutputCharacterW(m_output, L' ', static_cast<DWORD>(columns - column), {column, row},
                                &count);
  }
}

void CConsoleScreen::WriteRow(SHORT row, const std::string& text, SHORT columns) {
  SetConsoleCursorPosition(m_output, {0, row});
  WriteText(m_output, text);
  Clear(Short(WidthOf(text)), row, columns);
}

void CConsoleScreen::Show(const LineLayout& layout) {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(m_output, &info) || info.dwSize.Y < 1) return;
  const SHORT columns = info.dwSize.X;
  const size_t height = static_cast<size_t>(info.dwSize.Y);
  const size_t first = layout.cursorRow < height ? 0 : layout.cursorRow - height + 1;
  const size_t count = std::min(layout.rows.size() - first, height);
  MakeRoom(Short(std::max(count, m_shown.size())), info.dwSize.Y);
  for (size_t i = 0; i < count; ++i) {
    const std::string& text = layout.rows[first + i];
    const bool isThere = i < m_shown.size() && m_shown[i] == text;
    if (!isThere) WriteRow(static_cast<SHORT>(m_top + Short(i)), text, columns);
  }
  for (size_t i = count; i < m_shown.size(); ++i) {
    Clear(0, static_cast<SHORT>(m_top + Short(i)), columns);
  }
  const auto begin = layout.rows.begin() + static_cast<std::ptrdiff_t>(first);
  m_shown.assign(begin, begin + static_cast<std::ptrdiff_t>(count));
  m_cursorRow = Short(layout.cursorRow - first);
  SetConsoleCursorPosition(m_output, {std::min(Short(layout.cursorColumn), SHORT(columns - 1)),
                                      static_cast<SHORT>(m_top + m_cursorRow)});
}

// The console may have moved the rows about; the cursor moves with the text that it stands in.
void CConsoleScreen::Resize() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(m_output, &info)) return;
  m_top = std::max<SHORT>(0, static_cast<SHORT>(info.dwCursorPosition.Y - m_cursorRow));
  for (std::string& row : m_shown) row += '\n';  // like none that is to be shown
}

void CConsoleScreen::End() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(m_output, &info) || m_shown.empty()) return;
  const SHORT last = static_cast<SHORT>(m_top + Short(m_shown.size()) - 1);
  SetConsoleCursorPosition(m_output, {static_cast<SHORT>(info.dwSize.X - 1), last});
  WriteText(m_output, "\r\n");
  m_shown.clear();
}

void CConsoleScreen::Write(const std::string& text) {
  End();
  WriteText(m_output, text);
}

}  // namespace kestra::cli
