// CoxSettings: the option record of an analysis, one flat record with every setting of the run.
//
// Variable numbers count from 1 in the input table; 0 means none.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace orv {

// The small-integer settings, by name. They are stored as integers because macros and dialogs exchange them so.
namespace InputTypes {
inline constexpr int SurvivalTime = 1;     // a time, two dates or six date parts
inline constexpr int CountingProcess = 2;  // an interval (start, stop]
inline constexpr int TimeDependent = 3;    // a survival time with time-dependent covariates
}  // namespace InputTypes

namespace Likelihoods {
inline constexpr int Breslow = 1;
inline constexpr int Efron = 2;
inline constexpr int Discrete = 3;
}  // namespace Likelihoods

namespace Codings {
inline constexpr int SigmaRestricted = 1;
inline constexpr int Reference = 2;
inline constexpr int Overparameterized = 3;
}  // namespace Codings

namespace ModelBuildings {
inline constexpr int AllEffects = 1;
inline constexpr int Forward = 2;
inline constexpr int Backward = 3;
inline constexpr int Stepwise = 4;
inline constexpr int BestSubsets = 5;
}  // namespace ModelBuildings

namespace ConvergenceTypes {
inline constexpr int RelativeGradient = 1;
inline constexpr int RelativeParameter = 2;
inline constexpr int RelativeLikelihood = 3;
inline constexpr int AbsoluteLikelihood = 4;
}  // namespace ConvergenceTypes

struct CoxSettings {
  // ---- Variables ----------------------------------------------------------------------------------------------
  std::array<std::int16_t, 6> SurvivalVariables{};  // a time; or start and end date; or month, day, year of both
  std::int16_t SurvivalVariableCount = 0;           // 0, 1, 2 or 6
  std::int16_t StartVariable = 0;                   // counting process: start of the interval
  std::int16_t StartVariableCount = 0;
  std::int16_t StopVariable = 0;  // counting process: end of the interval
  std::int16_t StopVariableCount = 0;
  std::int16_t SubjectVariable = 0;  // subject id for the robust variance
  std::int16_t SubjectVariableCount = 0;
  std::vector<std::int16_t> CovariateVariables;  // continuous predictors
  std::int16_t CovariateCount = 0;
  std::vector<std::int16_t> FactorVariables;  // categorical predictors
  std::int16_t FactorCount = 0;
  std::vector<std::int16_t> BackupCovariateVariables;  // see CCoxPH::BackupFullModelData
  std::int16_t BackupCovariateCount = 0;
  std::vector<std::int16_t> BackupFactorVariables;
  std::int16_t BackupFactorCount = 0;

  // ---- Codes of the factors -----------------------------------------------------------------------------------
  std::vector<std::int32_t> FactorCodes;         // selected codes, one factor after the other
  std::vector<std::int16_t> FactorCodeCounts;    // number of codes of each factor, at most 500
  std::vector<std::int32_t> ReferenceCodes;      // of each factor, by default its largest; as wide as a code
  std::vector<std::int16_t> ReferenceCodeIndex;  // its position within the factor's codes, from 1
  std::vector<std::int32_t> BackupFactorCodes;
  std::vector<std::int16_t> BackupFactorCodeCounts;
  std::vector<std::int32_t> BackupReferenceCodes;
  std::vector<std::int16_t> BackupReferenceCodeIndex;

  // ---- Start values -------------------------------------------------------------------------------------------
  std::vector<double> StartValues;        // one per coefficient, in the order of the design columns
  bool HasFixedParameters = false;        // some parameter is held at its start value
  std::vector<bool> FixedParameterFlags;  // bit i: the columns of effect i (from 0) are held
  std::string StartValuesFileName;        // spreadsheet that the start values came from

  // ---- Status, strata, entry ----------------------------------------------------------------------------------
  std::int16_t CensorVariable = 0;  // the censoring indicator
  std::int16_t CensorVariableCount = 0;
  double CodeForCompleteResponses = 0.0;  // -9999999 to 9999999
  double CodeForCensoredResponses = 0.0;  // the same range; must differ
  std::int16_t StrataVariable = 0;
  std::int16_t StrataVariableCount = 0;
  std::vector<std::int32_t> StrataCodes;      // selected strata, at most 500
  std::vector<std::int16_t> StrataCodeCount;  // one element: the number of strata codes
  std::int16_t EntryTimeVariable = 0;         // left truncation
  bool UseRobustVariance = false;             // compute the sandwich covariance
  bool HasRun = false;                        // a run has read its cases

  // ---- Design -------------------------------------------------------------------------------------------------
  std::vector<std::string> BackupDesignEffects;
  std::vector<std::string> DesignEffects;              // names of the effects, in the order of the design
  std::map<std::string, std::string> VariableSymbols;  // variable name to symbol
  std::map<std::string, std::string> EffectSymbols;    // effect name to symbolic term
  std::map<std::string, std::string> BackupEffectSymbols;
  std::map<std::string, std::string> FullEffectSymbols;
  std::map<int, int> DesignFactorSet;  // variables that the design uses, ordered by number, with their role

  // ---- The run ------------------------------------------------------------------------------------------------
  bool FinalFitReady = true;  // false while a selection loop runs: the model in hand is a candidate
  std::int16_t ModelBuilding = ModelBuildings::AllEffects;
  std::int16_t Likelihood = Likelihoods::Breslow;
  std::int16_t InputType = InputTypes::SurvivalTime;
  std::int16_t Coding = Codings::SigmaRestricted;
  std::int32_t MaxIterations = 50;  // Newton steps before the fit stops unconverged; 1 to 1000
  std::int32_t ConvergenceType = ConvergenceTypes::RelativeGradient;
  bool UseStartValues = false;           // estimation starts from StartValues
  std::int32_t ConvergenceExponent = 8;  // the tolerance is ten to the power of minus this; 1 to 12
  std::int32_t HasNestedEffects = 0;     // 1 when the custom design holds a nested effect

  // ---- Time-dependent covariates ------------------------------------------------------------------------------
  std::vector<std::string> TimeDependentCovariateExpressions;
  std::vector<std::string> TimeDependentCovariateNames;
  std::vector<std::int32_t> TimeExpressionVariables;  // variables that the expressions read

  // ---- Model building -----------------------------------------------------------------------------------------
  double PToEnter = 0.05;            // open interval 0 to 1; forward and stepwise
  double PToRemove = 0.15;           // open interval 0 to 1; backward and stepwise
  std::int32_t EffectsToForce = 0;   // 0 to the number of effects
  std::int32_t ForcedStepCount = 0;  // leading entries of the step lists that are forced effects
  std::int32_t DisplayBest = 1;      // best subsets to report

  bool HasStrata() const { return StrataVariableCount > 0; }
  int PredictorCount() const { return CovariateCount + FactorCount; }
};

// Puts every option back to its default when another data file is opened. Kept as told by long use: FinalFitReady
// becomes false, and HasRun, DisplayBest, ForcedStepCount and the backups keep their values.
void ResetSettings(CoxSettings& settings);

}  // namespace orv
