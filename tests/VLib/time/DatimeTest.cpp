#include <gtest/gtest.h>

#include "VLib/src/time/Datime.h"
#include "platform/os/Clock.h"
#include "tests/support/ScopedTimeZone.h"

namespace kestra {
namespace {

using test::CScopedTimeZone;

SystemTime Time(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  SystemTime time;
  time.wYear = static_cast<uint16_t>(year);
  time.wMonth = static_cast<uint16_t>(month);
  time.wDay = static_cast<uint16_t>(day);
  time.wHour = static_cast<uint16_t>(hour);
  time.wMinute = static_cast<uint16_t>(minute);
  time.wSecond = static_cast<uint16_t>(second);
  return time;
}

TEST(SystemTimeToFileTime, RefusesWhatDoesNotExist) {
  FileTime unused;
  const SystemTime wrong[] = {
      Time(1600, 12, 31),   Time(30828, 1, 1),       Time(2007, 2, 29),         Time(2100, 2, 29),
      Time(2006, 4, 31),    Time(2006, 0, 1),        Time(2006, 13, 1),         Time(2006, 1, 0),
      Time(2006, 1, 1, 24), Time(2006, 1, 1, 0, 60), Time(2006, 1, 1, 0, 0, 60)};
  for (const SystemTime& time : wrong)
    EXPECT_FALSE(SystemTimeToFileTime(time, unused)) << time.wYear << '-' << time.wMonth;
  EXPECT_TRUE(SystemTimeToFileTime(Time(2000, 2, 29), unused));
  EXPECT_TRUE(SystemTimeToFileTime(Time(1601, 1, 1), unused));
  EXPECT_EQ(unused.ticks, 0u);
  EXPECT_TRUE(SystemTimeToFileTime(Time(30827, 12, 31, 23, 59, 59), unused));
}

TEST(FileTimeToSystemTime, IsTheInverseOnEveryDay) {
  // Every day of the first 800 years, and then in strides to the end of the year 30827.
  constexpr uint64_t kTicksPerDay = 864'000'000'000;
  constexpr uint64_t kMost = 0x7FFF'FFFF'FFFF'FFFF;
  FileTime last;
  ASSERT_TRUE(SystemTimeToFileTime(Time(30827, 12, 31), last));
  for (uint64_t day = 0; day * kTicksPerDay <= last.ticks; day += day < 292'194 ? 1 : 997) {
    const FileTime moment{day * kTicksPerDay + 12'345'678'0000};
    SystemTime time;
    ASSERT_TRUE(FileTimeToSystemTime(moment, time));
    ASSERT_EQ(time.wDayOfWeek, (day + 1) % 7);
    FileTime back;
    ASSERT_TRUE(SystemTimeToFileTime(time, back)) << day;
    ASSERT_EQ(back.ticks, moment.ticks) << day;
  }
  SystemTime unused;
  EXPECT_FALSE(FileTimeToSystemTime(FileTime{kMost + 1}, unused));
}

TEST(Datime, FitsThirtyTwoBitsOrIsNothing) {
  EXPECT_EQ(DatimeFromSystemTime(Time(1970, 1, 1), false), 0u);
  EXPECT_EQ(DatimeFromSystemTime(Time(1969, 12, 31, 23, 59, 59), false), std::nullopt);
  EXPECT_EQ(DatimeFromSystemTime(Time(2106, 2, 7, 6, 28, 15), false), 4294967295u);
  EXPECT_EQ(DatimeFromSystemTime(Time(2106, 2, 7, 6, 28, 16), false), std::nullopt);
  EXPECT_EQ(DatimeFromSystemTime(Time(2006, 2, 30), false), std::nullopt);
  EXPECT_EQ(DatimeFromFileTime(FileTime{}), std::nullopt);
  EXPECT_EQ(DatimeFromFileTime(FileTimeFromDatime(4294967295u)), 4294967295u);
}

TEST(Datime, TextIsLocal) {
  {
    const CScopedTimeZone zone("UTC");
    EXPECT_EQ(DatimeText(0), "1970-01-01 00:00:00");
    EXPECT_EQ(DatimeText(4294967295u), "2106-02-07 06:28:15");
    EXPECT_EQ(DatimeFromSystemTime(Time(2006, 7, 1, 12), true), 1151755200u);
  }
  {
    const CScopedTimeZone zone("America/New_York");
    EXPECT_EQ(DatimeText(0), "1969-12-31 19:00:00");
    EXPECT_EQ(DatimeText(1151755200u), "2006-07-01 08:00:00");
    EXPECT_EQ(DatimeFromSystemTime(Time(2006, 7, 1, 8), true), 1151755200u);
    // A local time before 1970 in UTC, though not by the clock on the wall.
    EXPECT_EQ(DatimeFromSystemTime(Time(1969, 12, 31, 19), true), 0u);
    EXPECT_EQ(DatimeFromSystemTime(Time(1969, 12, 31, 18, 59, 59), true), std::nullopt);
  }
}

// New York, 2006: the clock goes from 2:00 to 3:00 on April 2 (07:00 UTC) and from 2:00 back to
// 1:00 on October 29 (06:00 UTC).
TEST(Datime, ClockChanges) {
  const CScopedTimeZone zone("America/New_York");
  constexpr uint32_t kSpring = 1143961200;
  constexpr uint32_t kAutumn = 1162101600;
  EXPECT_EQ(DatimeText(kSpring - 1), "2006-04-02 01:59:59");
  EXPECT_EQ(DatimeText(kSpring), "2006-04-02 03:00:00");
  EXPECT_EQ(DatimeFromSystemTime(Time(2006, 4, 2, 1, 59, 59), true), kSpring - 1);
  EXPECT_EQ(DatimeFromSystemTime(Time(2006, 4, 2, 3), true), kSpring);
  EXPECT_EQ(DatimeFromSystemTime(Time(2006, 4, 2, 2, 30), true), kSpring + 1800);  // skipped
  EXPECT_EQ(DatimeFromSystemTime(Time(2006, 10, 29, 0, 59, 59), true), kAutumn - 3601);
  EXPECT_EQ(DatimeFromSystemTime(Time(2006, 10, 29, 1, 30), true), kAutumn - 1800);  // the first
  EXPECT_EQ(DatimeFromSystemTime(Time(2006, 10, 29, 2), true), kAutumn + 3600);
}

// Every hour of some years there and back, in zones on both sides of Greenwich and of the equator.
TEST(Datime, LocalTimeRoundTrips) {
  for (const char* name : {"UTC", "America/New_York", "Europe/Berlin", "Australia/Lord_Howe",
                           "Asia/Kathmandu", "Pacific/Apia"}) {
    const CScopedTimeZone zone(name);
    for (uint32_t moment = 1136073600; moment < 1136073600 + 3 * 31536000u; moment += 3600) {
      SystemTime local;
      ASSERT_TRUE(LocalSystemTimeFromDatime(moment, local));
      const auto back = DatimeFromSystemTime(local, true);
      ASSERT_TRUE(back);
      // Only the second of two equal local times may come back as the first.
      if (*back != moment) {
        ASSERT_LT(*back, moment);
        ASSERT_EQ(DatimeText(*back), DatimeText(moment)) << name;
      }
    }
  }
}

TEST(Clock, LocalTimeAgreesWithTheMoment) {
  const CScopedTimeZone zone("Asia/Kathmandu");
  const auto before = DatimeFromFileTime(os::SystemTimeAsFileTime());
  const auto local = DatimeFromSystemTime(os::LocalTime(), true);
  ASSERT_TRUE(before && local);
  EXPECT_LE(*local - *before, 5u);
}

}  // namespace
}  // namespace kestra
