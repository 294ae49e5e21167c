#include <gtest/gtest.h>

#include "standalone/tables/IsoDate.h"
#include "standalone/tables/StatisticsDates.h"

namespace orv {
namespace {

// The date that a number means under a format; "number" when it means none.
std::string DateOf(StatisticsProgram program, std::string_view format, double value) {
  const std::optional<DateScale> scale = DateScaleOf(program, format);
  return scale ? IsoDate(DayNumberOf(*scale, value)) : "number";
}

TEST(StatisticsDates, SasCountsFrom1960) {
  const struct {
    const char* format;
    double value;
    const char* date;
  } cases[] = {
      {"DATE9.", 0, "1960-01-01"},
      {"DATE", -1, "1959-12-31"},
      {"date9", 22281, "2021-01-01"},
      {"MMDDYY10.", 59, "1960-02-29"},
      {"MMDDYYS8.", 59, "1960-02-29"},
      {"DDMMYYP10.", 366, "1961-01-01"},
      {"YYMMDD10.", 1, "1960-01-02"},
      {"E8601DA10.", 1, "1960-01-02"},
      {"WEEKDATX29.", 1, "1960-01-02"},
      {"WORDDATE18.", 1, "1960-01-02"},
      {"MONYY7.", 31, "1960-02-01"},
      {"JULIAN7.", 31, "1960-02-01"},
      {"YEAR4.", 366, "1961-01-01"},
      {"NLDATE20.", 1, "1960-01-02"},
      {"DATETIME20.", 86399, "1960-01-01"},
      {"DATETIME", 86400, "1960-01-02"},
      {"E8601DT19.", 86400, "1960-01-02"},
      {"DTDATE9.", 86400, "1960-01-02"},
      {"NLDATM20.", 86400, "1960-01-02"},
      {"TIME8.", 86400, "number"},
      {"HHMM5.", 86400, "number"},
      {"BEST12.", 1, "number"},
      {"", 1, "number"},
      {"F8.2", 1, "number"},
      {"DOLLAR8.", 1, "number"},
      {"$10.", 1, "number"},
      {"COMMA9.", 1, "number"},
  };
  for (const auto& c : cases) EXPECT_EQ(DateOf(StatisticsProgram::Sas, c.format, c.value), c.date) << c.format;
}

TEST(StatisticsDates, SpssCountsSecondsFrom1582) {
  const struct {
    const char* format;
    double value;
    const char* date;
  } cases[] = {
      {"DATE11", 86400, "1582-10-15"},
      {"ADATE10", 12219379200, "1970-01-01"},
      {"EDATE10", 12219379200, "1970-01-01"},
      {"SDATE10", 12219379200 - 1, "1969-12-31"},
      {"JDATE7", 12219379200, "1970-01-01"},
      {"MOYR8", 12219379200, "1970-01-01"},
      {"QYR6", 12219379200, "1970-01-01"},
      {"WKYR8", 12219379200, "1970-01-01"},
      {"DATETIME20", 12219379200, "1970-01-01"},
      {"YMDHMS19.2", 12219379200, "1970-01-01"},
      {"TIME8", 3600, "number"},
      {"DTIME10", 3600, "number"},
      {"MONTH3", 2, "number"},
      {"WKDAY3", 2, "number"},
      {"F8.2", 2, "number"},
      {"", 2, "number"},
  };
  for (const auto& c : cases) EXPECT_EQ(DateOf(StatisticsProgram::Spss, c.format, c.value), c.date) << c.format;
}

TEST(StatisticsDates, StataCountsDaysOrMillisecondsFrom1960) {
  const struct {
    const char* format;
    double value;
    const char* date;
  } cases[] = {
      {"%td", 0, "1960-01-01"},
      {"%tdDD/NN/CCYY", 366, "1961-01-01"},
      {"%-td", 1, "1960-01-02"},
      {"%d", 1, "1960-01-02"},
      {"%dD_m_Y", 1, "1960-01-02"},
      {"%tc", 86399999, "1960-01-01"},
      {"%tcHH:MM", 86400000, "1960-01-02"},
      {"%tC", 86400000, "number"},
      {"%tw", 52, "number"},
      {"%tm", 12, "number"},
      {"%tq", 4, "number"},
      {"%th", 2, "number"},
      {"%ty", 2020, "number"},
      {"%9.0g", 1, "number"},
      {"%-9s", 1, "number"},
      {"td", 1, "number"},
      {"", 1, "number"},
      {"%", 1, "number"},
  };
  for (const auto& c : cases) EXPECT_EQ(DateOf(StatisticsProgram::Stata, c.format, c.value), c.date) << c.format;
}

}  // namespace
}  // namespace orv
