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

// SELECT ,x, (1, 2,), SET x = 1, WHERE
bool CommaTooMany(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (stop == 0) return false;
  const KeywordId keyword = text.KeywordAt(stop), before = text.KeywordAt(stop - 1);
  if (keyword == kKwComma && (before == kKwSelect || before == kKwOpen || before == kKwComma)) {
    return text.Say(finding, stop, "something is missing before the comma");
  }
  const char* const pMissing = "something is missing behind the comma";
  if (before == kKwComma && (keyword == kKwClose || stop >= text.Count())) {
    return text.Say(finding, stop - 1, pMissing);
  }
  // WHERE was taken for the next name.
  const bool isWhere = before == kKwWhere && stop > 1 && text.KeywordAt(stop - 2) == kKwComma;
  return isWhere && text.Say(finding, stop - 2, pMissing);
}

// SET x.A = 1
bool SetOfAlias(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (stop == 0 || text.KeywordAt(stop) != kKwDot || !text.IsWord(stop + 1)) return false;
  if (!text.ExpectedAtStop().HasIn(NonTerminal::Argument, kKwEquals)) return false;
  const std::string name(text.Text(stop + 1));
  return text.Say(finding, stop - 1, stop + 1, "a name is written without an alias here: " + name,
                  {name});
}

// A SELECT for a value is one in parentheses, with one column.
bool SelectAsValue(CFailedText& text, Finding& finding) {
  const size_t i = text.Position(), stop = text.Stop();
  if (i > 0 && text.KeywordAt(i) == kKwSelect && text.Expected().HasColumn()) {
    return text.Say(finding, i, "a SELECT in the place of a value stands in parentheses");
  }
  const bool isMore = text.KeywordAt(stop) == kKwComma || text.KeywordAt(stop) == kKwStar;
  const size_t select = isMore ? SelectBefore(text, stop) : kNoToken;
  if (select == kNoToken || select < 2 || text.KeywordAt(select - 1) != kKwOpen) return false;
  if (text.KeywordAt(stop) == kKwStar && stop != select + 1) return false;
  return text.Say(finding, stop, "a SELECT in the place of a value has one column");
}

// SELECT ... SELECT ...
bool SecondSelect(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (text.KeywordAt(stop) != kKwSelect || text.KeywordAt(0) != kKwSelect) return false;
  if (!text.ExpectedAtStop().HasEnd()) return false;
  return text.Say(finding, stop, "one text is one query, and another one begins here");
}

// A list of columns in parentheses, and one without commas.
bool ColumnsWithoutComma(CFailedText& text, Finding& finding) {
  const size_t i = text.Stop();
  if (i == 0 || !text.IsWord(i) || text.KeywordAt(i) != kNoKeyword) return false;
  const CExpected& expected = text.ExpectedAtStop();
  if (!expected.Has(kKwFrom) || text.KeywordAt(i - 1) == kKwStar) return false;
  const size_t select = SelectBefore(text, i);
  if (select == kNoToken) return false;
  if (text.Column(i).pDef && expected.Has(kKwComma)) {
    return text.Say(finding, i, fmt::format("a comma is missing before {}", text.Text(i)), {","});
  }
  const bool isLast = text.KeywordAt(i + 1) == kKwFrom || text.KeywordAt(i + 1) == kKwComma;
  if (!isLast || IsNearlyThe(text.Text(i), "FROM")) return false;
  return text.Say(finding, i, "columns have no alias");
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
  if (text.IsUnknownName() || select + 1 >= text.Count() || text.KeywordAt(stop - 1) == kKwStar) {
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
  // JOIN was taken for the alias of the source before it.
  const bool isAfterJoin = stop > 0 && text.KeywordAt(stop - 1) == kKwJoin;
  if (isAfterJoin && !text.ExpectedAtStop().Has(Predicate::ModuleName)) {
    return text.Say(finding, stop - 1, pAdvice);
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
  // A parenthesis without a partner hides the FROM clause from the columns before it.
  const size_t name = text.IsUnknownName() ? text.Position() : kNoToken;
  if (name != kNoToken && balance.extra != kNoToken && balance.extra > name) {
    return text.Say(finding, balance.extra, "there is no \"(\" for this \")\"");
  }
  if (name != kNoToken && balance.unclosed != kNoToken && balance.unclosed < name) {
    return text.Say(finding, balance.unclosed, "there is no \")\" for this \"(\"");
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

// A clause or comparison that begins where a value is still wanted.
bool NothingBeforeClause(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  const bool isClause = text.IsClauseWord(i) || text.IsComparison(i);
  if (i == 0 || !isClause || !text.Expected().HasColumn()) return false;
  std::string message = fmt::format("something is missing between {} and {}",
                                    InQuotes(text.Text(i - 1)), InQuotes(text.Text(i)));
  // Behind a WHERE that may be an alias too, everything is expected.
  if (!text.Expected().HasEnd()) message += "; expected " + text.Expected().Sentence();
  return text.Say(finding, i, message);
}

constexpr FailureRule kStructureRules[] = {
    SelectWithoutColumns, CommaTooMany,       SetOfAlias,       SelectBehindFrom,
    CommaBetweenSources,  Parentheses,        SelectAsValue,    SelectWithoutFrom,
    JoinWithoutAlias,     JoinWithoutOn,      InsertIncomplete, NothingBeforeClause,
    SecondSelect,         ColumnsWithoutComma};

}  // namespace

std::span<const FailureRule> StructureRules() {
  return kStructureRules;
}

}  // namespace kestra
