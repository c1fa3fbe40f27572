// How a line that is being typed stands on the rows of a terminal.
#pragma once

#include <string>
#include <vector>

namespace kestra::cli {

struct LineLayout {
  std::vector<std::string> rows;  // printable, at least one
  size_t cursorRow = 0;
  size_t cursorColumn = 0;
};

// cursor is a byte of the text, or its length. Rows are at most that many columns wide, but for a
// wide character in a single column. A line end in the text begins a row.
LineLayout LayOut(const std::string& prompt, const std::string& text, size_t cursor,
                  size_t columns);

}  // namespace kestra::cli
