// Clocks and the local time zone.
#pragma once

#include <cstdint>

#include "platform/base/FileTime.h"

namespace kestra::os {

// Milliseconds of a clock that never goes back; wraps after 49.7 days, so differences are taken as
// unsigned numbers.
uint32_t TickCount();

// A fast-moving counter of unspecified unit and start.
uint64_t PerformanceCounter();

// The present moment.
FileTime SystemTimeAsFileTime();

// Between UTC and the process's time zone. The answer is false when the moment or the calendar
// time is outside what the system converts; SystemTimeToFileTime and its inverse do the calendar
// arithmetic and know no zone. A local time that a clock change skips moves forward by the change;
// one that occurs twice is taken as the first.
bool LocalFileTimeToFileTime(FileTime local, FileTime& utc);
bool FileTimeToLocalFileTime(FileTime utc, FileTime& local);

// The present moment in local time.
SystemTime LocalTime();

// Ends the calling thread's turn for at least this long. Only for tests and for polling where the
// system offers nothing to wait for.
void Sleep(uint32_t milliseconds);

}  // namespace kestra::os
