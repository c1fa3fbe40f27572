#include <algorithm>

#include "VLib/src/text/Text.h"
#include "query/diagnose/Wording.h"
#include "query/diagnose/rules/Rules.h"

namespace kestra {
namespace {

bool IsWordByte(char c) {
  return IsAsciiAlnum(c) || c == '_';
}

// 'it's': the quote that does not close stands behind a word that is joined to the string before.
// The whole of it, if that is so; empty otherwise.
std::string_view StringWithPlainQuote(std::string_view text, size_t quote) {
  size_t word = quote;
  while (word > 0 && IsWordByte(text[word - 1])) --word;
  if (word == quote || word == 0 || text[word - 1] != '\'') return {};
  size_t start = word - 1;
  while (start > 0 && text[start - 1] != '\'' && text[start - 1] != '\n') --start;
  if (start == 0 || text[start - 1] != '\'') return {};
  return text.substr(start - 1, quote + 1 - (start - 1));
}

// U+2018 to U+201F, which word processors put in place of plain quotes, as UTF-8.
constexpr std::string_view kTypographicHead = "\xE2\x80";
constexpr size_t kTypographicBytes = 3;

// The first between two places; the end if there is none.
size_t FindTypographicQuote(std::string_view text, size_t begin, size_t end) {
  for (size_t at = text.find(kTypographicHead, begin); at != text.npos && at + 2 < end;
       at = text.find(kTypographicHead, at + 1)) {
    const auto last = static_cast<unsigned char>(text[at + 2]);
    if (last >= 0x98 && last <= 0x9F) return at;
  }
  return end;
}

// /etc/*: the comment begins inside of a path.
bool IsInPath(std::string_view text, size_t comment) {
  size_t begin = comment;
  while (begin > 0 && (IsWordByte(text[begin - 1]) || text[begin - 1] == '.' ||
                       text[begin - 1] == '/' || text[begin - 1] == '-')) {
    --begin;
  }
  return begin < comment && text.substr(begin, comment - begin).find('/') != text.npos;
}

Finding OpenString(std::string_view text, size_t quote) {
  Finding finding;
  if (const std::string_view whole = StringWithPlainQuote(text, quote); !whole.empty()) {
    finding.offset = static_cast<size_t>(whole.data() - text.data());
    finding.length = whole.size();
    finding.suggestions = {AsString(whole.substr(1, whole.size() - 2))};
    finding.message =
        "a quote inside a text is doubled; did you mean " + finding.suggestions.front() + "?";
    return finding;
  }
  const size_t end = std::min(text.find('\n', quote), text.size());
  if (const size_t typographic = FindTypographicQuote(text, quote, end); typographic < end) {
    finding.offset = typographic;
    finding.length = kTypographicBytes;
    finding.suggestions = {"'"};
    finding.message = "the quote here is a typographic one; a text ends with a plain one: '";
    return finding;
  }
  finding.offset = quote;
  finding.length = 1;
  const std::string_view rest = TrimRight(text.substr(quote, end - quote), " \t\r");
  finding.message = "the text that begins with " + InQuotes(rest) + " has no closing quote";
  return finding;
}

}  // namespace

Finding LexicalFinding(std::string_view text, size_t faultOffset) {
  // Either it does not end, or it is the one token too many.
  TokenList tokens;
  size_t fault = 1;
  const bool isOpen = !Tokenise(text.substr(faultOffset), tokens, &fault) && fault == 0;
  if (isOpen && text[faultOffset] == '\'') return OpenString(text, faultOffset);
  Finding finding;
  finding.offset = faultOffset;
  finding.length = isOpen ? 2 : 1;
  finding.message = isOpen ? "the comment that begins here has no \"*/\""
                           : "the text is too long: a query has at most " +
                                 std::to_string(kMaxTokens) + " words and marks";
  if (isOpen && IsInPath(text, faultOffset)) finding.message += "; a path stands in quotes";
  return finding;
}

}  // namespace kestra
