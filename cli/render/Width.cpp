#include "cli/render/Width.h"

#include <algorithm>

#include "cli/render/Character.h"

namespace kestra::cli {
namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";  // U+FFFD
constexpr const char* kEllipsis = "\xE2\x80\xA6";     // U+2026

bool IsLayout(char c) {
  return c == '\t' || c == '\r' || c == '\n';
}

}  // namespace

std::string Printable(std::string_view text, bool keepLines) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const TerminalCharacter character = FirstCharacter(text);
    if (IsLayout(text[0])) {
      result += keepLines ? text[0] : ' ';
    } else if (character.width < 0) {
      result += kReplacement;
    } else {
      result += text.substr(0, character.bytes);
    }
    text.remove_prefix(character.bytes);
  }
  return result;
}

size_t WidthOf(std::string_view text) {
  size_t width = 0;
  while (!text.empty()) {
    const TerminalCharacter character = FirstCharacter(text);
    width += static_cast<size_t>(std::max(character.width, 0));
    text.remove_prefix(character.bytes);
  }
  return width;
}

std::string CutToWidth(std::string_view text, size_t width) {
  size_t used = 0;
  size_t keep = 0;  // bytes that leave a column for the ellipsis
  for (size_t i = 0; i < text.size();) {
    const TerminalCharacter character = FirstCharacter(text.substr(i));
    used += static_cast<size_t>(std::max(character.width, 0));
    if (used > width) return std::string(text.substr(0, keep)) + kEllipsis;
    i += character.bytes;
    if (used < width) keep = i;
  }
  return std::string(text);
}

}  // namespace kestra::cli
