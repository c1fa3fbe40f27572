#include "platform/base/text/NameCode.h"

#include <cstdint>

namespace kestra {
namespace {

void AppendHex(std::string& text, uint8_t byte) {
  constexpr char kDigits[] = "0123456789abcdef";
  text += kDigits[byte >> 4];
  text += kDigits[byte & 0xF];
}

bool StandsForItself(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '_' || c == '.';
}

}  // namespace

std::string EscapeName(std::string_view name) {
  std::string result;
  for (const char c : name) {
    if (StandsForItself(c)) {
      result += c;
    } else {
      result += '%';
      AppendHex(result, static_cast<uint8_t>(c));
    }
  }
  return result;
}

// FNV-1a of 128 bits, as the Internet draft "The FNV Non-Cryptographic Hash Algorithm" has it.
std::string HashName(std::string_view name) {
  __extension__ using UInt128 = unsigned __int128;
  constexpr UInt128 kPrime = (static_cast<UInt128>(1) << 88) + 0x13B;
  UInt128 hash = (static_cast<UInt128>(0x6C62272E07BB0142u) << 64) + 0x62B821756295C58Du;
  for (const char byte : name) {
    hash ^= static_cast<unsigned char>(byte);
    hash *= kPrime;
  }
  std::string text;
  for (int shift = 120; shift >= 0; shift -= 8)
    AppendHex(text, static_cast<uint8_t>(hash >> shift));
  return text;
}

}  // namespace kestra
