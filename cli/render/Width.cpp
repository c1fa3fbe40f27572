#include "cli/render/Width.h"

#include <algorithm>

#include "cli/render/Character.h"

namespace kestra::cli {
namespace {

constexpr const char* kEllipsis = "\xE2\x80\xA6";  // U+2026

bool IsLayout(char c) {
  return c == '\t' || c == '\r' || c == '\n';
}

}  // namespace

std::string Printable(std::string_view text, bool keepLines) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const TerminalCharacter character = FirstCharacter(text);
    if (keepLines && text.starts_with("\r\n")) {
      // One end of line.
    } else if (IsLayout(text[0])) {
      // A CR by itself would have what follows written over what stands before it.
      result += keepLines && text[0] != '\r' ? text[0] : ' ';
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

std::string Wrapped(const std::string& text, size_t width, size_t indent) {
  std::string wrapped;
  size_t used = 0;
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find(' ', start), text.size());
    const std::string word = text.substr(start, end - start);
    const size_t size = WidthOf(word);
    if (used > 0 && used + 1 + size > width) {
      wrapped.append(1, '\n').append(indent, ' ');
      used = 0;
    } else if (used > 0) {
      wrapped += ' ';
      ++used;
    }
    wrapped += word;
    used += size;
    start = end + 1;
  }
  return wrapped;
}

}  // namespace kestra::cli
