// Words and functions that other query languages have.
#include "query/diagnose/Wording.h"
#include "query/diagnose/rules/Rules.h"

namespace kestra {
namespace {

struct WordRow {
  const char* word;
  const char* advice;
  const char* instead = nullptr;  // in place of the word; null for none
};

constexpr WordRow kWords[] = {
    {"ORDER", "there is no ORDER BY; rows come in the order that their source has"},
    {"LIMIT", "there is no LIMIT; a SELECT gives every row that matches"},
    {"TOP", "there is no TOP; a SELECT gives every row that matches"},
    {"OFFSET", "there is no OFFSET; a SELECT gives every row that matches"},
    {"FETCH", "there is no FETCH; a SELECT gives every row that matches"},
    {"GROUP", "there is no GROUP BY; COUNT, MIN, MAX and SUM take all rows of a SELECT"},
    {"HAVING", "there is no HAVING; conditions stand in WHERE"},
    {"DISTINCT", "there is no DISTINCT; every row is given"},
    {"BETWEEN", "there is no BETWEEN; write x >= a AND x <= b"},
    {"AS", "an alias stands behind its source without AS, and columns have none"},
    {"LEFT", "there is no LEFT JOIN; a JOIN gives the rows that match"},
    {"RIGHT", "there is no RIGHT JOIN; a JOIN gives the rows that match"},
    {"FULL", "there is no FULL JOIN; a JOIN gives the rows that match"},
    {"OUTER", "there is no OUTER JOIN; a JOIN gives the rows that match"},
    {"CROSS", "there is no CROSS JOIN; write JOIN ... ON 1 = 1"},
    {"INNER", "write JOIN without INNER"},
    {"NATURAL", "there is no NATURAL JOIN; write JOIN ... ON a.Column = b.Column"},
    {"USING", "there is no USING; write ON a.Column = b.Column"},
    {"UNION", "there is no UNION; run two queries"},
    {"EXCEPT", "there is no EXCEPT; write WHERE (SELECT COUNT(*) FROM ... WHERE ...) = 0"},
    {"INTERSECT", "there is no INTERSECT; write WHERE (SELECT COUNT(*) FROM ... WHERE ...) > 0"},
    {"EXISTS", "there is no EXISTS; write (SELECT COUNT(*) FROM ...) > 0"},
    {"CASE", "there is no CASE"},
    {"XOR", "there is no XOR; write (a) <> (b)"},
    {"MOD", "there is no MOD; the rest of x / n is x - x / n * n"},
    {"FOR", "there is no FOR"},
    {"ILIKE", "write LIKE"},
    {"RLIKE", "there are no regular expressions; LIKE knows * and ?"},
    {"REGEXP", "there are no regular expressions; LIKE knows * and ?"},
    {"GLOB", "write LIKE, whose wildcards are * and ?", "LIKE"},
    {"MATCH", "write LIKE, whose wildcards are * and ?", "LIKE"},
    {"CONTAINS", "write LIKE '*text*'", "LIKE"},
    {"STARTSWITH", "write LIKE 'text*'", "LIKE"},
    {"HELP", "there is no HELP"},
    {"QUIT", "there is no QUIT"},
    {"EXIT", "there is no EXIT"},
    {"INTO", "write INSERT Module.Class without INTO"},
    {"TRUE", "there is no literal TRUE; write 1 = 1", "1 = 1"},
    {"FALSE", "there is no literal FALSE; write 1 = 0", "1 = 0"},
    {"SHOW", "there is no SHOW"},
    {"DESCRIBE", "there is no DESCRIBE"},
    {"DESC", "there is no DESC; rows come in the order that their source has"},
    {"EXPLAIN", "there is no EXPLAIN"},
    {"WITH", "there is no WITH; a SELECT may stand in parentheses"},
    {"MERGE", "there is no MERGE; use UPDATE and INSERT"},
    {"ALTER", "there is no ALTER; modules are as they are"},
    {"TRUNCATE", "there is no TRUNCATE; use DELETE"},
    {"BEGIN", "there is no BEGIN, and there are no transactions"},
    {"COMMIT", "there are no transactions"},
    {"ROLLBACK", "there are no transactions"},
    {"DECLARE", "there are no variables"},
    {"EXEC", "write EXECUTE ACTION(SELECT * FROM ..., 'name')"},
    {"USE", "there is no USE; every source is written Module.Class"},
    {"TABLE", "there are no tables; what a query reads is a Module.Class"},
};

constexpr WordRow kFunctions[] = {
    {"AVG", "there is no AVG; divide SUM by COUNT"},
    {"UPPER", "there is no UPPER; texts are compared without regard to case"},
    {"LOWER", "there is no LOWER; texts are compared without regard to case"},
    {"COALESCE", "the function is called ISNULL(x, y)", "ISNULL"},
    {"IFNULL", "the function is called ISNULL(x, y)", "ISNULL"},
    {"NVL", "the function is called ISNULL(x, y)", "ISNULL"},
    {"NOW", "the function is called GETDATE()", "GETDATE"},
    {"CURRENT_TIMESTAMP", "the function is called GETDATE()", "GETDATE()"},
    {"CURRENT_DATE", "the function is called GETDATE()", "GETDATE()"},
    {"DATETIME", "the function is called GETDATE()", "GETDATE"},
    {"LENGTH", "the function is called LEN(x)", "LEN"},
    {"SUBSTR", "the function is called SUBSTRING(x, first, length)", "SUBSTRING"},
    {"MID", "the function is called SUBSTRING(x, first, length)", "SUBSTRING"},
    {"LEFT", "there is no LEFT(x, n); write SUBSTRING(x, 1, n)"},
    {"CAST", "write CONVERT(int, x), CONVERT(varchar, x) or CONVERT(version, x)"},
    {"STR", "write CONVERT(varchar, x)"},
    {"TO_CHAR", "write CONVERT(varchar, x)"},
    {"CONCAT", "texts are joined by +"},
    {"TRIM", "there is no TRIM"},
    {"REPLACE", "there is no REPLACE"},
    {"ABS", "there is no ABS"},
    {"ROUND", "there is no ROUND; all numbers are whole"},
    {"CHARINDEX", "there is no CHARINDEX; x LIKE '*text*' tells whether a text is in x"},
    {"INSTR", "there is no INSTR; x LIKE '*text*' tells whether a text is in x"},
    {"YEAR", "write DATEPART(yy, x)"},
    {"MONTH", "write DATEPART(mm, x)"},
    {"DAY", "write DATEPART(dd, x)"},
    {"HOUR", "write DATEPART(hh, x)"},
    {"DATE_ADD", "the function is called DATEADD(part, n, x)", "DATEADD"},
    {"DATEDIFF", "there is no DATEDIFF; compare with DATEADD(part, n, x)"},
    {"RANDOM", "write RAND() * n"},
    {"ANY", "there is no ANY; write (SELECT COUNT(*) FROM ... WHERE ...) > 0"},
    {"SOME", "there is no SOME; write (SELECT COUNT(*) FROM ... WHERE ...) > 0"},
    {"ALL", "there is no ALL; write (SELECT COUNT(*) FROM ... WHERE ...) = 0"},
    {"IF", "there is no IF"},
    {"IIF", "there is no IIF"},
};

bool SayRow(CFailedText& text, Finding& finding, size_t i, std::span<const WordRow> rows) {
  for (const WordRow& row : rows) {
    if (!text.Is(i, row.word)) continue;
    std::vector<std::string> suggestions;
    if (row.instead) suggestions.emplace_back(row.instead);
    return text.Say(finding, i, row.advice, suggestions);
  }
  return false;
}

bool ForeignFunction(CFailedText& text, Finding& finding) {
  for (const size_t i : {text.Position(), text.Stop()}) {
    const bool isCall = text.KeywordAt(i + 1) == kKwOpen || text.Text(i).starts_with("CURRENT_");
    if (isCall && text.Expected().HasColumn() && SayRow(text, finding, i, kFunctions)) return true;
  }
  return false;
}

// At the stop, before it where it was taken for an alias, and where a column was wanted.
bool ForeignWord(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (stop > 0 && text.SourceWithAliasAt(stop - 1) && SayRow(text, finding, stop - 1, kWords)) {
    return true;
  }
  // LEFT JOIN and AS were taken for aliases, and then the real ones are not known.
  if (text.IsUnknownName()) {
    for (const QuerySource& source : text.Sources()) {
      const bool isSuspicious =
          text.KeywordAt(source.alias) == kKwAs || text.KeywordAt(source.alias + 1) == kKwJoin;
      if (source.alias != kNoToken && isSuspicious && SayRow(text, finding, source.alias, kWords)) {
        return true;
      }
    }
  }
  // A column may bear such a name; then it is not that.
  if (text.Position() < text.Count() && text.IsWord(text.Position()) &&
      text.Column(text.Position()).pDef) {
    return false;
  }
  return SayRow(text, finding, text.Position(), kWords) || SayRow(text, finding, stop, kWords);
}

// A flag that is given to an argument or compared with a column is a number.
bool BooleanLiteral(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  const bool isTrue = text.Is(i, "TRUE");
  if ((!isTrue && !text.Is(i, "FALSE")) || !text.IsComparison(i - 1)) return false;
  if (!text.Expected().Has(Predicate::IntegerLiteral)) return false;
  const char* const pNumber = isTrue ? "1" : "0";
  return text.Say(finding, i, std::string("there are no literals TRUE and FALSE; write ") + pNumber,
                  {pNumber});
}

bool SelectAll(CFailedText& text, Finding& finding) {
  const size_t i = text.Position();
  if (i == 0 || !text.Is(i, "ALL") || text.KeywordAt(i - 1) != kKwSelect) return false;
  return text.Column(i).pDef
             ? false
             : text.Say(finding, i, "there is no ALL; a SELECT gives every row that matches");
}

// A shell's command, or half of a name.
bool LeadingDot(CFailedText& text, Finding& finding) {
  if (text.Stop() != 0 || text.KeywordAt(0) != kKwDot) return false;
  return text.Say(finding, 0, text.IsWord(1) ? 1 : 0, "a query does not begin with a dot");
}

// DELETE FROM, where FROM was taken for an alias.
bool DeleteFrom(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  if (stop < 2 || text.KeywordAt(stop - 2) != kKwDelete || text.KeywordAt(stop - 1) != kKwFrom) {
    return false;
  }
  return text.Say(finding, stop - 1, "write DELETE Module.Class without FROM");
}

// A "*" beside columns, and DELETE * FROM.
bool StarAmongColumns(CFailedText& text, Finding& finding) {
  const size_t stop = text.Stop();
  const bool isBehindStar = text.KeywordAt(stop) == kKwComma && text.KeywordAt(stop - 1) == kKwStar;
  const bool isStarBehind = text.KeywordAt(stop) == kKwStar && text.KeywordAt(stop - 1) == kKwComma;
  if (text.KeywordAt(stop) == kKwStar && text.KeywordAt(stop - 1) == kKwDelete) {
    return text.Say(finding, stop, "write DELETE Module.Class WHERE ..., without \"*\"");
  }
  if (!isBehindStar && !isStarBehind) return false;
  return text.Say(finding, stop, "\"*\" stands alone in a SELECT; name the columns instead");
}

constexpr FailureRule kForeignWordRules[] = {LeadingDot,      SelectAll,       DeleteFrom,
                                             BooleanLiteral,  ForeignFunction, ForeignWord,
                                             StarAmongColumns};

}  // namespace

std::span<const FailureRule> ForeignWordRules() {
  return kForeignWordRules;
}

}  // namespace kestra
