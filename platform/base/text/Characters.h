// Characters of UTF-8 text and their case. Bytes that are not UTF-8 count as characters of one byte
// each, and survive. Here and not higher, since a volume's files and registry are looked up without
// regard to case too.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kestra {

// The one case-blind comparison of the system (the stand-in for lstrcmpiA, the same on every
// system): both texts are folded by Unicode simple case folding and compared by code point. Bytes
// that are not UTF-8 order behind all characters. Negative, 0 or positive.
int CompareNoCase(std::string_view a, std::string_view b);
inline bool EqualsNoCase(std::string_view a, std::string_view b) {
  return CompareNoCase(a, b) == 0;
}

// The character that begins at text[position], which must be inside the text. position moves
// behind it. A byte that begins no character gives 0x110000 plus the byte.
uint32_t NextCharacter(std::string_view text, size_t& position);
uint32_t FoldCharacter(uint32_t character);
size_t CountCharacters(std::string_view text);

}  // namespace kestra
