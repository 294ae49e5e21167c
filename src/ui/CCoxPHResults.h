// CCoxPHResults: the options of the results dialog and its output routines, without widgets.
//
// It stands after a fit of input type 1 or 2 (type 3 has estimates, tests and tables of the fit only) and lives until
// the next run. Routines show their tables and messages through the host and never change the fit, but for residuals
// that they compute and drop again.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "core/CCoxPH.h"
#include "fit/CCoxFit.h"
#include "inference/LinearCombinations.h"
#include "inference/SurvivorFunctions.h"

namespace orv {

// The transform of time in the test of proportional hazards.
enum class TimeTransform { Identity = 0, Log = 1, KaplanMeier = 2, Rank = 3 };

// The residuals that a table shows.
struct ResidualChoices {
  bool ComputeMartingale = false;
  bool ComputeDeviance = false;
  bool ComputeScore = false;
  bool ComputeSchoenfeld = false;
  bool ComputeScaledSchoenfeld = false;
  bool ComputeDfbeta = false;
  bool ComputeXbeta = false;
  bool ComputeStdXBeta = false;
  bool ComputeLikelihoodDisplacement = false;
  bool ComputeLMAX = false;
  // No column belongs to it: it only counts when the dialog decides whether residuals can be asked for.
  bool ComputeCoxSnell = false;
};

// Covariate patterns for survivor and hazard functions. All vectors have one element a pattern.
struct CovariatePatterns {
  std::vector<std::vector<double>> Covariates;    // as edited, in the order of the design's covariates
  std::vector<std::vector<std::string>> Factors;  // texts as edited, in the order of the design's factors
  std::vector<std::vector<double>> DesignRows;    // CoefficientCount values
  std::vector<std::string> Labels;                // for legends and headers
};

class CCoxPHResults {
 public:
  // `analysis` has a fit and outlives the object.
  explicit CCoxPHResults(CCoxPH& analysis);

  CCoxPH& Analysis() { return m_analysis; }
  CCoxFit& Fit() { return *m_analysis.m_pCoxFit; }
  CCoxData& Data() { return *m_analysis.m_pCoxFit->m_pData; }
  const CoxSettings& Settings() const { return m_analysis.m_Settings; }

  // Takes the level of a field. Outside (0, 1) it shows a message, sets 0.95 and returns 1.
  int ReadConfidenceLevel(double level);
  // Those of the choices that the input form and the baseline have.
  ResidualChoices AvailableResiduals(ResidualChoices choices) const;

  // ---- Linear combinations --------------------------------------------------------------------------------------
  // Tests L'b = 0 and shows the table. Returns 0 after a table, 1 when there is no L yet, and -1 after a message: the
  // messages have no ids.
  int EstimateLinearCombination();
  // Shows the entry sheet and reads it back. Returns a value of LinearCombinationStatuses after a message or success,
  // and 2 when the user cancelled; then L stays as it was.
  int EnterLinearCombinations();

  // ---- Residuals ------------------------------------------------------------------------------------------------
  // Shows the table of the chosen residuals. `order`: out, when not null: the sorted rows of the cases (from 1) in the
  // order of the table. Returns 1 after a message.
  int CreateResidualTable(std::vector<int>* order = nullptr);
  // The same with input variables (numbers from 1) behind the residuals.
  int SaveResidualsAndPredictedValues(const std::vector<int>& variables);

  // ---- Survivor and cumulative hazard functions ---------------------------------------------------------------------
  // Shows the form of the patterns and reads it back. Returns 1 when the user cancelled or after a message.
  int SpecifyCovariateValues();
  // Patterns of these values instead of a form's; each has one element for each covariate and factor of the design, in
  // the order of PatternCovariates and PatternFactors. Returns 1 after a message. Labels and the form name the
  // variables in the order of their numbers.
  int SetPatterns(const std::vector<std::vector<double>>& covariates,
                  const std::vector<std::vector<std::string>>& factors);
  // The variables that the design uses, covariates and factors apart, in the order of the selection.
  std::vector<int> PatternCovariates() const;
  std::vector<int> PatternFactors() const;
  // The values that a pattern starts with: means of the covariates, texts of the modal codes of the factors.
  std::vector<double> DefaultCovariates() const;
  std::vector<std::string> DefaultFactors() const;
  // One table for each stratum and pattern. Patterns must have been specified.
  void CreateSurvivorSummary();
  void CreateCumulativeHazardSummary();

  // ---- Test of proportional hazards ---------------------------------------------------------------------------------
  // Shows the table. Returns 1 after a message.
  int TestProportionalHazards();

  // ---- Model building -----------------------------------------------------------------------------------------------
  // Shows the steps of the selection, or the best subsets.
  void ModelBuildingSummary();

  double ConfidenceLevel = 0.95;
  ResidualChoices Residuals;
  SurvivorType Survivor = SurvivorType::Breslow;
  SurvivorCIType SurvivorCI = SurvivorCIType::Normal;
  bool ComputeSurvivorFunction = true;
  bool ComputeSurvivorCI = true;
  bool ComputeCumulativeHazardFunction = false;
  bool ComputeCumulativeHazardCI = false;
  int NumberOfCovariatePatterns = 1;
  TimeTransform Transform = TimeTransform::Identity;
  CovariatePatterns Patterns;
  DenseMatrix m_LinearCombinations;  // p rows, a column for each function; empty at first
  int m_LinearCombinationStatus = LinearCombinationStatuses::Usable;  // of the latest entry or test
  void* Parent = nullptr;                                             // window of the host's messages

 private:
  CCoxPH& m_analysis;
};

}  // namespace orv
