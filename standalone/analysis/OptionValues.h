// The numbers that options take, from the texts that a person wrote. Each function throws DefinitionError for a text
// that is none of the option's values.
#pragma once

#include <string>
#include <vector>

namespace orv {

inline constexpr int kMostNewtonSteps = 1000;
inline constexpr int kLargestToleranceExponent = 12;

int IterationsValue(const std::string& text);         // of --max-iterations, from 1
int ToleranceExponentValue(const std::string& text);  // of --tolerance-exponent, from 1
double ConfidenceValue(const std::string& text);      // of --confidence, 0.0001 to 0.9999
int ForcedValue(const std::string& text);             // of --force, from 0
// Of --p-enter and --p-remove. Any number: the module looks at its range.
double ProbabilityValue(const std::string& option, const std::string& text);
std::vector<double> StartValuesOf(const std::vector<std::string>& texts);  // of --start-values
// Of --fix. Any whole numbers: their range depends on the design.
std::vector<int> CoefficientNumbersOf(const std::vector<std::string>& texts);

}  // namespace orv
