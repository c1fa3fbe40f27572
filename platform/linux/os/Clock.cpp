#include "platform/os/Clock.h"

#include <time.h>

#include <cerrno>

#include "platform/base/ZoneTime.h"

namespace kestra::os {
namespace {

constexpr int64_t kSecondsTo1970 = 11'644'473'600;

// Seconds east of UTC that the process's time zone has at a moment.
bool ZoneOffset(FileTime moment, int64_t& offset) {
  const time_t time = static_cast<int64_t>(moment.ticks) / kTicksPerSecond - kSecondsTo1970;
  tm broken{};
  if (!localtime_r(&time, &broken)) return false;
  offset = broken.tm_gmtoff;
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

bool LocalFileTimeToFileTime(FileTime local, FileTime& utc) {
  return LocalToUtc(local, ZoneOffset, utc);
}

bool FileTimeToLocalFileTime(FileTime utc, FileTime& local) {
  return UtcToLocal(utc, ZoneOffset, local);
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
