#include "platform/win32/os/TimeZone.h"

#include <cstring>
#include <optional>

#include "platform/base/ZoneTime.h"
#include "platform/os/Clock.h"
#include "platform/win32/base/Optional.h"

namespace kestra::os {
namespace {

// How long the machine's setting is taken for unchanged, and a year's rules with it.
constexpr uint32_t kSettingMs = 1000;

std::optional<DYNAMIC_TIME_ZONE_INFORMATION> s_chosenZone;
uint32_t s_choice = 0;  // counts the changes of the above

// The rules of the year that was asked for last, for a thread. Whoever lists files asks by the
// thousand, and mostly for one year; and the system reads its registry for each answer.
struct YearRules {
  WORD year = 0;
  uint32_t choice = 0;
  uint32_t readAt = 0;
  TIME_ZONE_INFORMATION zone{};
};

// The machine's zone as it is in a year: laws change. Without a name in the registry the rules are
// what they are.
bool ReadRules(WORD year, TIME_ZONE_INFORMATION& rules) {
  static const auto pForYear =
      Optional<BOOL WINAPI(USHORT, PDYNAMIC_TIME_ZONE_INFORMATION, LPTIME_ZONE_INFORMATION)>(
          L"kernel32.dll", "GetTimeZoneInformationForYear");
  DYNAMIC_TIME_ZONE_INFORMATION zone{};
  if (s_chosenZone) {
    zone = *s_chosenZone;
  } else if (GetDynamicTimeZoneInformation(&zone) == TIME_ZONE_ID_INVALID) {
    return false;
  }
  // The first part of the longer record is the shorter one.
  static_assert(offsetof(DYNAMIC_TIME_ZONE_INFORMATION, TimeZoneKeyName) ==
                sizeof(TIME_ZONE_INFORMATION));
  std::memcpy(&rules, &zone, sizeof rules);
  const bool isDynamic = zone.TimeZoneKeyName[0] != L'\0' && !zone.DynamicDaylightTimeDisabled;
  TIME_ZONE_INFORMATION ofYear{};
  if (isDynamic && pForYear && pForYear(year, &zone, &ofYear)) rules = ofYear;
  return true;
}

const TIME_ZONE_INFORMATION* RulesOf(WORD year) {
  thread_local YearRules known;
  const uint32_t now = TickCount();
  if (known.year == year && known.choice == s_choice && now - known.readAt < kSettingMs)
    return &known.zone;
  if (!ReadRules(year, known.zone)) {
    known.year = 0;
    return nullptr;
  }
  known.year = year;
  known.choice = s_choice;
  known.readAt = now;
  return &known.zone;
}

uint64_t TicksOf(const FILETIME& time) {
  return (static_cast<uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

}  // namespace

void UseTimeZone(const DYNAMIC_TIME_ZONE_INFORMATION* pZone) {
  ++s_choice;
  s_chosenZone.reset();
  if (pZone) s_chosenZone = *pZone;
}

bool ZoneOffset(FileTime moment, int64_t& offset) {
  const FILETIME utc{static_cast<DWORD>(moment.ticks), static_cast<DWORD>(moment.ticks >> 32)};
  SYSTEMTIME utcParts{};
  SYSTEMTIME localParts{};
  FILETIME wholeUtc{};
  FILETIME local{};
  if (!::FileTimeToSystemTime(&utc, &utcParts)) return false;
  const TIME_ZONE_INFORMATION* const pRules = RulesOf(utcParts.wYear);
  if (!pRules || !SystemTimeToTzSpecificLocalTime(pRules, &utcParts, &localParts) ||
      !::SystemTimeToFileTime(&utcParts, &wholeUtc) || !::SystemTimeToFileTime(&localParts, &local))
    return false;
  // Both without what is shorter than a millisecond.
  offset = static_cast<int64_t>(TicksOf(local) - TicksOf(wholeUtc)) / kTicksPerSecond;
  return true;
}

}  // namespace kestra::os
