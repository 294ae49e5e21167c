// CCoxFit: the estimation object of one run.
//
// It maximises the log partial likelihood of a CCoxData by Newton-Raphson and keeps every vector that it tried, the
// information and the covariance at the estimate, and why it stopped. Columns, parameters, vectors and matrices count
// from 0, case rows from 1. While FitCurrentModel runs the case table is on the standardised scale and belongs to the
// fit alone; afterwards it is back on its raw scale.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "fit/PartialLikelihood.h"
#include "fit/SubsetNode.h"
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

// What a step of a stepwise selection did: the values of m_StepActions.
namespace StepActions {
inline constexpr int Entry = 1;
inline constexpr int Removal = 2;
}  // namespace StepActions

using DenseMatrix = std::vector<std::vector<double>>;

// A step function.
struct BaselineCurve {
  std::vector<double> Times;
  std::vector<double> Values;
};

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
  // The covariance that standard errors and tests take: the robust one when the options ask for it. Empty when the fit
  // left none.
  const DenseMatrix& CovarianceInUse() const;

  // ---- Score tests: one evaluation over all design columns, for input types 1 and 2 (nothing happens for 3) ---------
  // `beta` has CoefficientCount elements. Fixed parameters take their start values, in `beta` too, and their rows and
  // columns of m_PackedInformation become 0.
  void EvaluateScoreAt(double* beta);
  // The same at the zero vector, but for fixed parameters.
  void EvaluateScoreAtStart();
  // The sum over i, j with inModel[i] and inModel[j] of score_i packed(i, j) score_j.
  //   packed  p(p + 1)/2 values: a generalised inverse of information, lower triangle by rows
  static double ScoreQuadraticForm(const double* score, const double* packed, const std::vector<bool>& inModel, int p);

  // Gives up the residuals and influence measures that are computed on demand, which hold a value for each case and
  // parameter. The martingale and deviance residuals and the score residuals at beta = 0 stay.
  void DropResiduals();

  // ---- Robust variance (defined in inference/) -----------------------------------------------------------------
  // The sandwich estimate into m_RobustCovariance, with the score residuals summed over subjects when there are some.
  // Source: Lin and Wei, JASA 84 (1989) 1074-1078. Does nothing when the fit left no covariance.
  void ComputeRobustCovariance();
  // m_DfBeta = covariance times score residuals; both are computed when absent.
  void ComputeDfBeta();
  // b' R^+ b, with R the robust covariance; 0 when memory is out.
  double RobustWaldStatistic() const;
  // u' B^+ u, with u the sum and B the sum of squares of the score residuals at beta = 0 by subject or case; 0 when
  // memory is out. Computes m_NullScoreResiduals when absent.
  double RobustScoreStatistic();

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

  // Residuals by sorted row, from 0. A matrix has a vector of all cases for each parameter; it is absent when empty.
  DenseMatrix m_RobustCovariance;
  DenseMatrix m_ScoreResiduals;       // at the estimate
  DenseMatrix m_NullScoreResiduals;   // at beta = 0
  DenseMatrix m_SchoenfeldResiduals;  // zero for censored cases
  DenseMatrix m_ScaledSchoenfeldResiduals;
  DenseMatrix m_DfBeta;
  std::vector<double> m_LinearPredictor;
  std::vector<double> m_MartingaleResiduals;
  std::vector<double> m_DevianceResiduals;  // input type 1
  std::vector<double> m_StdErrorXBeta;
  std::vector<double> m_LikelihoodDisplacement;
  std::vector<double> m_Lmax;

  // The baseline by stratum, in ascending order of stratum codes; one entry without strata. A curve begins with a point
  // at time 0 and has one more for each event time; the event lists have one element for each event time.
  std::vector<BaselineCurve> m_BreslowCurves;          // cumulative hazard at x = 0
  std::vector<BaselineCurve> m_KaplanMeierCurves;      // survivor at x = 0
  std::vector<std::vector<double>> m_EventRiskSums;    // S0: sum of w exp(x'b) over the risk set
  std::vector<std::vector<double>> m_EventWeightSums;  // dN: weight of the events
  std::vector<std::vector<std::vector<double>>>
      m_EventRiskMoments;  // S1: sum of w exp(x'b) x; see FillEventRiskMoments
  bool m_BreslowValid = true;
  bool m_KaplanMeierValid = true;
  int m_RootFindFailed = 0;  // the equation solver of the product-limit baseline failed

  // ---- Model building (filled in select/) ------------------------------------------------------------------------
  // Effects count from 1 and so do their column ranges, as in CCoxData. The lists of a search stay readable after the
  // design has been reduced; their numbers are then still those of the full design.
  int EffectsForcedInModel = 0;       // leading entries of a step list that were taken in before the search
  std::vector<int> m_KeptColumns;     // after a reduction: the columns of the full design that are left, from 0
  std::vector<int> m_ForwardEffects;  // in the order of entry, forced effects first
  std::vector<int> m_ForwardFirstColumns;
  std::vector<int> m_ForwardLastColumns;
  std::vector<double> m_ForwardPValues;  // at entry; -1 for a forced effect
  std::vector<double> m_ForwardScores;   // score chi-square at entry; -1 for a forced effect
  std::vector<std::string> m_ForwardNames;

  std::vector<int> m_BackwardEffects;  // in the order of removal
  std::vector<double> m_BackwardPValues;
  std::vector<double> m_BackwardWalds;
  std::vector<std::string> m_BackwardNames;
  std::vector<int> m_KeptEffects;  // still in the model
  std::vector<int> m_KeptFirstColumns;
  std::vector<int> m_KeptLastColumns;
  std::vector<std::string> m_KeptNames;
  int m_ActiveEffectCount = 0;
  std::vector<bool> m_EffectInModel;
  std::vector<bool> m_ColumnInModel;
  std::vector<int> m_ActiveEffectIndex;    // effects in the model, from 0
  std::vector<int> m_ActiveFirstPosition;  // and the places of their columns in m_ActiveColumns, from 1
  std::vector<int> m_ActiveLastPosition;

  std::vector<int> m_StepActions;  // see StepActions; a forced effect has its number here, which readers skip
  std::vector<int> m_StepEntered;  // in the order of entry, forced effects first
  std::vector<double> m_StepScores;
  std::vector<double> m_StepEntryPValues;
  std::vector<std::string> m_StepEnteredNames;
  std::vector<int> m_StepRemoved;
  std::vector<double> m_StepWalds;
  std::vector<double> m_StepRemovalPValues;
  std::vector<std::string> m_StepRemovedNames;
  std::vector<int> m_StepEffects;  // in the model now, in the order of entry
  std::vector<int> m_StepFirstColumns;
  std::vector<int> m_StepLastColumns;
  std::vector<std::string> m_StepNames;

  std::vector<double> m_SubsetScores;              // one a result row
  std::vector<std::vector<bool>> m_SubsetMembers;  // its columns
  int m_SubsetCount = 0;                           // result rows
  bool m_SubsetBestPerSize = false;                // by the bounded search
  std::vector<int> m_SubsetOrder;                  // the design column at each place of its sets; empty: as they are
  std::deque<SubsetNode> m_SubsetQueue;            // its work list, processed from the front
  std::uint64_t m_SubsetsScored = 0;               // how many subsets either search looked at

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

  // A column of the table on the standardised scale.
  struct ColumnScale {
    std::size_t Column = 0;
    double Mean = 0.0;
    double StdDev = 0.0;
  };

  std::vector<ColumnScale> m_scales;     // of the columns that Standardize has changed
  std::vector<double> m_RawStartValues;  // the option's values while the fit holds them on the standardised scale
};

}  // namespace orv
