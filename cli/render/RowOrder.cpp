#include "cli/render/RowOrder.h"

#include <algorithm>
#include <numeric>
#include <string_view>

#include "cli/NearNames.h"
#include "cli/Terminal.h"
#include "cli/render/Rows.h"

namespace kestra::cli {
namespace {

struct SortKey {
  enum Rank { Number, Text, Version, Nothing } rank = Nothing;
  int64_t number = 0;
  std::string text;
};

SortKey KeyOf(const Cell& cell) {
  switch (cell.kind) {
    case CellKind::Null:
      return {};
    case CellKind::Boolean:
    case CellKind::Number:
    case CellKind::Datime:
      return {SortKey::Number, cell.number, {}};
    case CellKind::Version:
      return {SortKey::Version, 0, FoldCase(cell.text)};
    default:
      return {SortKey::Text, 0, FoldCase(cell.text)};
  }
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Takes the run of digits, or of anything else, that a text begins with.
std::string_view TakeRun(std::string_view& text) {
  size_t end = 0;
  while (end < text.size() && IsDigit(text[end]) == IsDigit(text.front())) ++end;
  const std::string_view run = text.substr(0, end);
  text.remove_prefix(end);
  return run;
}

int CompareNumbers(std::string_view left, std::string_view right) {
  left.remove_prefix(std::min(left.find_first_not_of('0'), left.size()));
  right.remove_prefix(std::min(right.find_first_not_of('0'), right.size()));
  if (left.size() != right.size()) return left.size() < right.size() ? -1 : 1;
  return left.compare(right);
}

// "1.9" before "1.10", and that before "1.10a".
int CompareVersions(std::string_view left, std::string_view right) {
  while (!left.empty() && !right.empty()) {
    const bool areNumbers = IsDigit(left.front()) && IsDigit(right.front());
    const std::string_view leftRun = TakeRun(left);
    const std::string_view rightRun = TakeRun(right);
    const int order = areNumbers ? CompareNumbers(leftRun, rightRun) : leftRun.compare(rightRun);
    if (order != 0) return order;
  }
  return static_cast<int>(!left.empty()) - static_cast<int>(!right.empty());
}

int Compare(const SortKey& left, const SortKey& right) {
  if (left.rank != right.rank) return left.rank < right.rank ? -1 : 1;
  if (left.rank == SortKey::Version) return CompareVersions(left.text, right.text);
  if (left.number != right.number) return left.number < right.number ? -1 : 1;
  return left.text.compare(right.text);
}

bool StandsBefore(const SortKey& left, const SortKey& right, bool isDescending) {
  const bool isEitherUnset = left.rank == SortKey::Nothing || right.rank == SortKey::Nothing;
  const int order = Compare(left, right);
  return isDescending && !isEitherUnset ? order > 0 : order < 0;
}

// The number of the column of that name, columns.size() without one.
size_t Named(const std::vector<Column>& columns, const std::string& wanted) {
  const auto isNamed = [&](const Column& column) { return column.name == wanted; };
  auto found = std::find_if(columns.begin(), columns.end(), isNamed);
  if (found == columns.end()) {
    const std::string folded = FoldCase(wanted);
    found = std::find_if(columns.begin(), columns.end(),
                         [&](const Column& column) { return FoldCase(column.name) == folded; });
  }
  return static_cast<size_t>(found - columns.begin());
}

// What was probably meant by a name that no column has.
std::string Advice(const std::vector<Column>& columns, const std::string& wanted) {
  const std::string beforeColon = wanted.substr(0, wanted.rfind(':'));
  if (beforeColon != wanted && Named(columns, beforeColon) != columns.size()) {
    return "; behind " + beforeColon + " can stand :asc or :desc";
  }
  std::vector<std::string> names;
  for (const Column& column : columns) names.push_back(column.name);
  return NearNamesSentence(wanted, names);
}

size_t FindColumn(const std::vector<Column>& columns, const std::string& wanted) {
  const size_t found = Named(columns, wanted);
  if (found != columns.size()) return found;
  throw CUnknownColumn("the result has no column \"" + wanted + "\" to sort by" +
                       Advice(columns, wanted));
}

std::vector<int32_t> Sorted(kestra_value* vector, const std::vector<std::string>& names,
                            const RowSelection& selection) {
  const SortOrder& order = *selection.sort;
  RowSelection all;
  all.pCancellation = selection.pCancellation;
  CRows rows(vector, names, CRowOrder(vector, names, all));
  if (rows.Columns().empty()) return {};
  const size_t column = FindColumn(rows.Columns(), order.column);
  std::vector<SortKey> keys;
  for (int32_t i = 0; i < rows.Count(); ++i) keys.push_back(KeyOf(rows.Read(i)[column]));
  std::vector<int32_t> numbers(keys.size());
  std::iota(numbers.begin(), numbers.end(), 0);
  std::stable_sort(numbers.begin(), numbers.end(), [&](int32_t left, int32_t right) {
    return StandsBefore(keys[static_cast<size_t>(left)], keys[static_cast<size_t>(right)],
                        order.isDescending);
  });
  return numbers;
}

bool TakeEnd(std::string& text, std::string_view end) {
  if (text.size() <= end.size()) return false;
  if (FoldCase(text.substr(text.size() - end.size())) != end) return false;
  text.resize(text.size() - end.size());
  return true;
}

}  // namespace

SortOrder ParseSortOrder(const std::string& text) {
  SortOrder order{text};
  order.isDescending = TakeEnd(order.column, ":desc");
  if (!order.isDescending) TakeEnd(order.column, ":asc");
  return order;
}

CRowOrder::CRowOrder(kestra_value* vector, const std::vector<std::string>& names,
                     const RowSelection& selection)
    : m_pCancellation(selection.pCancellation) {
  const auto values = Take<CValuesHandle>(kestra_value_as_vector, vector);
  m_total = Ask<int32_t>(kestra_values_count, values.get());
  m_count = std::min(m_total, selection.limit.value_or(m_total));
  if (selection.sort) m_rows = Sorted(vector, names, selection);
}

}  // namespace kestra::cli
