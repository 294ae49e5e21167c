#include "standalone/tables/StatisticsDates.h"

#include <algorithm>
#include <array>
#include <string>

namespace orv {
namespace {

constexpr double kDay1960 = -3653.0;         // 1960-01-01
constexpr double kDayGregorian = -141428.0;  // 1582-10-14, the day before the Gregorian calendar began
constexpr double kSecondsPerDay = 86400.0;
constexpr double kMillisecondsPerDay = 86400000.0;

// The formats that show a date, by the beginnings of their names. What follows may be a separator (MMDDYYS10.).
constexpr std::array<std::string_view, 31> kSasDates = {
    "DATE",   "DDMMYY",  "MMDDYY", "YYMMDD",  "YYMM",    "MMYY",    "MONYY",    "YYMON",
    "YYQ",    "JULIAN",  "JULDAY", "WEEKDAT", "WEEKDAY", "WORDDAT", "YEAR",     "QTR",
    "MONTH",  "MONNAME", "DAY",    "DOWNAME", "E8601DA", "B8601DA", "IS8601DA", "NENGO",
    "MINGUO", "HEBDATE", "HDATE",  "EURDFDD", "EURDFDE", "NLDATE",  "XYYMMDD"};
// These also begin with the name of a date, so they come first.
constexpr std::array<std::string_view, 10> kSasDatesWithTimes = {
    "DATETIME", "DATEAMPM", "DTDATE", "DTMONYY", "DTWKDATX", "DTYEAR", "DTYYQC", "E8601DT", "B8601DT", "IS8601DT"};
constexpr std::array<std::string_view, 5> kMoreSasDatesWithTimes = {"NLDATM", "MDYAMPM", "E8601DZ", "B8601DZ",
                                                                    "EURDFDT"};

constexpr std::array<std::string_view, 10> kSpssDates = {"DATE", "ADATE", "EDATE", "JDATE",    "SDATE",
                                                         "QYR",  "MOYR",  "WKYR",  "DATETIME", "YMDHMS"};

std::string UpperCase(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

// Without the width and the decimals at its end.
std::string_view NameOf(std::string_view format) {
  while (!format.empty() &&
         (format.back() == '.' || format.back() == ' ' || (format.back() >= '0' && format.back() <= '9')))
    format.remove_suffix(1);
  return format;
}

template <typename Names>
bool BeginsWithOneOf(const Names& names, std::string_view text) {
  return std::any_of(names.begin(), names.end(), [text](std::string_view name) { return text.starts_with(name); });
}

std::optional<DateScale> SasScale(std::string_view format) {
  const std::string upper = UpperCase(NameOf(format));
  if (BeginsWithOneOf(kSasDatesWithTimes, upper) || BeginsWithOneOf(kMoreSasDatesWithTimes, upper))
    return DateScale{kSecondsPerDay, kDay1960};
  if (BeginsWithOneOf(kSasDates, upper)) return DateScale{1.0, kDay1960};
  return std::nullopt;
}

std::optional<DateScale> SpssScale(std::string_view format) {
  const std::string upper = UpperCase(NameOf(format));
  if (std::find(kSpssDates.begin(), kSpssDates.end(), upper) == kSpssDates.end()) return std::nullopt;
  return DateScale{kSecondsPerDay, kDayGregorian};
}

// "%-td" is aligned to the left; letters behind the type say how the date looks. "%d" is the older name of "%td".
std::optional<DateScale> StataScale(std::string_view format) {
  if (!format.starts_with('%')) return std::nullopt;
  format.remove_prefix(1);
  if (format.starts_with('-')) format.remove_prefix(1);
  if (format.starts_with("td") || format.starts_with('d')) return DateScale{1.0, kDay1960};
  if (format.starts_with("tc")) return DateScale{kMillisecondsPerDay, kDay1960};
  return std::nullopt;
}

}  // namespace

std::optional<DateScale> DateScaleOf(StatisticsProgram program, std::string_view format) {
  switch (program) {
    case StatisticsProgram::Sas:
      return SasScale(format);
    case StatisticsProgram::Spss:
      return SpssScale(format);
    case StatisticsProgram::Stata:
      break;
  }
  return StataScale(format);
}

double DayNumberOf(const DateScale& scale, double value) {
  return value / scale.UnitsPerDay + scale.FirstDay;
}

}  // namespace orv
