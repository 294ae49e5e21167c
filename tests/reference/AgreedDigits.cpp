#include "reference/AgreedDigits.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <ostream>

namespace orv::testing {

namespace {

constexpr double kAllDigits = 15.95;

}  // namespace

double DigitsAgreed(double value, double expected, double scale) {
  if (value == expected) return kAllDigits;
  const double error = std::abs(value - expected) / (scale > 0.0 ? scale : 1.0);
  if (std::isnan(error)) return 0.0;
  return std::clamp(-std::log10(error), 0.0, kAllDigits);
}

void AgreedDigits::Add(const std::string& quantity, const std::string& where, double digits) {
  const auto [entry, isNew] = m_worst.try_emplace(quantity, Worst{digits, where, 0});
  Worst& worst = entry->second;
  ++worst.Count;
  if (!isNew && digits < worst.Digits) {
    worst.Digits = digits;
    worst.Where = where;
  }
}

void AgreedDigits::Print(std::ostream& out) const {
  out << fmt::format("{:<24} {:>8} {:>8}  {}\n", "quantity", "values", "digits", "worst case");
  for (const auto& [quantity, worst] : m_worst) {
    out << fmt::format("{:<24} {:>8} {:>8.1f}  {}\n", quantity, worst.Count, worst.Digits, worst.Where);
  }
}

}  // namespace orv::testing
