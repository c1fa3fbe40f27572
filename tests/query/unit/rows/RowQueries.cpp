#include "tests/query/unit/rows/RowQueries.h"

#include <iterator>

namespace kestra::test {
namespace {

constexpr const char* kNumberColumns[] = {"Id", "Num", "Num", "Kind", "Bits"};
constexpr const char* kTextColumns[] = {"Text", "Text", "Kind", "Bits"};
constexpr const char* kMarks[] = {"=", "=", "=", "<>", "<", "<=", ">", ">="};
constexpr const char* kPatterns[] = {"*", "a*", "*k", "*\xC3\x84", "?", "*1*", "", "A"};

}  // namespace

std::string CRowQueries::Source() {
  static constexpr const char* kCounts[] = {"0", "1", "7", "9", "30", "60"};
  if (Pick(4) != 0 || m_lastSource.empty()) {
    m_lastSource = "Data(Seed=" + std::to_string(Pick(4)) + ", Count=" + Of(kCounts) +
                   (Pick(6) == 0 ? ", Odd=1" : "") + ").Entry";
  }
  return m_lastSource;
}

std::string CRowQueries::Alias() {
  if (Pick(40) == 0) return "";
  return m_aliases[Pick(m_aliases.size())] + ".";
}

std::string CRowQueries::Number(int depth) {
  if (depth > 0 && Pick(5) == 0) {
    switch (Pick(6)) {
      case 0:
        return "(" + Number(depth - 1) + " + " + Number(depth - 1) + ")";
      case 1:
        return "(" + Number(depth - 1) + " / " + Number(depth - 1) + ")";
      case 2:
        return "ISNULL(" + Number(depth - 1) + ", " + Number(depth - 1) + ")";
      case 3:
        return "LEN(" + Text(depth - 1) + ")";
      case 4:
        return "CONVERT(INT, " + Text(depth - 1) + ")";
      default:
        return "~" + Alias() + Of(kNumberColumns);
    }
  }
  return Pick(4) == 0 ? std::to_string(Pick(12)) : Alias() + Of(kNumberColumns);
}

std::string CRowQueries::Text(int depth) {
  static constexpr const char* kLiterals[] = {"'a'", "'K'", "'10'", "''", "'\xC3\x84'", "'alpha'"};
  if (depth > 0 && Pick(6) == 0) {
    if (Pick(2) == 0) return "(" + Text(depth - 1) + " + " + Text(depth - 1) + ")";
    return "SUBSTRING(" + Text(depth - 1) + ", " + Number(0) + ", 1)";
  }
  return Pick(4) == 0 ? Of(kLiterals) : Alias() + Of(kTextColumns);
}

std::string CRowQueries::Datime() {
  return Pick(6) == 0 ? "DATEADD(dd, " + Number(0) + ", " + Alias() + "At)" : Alias() + "At";
}

// What an index may serve.
std::string CRowQueries::Equality() {
  switch (Pick(6)) {
    case 0:
      return Alias() + Of(kTextColumns) + " = " + Text(1);
    case 1:
      return Text(1) + " = " + Alias() + Of(kTextColumns);
    case 2:
      return Alias() + "At = " + Datime();
    case 3:
      return Number(1) + " = " + Alias() + Of(kNumberColumns);
    default:
      return Alias() + Of(kNumberColumns) + " = " + Number(1);
  }
}

std::string CRowQueries::Comparison() {
  switch (Pick(11)) {
    case 0:
    case 1:
      return Number(1) + " " + Of(kMarks) + " " + Number(1);
    case 2:
      return Text(1) + " " + Of(kMarks) + " " + Text(1);
    case 3:
      return Alias() + "At " + Of(kMarks) + " " + Datime();
    case 4:
      return Alias() + "Rel " + Of(kMarks) + (Pick(2) == 0 ? " 1.2" : " " + Alias() + "Rel");
    case 5:
      return Text(1) + " LIKE '" + Of(kPatterns) + "'";
    case 6:
      return Text(0) + " LIKE " + Text(0);
    case 7:
      return Number(0) + (Pick(2) == 0 ? " IN" : " NOT IN") + " (1, 2, " + Number(0) + ")";
    case 8:
      return Number(1) + (Pick(2) == 0 ? " IS NULL" : " IS NOT NULL");
    default:
      return Equality();
  }
}

std::string CRowQueries::Condition(int depth) {
  switch (depth > 0 ? Pick(6) : 5) {
    case 0:
    case 1:
      return Condition(depth - 1) + " AND " + Condition(depth - 1);
    case 2:
      return "(" + Condition(depth - 1) + " OR " + Condition(depth - 1) + ")";
    case 3:
      return "NOT (" + Condition(depth - 1) + ")";
    case 4:
      return "(" + Comparison() + ") = (" + Comparison() + ")";
    default:
      return Comparison();
  }
}

std::string CRowQueries::Joins(int sources) {
  m_aliases = {"a"};
  std::string text = Source() + " a";
  for (int i = 1; i < sources; ++i) {
    m_aliases.push_back(std::string(1, static_cast<char>('a' + i)));
    text += " JOIN " + Source() + " " + m_aliases.back() + " ON ";
    const bool namesNext = i + 1 < sources && Pick(8) == 0;  // which is not known yet
    if (namesNext) m_aliases.push_back(std::string(1, static_cast<char>('b' + i)));
    switch (Pick(4)) {
      case 0:
        text += Condition(2);
        break;
      case 1:
        text += Condition(1) + " AND " + Equality();
        break;
      case 2:
        text += Equality() + " AND " + Condition(1);
        break;
      default:
        text += Equality();
        break;
    }
    if (namesNext) m_aliases.pop_back();
  }
  return text;
}

std::string CRowQueries::Where() {
  return Pick(2) == 0 ? "" : " WHERE " + Condition(2);
}

// A WHERE of a sub-select, which an index may serve.
std::string CRowQueries::Filter() {
  switch (Pick(5)) {
    case 0:
      return Where();
    case 1:
      return " WHERE " + Condition(1) + " AND " + Equality();
    case 2:
      return " WHERE " + Equality() + " AND " + Condition(1);
    default:
      return " WHERE s.Id = " + Number(0) + (Pick(2) == 0 ? " AND " + Equality() : "");
  }
}

std::string CRowQueries::Scalar() {
  static constexpr const char* kHeads[] = {"COUNT(*)",   "COUNT(s.Text)", "MAX(s.Num)",
                                           "MIN(s.Id)",  "SUM(s.Kind)",   "s.Num",
                                           "s.Id + s.Id"};
  const auto outer = m_aliases;
  const bool isApart = Pick(3) == 0;
  if (isApart) m_aliases.clear();
  m_aliases.push_back("s");
  std::string text = "(SELECT " + Of(kHeads) + " FROM " + Source() + " s" + Filter() + ")";
  m_aliases = outer;
  return text;
}

// The sources come first: what stands before them names their aliases.
std::string CRowQueries::Next() {
  static constexpr int kSources[] = {2, 3, 2, 1, 1, 1, 2, 1};
  const size_t form = Pick(std::size(kSources));
  const std::string from = " FROM " + Joins(kSources[form]);
  switch (form) {
    case 0:
      return "SELECT a.Id, b.Id" + from + Where();
    case 1:
      return "SELECT a.Id, b.Text, c.Id" + from + Where();
    case 2:
      return std::string("(SELECT ") + (Pick(2) == 0 ? "COUNT(*)" : "a.Id") + from + Where() + ")";
    case 3:
      return "SELECT a.Id, a.Num, a.Text, a.Kind, a.At" + from + Where();
    case 4:
      return "SELECT a.Id, " + Scalar() + from + Where();
    case 5:
      return "SELECT a.Id" + from + " WHERE " + Number(0) + " " + Of(kMarks) + " " + Scalar();
    case 6:
      return "SELECT a.Id, b.Id" + from + " WHERE " + (Pick(2) == 0 ? Equality() + " AND " : "") +
             Number(0) + " " + Of(kMarks) + " " + Scalar();
    default:
      return "SELECT *" + from + " WHERE a.Text LIKE '" + Of(kPatterns) + "' AND a.Num " +
             Of(kMarks) + " " + std::to_string(Pick(12));
  }
}

}  // namespace kestra::test
