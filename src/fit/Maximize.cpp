// The Newton-Raphson frame that every maximisation routine shares.
#include <algorithm>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/FloatingPointRegime.h"
#include "fit/LDL.h"
#include "host/TextIds.h"
#include "host/WorkArray.h"

namespace orv {

// The working store of one maximisation.
struct CCoxFit::Working {
  Working(Host& host, int parameters)
      : p(parameters),
        beta(host, static_cast<std::size_t>(parameters)),
        U(host, static_cast<std::size_t>(parameters)),
        H(host, static_cast<std::size_t>(parameters)),
        C(host, static_cast<std::size_t>(parameters)),
        D(host, static_cast<std::size_t>(parameters)) {}

  bool Failed() const { return beta.Failed() || U.Failed() || H.Failed() || C.Failed() || D.Failed(); }
  std::vector<double> BetaCopy() const { return {beta.Data(), beta.Data() + p}; }

  int p;
  WorkArray<double> beta;
  WorkArray<double> U;
  WorkMatrix H;
  WorkMatrix C;
  WorkMatrix D;
  double bestL = 0.0;         // the likelihood of the last accepted vector
  bool lastRejected = false;  // the last pass lowered the likelihood, so its H holds no factor
};

namespace {

double EvaluateChecked(PartialLikelihood& pass, const double* beta, double* U, double** H) {
  const double L = pass.Evaluate(beta, U, H);
  FloatingPointRegime::ThrowIfFailed();
  return L;
}

void CopyMatrix(const WorkMatrix& from, WorkMatrix& to, int p) {
  for (int row = 0; row < p; ++row)
    std::copy_n(from[static_cast<std::size_t>(row)], p, to[static_cast<std::size_t>(row)]);
}

DenseMatrix ToDense(const WorkMatrix& matrix, int p) {
  DenseMatrix dense;
  for (int row = 0; row < p; ++row) {
    const double* cells = matrix[static_cast<std::size_t>(row)];
    dense.emplace_back(cells, cells + p);
  }
  return dense;
}

}  // namespace

int CCoxFit::Maximize(PartialLikelihood& pass, const RoutineTraits& traits) {
  const int p = static_cast<int>(m_ActiveColumns.size());
  m_Converged = false;
  std::unique_ptr<CQvdProgressBar> bar;
  if (traits.HasProgressBar && Settings().ModelBuilding == ModelBuildings::AllEffects) {
    bar =
        HostOf().NewProgressBar(std::max(m_MaxIterations, 2), Owner().GetResourceString(TextIds::MaximizingLikelihood));
    if (bar) bar->ShowNow();
  }
  Working work(HostOf(), p);
  if (work.Failed() || pass.Failed()) return FitStatuses::OutOfMemory;

  work.bestL = FirstPasses(pass, traits, work);
  m_LogLikHistory.push_back(work.bestL);
  int status = FitStatuses::IterationLimit;
  if (p == 0 && traits.SkipsLoopWithoutColumns) {
    m_Converged = true;
    status = FitStatuses::Converged;
  } else {
    status = Iterate(pass, traits, work, bar.get());
    if (status == FitStatuses::Cancelled) return status;
    // The vector of the last step was never evaluated. On convergence HasConverged has removed it.
    if (!m_Converged) m_BetaHistory.pop_back();
  }
  StoreMatrices(work);
  return status;
}

// The pass at zero, which gives the null likelihood and the score statistic, and the pass at the start vector.
// Returns the likelihood of the start vector, with the first step taken from it.
double CCoxFit::FirstPasses(PartialLikelihood& pass, const RoutineTraits& traits, Working& work) {
  const int p = work.p;
  InitialBeta(work.beta.Data(), p);
  m_BetaHistory.push_back(work.BetaCopy());
  const bool startsAtZero = std::all_of(work.beta.Data(), work.beta.Data() + p, [](double b) { return b == 0.0; });

  const double* const nullVector = traits.HasNullPass || startsAtZero ? nullptr : work.beta.Data();
  m_NullLogLik = EvaluateChecked(pass, nullVector, work.U.Data(), work.H.Rows());
  // Out of memory here costs nothing that the fit reads.
  static_cast<void>(ComputeNullProjection(work.H.Rows()));
  double stepDotScore = 0.0;
  NewtonStep(work.beta.Data(), work.U.Data(), work.H.Rows(), &stepDotScore);
  m_ScoreStatistic = stepDotScore;
  if (startsAtZero || !traits.HasNullPass) return m_NullLogLik;

  m_BetaHistory.pop_back();
  InitialBeta(work.beta.Data(), p);
  const double L = EvaluateChecked(pass, work.beta.Data(), work.U.Data(), work.H.Rows());
  NewtonStep(work.beta.Data(), work.U.Data(), work.H.Rows(), &stepDotScore);
  return L;
}

int CCoxFit::Iterate(PartialLikelihood& pass, const RoutineTraits& traits, Working& work, CQvdProgressBar* bar) {
  int status = FitStatuses::IterationLimit;
  for (int iteration = 1; !m_Converged && iteration <= m_MaxIterations;) {
    const double L = EvaluateChecked(pass, work.beta.Data(), work.U.Data(), work.H.Rows());
    m_LogLikHistory.push_back(L);
    work.lastRejected = work.bestL > L;
    if (work.lastRejected) {
      // The history keeps rejected vectors on purpose: after a second rejection in a row the entry before the last is
      // the vector rejected first, so the trial points move on between the two latest entries.
      const std::vector<double>& before = m_BetaHistory[m_BetaHistory.size() - 2];
      for (int j = 0; j < work.p; ++j) {
        double& beta = work.beta[static_cast<std::size_t>(j)];
        beta = (before[static_cast<std::size_t>(j)] + beta) * 0.5;
      }
      m_BetaHistory.push_back(work.BetaCopy());
    } else {
      work.bestL = L;
      double stepDotScore = 0.0;
      NewtonStep(work.beta.Data(), work.U.Data(), work.H.Rows(), &stepDotScore);
      m_Converged = HasConverged(stepDotScore);
      if (m_Converged) status = FitStatuses::Converged;
    }
    ++iteration;
    const bool cancelledAtBar = bar != nullptr && bar->ProgressBarUpdate(iteration);
    if (traits.HasCancelQuery && (cancelledAtBar || Owner().IsCancelled())) return FitStatuses::Cancelled;
  }
  return status;
}

// Covariance and information at the last evaluated vector, zero on dropped rows and columns.
void CCoxFit::StoreMatrices(Working& work) {
  const int p = work.p;
  CopyMatrix(work.H, work.C, p);
  if (work.lastRejected) FactorLDL(work.C.Rows(), p, m_SingularityTolerance);
  InvertLDL(work.C.Rows(), p);
  MirrorUpper(work.C.Rows(), p);
  CopyMatrix(work.C, work.D, p);
  FactorLDL(work.D.Rows(), p, m_SingularityTolerance);
  InvertLDL(work.D.Rows(), p);
  MirrorUpper(work.D.Rows(), p);
  FloatingPointRegime::ThrowIfFailed();
  m_Information = ToDense(work.D, p);
  m_Covariance = ToDense(work.C, p);
}

}  // namespace orv
