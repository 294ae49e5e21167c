#include <gtest/gtest.h>

#include <bit>
#include <chrono>
#include <cstdint>
#include <limits>
#include <string>

#include "data/JulianDay.h"

namespace orv {
namespace {

struct Date {
  double Month, Day, Year;
};

std::string Text(const Date& date) {
  return "month " + std::to_string(date.Month) + ", day " + std::to_string(date.Day) + ", year " +
         std::to_string(date.Year);
}

TEST(JulianDay, GivesTheDayNumbersOfTheCalendars) {
  struct {
    const char* What;
    Date On;
    double Day;
  } const cases[] = {
      {"the year 2000", {1, 1, 2000}, 2451545},
      {"the epoch of many clocks", {1, 1, 1970}, 2440588},
      {"day 0 of the modified day numbers", {11, 17, 1858}, 2400001},
      {"the first Gregorian day", {10, 15, 1582}, 2299161},
      {"the last Julian day", {10, 4, 1582}, 2299160},
      {"a day that was left out, still counted as Julian", {10, 14, 1582}, 2299170},
      {"the month before the change", {9, 30, 1582}, 2299156},
      {"the end of the year of the change", {12, 31, 1582}, 2299238},
      {"the first day of our era", {1, 1, 1}, 1721424},
      {"a Julian leap day", {2, 29, 4}, 1722578},
      {"the day before our era: there is no year 0", {12, 31, -1}, 1721423},
      {"March of the year before our era", {3, 1, -1}, 1721118},
  };
  for (const auto& c : cases) EXPECT_EQ(JulianDay(c.On.Month, c.On.Day, c.On.Year), c.Day) << c.What;
}

// Before March of 1 BC the product 365.25 * jy is negative, and it is cut towards zero.
TEST(JulianDay, CutsTowardsZeroInEarlyYears) {
  struct {
    Date On;
    double Day;
  } const cases[] = {
      {{1, 1, -1}, 1721059},   // jy = -1: -365 + 428 + 1 + 1720995
      {{2, 28, -1}, 1721117},  // -365 + trunc(459.0015) + 28 + 1720995
      {{7, 12, -2}, 1720886},  // jy = -1, jm = 8: -365 + 244 + 12 + 1720995
      {{1, 1, -4713}, 1},      // jy = -4713: -1721423 + 428 + 1 + 1720995
  };
  for (const auto& c : cases) EXPECT_EQ(JulianDay(c.On.Month, c.On.Day, c.On.Year), c.Day) << Text(c.On);
}

TEST(JulianDay, AgreesWithTheCalendarOfTheLibraryOnEveryDayOfFiveCenturies) {
  using namespace std::chrono;
  const sys_days unixEpoch = 1970y / January / 1;
  for (sys_days day = 1582y / October / 15; day < sys_days(2100y / January / 1); day += days(1)) {
    const year_month_day date(day);
    const auto expected = static_cast<double>((day - unixEpoch).count() + 2440588);
    const double got = JulianDay(unsigned(date.month()), unsigned(date.day()), int(date.year()));
    ASSERT_EQ(got, expected) << int(date.year()) << "-" << unsigned(date.month()) << "-" << unsigned(date.day());
  }
}

// January and February belong to the year before in the arithmetic, but not in the choice of the calendar.
TEST(JulianDay, ChoosesTheCalendarByTheYearAsWritten) {
  EXPECT_EQ(JulianDay(1, 1, 1583) - JulianDay(12, 31, 1582), 1.0);
  EXPECT_EQ(JulianDay(2, 28, 1583) - JulianDay(10, 15, 1582), 136.0);
}

TEST(JulianDay, IsInvalidForYearZeroAndForMonthsThatDoNotExist) {
  const Date dates[] = {
      {5, 5, 0},    {0, 5, 2000},    {13, 5, 2000},  {-1, 5, 2000},  {5, 5, 0.4},
      {5, 5, -0.4}, {12.5, 5, 2000}, {0.4, 5, 2000}, {1e9, 1, 2000}, {-8.98846567431157953865e307, 1, 2000}};
  for (const Date& date : dates) {
    EXPECT_EQ(JulianDay(date.Month, date.Day, date.Year), kInvalidDate) << Text(date);
  }
}

TEST(JulianDay, TheMarkOfAnInvalidDateHasItsOwnBits) {
  EXPECT_EQ(std::bit_cast<std::uint64_t>(kInvalidDate), 0xB8A79B6A32B9D4D6U);
}

TEST(JulianDay, RoundsItsArgumentsHalvesAwayFromZero) {
  struct {
    Date Given, Taken;
  } const cases[] = {
      {{2.5, 10, 2001}, {3, 10, 2001}},   {{2.4, 10, 2001}, {2, 10, 2001}}, {{0.5, 10, 2001}, {1, 10, 2001}},
      {{12.4, 10, 2001}, {12, 10, 2001}}, {{6, 9.5, 2001}, {6, 10, 2001}},  {{6, 9.4, 2001}, {6, 9, 2001}},
      {{6, 10, 2000.5}, {6, 10, 2001}},   {{6, 10, 2001.4}, {6, 10, 2001}}, {{6, 10, -0.5}, {6, 10, -1}},
      {{6, 10, 0.5}, {6, 10, 1}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(JulianDay(c.Given.Month, c.Given.Day, c.Given.Year), JulianDay(c.Taken.Month, c.Taken.Day, c.Taken.Year))
        << Text(c.Given);
  }
}

TEST(JulianDay, DoesNotCheckTheDay) {
  EXPECT_EQ(JulianDay(4, 31, 2021), JulianDay(5, 1, 2021));
  EXPECT_EQ(JulianDay(2, 31, 2021), JulianDay(3, 3, 2021));
  EXPECT_EQ(JulianDay(3, 0, 2021), JulianDay(2, 28, 2021));
  EXPECT_EQ(JulianDay(3, -1, 2021), JulianDay(2, 27, 2021));
}

}  // namespace
}  // namespace orv
