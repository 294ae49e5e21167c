#include "standalone/documents/NumberColumn.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace orv {
namespace {

constexpr double SmallestFixed = 1e-4;
constexpr double FixedBelow = 1e9;
constexpr double WholeBelow = 1e15;  // every whole number below it has all its digits in a double
constexpr int DigitsOfLargest = 6;
constexpr int DigitsOfSmallest = 3;
constexpr int MaxDecimals = 6;

bool IsWhole(double number) {
  return std::abs(number) < WholeBelow && number == std::trunc(number);
}

bool IsShownFixed(double number) {
  const double magnitude = std::abs(number);
  return number == 0.0 || (magnitude >= SmallestFixed && magnitude < FixedBelow);
}

// Decimals that give a number so many significant digits, at least 0.
int DecimalsFor(double magnitude, int digits) {
  const int exponent = static_cast<int>(std::floor(std::log10(magnitude)));
  return std::max(0, digits - 1 - exponent);
}

int DecimalsOfColumn(const std::vector<double>& numbers) {
  double largest = 0.0;
  double smallest = FixedBelow;
  for (const double number : numbers) {
    if (std::isnan(number) || number == 0.0 || !IsShownFixed(number)) continue;
    largest = std::max(largest, std::abs(number));
    smallest = std::min(smallest, std::abs(number));
  }
  if (largest == 0.0) return 0;
  const int decimals = std::max(DecimalsFor(largest, DigitsOfLargest), DecimalsFor(smallest, DigitsOfSmallest));
  return std::min(decimals, MaxDecimals);
}

}  // namespace

bool NumberShape::NeedsExponent(double number) const {
  return !IsWhole && !IsShownFixed(number);
}

NumberShape ShapeOfNumberColumn(const std::vector<double>& numbers) {
  const bool whole =
      std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isnan(number) || IsWhole(number); });
  return {whole, whole ? 0 : DecimalsOfColumn(numbers)};
}

std::vector<std::string> FormatNumberColumn(const std::vector<double>& numbers) {
  const NumberShape shape = ShapeOfNumberColumn(numbers);
  std::vector<std::string> texts;
  texts.reserve(numbers.size());
  for (const double number : numbers) {
    if (std::isnan(number)) {
      texts.emplace_back();
    } else if (shape.NeedsExponent(number)) {
      texts.push_back(fmt::format("{:.3e}", number));
    } else {
      texts.push_back(fmt::format("{:.{}f}", number == 0.0 ? 0.0 : number, shape.Decimals));  // no sign on a zero
    }
  }
  return texts;
}

std::vector<std::string> FormatPValueColumn(const std::vector<double>& numbers) {
  std::vector<std::string> texts;
  texts.reserve(numbers.size());
  for (const double number : numbers) {
    if (std::isnan(number)) {
      texts.emplace_back();
    } else if (number < 1e-4) {
      texts.emplace_back("<.0001");
    } else {
      texts.push_back(fmt::format("{:.4f}", number));
    }
  }
  return texts;
}

bool IsPValueTitle(std::string_view title) {
  constexpr std::string_view Name = "p value";
  return std::equal(title.begin(), title.end(), Name.begin(), Name.end(),
                    [](char a, char b) { return a == b || (b == 'p' && a == 'P'); });
}

}  // namespace orv
