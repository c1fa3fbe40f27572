// What a statement is made of: its clauses and parentheses.
#include <fmt/format.h>

#include "query/diagnose/Wording.h"
#include "query/diagnose/rules/Rules.h"

namespace kestra {
namespace {

// The statement's own SELECT before a token, parentheses left aside; kNoToken if there is none.
size_t SelectBefore(const CFailedText& text, size_t i) {
  size_t depth = 0;
  while (i-- > 0) {
    const KeywordId keyword = text.KeywordAt(i);
    if (keyword == kKwClose) ++depth;
    if (keyword == kKwOpen && depth > 0) --depth;
    if (depth == 0 && keyword == kKwSelect) return i;
  }
  return kNoToken;
}

bool HasFromBehind(const CFailedText& text, size_t select) {
  size_t depth = 0;
  for (size_t i = select + 1; i < text.Count(); ++i) {
    const KeywordId keyword = text.KeywordAt(i);
    if (keyword == kKwOpen) ++depth;
    if (keyword == kKwClose && depth-- == 0) return false;
    if (depth == 0 && keyword == kKwFrom) return true;
  }
  return false;
}

bool SelectWithoutColumns(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  const KeywordId before = text.KeywordAt(i - 1);
  if (text.KeywordAt(i) != kKwFrom) return false;
  if (before == kKwSelect) {
    return text.Say(finding, i, "a SELECT needs columns, or \"*\" for all, before FROM");
  }
  if (before != kKwComma) return false;
  return text.Say(finding, i - 1, "a column is missing behind the comma");
}

// SELECT 1, and every SELECT that nothing says where from.
bool SelectWithoutFrom(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  const bool isEnd = stop == text.Count() || text.KeywordAt(stop) == kKwClose;
  if (!isEnd && !text.IsUnknownName()) return false;
  const size_t select = SelectBefore(text, text.Position());
  if (select == kNoToken || HasFromBehind(text, select)) return false;
  // A misspelt FROM is another fault.
  for (size_t i = select + 1; i < text.Count(); ++i) {
    if (text.IsWord(i) && text.KeywordAt(i) == kNoKeyword && IsNearlyThe(text.Text(i), "FROM")) {
      return text.Say(
          finding, i,
          fmt::format("{} is no word of the language; did you mean FROM?", InQuotes(text.Text(i))),
          {"FROM"});
    }
  }
  if (text.IsUnknownName() || select + 1 >= text.Count()) {
    return text.Say(finding, stop, "a SELECT needs FROM Module.Class");
  }
  return text.Say(finding, stop,
                  "a SELECT needs FROM Module.Class; to compute a value, write it without SELECT");
}

bool JoinWithoutAlias(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  const char* const pAdvice =
      "both sources of a JOIN need an alias: FROM A.B x JOIN C.D y ON x.Column = y.Column";
  if (text.KeywordAt(stop) == kKwJoin && !text.ExpectedAtStop().Has(kKwJoin)) {
    return text.Say(finding, stop, pAdvice);
  }
  // ON was taken for the alias.
  if (text.KeywordAt(stop - 1) == kKwOn && text.ExpectedAtStop().Has(kKwOn)) {
    return text.Say(finding, stop - 1, pAdvice);
  }
  if (!text.IsUnknownName()) return false;
  for (size_t i = 1; i < text.Sources().size(); ++i) {
    const QuerySource& source = text.Sources()[i];
    if (text.KeywordAt(source.keyword) != kKwJoin) continue;
    if (source.alias == kNoToken || text.Sources()[i - 1].alias == kNoToken) {
      return text.Say(finding, source.keyword, pAdvice);
    }
  }
  return false;
}

// FROM a.B, c.D: what follows the comma was taken for another query, or nothing waits for the
// comma.
bool CommaBetweenSources(CFailedText& text, Finding& finding) {
  const size_t i = text.Position(), stop = text.Stop();
  const bool isBefore =
      i >= 3 && text.IsUnknownName() && text.KeywordAt(i - 1) == kKwDot && i - 3 < stop;
  const size_t comma = isBefore ? i - 3 : stop;
  const bool isThere = text.KeywordAt(comma) == kKwComma && text.KeywordAt(comma + 2) == kKwDot &&
                       FindModule(text.RootClass(), text.Text(comma + 1), true);
  if (!isThere) return false;
  return text.Say(finding, comma, "two sources are joined by JOIN: FROM A.B x JOIN C.D y ON ...");
}

bool SelectBehindFrom(CFailedText& text, Finding& finding) {
  if (text.Position() != text.Stop() && !text.IsUnknownName()) return false;
  for (size_t i = 0; i + 1 < text.Count(); ++i) {
    if (text.KeywordAt(i) == kKwFrom && text.KeywordAt(i + 1) == kKwOpen) {
      return text.Say(finding, i + 1,
                      "FROM takes a Module.Class; a SELECT cannot stand in its place");
    }
  }
  return false;
}

bool JoinWithoutOn(CFailedText& text, Finding& finding) {
  if (!text.ExpectedAtStop().Has(kKwOn)) return false;
  return text.Say(finding, text.Stop(),
                  "a JOIN needs ON and a condition, such as ON a.Column = b.Column");
}

// The number of parentheses that are opened and not closed, and the last place of either kind.
struct Balance {
  size_t unclosed = kNoToken;  // the last "(" without a partner
  size_t extra = kNoToken;     // the first ")" without one
};
Balance FindBalance(const CFailedText& text) {
  Balance balance;
  std::vector<size_t> open;
  for (size_t i = 0; i < text.Count(); ++i) {
    if (text.KeywordAt(i) == kKwOpen) open.push_back(i);
    if (text.KeywordAt(i) != kKwClose) continue;
    if (!open.empty()) {
      open.pop_back();
    } else if (balance.extra == kNoToken) {
      balance.extra = i;
    }
  }
  if (!open.empty()) balance.unclosed = open.back();
  return balance;
}

bool Parentheses(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  const Balance balance = FindBalance(text);
  if (text.KeywordAt(stop) == kKwClose && balance.extra == stop) {
    return text.Say(finding, stop, "there is no \"(\" for this \")\"");
  }
  const bool waits = text.ExpectedAtStop().Has(kKwClose);
  if (balance.unclosed != kNoToken && waits && balance.unclosed < stop) {
    if (stop < text.Count() && text.KeywordAt(stop) != kKwFrom) return false;
    return text.Say(finding, balance.unclosed, "there is no \")\" for this \"(\"");
  }
  return false;
}

bool InsertIncomplete(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (text.ExpectedAtStop().HasIn(NonTerminal::ActiveStatement, kKwValues)) {
    return text.Say(finding, stop, "an INSERT needs VALUES (...) or a SELECT behind its columns");
  }
  if (text.KeywordAt(stop) == kKwValues || text.KeywordAt(stop) == kKwSelect) {
    if (text.ExpectedAtStop().HasIn(NonTerminal::ActiveStatement, kKwOpen)) {
      return text.Say(finding, stop,
                      "an INSERT names its columns: INSERT Module.Class (A, B) VALUES (1, 2)");
    }
  }
  return false;
}

// A clause that begins where a value is still wanted.
bool NothingBeforeClause(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  const KeywordId keyword = text.KeywordAt(i);
  const bool isClause = keyword == kKwFrom || keyword == kKwWhere || keyword == kKwJoin ||
                        keyword == kKwOn || keyword == kKwAnd || keyword == kKwOr;
  if (i == 0 || !isClause || !text.Expected().HasColumn()) return false;
  return text.Say(
      finding, i,
      fmt::format("something is missing between {} and {}; expected {}", InQuotes(text.Text(i - 1)),
                  InQuotes(text.Text(i)), text.Expected().Sentence()));
}

constexpr FailureRule kStructureRules[] = {
    SelectWithoutColumns, SelectBehindFrom,  CommaBetweenSources,
    Parentheses,          SelectWithoutFrom, JoinWithoutAlias,
    JoinWithoutOn,        InsertIncomplete,  NothingBeforeClause};

}  // namespace

std::span<const FailureRule> StructureRules() {
  return kStructureRules;
}

}  // namespace kestra
