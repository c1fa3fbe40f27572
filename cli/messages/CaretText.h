// A place of a query, for a terminal.
#pragma once

#include <string>
#include <string_view>

namespace kestra::cli {

// The line of the text that a piece begins on, and below it a caret under the piece's first
// character and "~" under the rest that is on this line; each with an end of line. The line is cut
// around the caret to width columns, at least 20. Empty for a line with nothing on it.
std::string CaretText(std::string_view text, size_t offset, size_t length, size_t width);

}  // namespace kestra::cli
