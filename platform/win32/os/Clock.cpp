#include "platform/os/Clock.h"

#include "platform/base/ZoneTime.h"
#include "platform/win32/base/Windows.h"
#include "platform/win32/os/TimeZone.h"

namespace kestra::os {
namespace {

uint64_t TicksPerMillisecond() {
  static const uint64_t ticks = [] {
    LARGE_INTEGER perSecond{};
    QueryPerformanceFrequency(&perSecond);
    return static_cast<uint64_t>(perSecond.QuadPart) / 1000;
  }();
  return ticks == 0 ? 1 : ticks;
}

}  // namespace

// GetTickCount goes in steps of up to 16 ms, which is too coarse for waits of a few.
uint32_t TickCount() {
  return static_cast<uint32_t>(PerformanceCounter() / TicksPerMillisecond());
}

uint64_t PerformanceCounter() {
  LARGE_INTEGER now{};
  QueryPerformanceCounter(&now);
  return static_cast<uint64_t>(now.QuadPart);
}

FileTime SystemTimeAsFileTime() {
  FILETIME now{};
  GetSystemTimeAsFileTime(&now);
  return FileTime{(static_cast<uint64_t>(now.dwHighDateTime) << 32) | now.dwLowDateTime};
}

// The system's functions of these names take today's offset for every date.
bool LocalFileTimeToFileTime(FileTime local, FileTime& utc) {
  return LocalToUtc(local, ZoneOffset, utc);
}

bool FileTimeToLocalFileTime(FileTime utc, FileTime& local) {
  return UtcToLocal(utc, ZoneOffset, local);
}

SystemTime LocalTime() {
  FileTime now = SystemTimeAsFileTime();
  FileTimeToLocalFileTime(now, now);
  const FILETIME local{static_cast<DWORD>(now.ticks), static_cast<DWORD>(now.ticks >> 32)};
  SYSTEMTIME parts{};
  ::FileTimeToSystemTime(&local, &parts);
  return SystemTime{parts.wYear, parts.wMonth,  parts.wDayOfWeek, parts.wDay,
                    parts.wHour, parts.wMinute, parts.wSecond,    parts.wMilliseconds};
}

void Sleep(uint32_t milliseconds) {
  ::Sleep(milliseconds);
}

}  // namespace kestra::os
