// Between UTC and the local time of a zone whose offset from UTC changes.
#pragma once

#include <cstdint>
#include <limits>

#include "platform/base/FileTime.h"

namespace kestra {

inline constexpr int64_t kTicksPerSecond = 10'000'000;
inline constexpr int64_t kSecondsPerDay = 86'400;

// False for a time before 1601.
inline bool ShiftTime(FileTime from, int64_t seconds, FileTime& to) {
  const int64_t ticks = static_cast<int64_t>(from.ticks) + seconds * kTicksPerSecond;
  if (ticks < 0) return false;
  to.ticks = static_cast<uint64_t>(ticks);
  return true;
}

// Whether a zone's offset, and the looks around that LocalToUtc takes, keep it in range.
inline bool IsConvertible(FileTime time) {
  constexpr int64_t kMostTicks = std::numeric_limits<int64_t>::max();
  return time.ticks <= static_cast<uint64_t>(kMostTicks - 2 * kSecondsPerDay * kTicksPerSecond);
}

// offsetAt(moment, offset) gives the seconds east of UTC that hold at a moment of UTC; false where
// that is not known.
template <class OffsetAt>
bool UtcToLocal(FileTime utc, OffsetAt&& offsetAt, FileTime& local) {
  int64_t offset = 0;
  return IsConvertible(utc) && offsetAt(utc, offset) && ShiftTime(utc, offset, local);
}

// A local time that a change skips moves forward by the change; one that occurs twice is taken as
// the first. The zone's offsets of a day before and a day after are the two that can hold. With the
// earlier one the answer is the first of two moments, and in a gap the moment as far behind the
// change as the local time was behind the gap's beginning.
template <class OffsetAt>
bool LocalToUtc(FileTime local, OffsetAt&& offsetAt, FileTime& utc) {
  const auto offsetNear = [&](int64_t seconds, int64_t& offset) {
    FileTime moment;  // 1601 for what would be before
    ShiftTime(local, seconds, moment);
    return offsetAt(moment, offset);
  };
  int64_t before = 0;
  int64_t after = 0;
  if (!IsConvertible(local) || !offsetNear(-kSecondsPerDay, before) ||
      !offsetNear(kSecondsPerDay, after))
    return false;
  int64_t offset = before;
  if (before != after) {
    int64_t holds = 0;
    int64_t holdsAfter = 0;
    if (!offsetNear(-before, holds) || !offsetNear(-after, holdsAfter)) return false;
    if (holds != before && holdsAfter == after) offset = after;
  }
  return ShiftTime(local, -offset, utc);
}

}  // namespace kestra
