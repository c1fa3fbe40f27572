#include "VLib/src/text/Text.h"

#include <limits>

namespace kestra {
namespace {

bool IsSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

// What strtol and strtoul share: the sign and the digits. The value sticks at limit.
struct ParsedDigits {
  bool isNegative = false;
  bool hasOverflowed = false;
  uint64_t value = 0;
  size_t consumed = 0;
};

ParsedDigits ParseDigits(std::string_view text, uint64_t limit) {
  ParsedDigits result;
  size_t i = 0;
  while (i < text.size() && IsSpace(text[i])) ++i;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) result.isNegative = text[i++] == '-';
  const size_t firstDigit = i;
  for (; i < text.size() && IsAsciiDigit(text[i]); ++i) {
    if (result.hasOverflowed) continue;
    result.value = result.value * 10 + static_cast<uint64_t>(text[i] - '0');
    result.hasOverflowed = result.value > limit;
  }
  if (i != firstDigit) result.consumed = i;
  return result;
}

}  // namespace

std::string UpperCase(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

std::string_view TrimBlanks(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string_view TrimRight(std::string_view text, std::string_view characters) {
  const size_t last = text.find_last_not_of(characters);
  return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> pieces;
  size_t start = 0;
  for (;;) {
    const size_t end = text.find(separator, start);
    if (end == std::string_view::npos) break;
    pieces.emplace_back(text.substr(start, end - start));
    start = end + 1;
  }
  pieces.emplace_back(text.substr(start));
  return pieces;
}

std::vector<std::string> SplitQuoted(std::string_view text, char separator, char quote) {
  std::vector<std::string> pieces;
  size_t start = 0;
  bool isQuoted = false;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == quote) {
      isQuoted = !isQuoted;
    } else if (text[i] == separator && !isQuoted) {
      pieces.emplace_back(text.substr(start, i - start));
      start = i + 1;
    }
  }
  if (isQuoted) return {};
  pieces.emplace_back(text.substr(start));
  return pieces;
}

int32_t ParseInt32(std::string_view text, size_t& consumed) {
  constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
  const ParsedDigits digits = ParseDigits(text, uint64_t{1} << 31);
  consumed = digits.consumed;
  auto value = static_cast<int64_t>(digits.value);
  if (digits.isNegative) value = -value;
  if (value > kMost) return std::numeric_limits<int32_t>::max();
  if (value < -kMost - 1) return std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(value);
}

uint32_t ParseUInt32(std::string_view text, size_t& consumed) {
  const ParsedDigits digits = ParseDigits(text, std::numeric_limits<uint32_t>::max());
  consumed = digits.consumed;
  if (digits.hasOverflowed) return std::numeric_limits<uint32_t>::max();
  const auto value = static_cast<uint32_t>(digits.value);
  return digits.isNegative ? 0 - value : value;
}

bool IsAsciiLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
bool IsAsciiDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsAsciiPunct(char c) {
  return c > ' ' && c < 0x7F && !IsAsciiAlnum(c);
}

}  // namespace kestra
