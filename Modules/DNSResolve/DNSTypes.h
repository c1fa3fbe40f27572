// The option text of a DNS record type: 256 words, the place of a word being the type's number.
// The words are those of IANA's DNS parameters registry, some in an older spelling (TEXT for 16); a
// number that has none is "UNK" with its two hexadecimal digits.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace kestra::dns_types {

inline constexpr std::string_view kFrom0[] = {
    "ZERO", "A",      "NS",    "MD",    "MF",   "CNAME", "SOA",   "MB",    "MG",  "MR",   "NULL",
    "WKS",  "PTR",    "HINFO", "MINFO", "MX",   "TEXT",  "RP",    "AFSDB", "X25", "ISDN", "RT",
    "NSAP", "NSAPPT", "SIG",   "KEY",   "PX",   "GPOS",  "AAAA",  "LOC",   "NXT", "EID",  "NIMLOC",
    "SRV",  "ATMA",   "NAPTR", "KX",    "CERT", "A6",    "DNAME", "SINK",  "OPT"};
inline constexpr std::string_view kFrom100[] = {"UINFO", "UID", "GID", "UNSPEC"};
inline constexpr std::string_view kFrom248[] = {"ADDRS", "TKEY",  "TSIG",  "IXFR",
                                                "AXFR",  "MAILB", "MAILA", "ANY"};
inline constexpr size_t kCount = 256;
static_assert(std::size(kFrom0) == 42 && 248 + std::size(kFrom248) == kCount);

// Empty for a number that has none.
constexpr std::string_view Word(size_t type) {
  if (type < std::size(kFrom0)) return kFrom0[type];
  if (type >= 100 && type < 100 + std::size(kFrom100)) return kFrom100[type - 100];
  if (type >= 248) return kFrom248[type - 248];
  return {};
}

constexpr size_t Length() {
  size_t length = 0;
  for (size_t type = 0; type < kCount; ++type) {
    length += 1 + (Word(type).empty() ? 5 : Word(type).size());
  }
  return length;
}

// The words with "|" between them, and a NUL behind the last.
constexpr std::array<char, Length()> Join() {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::array<char, Length()> text{};
  size_t at = 0;
  for (size_t type = 0; type < kCount; ++type) {
    if (type > 0) text[at++] = '|';
    if (Word(type).empty()) {
      for (char c : {'U', 'N', 'K', digits[type / 16], digits[type % 16]}) text[at++] = c;
    } else {
      for (char c : Word(type)) text[at++] = c;
    }
  }
  return text;
}

inline constexpr auto kOptions = Join();

}  // namespace kestra::dns_types
