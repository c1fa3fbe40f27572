// Text as wide as a terminal shows it.
#pragma once

#include <string>
#include <string_view>

namespace kestra::cli {

// Stands for what cannot be shown.
inline constexpr const char* kReplacement = "\xEF\xBF\xBD";  // U+FFFD

// A text that may be sent to a terminal: control characters, marks that turn the direction of text,
// and bytes that are not UTF-8 become the replacement character; a tab, CR or LF becomes a blank.
// With keepLines tabs and LF stay, and CR LF becomes LF.
std::string Printable(std::string_view text, bool keepLines = false);

// In columns, of a printable text.
size_t WidthOf(std::string_view text);

// A printable text cut to at most width columns, which is at least 1; one that is cut ends in an
// ellipsis.
std::string CutToWidth(std::string_view text, size_t width);

// The words of a printable text in lines of that width, each but the first behind an indent. A word
// that is wider has a line of its own.
std::string Wrapped(const std::string& text, size_t width, size_t indent);

}  // namespace kestra::cli
