#include "query/diagnose/completion/CursorText.h"

#include <algorithm>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

// Stands for the word at the cursor: a name that is no keyword, and nobody's.
constexpr Token kPlaceholder{"_", kNoKeyword};

bool IsWordByte(char c) {
  return IsAsciiAlnum(c) || c == '_';
}

std::string WithoutDoubledQuotes(std::string_view text) {
  std::string plain;
  for (size_t i = 0; i < text.size(); ++i) {
    plain += text[i];
    if (text[i] == '\'' && i + 1 < text.size() && text[i + 1] == '\'') ++i;
  }
  return plain;
}

// As many tokens as there are before a string or comment that does not end.
TokenList TokensBeforeFault(std::string_view text) {
  TokenList tokens;
  size_t fault = 0;
  if (!Tokenise(text, tokens, &fault)) Tokenise(text.substr(0, fault), tokens);
  return tokens;
}

// Where the text goes on behind a string that is begun before it. If the quotes behind are paired,
// the string has no end of its own yet.
size_t BehindString(std::string_view text, size_t cursor) {
  if (std::count(text.begin() + static_cast<std::ptrdiff_t>(cursor), text.end(), '\'') % 2 == 0) {
    return cursor;
  }
  size_t quote = text.find('\'', cursor);
  while (quote + 1 < text.size() && text[quote + 1] == '\'') {
    const size_t next = text.find('\'', quote + 2);
    if (next == text.npos) break;
    quote = next;
  }
  return quote + 1;
}

// Reads what stands before the cursor; false where nothing can be completed.
bool ReadBefore(std::string_view text, size_t cursor, CursorText& cut) {
  size_t fault = 0;
  cut.offset = cursor;
  if (!Tokenise(text.substr(0, cursor), cut.tokens, &fault)) {
    if (text[fault] != '\'') return false;
    Tokenise(text.substr(0, fault), cut.tokens);
    cut.isString = true;
    cut.offset = fault;
    cut.begun = WithoutDoubledQuotes(text.substr(fault + 1, cursor - fault - 1));
  } else if (!cut.tokens.empty() && cursor > 0 && IsWordByte(text[cursor - 1])) {
    const std::string_view word = cut.tokens.back().text;
    if (word.data() + word.size() != text.data() + cursor) return false;
    if (IsAsciiDigit(word[0])) return false;
    cut.begun = word;
    cut.offset = cursor - word.size();
    cut.tokens.pop_back();
  }
  cut.length = cursor - cut.offset;
  return true;
}

bool IsSemicolon(const Token& token) {
  return token.text == ";";
}

}  // namespace

bool CutAtCursor(std::string_view text, size_t cursor, CursorText& cut) {
  if (!ReadBefore(text, cursor, cut)) return false;
  size_t rest = cursor;
  if (cut.isString) {
    rest = BehindString(text, cursor);
    // The quote that ends it is given anew with the completion.
    if (rest == cursor + 1) ++cut.length;
  } else if (!cut.begun.empty()) {
    while (rest < text.size() && IsWordByte(text[rest])) ++rest;
  }
  // Only the statement around the cursor.
  const auto last = std::find_if(cut.tokens.rbegin(), cut.tokens.rend(), IsSemicolon);
  cut.tokens.erase(cut.tokens.begin(), last.base());
  TokenList behind = TokensBeforeFault(text.substr(rest));
  behind.erase(std::find_if(behind.begin(), behind.end(), IsSemicolon), behind.end());
  cut.place = cut.tokens.size();
  if (cut.place >= kMaxTokens) return false;
  behind.resize(std::min(behind.size(), kMaxTokens - cut.place - 1));
  cut.tokens.push_back(kPlaceholder);
  cut.tokens.insert(cut.tokens.end(), behind.begin(), behind.end());
  return true;
}

}  // namespace kestra
