// Literals that cannot stand where they do.
#include <fmt/format.h>

#include <algorithm>

#include "VLib/src/text/Text.h"
#include "query/diagnose/Wording.h"
#include "query/diagnose/rules/Rules.h"
#include "query/parse/Literals.h"

namespace kestra {
namespace {

// "Size holds a number; " for the column that a literal is compared with; empty if there is none.
std::string LeftColumn(CFailedText& text, size_t literal) {
  if (literal < 2 || !text.IsComparison(literal - 1)) return {};
  const size_t name = text.KeywordAt(literal - 1) == kKwOpen ? literal - 3 : literal - 2;
  if (!text.IsWord(name)) return {};
  const DiagParamDef* const pDef = text.Column(name).pDef;
  return pDef ? fmt::format("{} holds {}; ", pDef->Name, HoldsWhat(pDef->Type)) : std::string();
}

// The last token of a run of numbers and marks without a blank in it.
size_t EndOfRun(const CFailedText& text, size_t first, std::string_view marks) {
  size_t last = first;
  while (last + 2 < text.Count() + 1 && text.AreJoined(last, last + 2) &&
         text.Text(last + 1).size() == 1 && marks.find(text.Text(last + 1)[0]) != marks.npos &&
         IsAsciiAlnum(text.Text(last + 2)[0])) {
    last += 2;
  }
  return last;
}

// 6.1: a number, and a dot that nothing waits for.
bool PlainVersion(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  size_t first = text.KeywordAt(stop) == kKwDot ? stop - 1 : stop;
  if (first >= text.Count() || !IsAsciiDigit(text.Text(first)[0])) return false;
  if (first > 1 && text.KeywordAt(first - 1) == kKwDot) return false;
  const size_t last = EndOfRun(text, first, ".");
  if (last == first) return false;
  for (size_t i = first; i <= last; i += 2) {
    if (!IsAsciiDigit(text.Text(i)[0]) || (i == first && !text.IsInteger(i))) return false;
  }
  const std::string version(text.Query().substr(
      text.OffsetOf(first), text.OffsetOf(last) + text.Text(last).size() - text.OffsetOf(first)));
  return text.Say(finding, first, last,
                  fmt::format("there are no fractions, and a version is quoted: '{}'", version),
                  {AsString(version)});
}

// The text of a date as the language writes it; empty if it is not clear which day is meant.
std::string DateOf(std::string_view text) {
  std::vector<unsigned> fields;
  std::string marks;
  for (size_t i = 0; i < text.size() && fields.size() < 7;) {
    if (!IsAsciiDigit(text[i])) {
      marks += text[i++];
      continue;
    }
    unsigned number = 0;
    for (; i < text.size() && IsAsciiDigit(text[i]); ++i) {
      number = std::min(number * 10 + static_cast<unsigned>(text[i] - '0'), 100000u);
    }
    fields.push_back(number);
  }
  if (fields.size() < 3) return {};
  // 31.1.2024: the dots tell that the day is first.
  if (fields[2] >= 1000 && marks.starts_with("..")) std::swap(fields[0], fields[2]);
  fields.resize(fields.size() > 3 ? 6 : 3);
  std::string date = fmt::format("'{:04}-{:02}-{:02}", fields[0], fields[1], fields[2]);
  if (fields.size() > 3) {
    date += fmt::format(" {:02}:{:02}:{:02}", fields[3], fields[4], fields[5]);
  }
  date += '\'';
  Value scratch;
  return ReadDatimeLiteral(date, scratch) ? date : std::string();
}

// The question marks are escaped, since two of them and a mark once spelled a trigraph.
constexpr std::string_view kDateShape = "'\?\?\?\?-\?\?-\?\?*'";

bool WantsDate(const CExpected& expected) {
  return expected.Has(Predicate::DatimeLiteral);
}

// 2024-01-31, which was read as a subtraction or not at all.
bool PlainDate(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  if (!text.IsInteger(i) || !WantsDate(text.Expected())) return false;
  const size_t last = EndOfRun(text, i, "-/.:");
  const size_t start = text.OffsetOf(i);
  const std::string written =
      text.Query().substr(start, text.OffsetOf(last) + text.Text(last).size() - start);
  const std::string date = last > i ? DateOf(written) : std::string();
  std::vector<std::string> suggestions;
  if (!date.empty()) suggestions = {date};
  return text.Say(finding, i, last,
                  LeftColumn(text, i) + "a date is written in quotes: " +
                      (date.empty() ? "'yyyy-mm-dd' or 'yyyy-mm-dd hh:mm:ss'" : date),
                  suggestions);
}

bool MalformedDate(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  if (!text.IsString(i) || !WantsDate(text.Expected()) ||
      text.Expected().Has(Predicate::StringLiteral)) {
    return false;
  }
  const std::string_view token = text.Text(i);
  const std::string date = DateOf(token.substr(1, token.size() - 2));
  if (!date.empty()) {
    return text.Say(finding, i, "a date is written as " + date, {date});
  }
  if (Matches(token, kDateShape, false, false)) {
    return text.Say(finding, i,
                    fmt::format("{} is no moment of the years 1970 to 2106", InQuotes(token)));
  }
  return text.Say(finding, i,
                  fmt::format("{}{} is no date; one is written as 'yyyy-mm-dd' or "
                              "'yyyy-mm-dd hh:mm:ss', from 1970 to 2106",
                              LeftColumn(text, i), InQuotes(text.Text(i))));
}

bool MalformedVersion(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  if (!text.IsString(i) || !text.Expected().Has(Predicate::VersionLiteral) ||
      text.Expected().Has(Predicate::StringLiteral)) {
    return false;
  }
  return text.Say(finding, i,
                  fmt::format("{}{} is no version; one is written as '6.1' or '10.0.19041'",
                              LeftColumn(text, i), InQuotes(text.Text(i))));
}

bool BadNumber(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  const std::string_view token = text.Text(i);
  if (token.empty() || !IsAsciiDigit(token[0])) return false;
  if (!text.Expected().Has(Predicate::IntegerLiteral)) return false;
  if (text.IsInteger(i)) {
    return text.Say(finding, i, "the number is too large; the largest is 2147483646");
  }
  const bool isHexadecimal = token.size() > 2 && token.size() <= 10 && token[0] == '0' &&
                             (token[1] == 'x' || token[1] == 'X') &&
                             token.find_first_not_of("0123456789abcdefABCDEF", 2) == token.npos;
  if (isHexadecimal) {
    const unsigned long long number = std::stoull(std::string(token.substr(2)), nullptr, 16);
    const std::string decimal = std::to_string(number);
    return text.Say(finding, i, "numbers are decimal: " + decimal, {decimal});
  }
  return text.Say(finding, i, InQuotes(token) + " is neither a number nor a name");
}

// A text where a number is wanted, and the other way round.
bool LiteralOfOtherKind(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  const CExpected& expected = text.Expected();
  const bool takesText = expected.Has(Predicate::StringLiteral);
  const bool takesNumber = expected.Has(Predicate::IntegerLiteral);
  if (text.IsString(i) && !takesText && takesNumber) {
    Value value, number;
    ReadStringLiteral(text.Text(i), value);
    std::vector<std::string> suggestions;
    if (ReadIntegerLiteral(value.asString(), number)) suggestions = {value.asString()};
    return text.Say(finding, i,
                    LeftColumn(text, i) + "a number is wanted here" +
                        (suggestions.empty() ? "" : ", without quotes: " + suggestions.front()),
                    suggestions);
  }
  if (text.IsInteger(i) && takesText && !takesNumber) {
    const std::string quoted = AsString(text.Text(i));
    return text.Say(finding, i, LeftColumn(text, i) + "text is wanted here: " + quoted, {quoted});
  }
  return false;
}

// '2024-01-01' < GETDATE(), '1.2' < FileVersion: what stands on the left decides the kind.
bool LiteralOnTheLeft(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  if (i < 2 || !text.IsComparison(i - 1) || !text.IsString(i - 2)) return false;
  const std::string literal(text.Text(i - 2));
  const DiagParamDef* const pDef = text.IsWord(i) ? text.Column(i).pDef : nullptr;
  const bool isDate = text.KeywordAt(i) == kKwGetDate || text.KeywordAt(i) == kKwDateAdd ||
                      (pDef && pDef->Type == ParamType::Datime);
  const bool isVersion = pDef && pDef->Type == ParamType::Version;
  Value value;
  if (isDate && ReadDatimeLiteral(literal, value)) {
    return text.Say(finding, i - 2,
                    "a date in quotes stands on the right side of a comparison: x > " + literal);
  }
  if (isVersion && IsVersionLiteral(literal)) {
    return text.Say(finding, i - 2,
                    "a version in quotes stands on the right side of a comparison: x > " + literal);
  }
  return false;
}

// '1' = PID, 1 = ImageName
bool LiteralOfOtherKindOnTheLeft(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  if (i < 2 || !text.IsComparison(i - 1) || !text.IsWord(i)) return false;
  const DiagParamDef* const pDef = text.Column(i).pDef;
  if (!pDef || (i > 2 && !text.IsBeforeOperand(i - 3))) return false;
  Value value, number;
  if (pDef->Type == ParamType::Dword && ReadStringLiteral(text.Text(i - 2), value) &&
      ReadIntegerLiteral(value.asString(), number)) {
    return text.Say(finding, i - 2,
                    fmt::format("{} holds a number; one is written without quotes: {}", pDef->Name,
                                value.asString()),
                    {value.asString()});
  }
  if (pDef->Type == ParamType::String && text.IsInteger(i - 2)) {
    const std::string quoted = AsString(text.Text(i - 2));
    return text.Say(finding, i - 2, fmt::format("{} holds text: {}", pDef->Name, quoted), {quoted});
  }
  return false;
}

// DATE '2024-01-31'
bool DateWord(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  const bool isWord = text.Is(i, "DATE") || text.Is(i, "TIMESTAMP") || text.Is(i, "DATETIME");
  if (!isWord || !text.IsString(i + 1)) return false;
  const std::string literal(text.Text(i + 1));
  return text.Say(finding, i, i + 1, "a date is written in quotes alone: " + literal, {literal});
}

// = /etc/passwd
bool UnquotedPath(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  const bool isMark = text.Is(i, "/") || text.Is(i, "\\") || text.Is(i, ".") || text.Is(i, "*");
  if (!isMark || !text.Expected().Has(Predicate::StringLiteral) || i == 0) return false;
  const bool isArgument = text.KeywordAt(i - 1) == kKwOpen && text.KeywordAt(i - 3) == kKwDot;
  if (!text.IsComparison(i - 1) && !isArgument) return false;
  const std::string quoted = AsString(text.RunAt(i));
  return text.Say(finding, i, text.EndOfRunAt(i), "text stands in quotes: " + quoted, {quoted});
}

struct DatePartRow {
  const char* word;
  const char* name;
};
constexpr DatePartRow kDateParts[] = {
    {"year", "yy"},   {"yyyy", "yy"}, {"month", "mm"},  {"m", "mm"},       {"week", "wk"},
    {"ww", "wk"},     {"day", "dd"},  {"d", "dd"},      {"weekday", "dw"}, {"hour", "hh"},
    {"minute", "mi"}, {"min", "mi"},  {"second", "ss"}, {"sec", "ss"},     {"s", "ss"}};

bool IsDatePart(std::string_view word) {
  return std::any_of(std::begin(kDateParts), std::end(kDateParts),
                     [&](const DatePartRow& row) { return EqualsNoCase(row.name, word); });
}

bool DatePart(CFailedText& text, Finding& finding) {
  if (!text.Expected().Has(Predicate::DatePartName)) return false;
  for (const DatePartRow& row : kDateParts) {
    if (!text.Is(text.Position(), row.word)) continue;
    return text.Say(finding, text.Position(),
                    fmt::format("this part of a date is called {}", row.name), {row.name});
  }
  Value value;
  if (ReadStringLiteral(text.Text(text.Position()), value) && IsDatePart(value.asString())) {
    return text.Say(finding, text.Position(),
                    "a part of a date is written without quotes: " + value.asString(),
                    {value.asString()});
  }
  return false;
}

constexpr FailureRule kValueRules[] = {
    DatePart,           DateWord,         PlainDate,
    PlainVersion,       MalformedDate,    MalformedVersion,
    BadNumber,          LiteralOnTheLeft, LiteralOfOtherKindOnTheLeft,
    LiteralOfOtherKind, UnquotedPath};

}  // namespace

std::span<const FailureRule> ValueRules() {
  return kValueRules;
}

}  // namespace kestra
