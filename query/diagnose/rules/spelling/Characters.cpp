// Characters that are no part of the language. Outside of strings and comments they part words, so
// what stands on both sides of one is seldom what was meant.
#include <fmt/format.h>

#include <algorithm>

#include "VLib/src/text/Text.h"
#include "query/diagnose/Wording.h"
#include "query/diagnose/rules/Rules.h"

namespace kestra {
namespace {

constexpr uint32_t kFirstNonAscii = 0x80;
constexpr uint32_t kBehindLastCharacter = 0x110000;  // from here on, bytes that begin no character

struct Foreign {
  size_t offset = 0;
  size_t length = 0;  // in bytes; 0 for none
  uint32_t character = 0;
};

// What parts words on a page too. A byte order mark is one at the beginning of a text alone.
bool IsBlank(uint32_t c, size_t offset) {
  return (c >= '\t' && c <= '\r') || c == ' ' || c == 0xA0 || (c >= 0x2000 && c <= 0x200A) ||
         c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F || c == 0x3000 ||
         (c == 0xFEFF && offset == 0);
}

// Marks that are not seen.
bool IsHidden(uint32_t c) {
  return c < ' ' || (c >= 0x7F && c < 0xA0) || c == 0xAD || (c >= 0x200B && c <= 0x200F) ||
         (c >= 0x202A && c <= 0x202E) || (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF;
}

// The first in a stretch between two tokens, in which there are blanks and comments besides.
Foreign FirstForeign(std::string_view text, size_t begin, size_t end) {
  for (size_t position = begin; position < end;) {
    if (text.substr(position, 2) == "/*") {
      position = std::min(text.find("*/", position + 2), end - 2) + 2;
      continue;
    }
    const size_t start = position;
    const uint32_t c = NextCharacter(text, position);
    if (!IsBlank(c, start)) return {start, position - start, c};
  }
  return {};
}

size_t EndOf(const CFailedText& text, size_t token) {
  return token < text.Count() ? text.OffsetOf(token) + text.Text(token).size()
                              : text.Query().size();
}

Foreign ForeignBefore(const CFailedText& text, size_t token) {
  const size_t begin = token == 0 ? 0 : EndOf(text, token - 1);
  return FirstForeign(text.Query(), begin,
                      token < text.Count() ? text.OffsetOf(token) : text.Query().size());
}

// In front of the token to blame, of the one where recognition stopped, or joined to either's end.
Foreign FindForeign(const CFailedText& text) {
  for (const size_t token : {text.Position(), text.Stop()}) {
    if (const Foreign found = ForeignBefore(text, token); found.length > 0) return found;
    if (token >= text.Count()) continue;
    const Foreign found = ForeignBefore(text, token + 1);
    if (found.length > 0 && found.offset == EndOf(text, token)) return found;
  }
  return {};
}

struct LikenessRow {
  uint32_t first;
  uint32_t last;
  const char* instead;
};
constexpr LikenessRow kMarksAlike[] = {
    {0x2010, 0x2015, "-"},  {0x2212, 0x2212, "-"},  {0x00D7, 0x00D7, "*"}, {0x00F7, 0x00F7, "/"},
    {0x2260, 0x2260, "<>"}, {0x2264, 0x2264, "<="}, {0x2265, 0x2265, ">="}};

// What a character is mistaken for; empty if that is nothing.
std::string MarkAlike(uint32_t c) {
  // The wide forms that an input method for East Asian texts gives of ASCII.
  constexpr uint32_t kFirstWide = 0xFF01, kLastWide = 0xFF5E, kFirstPlain = '!';
  if (c >= kFirstWide && c <= kLastWide) {
    return std::string(1, static_cast<char>(c - kFirstWide + kFirstPlain));
  }
  for (const LikenessRow& row : kMarksAlike) {
    if (c >= row.first && c <= row.last) return row.instead;
  }
  return {};
}

// The quotes that word processors put in place of plain ones.
bool IsQuote(uint32_t c) {
  return (c >= 0x2018 && c <= 0x201F) || c == 0xAB || c == 0xBB || c == 0xB4 || c == 0xFF02 ||
         c == 0xFF07;
}

std::string NameOf(const Foreign& foreign, std::string_view query) {
  if (foreign.character >= kBehindLastCharacter) {
    return fmt::format("the byte 0x{:02X}", foreign.character - kBehindLastCharacter);
  }
  if (IsHidden(foreign.character)) return fmt::format("the character U+{:04X}", foreign.character);
  return InQuotes(query.substr(foreign.offset, foreign.length));
}

// The word of a human language around a character; ASCII letters in it make tokens of their own.
std::string_view WordAround(std::string_view query, const Foreign& foreign) {
  const auto isPart = [&](size_t at) {
    return IsAsciiAlnum(query[at]) || query[at] == '_' ||
           static_cast<unsigned char>(query[at]) >= kFirstNonAscii;
  };
  size_t begin = foreign.offset, end = foreign.offset + foreign.length;
  while (begin > 0 && isPart(begin - 1)) --begin;
  while (end < query.size() && isPart(end)) ++end;
  return query.substr(begin, end - begin);
}

std::string CannotStand(const Foreign& foreign, std::string_view query) {
  return NameOf(foreign, query) +
         " cannot stand outside of a text in quotes: names have ASCII letters, digits and \"_\"";
}

bool ForeignCharacter(CFailedText& text, Finding& finding) {
  const Foreign foreign = FindForeign(text);
  if (foreign.length == 0) return false;
  const std::string_view query = text.Query();
  finding.offset = foreign.offset;
  finding.length = foreign.length;
  if (IsQuote(foreign.character)) {
    finding.message = "the quote here is a typographic one; text stands in plain quotes: '...'";
    finding.suggestions = {"'"};
    return true;
  }
  if (const std::string mark = MarkAlike(foreign.character); !mark.empty()) {
    finding.message = fmt::format("{} is no mark of the language; did you mean {}?",
                                  NameOf(foreign, query), mark);
    finding.suggestions = {mark};
    return true;
  }
  const size_t i = text.Position();
  const bool isVisible = foreign.character >= kFirstNonAscii && !IsHidden(foreign.character) &&
                         foreign.character < kBehindLastCharacter;
  if (isVisible && i > 0 && text.IsComparison(i - 1) &&
      text.Expected().Has(Predicate::StringLiteral)) {
    const std::string_view word = WordAround(query, foreign);
    finding.offset = static_cast<size_t>(word.data() - query.data());
    finding.length = word.size();
    finding.suggestions = {AsString(word)};
    finding.message = "text stands in quotes: " + finding.suggestions.front();
    return true;
  }
  finding.message = CannotStand(foreign, query);
  return true;
}

constexpr FailureRule kCharacterRules[] = {ForeignCharacter};

}  // namespace

Finding EmptyTextFinding(std::string_view text) {
  Finding finding;
  const Foreign foreign = FirstForeign(text, 0, text.size());
  finding.offset = foreign.offset;
  finding.length = foreign.length;
  finding.message = foreign.length > 0 ? CannotStand(foreign, text) : "the text is empty";
  return finding;
}

std::span<const FailureRule> CharacterRules() {
  return kCharacterRules;
}

}  // namespace kestra
