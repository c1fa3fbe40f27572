// CConsoleScreen: the rows of the console's screen buffer that a line being typed takes up.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "cli/shell/input/LineLayout.h"

namespace kestra::cli {

// One thread. What fails leaves the screen as it is.
class CConsoleScreen {
 public:
  CConsoleScreen();
  ~CConsoleScreen();
  CConsoleScreen(const CConsoleScreen&) = delete;
  CConsoleScreen& operator=(const CConsoleScreen&) = delete;

  // How wide a row of a layout may be. The last column stays free: some consoles go to the next row
  // when it is written.
  size_t Columns() const;
  // The line begins where the cursor is, or below that if it is not at the start of a row.
  void Begin();
  // In the place of what was shown before. Of a line that has more rows than the screen buffer
  // those around the cursor are shown.
  void Show(const LineLayout& layout);
  // The screen has another size.
  void Resize();
  // The cursor goes below the line. It is to be begun again after that.
  void End();
  // Below the line; it is to be begun again after that.
  void Write(const std::string& text);

 private:
  void MakeRoom(SHORT rows, SHORT height);
  void WriteRow(SHORT row, const std::string& text, SHORT columns);
  void Clear(SHORT column, SHORT row, SHORT columns);

  const HANDLE m_output;
  SHORT m_top = 0;                   // row of the screen buffer where the line begins
  std::vector<std::string> m_shown;  // its rows
  SHORT m_cursorRow = 0;             // of m_shown
};

}  // namespace kestra::cli
