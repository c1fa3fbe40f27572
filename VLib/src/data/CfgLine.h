// One line of the text of data files, and what it is. The reader and whoever changes such a text go
// by the same.
#pragma once

#include <string_view>

namespace kestra {

// What a line is trimmed of at both ends.
inline constexpr std::string_view kCfgBlanks = " \t\r\v";

enum class CfgLineKind {
  Blank,
  Comment,
  Open,   // "[name]"
  Close,  // "[]"
  Value,  // "key = text"
  Other,  // means nothing
};

struct CfgLine {
  CfgLineKind kind = CfgLineKind::Blank;
  std::string_view name{};  // of a section or key; within the line, unless it is empty
  std::string_view text{};  // of a key, likewise
};

CfgLine ParseCfgLine(std::string_view line);
// Takes the first line off a text, and gives it without the LF.
std::string_view CutCfgLine(std::string_view& rest);

}  // namespace kestra
