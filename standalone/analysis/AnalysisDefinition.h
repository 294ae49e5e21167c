// AnalysisDefinition: an analysis as a person writes it, with names instead of numbers.
//
// The command line fills one; ApplyDefinition turns it into the options of the module for a given table.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace orv {

// The definition does not fit the table or itself. what() names the option, the culprit and the way out.
class DefinitionError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Texts are as typed; an empty text or list means that the option was not given. Variables are names or #3.
struct AnalysisDefinition {
  std::string Time;                         // one survival time
  std::vector<std::string> Dates;           // start and end date
  std::vector<std::string> DateParts;       // month, day, year of the start, then of the end
  std::vector<std::string> Interval;        // start and stop of (start, stop]
  std::vector<std::string> TimeCovariates;  // "NAME=FORMULA"
  std::string Status;
  std::string EventCode;
  std::string CensoredCode;
  std::vector<std::string> Covariates;
  std::vector<std::string> Factors;
  std::vector<std::string> FactorCodes;     // "F=C,C,..."
  std::vector<std::string> ReferenceCodes;  // "F=C"
  std::string Effects;                      // "age, age*sex, clinic(region)"
  std::string Coding;
  std::string Strata;
  std::vector<std::string> StrataCodes;
  std::string Subject;
  bool Robust = false;
  std::string Weights;
  std::string Where;  // condition for the cases
  std::string Entry;
  std::string Ties;
  int MaxIterations = 50;
  std::string Converge;
  int ToleranceExponent = 8;
  std::vector<double> StartValues;
  std::string StartValuesFile;         // an .orv file in their place
  std::vector<int> FixedCoefficients;  // from 1
  std::string Select;                  // model building
  std::optional<double> PEnter;
  std::optional<double> PRemove;
  std::optional<int> Force;  // how many effects are in every model: the first ones of the design

  bool operator==(const AnalysisDefinition&) const = default;
};

}  // namespace orv
