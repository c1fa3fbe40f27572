// Functions and aggregates in a shape or place that they do not have.
#include <fmt/format.h>

#include "VLib/src/text/Text.h"
#include "query/diagnose/Wording.h"
#include "query/diagnose/rules/Rules.h"

namespace kestra {
namespace {

struct ShapeRow {
  KeywordId keyword;
  const char* shape;
};
constexpr ShapeRow kShapes[] = {
    {kKwIsNull, "ISNULL(x, y), which is y where x is NULL; x IS NULL asks for it"},
    {kKwConvert, "CONVERT(int, x), CONVERT(varchar, x) or CONVERT(version, x)"},
    {kKwLen, "LEN(x)"},
    {kKwCharLength, "CHAR_LENGTH(x)"},
    {kKwSubstring, "SUBSTRING(x, first, length)"},
    {kKwRight, "RIGHT(x, n)"},
    {kKwDatePart, "DATEPART(part, x)"},
    {kKwDateAdd, "DATEADD(part, n, x)"},
    {kKwGetDate, "GETDATE()"},
    {kKwRand, "RAND() * n, a number from 0 to n - 1"},
    {kKwCallDll, "CALLDLL('library', 'function', ...)"},
    {kKwCallDllV, "CALLDLLV('library', 'function', ...)"},
};

const char* ShapeOf(KeywordId keyword) {
  for (const ShapeRow& row : kShapes) {
    if (row.keyword == keyword) return row.shape;
  }
  return nullptr;
}

// The parenthesis that is open at a token; kNoToken for none.
size_t OpenAround(const CFailedText& text, size_t i) {
  size_t depth = 0;
  while (i-- > 0) {
    if (text.KeywordAt(i) == kKwClose) ++depth;
    if (text.KeywordAt(i) == kKwOpen && depth-- == 0) return i;
  }
  return kNoToken;
}

bool IsAggregate(const CFailedText& text, size_t i) {
  return text.KeywordAt(i) == kKwCount || text.Is(i, "MIN") || text.Is(i, "MAX") ||
         text.Is(i, "SUM");
}

bool SayAlone(const CFailedText& text, Finding& finding, size_t aggregate, size_t first,
              size_t last) {
  return text.Say(finding, first, last,
                  fmt::format("{0} stands alone behind SELECT; a value of its own is a SELECT in "
                              "parentheses: (SELECT {0}(...) FROM ...)",
                              UpperCase(text.Text(aggregate))));
}

// SELECT x, COUNT(*), WHERE MAX(x) = 1: an aggregate is a SELECT of its own.
bool AggregateBesideOthers(CFailedText& text, Finding& finding) {
  const size_t i = text.Position(), stop = text.Stop();
  for (const size_t name : {i, stop}) {
    const bool isCall = IsAggregate(text, name) && text.KeywordAt(name + 1) == kKwOpen;
    if (!isCall || name == 0 || text.KeywordAt(name - 1) == kKwSelect) continue;
    if (text.Column(name).pDef) continue;
    return SayAlone(text, finding, name, name, name);
  }
  if (text.KeywordAt(stop - 1) != kKwClose || text.KeywordAt(stop) == kKwClose) return false;
  const size_t open = OpenAround(text, stop - 1);
  if (open == kNoToken || open < 2 || !IsAggregate(text, open - 1)) return false;
  if (text.KeywordAt(open - 2) != kKwSelect || stop >= text.Count()) return false;
  return SayAlone(text, finding, open - 1, stop, stop);
}

// RAND is no value: only its product with a number is.
bool RandAlone(CFailedText& text, Finding& finding) {
  for (size_t back = 1; back <= 3; ++back) {
    const size_t name = text.Stop() - back;
    if (text.Stop() < back || text.KeywordAt(name) != kKwRand) continue;
    return text.Say(finding, name, fmt::format("write {}", ShapeOf(kKwRand)));
  }
  return false;
}

// Too few values, too many, or one where there is none.
bool FunctionShape(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  const KeywordId keyword = text.KeywordAt(stop);
  const CExpected& expected = text.ExpectedAtStop();
  const size_t open = OpenAround(text, stop);
  // A name that is no column that fits is another fault.
  if (open == kNoToken || open == 0 || text.Position() != stop) return false;
  const char* const pShape = ShapeOf(text.KeywordAt(open - 1));
  if (!pShape) return false;
  const bool isTooFew = keyword == kKwClose && !expected.Has(kKwClose);
  const bool isTooMany =
      !isTooFew && expected.Has(kKwClose) && (keyword == kKwComma || stop == open + 1);
  const bool isLength = keyword == kKwOpen && text.KeywordAt(stop - 1) == kKwVarchar;
  const bool isFrom = keyword == kKwFrom && text.KeywordAt(open - 1) == kKwSubstring &&
                      expected.Has(kKwComma) && text.IsInteger(stop + 1);
  if (!isTooFew && !isTooMany && !isLength && !isFrom) return false;
  return text.Say(finding, stop, fmt::format("write {}", pShape));
}

// CONVERT(int, x) of what is a number.
bool ConvertedAlready(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  if (i < 2 || text.KeywordAt(i - 1) != kKwComma || text.KeywordAt(i - 2) != kKwInt) return false;
  const DiagParamDef* const pDef = text.IsWord(i) ? text.Column(i).pDef : nullptr;
  if (!pDef || pDef->Type != ParamType::Dword) return false;
  return text.Say(finding, i, fmt::format("{} holds a number already", pDef->Name));
}

// GETDATE() - 1
bool DateArithmetic(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (stop == 0 || (!text.Is(stop, "+") && !text.Is(stop, "-"))) return false;
  KeywordId function = kNoKeyword;
  if (text.KeywordAt(stop - 1) == kKwClose) {
    const size_t open = OpenAround(text, stop - 1);
    if (open != kNoToken && open > 0) function = text.KeywordAt(open - 1);
  }
  const bool isDate = function == kKwGetDate || function == kKwDateAdd ||
                      (text.IsWord(stop - 1) && text.Column(stop - 1).pDef &&
                       text.Column(stop - 1).pDef->Type == ParamType::Datime);
  if (!isDate) return false;
  const bool isMinus = text.Is(stop, "-");
  return text.Say(finding, stop,
                  fmt::format("a date is moved by DATEADD(part, n, x), such as DATEADD(dd, {}, x)",
                              isMinus ? "0 - 1" : "1"));
}

constexpr FailureRule kFunctionRules[] = {AggregateBesideOthers, RandAlone, ConvertedAlready,
                                          FunctionShape, DateArithmetic};

}  // namespace

std::span<const FailureRule> FunctionRules() {
  return kFunctionRules;
}

}  // namespace kestra
