#include "cli/render/Character.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>

namespace kestra::cli {
namespace {

struct WidthRow {
  uint32_t first;
  uint32_t last;
  int width;
};
constexpr WidthRow kRows[] = {
#include "cli/render/CharacterWidthsTable.inc"
};

int WidthOfCode(uint32_t code) {
  const auto* row = std::lower_bound(std::begin(kRows), std::end(kRows), code,
                                     [](const WidthRow& r, uint32_t c) { return r.last < c; });
  return row != std::end(kRows) && row->first <= code ? row->width : 1;
}

// Of a sequence's first byte; 0 for one that begins none.
size_t SequenceLength(unsigned char first) {
  if (first >= 0xC2 && first <= 0xDF) return 2;
  if (first >= 0xE0 && first <= 0xEF) return 3;
  return first >= 0xF0 && first <= 0xF4 ? 4 : 0;
}

constexpr bool IsSurrogate(uint32_t code) {
  return code >= 0xD800 && code <= 0xDFFF;
}

// Decodes by RFC 3629; nothing for what is too long for its value and for surrogates.
std::optional<uint32_t> Decode(std::string_view sequence) {
  uint32_t code = static_cast<unsigned char>(sequence[0]) & (0x7Fu >> sequence.size());
  for (const char c : sequence.substr(1)) {
    if ((c & 0xC0) != 0x80) return std::nullopt;
    code = code << 6 | (static_cast<unsigned char>(c) & 0x3Fu);
  }
  constexpr uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (code < kSmallest[sequence.size()] || code > 0x10FFFF || IsSurrogate(code)) return {};
  return code;
}

}  // namespace

TerminalCharacter FirstCharacter(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < 0x80) return {1, first >= 0x20 && first != 0x7F ? 1 : -1};
  const size_t length = SequenceLength(first);
  if (length == 0 || length > text.size()) return {1, -1};
  const std::optional<uint32_t> code = Decode(text.substr(0, length));
  if (!code) return {1, -1};
  return {length, WidthOfCode(*code)};
}

}  // namespace kestra::cli
