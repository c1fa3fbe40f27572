// Characters as a terminal shows them. The same on every system: what one shows in two columns the
// others do too, and the widths that a system's own functions tell are older than its terminals.
#pragma once

#include <cstddef>
#include <string_view>

namespace kestra::cli {

// The character that a text, which must not be empty, begins with.
struct TerminalCharacter {
  size_t bytes;  // at least 1
  int width;     // in columns: 0, 1 or 2; -1 for what is not to be sent to a terminal
};
// Bytes that are not UTF-8 are characters of one byte and of width -1.
TerminalCharacter FirstCharacter(std::string_view text);

}  // namespace kestra::cli
