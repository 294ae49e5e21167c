#include "data/JulianDay.h"

#include <cmath>
#include <cstdint>

#include "data/RoundHalfAway.h"

namespace orv {

namespace {

constexpr std::int64_t kGregorianStart = 15 + 31 * (10 + 12 * 1582);

std::int64_t Truncate(double value) {
  return static_cast<std::int64_t>(std::trunc(value));
}

}  // namespace

double JulianDay(double month, double day, double year) {
  const std::int64_t mm = RoundToInteger(month);
  const std::int64_t dd = RoundToInteger(day);
  std::int64_t yy = RoundToInteger(year);
  if (yy == 0 || mm < 1 || mm > 12) return kInvalidDate;
  if (yy < 0) ++yy;

  std::int64_t jy = yy;
  std::int64_t jm = mm + 1;
  if (mm <= 2) {
    --jy;
    jm = mm + 13;
  }
  double days = static_cast<double>(Truncate(365.25 * static_cast<double>(jy)) +
                                    Truncate(30.6001 * static_cast<double>(jm)) + dd) +
                1720995.0;
  if (dd + 31 * (mm + 12 * yy) >= kGregorianStart) {
    const std::int64_t century = Truncate(0.01 * static_cast<double>(jy));
    days += static_cast<double>(2 - century + Truncate(0.25 * static_cast<double>(century)));
  }
  return days;
}

}  // namespace orv
