#include "platform/os/Clock.h"

#include <time.h>

#include <cerrno>
#include <limits>

namespace kestra::os {
namespace {

constexpr int64_t kTicksPerSecond = 10'000'000;
constexpr int64_t kSecondsTo1970 = 11'644'473'600;
constexpr int64_t kSecondsPerDay = 86'400;
constexpr int64_t kMostTicks = std::numeric_limits<int64_t>::max();

// Seconds east of UTC that the process's time zone has at a moment (seconds since 1970).
bool ZoneOffset(int64_t moment, int64_t& offset) {
  const time_t time = moment;
  tm broken{};
  if (!localtime_r(&time, &broken)) return false;
  offset = broken.tm_gmtoff;
  return true;
}

bool Shift(FileTime from, int64_t seconds, FileTime& to) {
  const int64_t ticks = static_cast<int64_t>(from.ticks) + seconds * kTicksPerSecond;
  if (ticks < 0) return false;
  to.ticks = static_cast<uint64_t>(ticks);
  return true;
}

// False beyond what a file time may be, with room for any zone's offset.
bool SecondsSince1970(FileTime time, int64_t& seconds) {
  if (time.ticks > static_cast<uint64_t>(kMostTicks - 2 * kSecondsPerDay * kTicksPerSecond))
    return false;
  seconds = static_cast<int64_t>(time.ticks) / kTicksPerSecond - kSecondsTo1970;
  return true;
}

FileTime FileTimeFromTimespec(const timespec& time) {
  const int64_t ticks = (time.tv_sec + kSecondsTo1970) * kTicksPerSecond + time.tv_nsec / 100;
  return FileTime{ticks > 0 ? static_cast<uint64_t>(ticks) : 0};
}

timespec ReadClock(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return now;
}

}  // namespace

uint32_t TickCount() {
  const timespec now = ReadClock(CLOCK_MONOTONIC);
  return static_cast<uint32_t>(now.tv_sec * 1000 + now.tv_nsec / 1'000'000);
}

uint64_t PerformanceCounter() {
  const timespec now = ReadClock(CLOCK_MONOTONIC);
  return static_cast<uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<uint64_t>(now.tv_nsec);
}

FileTime SystemTimeAsFileTime() {
  return FileTimeFromTimespec(ReadClock(CLOCK_REALTIME));
}

// The zone's offsets of a day before and a day after are the two that can hold. With the earlier
// one the answer is the first of two moments, and in a gap the moment as far behind the change as
// the local time was behind the gap's beginning.
bool LocalFileTimeToFileTime(FileTime local, FileTime& utc) {
  int64_t seconds = 0;
  int64_t before = 0;
  int64_t after = 0;
  if (!SecondsSince1970(local, seconds) || !ZoneOffset(seconds - kSecondsPerDay, before) ||
      !ZoneOffset(seconds + kSecondsPerDay, after))
    return false;
  int64_t offset = before;
  if (before != after) {
    int64_t holds = 0;
    if (!ZoneOffset(seconds - before, holds)) return false;
    int64_t holdsAfter = 0;
    if (!ZoneOffset(seconds - after, holdsAfter)) return false;
    if (holds != before && holdsAfter == after) offset = after;
  }
  return Shift(local, -offset, utc);
}

bool FileTimeToLocalFileTime(FileTime utc, FileTime& local) {
  int64_t seconds = 0;
  int64_t offset = 0;
  return SecondsSince1970(utc, seconds) && ZoneOffset(seconds, offset) && Shift(utc, offset, local);
}

SystemTime LocalTime() {
  const timespec now = ReadClock(CLOCK_REALTIME);
  tm broken{};
  SystemTime time;
  if (!localtime_r(&now.tv_sec, &broken)) return time;
  time.wYear = static_cast<uint16_t>(broken.tm_year + 1900);
  time.wMonth = static_cast<uint16_t>(broken.tm_mon + 1);
  time.wDayOfWeek = static_cast<uint16_t>(broken.tm_wday);
  time.wDay = static_cast<uint16_t>(broken.tm_mday);
  time.wHour = static_cast<uint16_t>(broken.tm_hour);
  time.wMinute = static_cast<uint16_t>(broken.tm_min);
  time.wSecond = static_cast<uint16_t>(broken.tm_sec);
  time.wMilliseconds = static_cast<uint16_t>(now.tv_nsec / 1'000'000);
  return time;
}

void Sleep(uint32_t milliseconds) {
  timespec rest{milliseconds / 1000, (milliseconds % 1000) * 1'000'000L};
  while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
  }
}

}  // namespace kestra::os
