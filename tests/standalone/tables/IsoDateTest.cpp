#include <gtest/gtest.h>

#include <limits>

#include "standalone/tables/IsoDate.h"

namespace orv {
namespace {

TEST(IsoDate, DayNumbersCountFromTheFirstOfJanuary1970) {
  struct {
    const char* date;
    int day;
  } const cases[] = {
      {"1970-01-01", 0},       {"1970-01-02", 1},       {"1969-12-31", -1},      {"2000-02-29", 11016},
      {"2000-03-01", 11017},   {"1900-02-28", -25509},  {"1900-03-01", -25508},  // 1900 is no leap year
      {"1582-10-14", -141428},  // no gap: the Gregorian calendar is carried back
      {"1582-10-15", -141427}, {"0000-01-01", -719528}, {"9999-12-31", 2932896},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(DayNumber(c.date), c.day) << c.date;
    EXPECT_EQ(IsoDate(c.day), c.date) << c.day;
  }
}

TEST(IsoDate, EveryDayOfFourCenturiesComesBackAndFollowsTheDayBefore) {
  // 400 years are the whole cycle of the calendar: 146097 days.
  std::string before;
  for (int day = -719528; day <= -719528 + 146097; ++day) {
    const std::string date = IsoDate(day);
    ASSERT_EQ(DayNumber(date), day) << date;
    ASSERT_LT(before, date);
    before = date;
  }
  EXPECT_EQ(before, "0400-01-01");
}

TEST(IsoDate, RefusesWhatIsNoDay) {
  const char* const cases[] = {
      "",           "2023-02-29", "2100-02-29", "2023-04-31", "2023-00-10",  "2023-13-10",  "2023-01-00",
      "2023-01-32", "2023-1-1",   "20230101",   "2023/01/01", " 2023-01-01", "2023-01-01 ", "2023-01-01T00:00",
      "+023-01-01", "-001-01-01", "2023-01-0x", "abcd-ef-gh", "12023-01-01", "2023--1-01",
  };
  for (const char* text : cases) EXPECT_FALSE(DayNumber(text)) << "\"" << text << "\"";
}

TEST(IsoDate, LeavesOutPartsOfADay) {
  EXPECT_EQ(IsoDate(0.99), "1970-01-01");
  EXPECT_EQ(IsoDate(-0.01), "1969-12-31");
}

TEST(IsoDate, IsEmptyOutsideFourDigitYears) {
  const double cases[] = {-719529.0,
                          2932897.0,
                          1e300,
                          -1e300,
                          std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::quiet_NaN()};
  for (const double day : cases) EXPECT_EQ(IsoDate(day), "") << day;
}

}  // namespace
}  // namespace orv
