// Marks that other query languages have.
#include <algorithm>

#include "VLib/src/text/Text.h"
#include "query/diagnose/Wording.h"
#include "query/diagnose/rules/Rules.h"

namespace kestra {
namespace {

struct MarkRow {
  const char* first;
  const char* second;  // joined to the first; null for one mark
  const char* advice;
  const char* instead;  // null for none
};

constexpr MarkRow kMarks[] = {
    {"!", "=", "\"not equal\" is written <>", "<>"},
    {"==", nullptr, "equality is written with one =", "="},
    {"=>", nullptr, "\"not less\" is written >=", ">="},
    {"=<", nullptr, "\"not greater\" is written <=", "<="},
    {"&", "&", "two conditions are joined by AND", "AND"},
    {"|", "|", "two conditions are joined by OR, and two texts by +", "OR"},
    {"-", "-", "a comment is written /* ... */", nullptr},
    {"/", "/", "a comment is written /* ... */", nullptr},
    {"!", nullptr, "a condition is denied by NOT", "NOT"},
    {";", nullptr, "\";\" does not belong to a query: one text is one query", nullptr},
    {"#", nullptr,
     "\"#\" stands only behind a module, before the age of a cached result; a comment is written "
     "/* ... */",
     nullptr},
    {"`", nullptr, "names are written without quotes", nullptr},
    {"[", nullptr, "names are written without brackets", nullptr},
    {"%", nullptr, "there is no operator %; the rest of x / n is x - x / n * n", nullptr},
    {"<<", nullptr, "there is no operator <<; multiply by a power of two", nullptr},
    {">>", nullptr, "there is no operator >>; divide by a power of two", nullptr},
    {"@", nullptr, "there are no variables in a query", nullptr},
};

// Whether a row's marks stand at a token.
bool StandsAt(const CFailedText& text, const MarkRow& row, size_t i) {
  if (text.Text(i) != row.first) return false;
  return !row.second || (text.Text(i + 1) == row.second && text.AreJoined(i, i + 1));
}

// IN [1, 2]
bool BracketsAroundList(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (text.Text(stop) != "[" || text.KeywordAt(stop - 1) != kKwIn) return false;
  return text.Say(finding, stop, "the list of IN stands in parentheses: IN (1, 2)", {"("});
}

// A place that another program would have filled in: ?, :name, $1, {name}.
bool Placeholder(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  const bool isMark = text.Is(i, "?") || text.Is(i, ":") || text.Is(i, "$") || text.Is(i, "{");
  if (i == 0 || !isMark || !text.Expected().HasColumn()) return false;
  return text.Say(finding, i, "there are no parameters in a query; write the value itself");
}

bool ForeignMark(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  for (const MarkRow& row : kMarks) {
    const bool isBefore = row.second && stop > 0 && StandsAt(text, row, stop - 1);
    if (!isBefore && !StandsAt(text, row, stop)) continue;
    const size_t first = isBefore ? stop - 1 : stop;
    std::vector<std::string> suggestions;
    if (row.instead) suggestions.emplace_back(row.instead);
    return text.Say(finding, first, first + (row.second ? 1 : 0), row.advice, suggestions);
  }
  return false;
}

// Whether what stands in double quotes at a token is a name of something.
bool IsNameInQuotes(CFailedText& text, size_t i, std::string_view inner, std::string_view behind) {
  if (behind.starts_with('.')) return true;
  switch (text.KeywordAt(i - 1)) {
    case kKwSelect:
    case kKwFrom:
    case kKwJoin:
    case kKwDot:
      return true;
    default:
      break;
  }
  if (text.IsComparison(i - 1)) return false;
  return std::any_of(text.Sources().begin(), text.Sources().end(), [&](const QuerySource& source) {
    return source.pClass && source.pClass->Params->Find(inner, true);
  });
}

bool DoubleQuotes(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (text.Text(stop) != "\"") return false;
  const size_t start = text.OffsetOf(stop);
  const size_t end = text.Query().find_first_of("\"\n", start + 1);
  const bool isClosed = end != std::string::npos && text.Query()[end] == '"';
  if (!isClosed) return text.Say(finding, stop, "text stands in single quotes: '...'");
  const std::string inner = text.Query().substr(start + 1, end - start - 1);
  const bool isName =
      IsNameInQuotes(text, stop, inner, std::string_view(text.Query()).substr(end + 1));
  const std::string instead = isName ? inner : AsString(inner);
  finding.offset = start;
  finding.length = end + 1 - start;
  finding.suggestions = {instead};
  finding.message = isName ? "names are written without quotes: " + instead
                           : "text stands in single quotes: " + instead;
  return true;
}

bool NegativeNumber(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (text.Text(stop) != "-" || text.ExpectedAtStop().Has(Predicate::AddOperator)) return false;
  if (!text.ExpectedAtStop().Has(Predicate::IntegerLiteral)) return false;
  if (!text.IsInteger(stop + 1) && !text.IsWord(stop + 1)) return false;
  if (text.KeywordAt(stop - 1) == kKwHash) return false;  // an age has no sign at all
  const std::string number = "0 - " + std::string(text.Text(stop + 1));
  if (!text.IsInteger(stop + 1)) {
    return text.Say(finding, stop, "there is no negative sign; subtract from 0: " + number);
  }
  return text.Say(finding, stop, stop + 1, "there are no negative literals; write " + number,
                  {"(" + number + ")"});
}

bool PlusSign(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (text.Text(stop) != "+" || !text.IsInteger(stop + 1)) return false;
  if (text.ExpectedAtStop().Has(Predicate::AddOperator) || text.ExpectedAtStop().Has(kKwPlus)) {
    return false;
  }
  const std::string number(text.Text(stop + 1));
  return text.Say(finding, stop, stop + 1, "a number is written without a sign: " + number,
                  {number});
}

constexpr FailureRule kMarkRules[] = {DoubleQuotes, BracketsAroundList, Placeholder,
                                      ForeignMark,  NegativeNumber,     PlusSign};

}  // namespace

std::span<const FailureRule> MarkRules() {
  return kMarkRules;
}

}  // namespace kestra
