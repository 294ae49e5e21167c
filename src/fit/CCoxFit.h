// CCoxFit: the estimation object of one run.
//
// It maximises the log partial likelihood of a CCoxData by Newton-Raphson and keeps every vector that it tried, the
// information and the covariance at the estimate, and why it stopped. Columns, parameters, vectors and matrices count
// from 0, case rows from 1. While FitCurrentModel runs the case table is on the standardised scale and belongs to the
// fit alone; afterwards it is back on its raw scale.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "fit/PartialLikelihood.h"
#include "fit/TieTable.h"

namespace orv {

class CCoxData;
class CCoxPH;
class CQvdProgressBar;
class Host;
struct CoxDesignColumn;
struct CoxSettings;

// Why a fit ended: the values of m_FitStatus.
namespace FitStatuses {
inline constexpr int Converged = 0;
inline constexpr int OutOfMemory = 1;     // histories so far, no information
inline constexpr int IterationLimit = 2;  // the last evaluated vector, with its covariance
inline constexpr int Cancelled = 3;       // histories so far, no covariance
inline constexpr int Failed = -1;         // numerical failure with nothing to fall back on; the data are gone
}  // namespace FitStatuses

using DenseMatrix = std::vector<std::vector<double>>;

// What sets one maximisation routine apart from the others within the common frame.
struct RoutineTraits {
  bool HasCancelQuery = false;           // asks for cancel after each iteration
  bool SkipsLoopWithoutColumns = false;  // with no parameters the null pass is the fit
  bool HasProgressBar = true;            // outside model building
  bool HasNullPass = true;  // else null likelihood, score statistic and first step all come from the start vector
};

class CCoxFit {
 public:
  static constexpr double kSingularityTolerance = 1e-12;

  // Takes tolerance and iteration limit from the options. `data` is not owned and must outlive the fit.
  CCoxFit(CCoxData* data, int likelihood, int inputType);
  CCoxFit(const CCoxFit&) = delete;
  CCoxFit& operator=(const CCoxFit&) = delete;

  // Empties the histories and matrices and clears Dropped on every design column.
  void ResetResults();
  // Fits the current model. The outcome is in m_Converged and m_FitStatus. A numerical failure ends with the last
  // iteration, or with no results, after a message; during model building it passes on to the caller as an exception.
  void FitCurrentModel();
  // The number of parameters of the current model. Outside a selection loop it also resets m_ActiveColumns to all
  // columns.
  int ActiveParameterCount();

  // ---- The frame ----------------------------------------------------------------------------------------------
  // Maximises the likelihood that `pass` evaluates. Returns a value of FitStatuses.
  int Maximize(PartialLikelihood& pass, const RoutineTraits& traits);
  // (x - mean) / standard deviation on every active column of the case table; a constant column becomes zeros. Throws
  // NumericalFailure when a column's spread is beyond the range of a double.
  void Standardize();
  // The table back on its raw scale, and estimates, information and covariance with it.
  void Unstandardize();
  // The start vector: zeros, or the start values.
  void InitialBeta(double* beta, int p) const;
  // One Newton step from score and information: beta += H^- U, appended to m_BetaHistory.
  //   U                In: the score. Out: the step.
  //   H                In: the upper triangle of the information. Out: its factor.
  //   stepDotScore     Out: step' U.
  // Throws NumericalFailure before the history grows when the arithmetic failed.
  void NewtonStep(double* beta, double* U, double** H, double* stepDotScore);
  // The convergence test of the options on the latest history entries. When it holds, the vector that the last step
  // made, which no pass has seen, leaves the history.
  bool HasConverged(double stepDotScore);

  // ---- Matrices of the current model; they keep the Dropped marks of its columns -------------------------------
  int FactorLDL(double** a, int p, double tolerance);
  static void SolveLDL(double* const* a, int p, double* b);
  static void InvertLDL(double** a, int p);
  // Zeroes rows and columns of fixed parameters and marks them Dropped.
  void ZeroFixedRows(double** a, int p);
  // m_NullProjection from the information at beta = 0. Returns 1 when memory is out, else 0.
  int ComputeNullProjection(double** info);

  // ---- Maximisation routines: efronStep is 0 for Breslow, 1 for Efron -------------------------------------------
  int FitSurvival(int efronStep);
  int FitSurvivalStrata(int efronStep);
  int FitCounting(int efronStep);
  int FitCountingStrata(int efronStep);
  int FitSurvivalDiscrete();
  int FitSurvivalDiscreteStrata();
  int FitCountingDiscrete();
  int FitCountingDiscreteStrata();
  int FitTimeDependent(int efronStep);  // with and without strata

  // ---- Evaluators: one pass over all design columns at `beta`, into m_ScoreVector and m_PackedInformation -------
  void EvaluateSurvival(int efronStep, const double* beta);
  void EvaluateSurvivalStrata(int efronStep, const double* beta);
  void EvaluateCounting(int efronStep, const double* beta);
  void EvaluateCountingStrata(int efronStep, const double* beta);
  void EvaluateSurvivalDiscrete(const double* beta);
  void EvaluateSurvivalDiscreteStrata(const double* beta);
  void EvaluateCountingDiscrete(const double* beta);
  void EvaluateCountingDiscreteStrata(const double* beta);
  void EvaluateTimeDependent(const double* beta, int efronStep);

  CCoxPH& Owner() const;
  // The covariance that standard errors and tests take.
  const DenseMatrix& CovarianceInUse() const { return m_Covariance; }

  CCoxData* m_pData = nullptr;          // null after a failure without results
  std::vector<double> m_LogLikHistory;  // log partial likelihood of every vector evaluated, rejected ones too
  double m_NullLogLik = 0.0;            // at beta = 0
  DenseMatrix m_BetaHistory;            // every vector tried, rejected ones too; after the fit the last is the estimate
  DenseMatrix m_Information;            // at the estimate
  DenseMatrix m_Covariance;             // generalised inverse of the information
  double m_ConvergenceTolerance = 0.0;
  double m_SingularityTolerance = kSingularityTolerance;
  int m_MaxIterations = 0;
  int m_Likelihood = 0;
  int m_InputType = 0;
  int m_InformationRank = 0;         // pivots kept in the last step; negated when a pivot was clearly negative
  std::vector<int> m_ActiveColumns;  // design columns of the current model
  int m_ActiveCount = 0;             // their number during model building
  double m_ScoreStatistic = 0.0;     // U' I^- U at beta = 0
  DenseMatrix m_NullProjection;      // information times its pseudo-inverse at beta = 0
  bool m_Converged = false;
  int m_FitStatus = 0;
  std::vector<double> m_PackedInformation;  // lower triangle by rows, all design columns
  std::vector<double> m_ScoreVector;
  std::string m_BestSubsetDelimiter = "**********COXPHBESTSUBSETSMODELDELIMITER**********";

 private:
  struct Working;

  const CoxSettings& Settings() const;
  Host& HostOf() const;
  // The columns that a pass reads; Stratum is -1 without strata.
  CaseColumns PassColumns(bool strata) const;
  std::unique_ptr<PartialLikelihood> SurvivalPass(bool strata, int efronStep, const std::vector<int>& columns) const;
  std::unique_ptr<PartialLikelihood> CountingPassOf(bool strata, int efronStep, const std::vector<int>& columns) const;
  std::unique_ptr<PartialLikelihood> SurvivalDiscretePass(bool strata, const std::vector<int>& columns) const;
  std::unique_ptr<PartialLikelihood> CountingDiscretePass(bool strata, const std::vector<int>& columns) const;
  std::unique_ptr<PartialLikelihood> TimeDependentPassOf(int efronStep, const std::vector<int>& columns) const;
  // One evaluation into m_ScoreVector and m_PackedInformation.
  void StoreEvaluation(PartialLikelihood& pass, const double* beta);
  std::vector<int> AllColumns() const;
  int RunRoutine();
  void RunEvaluator(const double* beta);
  // The record of the column that a parameter of the current model belongs to.
  CoxDesignColumn& ColumnOf(int parameter);
  // The number of parameters of a Newton step.
  int StepParameterCount() const;
  void RestoreStartValues();

  double FirstPasses(PartialLikelihood& pass, const RoutineTraits& traits, Working& work);
  int Iterate(PartialLikelihood& pass, const RoutineTraits& traits, Working& work, CQvdProgressBar* bar);
  void StoreMatrices(Working& work);
  // After a numerical failure: results from the last vector that served a pass. False when they cannot be had.
  bool FallBackToLastIteration();
  // After a numerical failure without results: destroys the data and says so.
  void GiveUp();

  std::vector<double> m_RawStartValues;  // the option's values while the fit holds them on the standardised scale
};

}  // namespace orv
