// Text helpers that everything shares. Text is UTF-8; bytes that are not UTF-8 count as characters
// of one byte each, and survive.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/text/Characters.h"

namespace kestra {

// The one wildcard matcher of the system: "*" stands for any run of characters, "?" for any one.
// With escape, a backslash in the pattern makes the character behind it an ordinary one. Time is
// at most the product of the two lengths.
bool Matches(std::string_view text, std::string_view pattern, bool ignoreCase, bool escape);
// The same for texts of any length: stop is asked now and then, and its true ends the match with
// nothing.
std::optional<bool> MatchesUnlessStopped(std::string_view text, std::string_view pattern,
                                         bool ignoreCase, bool escape,
                                         const std::function<bool()>& stop);
inline bool HasWildcard(std::string_view text) {
  return text.find_first_of("*?") != std::string_view::npos;
}

// ASCII letters in upper case; everything else as it is.
std::string UpperCase(std::string_view text);

std::string_view TrimBlanks(std::string_view text);
std::string_view TrimRight(std::string_view text, std::string_view characters);

// Splits at every separator; an empty text gives one empty piece.
std::vector<std::string> Split(std::string_view text, char separator);
// The same with a quote character: a separator between quotes does not split, and the quotes stay
// in the pieces. A quote that is not closed leaves no pieces.
std::vector<std::string> SplitQuoted(std::string_view text, char separator, char quote);

// strtol in base 10 with a 32-bit long, on every platform: leading white space and one sign are
// read, and the value saturates at -2147483648 and 2147483647. consumed tells how many bytes were
// read, 0 for no number.
int32_t ParseInt32(std::string_view text, size_t& consumed);
// strtoul in base 10 with a 32-bit long, likewise; it saturates at 4294967295, and a minus sign
// negates the number as strtoul does.
uint32_t ParseUInt32(std::string_view text, size_t& consumed);

bool IsAsciiLetter(char c);
bool IsAsciiDigit(char c);
inline bool IsAsciiAlnum(char c) {
  return IsAsciiLetter(c) || IsAsciiDigit(c);
}
bool IsAsciiPunct(char c);

}  // namespace kestra
