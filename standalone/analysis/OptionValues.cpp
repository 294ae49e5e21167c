#include "standalone/analysis/OptionValues.h"

#include <fmt/format.h>

#include <charconv>
#include <optional>

#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/TableCodes.h"

namespace orv {

namespace {

constexpr double kLowestConfidence = 0.0001;
constexpr double kHighestConfidence = 0.9999;

std::optional<int> ParseWholeNumber(const std::string& text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// From 1 to `highest`.
int CountValue(const char* option, const std::string& text, int highest) {
  const std::optional<int> number = ParseWholeNumber(text);
  if (number && *number >= 1 && *number <= highest) return *number;
  throw DefinitionError(fmt::format("{} {}: use a whole number from 1 to {}.", option, text, highest));
}

}  // namespace

int IterationsValue(const std::string& text) {
  return CountValue("--max-iterations", text, kMostNewtonSteps);
}

int ToleranceExponentValue(const std::string& text) {
  return CountValue("--tolerance-exponent", text, kLargestToleranceExponent);
}

double ConfidenceValue(const std::string& text) {
  const std::optional<double> level = ParseNumber(text);
  if (level && *level >= kLowestConfidence && *level <= kHighestConfidence) return *level;
  throw DefinitionError(fmt::format("--confidence {}: use a level from {} to {}, such as 0.95.", text,
                                    kLowestConfidence, kHighestConfidence));
}

int ForcedValue(const std::string& text) {
  const std::optional<int> effects = ParseWholeNumber(text);
  if (effects && *effects >= 0) return *effects;
  throw DefinitionError(fmt::format("--force {}: use a whole number from 0 to the number of effects.", text));
}

double ProbabilityValue(const std::string& option, const std::string& text) {
  const std::optional<double> probability = ParseNumber(text);
  if (!probability) throw DefinitionError(fmt::format("{}: \"{}\" is not a number, such as 0.05.", option, text));
  return *probability;
}

std::vector<double> StartValuesOf(const std::vector<std::string>& texts) {
  std::vector<double> values;
  for (const std::string& text : texts) {
    const std::optional<double> value = ParseNumber(text);
    if (value) {
      values.push_back(*value);
      continue;
    }
    throw DefinitionError(fmt::format(
        "--start-values: \"{}\" is not a number. Give a number for each coefficient, or one .orv file.", text));
  }
  return values;
}

std::vector<int> CoefficientNumbersOf(const std::vector<std::string>& texts) {
  std::vector<int> coefficients;
  for (const std::string& text : texts) {
    const std::optional<int> coefficient = ParseWholeNumber(text);
    if (!coefficient) {
      throw DefinitionError(fmt::format("--fix: \"{}\" is not the number of a coefficient, such as 2.", text));
    }
    coefficients.push_back(*coefficient);
  }
  return coefficients;
}

}  // namespace orv
