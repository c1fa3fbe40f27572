// The tokeniser: cuts a query text into tokens.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "query/parse/Keywords.h"

namespace kestra {

// Positions of tokens are 16-bit numbers.
inline constexpr size_t kMaxTokens = 65535;

struct Token {
  std::string_view text;  // as typed; a string has its outer and its doubled quotes
  KeywordId keyword;      // kNoKeyword for a token that is none
};

using TokenList = std::vector<Token>;

// Words are runs of ASCII letters, digits and "_". A string runs from quote to quote, with doubled
// quotes inside. "/*" to "*/" is a comment, which is dropped. Other punctuation is a token by
// itself, but two characters out of "<", "=", ">" make one token. Everything else separates.
// False, with an empty list, for a string or comment that does not end and for more than
// kMaxTokens tokens. The tokens refer to text, which must outlive them. pFaultOffset, which may be
// null, then gets the first byte of what does not end, or of the token that is too many.
bool Tokenise(std::string_view text, TokenList& tokens, size_t* pFaultOffset = nullptr);

}  // namespace kestra
