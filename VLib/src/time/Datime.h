// Datime: unsigned 32-bit seconds since 1970-01-01 00:00:00 UTC, as the query language counts time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/base/FileTime.h"

namespace kestra {

// Between a file time and a calendar time, with no time zone. False for a calendar time that does
// not exist (a 30th of February) or lies outside 1601 to 30827. wDayOfWeek is ignored on input.
// They do what the Win32 functions of the same names do.
bool SystemTimeToFileTime(const SystemTime& time, FileTime& fileTime);
bool FileTimeToSystemTime(FileTime fileTime, SystemTime& time);

FileTime FileTimeFromDatime(uint32_t datime);
// Nothing when the moment does not fit 32 bits.
std::optional<uint32_t> DatimeFromFileTime(FileTime fileTime);
// From a calendar time, local or UTC. Nothing when it does not exist or does not fit.
std::optional<uint32_t> DatimeFromSystemTime(const SystemTime& time, bool isLocal);
// To local calendar time. False when the system cannot convert the moment.
bool LocalSystemTimeFromDatime(uint32_t datime, SystemTime& time);

// "yyyy-mm-dd hh:mm:ss" in local time; the empty text if the moment does not convert.
std::string DatimeText(uint32_t datime);
uint32_t CurrentDatime();

}  // namespace kestra
