#include "standalone/tables/IsoDate.h"

#include <fmt/format.h>

#include <chrono>
#include <cmath>

namespace orv {
namespace {

constexpr std::size_t kIsoDateLength = 10;  // YYYY-MM-DD

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

int DigitsToNumber(std::string_view digits) {
  int number = 0;
  for (const char c : digits) number = number * 10 + (c - '0');
  return number;
}

double DayOf(int year, unsigned month, unsigned day) {
  const std::chrono::sys_days days =
      std::chrono::year_month_day{std::chrono::year{year}, std::chrono::month{month}, std::chrono::day{day}};
  return days.time_since_epoch().count();
}

}  // namespace

bool LooksLikeIsoDate(std::string_view text) {
  if (text.size() != kIsoDateLength) return false;
  for (std::size_t i = 0; i < kIsoDateLength; ++i) {
    const bool hyphen = i == 4 || i == 7;
    if (hyphen ? text[i] != '-' : !IsDigit(text[i])) return false;
  }
  return true;
}

std::optional<int> DayNumber(std::string_view text) {
  if (!LooksLikeIsoDate(text)) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year{DigitsToNumber(text.substr(0, 4))},
                                         std::chrono::month{static_cast<unsigned>(DigitsToNumber(text.substr(5, 2)))},
                                         std::chrono::day{static_cast<unsigned>(DigitsToNumber(text.substr(8, 2)))}};
  if (!date.ok()) return std::nullopt;
  return static_cast<int>(std::chrono::sys_days{date}.time_since_epoch().count());
}

std::string IsoDate(double day) {
  static const double kFirst = DayOf(0, 1, 1);
  static const double kLast = DayOf(9999, 12, 31);
  const double whole = std::floor(day);
  if (!(whole >= kFirst && whole <= kLast)) return {};
  const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days{static_cast<int>(whole)}}};
  return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                     static_cast<unsigned>(date.day()));
}

}  // namespace orv
