#include "platform/base/text/Characters.h"

namespace kestra {
namespace {

constexpr uint32_t kNoCharacter = 0x110000;

// Length of the character that lead begins, and the bits and least value it may have. RFC 3629.
struct LeadByte {
  size_t length;
  uint32_t bits;
  uint32_t least;
};

LeadByte ClassifyLead(unsigned char lead) {
  if (lead >= 0xC2 && lead <= 0xDF) return {2, lead & 0x1Fu, 0x80};
  if (lead >= 0xE0 && lead <= 0xEF) return {3, lead & 0x0Fu, 0x800};
  if (lead >= 0xF0 && lead <= 0xF4) return {4, lead & 0x07u, 0x10000};
  return {0, 0, 0};
}

}  // namespace

uint32_t NextCharacter(std::string_view text, size_t& position) {
  const auto lead = static_cast<unsigned char>(text[position]);
  if (lead < 0x80) {
    ++position;
    return lead;
  }
  const LeadByte kind = ClassifyLead(lead);
  uint32_t character = kind.bits;
  bool isValid = kind.length != 0 && text.size() - position >= kind.length;
  for (size_t k = 1; isValid && k < kind.length; ++k) {
    const auto next = static_cast<unsigned char>(text[position + k]);
    isValid = (next & 0xC0) == 0x80;
    character = (character << 6) | (next & 0x3Fu);
  }
  const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
  if (!isValid || character < kind.least || isSurrogate || character >= kNoCharacter) {
    ++position;
    return kNoCharacter + lead;
  }
  position += kind.length;
  return character;
}

size_t CountCharacters(std::string_view text) {
  size_t count = 0;
  for (size_t position = 0; position < text.size(); ++count) NextCharacter(text, position);
  return count;
}

}  // namespace kestra
