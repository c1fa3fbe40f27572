// Date functions. A part name arrives as a string in any case. Literals and calendar fields are
// local time; GETDATE() is UTC.
#include <algorithm>
#include <optional>

#include "VLib/src/text/Text.h"
#include "VLib/src/time/Datime.h"
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"

namespace kestra {
namespace {

// Seconds of a part of fixed length; nothing for years and months, and for what is no part.
std::optional<int64_t> SecondsOfPart(std::string_view part) {
  static constexpr struct {
    std::string_view name;
    int64_t seconds;
  } kParts[] = {{"wk", 604800}, {"dw", 86400}, {"dd", 86400}, {"hh", 3600}, {"mi", 60}, {"ss", 1}};
  for (const auto& known : kParts) {
    if (EqualsNoCase(part, known.name)) return known.seconds;
  }
  return std::nullopt;
}

// Every fourth year is taken for a leap year; 2100 too.
uint16_t LastDay(uint16_t year, uint16_t month) {
  if (month == 2) return (year - 2000) % 4 == 0 ? 29 : 28;
  return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

void AddMonths(SystemTime& time, int32_t count) {
  const int64_t month = int64_t{time.wMonth} + count;
  int64_t year = time.wYear;
  if (month > 0) {
    year += (month - 1) / 12;
    time.wMonth = static_cast<uint16_t>((month - 1) % 12 + 1);
  } else {
    year += month / 12 - 1;
    time.wMonth = static_cast<uint16_t>(month % 12 + 12);
  }
  time.wYear = static_cast<uint16_t>(year);
}

std::optional<uint32_t> AddToCalendar(bool isYear, int32_t count, uint32_t datime) {
  SystemTime time;
  if (!LocalSystemTimeFromDatime(datime, time)) return std::nullopt;
  if (isYear) {
    time.wYear = static_cast<uint16_t>(time.wYear + static_cast<uint32_t>(count));
  } else {
    AddMonths(time, count);
  }
  time.wDay = std::min(time.wDay, LastDay(time.wYear, time.wMonth));
  return DatimeFromSystemTime(time, true);
}

std::optional<uint32_t> AddPart(std::string_view part, int32_t count, uint32_t datime) {
  if (const auto seconds = SecondsOfPart(part)) {
    const int64_t sum = int64_t{datime} + int64_t{count} * *seconds;
    if (sum < 0 || sum > UINT32_MAX) return std::nullopt;
    return static_cast<uint32_t>(sum);
  }
  const bool isYear = EqualsNoCase(part, "yy");
  if (!isYear && !EqualsNoCase(part, "mm")) return std::nullopt;
  return AddToCalendar(isYear, count, datime);
}

// The week of the year. The moment is first moved to the hour 1 of its week's sixth day, so that
// the count of whole weeks from January 1 changes between Saturday and Sunday.
std::optional<uint32_t> WeekOfYear(uint32_t datime, SystemTime time) {
  const uint32_t shift = (time.wHour - uint32_t{time.wDayOfWeek} * 24 + 121) * 3600;
  time.wMonth = 1;
  time.wDay = 1;
  time.wHour = 23;
  const auto start = DatimeFromSystemTime(time, true);
  if (!start) return std::nullopt;
  return (datime + shift - *start) / 604800 + 1;
}

std::optional<uint32_t> PartOf(std::string_view part, uint32_t datime) {
  SystemTime time;
  if (!LocalSystemTimeFromDatime(datime, time)) return std::nullopt;
  if (EqualsNoCase(part, "yy")) return time.wYear;
  if (EqualsNoCase(part, "mm")) return time.wMonth;
  if (EqualsNoCase(part, "dd")) return time.wDay;
  if (EqualsNoCase(part, "hh")) return time.wHour;
  if (EqualsNoCase(part, "mi")) return time.wMinute;
  if (EqualsNoCase(part, "ss")) return time.wSecond;
  if (EqualsNoCase(part, "dw")) return time.wDayOfWeek + 1u;
  if (EqualsNoCase(part, "wk")) return WeekOfYear(datime, time);
  return std::nullopt;
}

}  // namespace

bool CurrentTime(Value& out, ParseNode&) {
  out.SetDatime(CurrentDatime());
  return true;
}

bool DateAdd(Value& out, ParseNode& node) {
  std::string part;
  if (const Operand read = ReadString(node, out, 2, part); read != Operand::Ready) {
    return EndOperator(read);
  }
  int32_t count = 0;
  if (const Operand read = ReadNumber(node, out, 4, count); read != Operand::Ready) {
    return EndOperator(read);
  }
  uint32_t datime = 0;
  if (const Operand read = ReadDatime(node, out, 6, datime); read != Operand::Ready) {
    return EndOperator(read);
  }
  const auto sum = AddPart(part, count, datime);
  if (!sum) return Fail(out);
  out.SetDatime(*sum);
  return true;
}

bool DatePart(Value& out, ParseNode& node) {
  std::string part;
  if (const Operand read = ReadString(node, out, 2, part); read != Operand::Ready) {
    return EndOperator(read);
  }
  uint32_t datime = 0;
  if (const Operand read = ReadDatime(node, out, 4, datime); read != Operand::Ready) {
    return EndOperator(read);
  }
  const auto field = PartOf(part, datime);
  if (!field) return Fail(out);
  out.SetNumber(static_cast<int32_t>(*field));
  return true;
}

}  // namespace kestra
