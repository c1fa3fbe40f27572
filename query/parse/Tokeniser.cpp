#include "query/parse/Tokeniser.h"

#include <algorithm>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

bool IsWordByte(char c) {
  return IsAsciiAlnum(c) || c == '_';
}

bool IsCompareMark(char c) {
  return c == '<' || c == '=' || c == '>';
}

// The position behind the string that begins at start; npos if it does not end.
size_t EndOfString(std::string_view text, size_t start) {
  size_t quote = text.find('\'', start + 1);
  while (quote != std::string_view::npos && quote + 1 < text.size() && text[quote + 1] == '\'') {
    quote = text.find('\'', quote + 2);
  }
  return quote == std::string_view::npos ? quote : quote + 1;
}

// The end of the token or of the stretch to drop that begins at start; npos for one that does not
// end. isToken tells which it is.
size_t NextStretch(std::string_view text, size_t start, bool& isToken) {
  const char c = text[start];
  const char next = start + 1 < text.size() ? text[start + 1] : '\0';
  isToken = true;
  if (IsWordByte(c)) {
    size_t end = start + 1;
    while (end < text.size() && IsWordByte(text[end])) ++end;
    return end;
  }
  if (c == '\'') return EndOfString(text, start);
  if (c == '/' && next == '*') {
    isToken = false;
    const size_t close = text.find("*/", start + 2);
    return close == std::string_view::npos ? close : close + 2;
  }
  if (IsAsciiPunct(c)) return start + (IsCompareMark(c) && IsCompareMark(next) ? 2 : 1);
  isToken = false;
  return start + 1;
}

}  // namespace

bool Tokenise(std::string_view text, TokenList& tokens, size_t* pFaultOffset) {
  tokens.clear();
  // Most texts have a token in some five bytes.
  tokens.reserve(std::min(text.size() / 5 + 8, kMaxTokens));
  for (size_t position = 0; position < text.size();) {
    bool isToken = false;
    const size_t end = NextStretch(text, position, isToken);
    if (end == std::string_view::npos || (isToken && tokens.size() == kMaxTokens)) {
      tokens.clear();
      if (pFaultOffset) *pFaultOffset = position;
      return false;
    }
    if (isToken) {
      const std::string_view token = text.substr(position, end - position);
      tokens.push_back({token, FindKeyword(token)});
    }
    position = end;
  }
  return true;
}

}  // namespace kestra
