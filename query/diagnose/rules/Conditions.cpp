// Conditions in a shape that the language does not have.
#include <fmt/format.h>

#include "query/diagnose/Wording.h"
#include "query/diagnose/rules/Rules.h"

namespace kestra {
namespace {

bool IsOrder(const CFailedText& text, size_t i) {
  for (const char* pMark : {"=", "<>", "<", "<=", ">", ">="}) {
    if (text.Is(i, pMark)) return true;
  }
  return false;
}

// x = NULL, and NULL where a value stands.
bool NullAsValue(CFailedText& text, Finding& finding) {
  const size_t i = text.Position(), stop = text.Stop();
  if (stop > 0 && text.KeywordAt(stop) == kKwNull && text.KeywordAt(stop - 1) == kKwNot) {
    return text.Say(finding, stop - 1, stop, "write IS NOT NULL", {"IS NOT NULL"});
  }
  if (text.KeywordAt(i) != kKwNull || !text.Expected().HasColumn()) return false;
  const bool isEqual = i > 0 && text.Is(i - 1, "=");
  const bool isUnequal = i > 0 && (text.Is(i - 1, "<>") || text.Is(i - 1, "!="));
  if (!isEqual && !isUnequal) {
    return text.Say(finding, i, "there is no literal NULL; x IS NULL asks for it");
  }
  const char* const pInstead = isEqual ? "IS NULL" : "IS NOT NULL";
  return text.Say(finding, i - 1, i, fmt::format("NULL is asked for by {}", pInstead), {pInstead});
}

// x IS 'a', (x = 1) IS TRUE, x ISNULL
bool IsBesideNull(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  const size_t last = stop - (stop > 0 && text.KeywordAt(stop - 1) == kKwNot ? 1 : 0);
  if (last > 0 && text.KeywordAt(last - 1) == kKwIs && stop < text.Count()) {
    const char* const pInstead = last == stop ? "=" : "<>";
    return text.Say(finding, last - 1, stop - 1,
                    fmt::format("IS asks for NULL alone; compare with {}", pInstead), {pInstead});
  }
  if (text.KeywordAt(stop) == kKwIsNull && text.ExpectedAtStop().Has(kKwIs)) {
    return text.Say(finding, stop, "write IS NULL", {"IS NULL"});
  }
  if (text.KeywordAt(stop) != kKwIs) return false;
  return text.Say(finding, stop,
                  "IS NULL stands behind a value; a condition stands alone, or behind NOT");
}

// x NOT LIKE 'a'
bool NotBeforeLike(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (stop < 2 || text.KeywordAt(stop) != kKwLike || text.KeywordAt(stop - 1) != kKwNot) {
    return false;
  }
  return text.Say(finding, stop - 1, stop,
                  "NOT stands before the whole comparison: NOT x LIKE '...'");
}

// 1 < x < 5
bool ChainedComparison(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (!IsOrder(text, stop) || text.ExpectedAtStop().Has(Predicate::CompareOperator)) return false;
  if (!text.ExpectedAtStop().Has(kKwAnd)) return false;
  return text.Say(finding, stop, "two comparisons are joined by AND: a < x AND x < b");
}

// Whether a WHERE stands before a token, outside of parentheses that are closed or opened between.
bool IsBehindWhere(const CFailedText& text, size_t i) {
  size_t depth = 0;
  while (i-- > 0) {
    const KeywordId keyword = text.KeywordAt(i);
    if (keyword == kKwClose) ++depth;
    if (keyword == kKwOpen && depth-- == 0) return false;
    if (depth == 0 && keyword == kKwWhere) return true;
  }
  return false;
}

// WHERE x = 1, y = 2: where a text may follow as another value, what stops is not the comma.
bool CommaBetweenConditions(CFailedText& text, Finding& finding) {
  const size_t i = text.Position(), stop = text.Stop();
  const CExpected& expected = text.ExpectedAtStop();
  const bool isHere =
      text.KeywordAt(stop) == kKwComma && !expected.Has(kKwComma) && expected.Has(kKwAnd);
  const bool isBefore = !isHere && i > 0 && text.KeywordAt(i - 1) == kKwComma && text.IsWord(i) &&
                        IsOrder(text, i + 1) && IsBehindWhere(text, i - 1);
  if (!isHere && !isBefore) return false;
  return text.Say(finding, isHere ? stop : i - 1, "two conditions are joined by AND or OR",
                  {"AND", "OR"});
}

// WHERE x, x = 1 OR 2
bool ValueForCondition(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  const CExpected& expected = text.ExpectedAtStop();
  if (stop == 0 || !expected.Has(Predicate::CompareOperator)) return false;
  const KeywordId keyword = text.KeywordAt(stop);
  const bool isJoined = keyword == kKwAnd || keyword == kKwOr;
  const bool isEnd = stop >= text.Count() || keyword == kKwClose || keyword == kKwJoin;
  if (!isJoined && (!isEnd || expected.HasEnd())) return false;
  return text.Say(finding, stop - 1, "a value is no condition; compare it with something");
}

// x & 1 | 2
bool MixedBits(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  const auto isBits = [&](size_t i) {
    return text.KeywordAt(i) == kKwBar || text.KeywordAt(i) == kKwCaret ||
           text.KeywordAt(i) == kKwAmpersand;
  };
  if (stop < 2 || !isBits(stop)) return false;
  for (size_t i = stop - 1; i-- > 0;) {
    if (!isBits(i)) continue;
    return text.Say(finding, stop, "operators of bits that differ are parted by parentheses");
  }
  return false;
}

constexpr FailureRule kConditionRules[] = {
    NullAsValue,       IsBesideNull,           NotBeforeLike, ChainedComparison,
    ValueForCondition, CommaBetweenConditions, MixedBits};

}  // namespace

std::span<const FailureRule> ConditionRules() {
  return kConditionRules;
}

}  // namespace kestra
