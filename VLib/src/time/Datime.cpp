#include "VLib/src/time/Datime.h"

#include <limits>

#include "platform/os/Clock.h"

namespace kestra {
namespace {

constexpr uint64_t kTicksPerMillisecond = 10'000;
constexpr uint64_t kTicksPerSecond = 10'000'000;
constexpr uint64_t kTicksPerDay = 86'400 * kTicksPerSecond;
constexpr uint64_t kSecondsTo1970 = 11'644'473'600;
constexpr uint32_t kFirstYear = 1601;
constexpr uint32_t kLastYear = 30827;
constexpr uint32_t kDaysPer400Years = 146'097;

bool IsLeapYear(uint32_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

uint32_t DaysInMonth(uint32_t year, uint32_t month) {
  constexpr uint8_t kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return kDays[month - 1] + (month == 2 && IsLeapYear(year) ? 1u : 0u);
}

// Days from 1601-01-01 to January 1 of year. 1601 is the first year of a 400-year cycle.
uint32_t DaysBeforeYear(uint32_t year) {
  const uint32_t years = year - kFirstYear;
  return years * 365 + years / 4 - years / 100 + years / 400;
}

void PutDigits(std::string& text, size_t place, size_t count, uint32_t number) {
  for (size_t i = place + count; i-- > place; number /= 10) {
    text[i] = static_cast<char>('0' + number % 10);
  }
}

}  // namespace

bool SystemTimeToFileTime(const SystemTime& time, FileTime& fileTime) {
  if (time.wYear < kFirstYear || time.wYear > kLastYear || time.wMonth < 1 || time.wMonth > 12)
    return false;
  if (time.wDay < 1 || time.wDay > DaysInMonth(time.wYear, time.wMonth)) return false;
  if (time.wHour > 23 || time.wMinute > 59 || time.wSecond > 59 || time.wMilliseconds > 999)
    return false;
  uint64_t days = DaysBeforeYear(time.wYear) + time.wDay - 1u;
  for (uint32_t month = 1; month < time.wMonth; ++month) days += DaysInMonth(time.wYear, month);
  const uint64_t seconds = (time.wHour * 60u + time.wMinute) * 60u + time.wSecond;
  fileTime.ticks =
      days * kTicksPerDay + seconds * kTicksPerSecond + time.wMilliseconds * kTicksPerMillisecond;
  return true;
}

bool FileTimeToSystemTime(FileTime fileTime, SystemTime& time) {
  if (fileTime.ticks > static_cast<uint64_t>(std::numeric_limits<int64_t>::max())) return false;
  const auto days = static_cast<uint32_t>(fileTime.ticks / kTicksPerDay);
  const uint64_t rest = fileTime.ticks % kTicksPerDay;
  // An estimate that is the year or one too many, since a year has at most 366 days.
  uint32_t year = kFirstYear + static_cast<uint32_t>(uint64_t{days} * 400 / kDaysPer400Years) + 1;
  while (DaysBeforeYear(year) > days) --year;
  uint32_t day = days - DaysBeforeYear(year);
  uint32_t month = 1;
  while (day >= DaysInMonth(year, month)) day -= DaysInMonth(year, month++);
  const auto milliseconds = static_cast<uint32_t>(rest / kTicksPerMillisecond);
  time.wYear = static_cast<uint16_t>(year);
  time.wMonth = static_cast<uint16_t>(month);
  time.wDayOfWeek = static_cast<uint16_t>((days + 1) % 7);  // 1601-01-01 was a Monday
  time.wDay = static_cast<uint16_t>(day + 1);
  time.wHour = static_cast<uint16_t>(milliseconds / 3'600'000);
  time.wMinute = static_cast<uint16_t>(milliseconds / 60'000 % 60);
  time.wSecond = static_cast<uint16_t>(milliseconds / 1000 % 60);
  time.wMilliseconds = static_cast<uint16_t>(milliseconds % 1000);
  return true;
}

FileTime FileTimeFromDatime(uint32_t datime) {
  return FileTime{(datime + kSecondsTo1970) * kTicksPerSecond};
}

std::optional<uint32_t> DatimeFromFileTime(FileTime fileTime) {
  const uint64_t seconds = fileTime.ticks / kTicksPerSecond;
  if (seconds < kSecondsTo1970) return std::nullopt;
  if (seconds - kSecondsTo1970 > std::numeric_limits<uint32_t>::max()) return std::nullopt;
  return static_cast<uint32_t>(seconds - kSecondsTo1970);
}

std::optional<uint32_t> DatimeFromSystemTime(const SystemTime& time, bool isLocal) {
  FileTime fileTime;
  if (!SystemTimeToFileTime(time, fileTime)) return std::nullopt;
  if (isLocal && !os::LocalFileTimeToFileTime(fileTime, fileTime)) return std::nullopt;
  return DatimeFromFileTime(fileTime);
}

bool LocalSystemTimeFromDatime(uint32_t datime, SystemTime& time) {
  FileTime local;
  return os::FileTimeToLocalFileTime(FileTimeFromDatime(datime), local) &&
         FileTimeToSystemTime(local, time);
}

std::string DatimeText(uint32_t datime) {
  SystemTime time;
  if (!LocalSystemTimeFromDatime(datime, time)) return std::string();
  // Lists have a date in every row: digits are put in place, without a format to be read.
  std::string text = "0000-00-00 00:00:00";
  PutDigits(text, 0, 4, time.wYear);
  PutDigits(text, 5, 2, time.wMonth);
  PutDigits(text, 8, 2, time.wDay);
  PutDigits(text, 11, 2, time.wHour);
  PutDigits(text, 14, 2, time.wMinute);
  PutDigits(text, 17, 2, time.wSecond);
  return text;
}

uint32_t CurrentDatime() {
  return DatimeFromFileTime(os::SystemTimeAsFileTime()).value_or(0);
}

}  // namespace kestra
