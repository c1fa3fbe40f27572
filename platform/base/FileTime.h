// Moments and calendar times as the Win32 API has them, on every system.
#pragma once

#include <compare>
#include <cstdint>

namespace kestra {

// 100-nanosecond ticks since 1601-01-01 00:00:00 UTC. 0 stands for "no time".
// Source: the Win32 page of FILETIME.
struct FileTime {
  uint64_t ticks = 0;
  friend auto operator<=>(const FileTime&, const FileTime&) = default;
};

// A broken-down time. Whether it is UTC or local is said where it is used.
// Source: the Win32 page of SYSTEMTIME.
struct SystemTime {
  uint16_t wYear = 0;
  uint16_t wMonth = 0;      // 1 to 12
  uint16_t wDayOfWeek = 0;  // 0 is Sunday
  uint16_t wDay = 0;        // 1 to 31
  uint16_t wHour = 0;
  uint16_t wMinute = 0;
  uint16_t wSecond = 0;
  uint16_t wMilliseconds = 0;
};

}  // namespace kestra
