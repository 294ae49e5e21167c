#include "select/EffectTests.h"

#include <algorithm>
#include <cmath>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/NumericalFailure.h"
#include "inference/LinearHypothesis.h"
#include "inference/Type3Contrast.h"
#include "select/EffectColumns.h"

namespace orv {

namespace {

constexpr double kAboveEveryLimit = 2.0;
constexpr double kBelowEveryLimit = -1.0;

std::size_t PositionOf(const CCoxFit& fit, int column) {
  const auto found = std::find(fit.m_ActiveColumns.begin(), fit.m_ActiveColumns.end(), column);
  return static_cast<std::size_t>(found - fit.m_ActiveColumns.begin());
}

int DroppedColumns(const CCoxData& data, EffectColumns columns) {
  int dropped = 0;
  for (int c = columns.First; c <= columns.Last; ++c) {
    dropped += data.DesignColumns[static_cast<std::size_t>(c)].Dropped ? 1 : 0;
  }
  return dropped;
}

int LastIterationOf(const CCoxFit& fit) {
  return static_cast<int>(fit.m_BetaHistory.size()) - 1;
}

}  // namespace

SelectionCandidate BestToEnter(const CCoxFit& fit,
                               const SweptInformation& swept,
                               const EffectHierarchy& hierarchy,
                               const std::vector<bool>& inModel,
                               const std::vector<int>& effects) {
  SelectionCandidate best;
  best.Test.PValue = kAboveEveryLimit;
  for (const int effect : effects) {
    if (inModel[static_cast<std::size_t>(effect - 1)] || hierarchy.WaitsForAnother(effect, inModel)) continue;
    int df = 0;
    const double chiSquare = swept.ChiSquareWith(ColumnsOfEffect(*fit.m_pData, effect), df);
    const SelectionTest test = TestOf(fit, chiSquare, df);
    if (test.PValue < best.Test.PValue) best = {effect, test};
  }
  return best;
}

RemovalTests::RemovalTests(CCoxFit& fit) : m_fit(fit) {
  if (fit.Owner().m_Settings.Coding != Codings::Overparameterized) return;
  fit.EvaluateScoreAtStart();
  m_nullInformation = fit.m_PackedInformation;
}

SelectionCandidate RemovalTests::BestToLeave(const EffectHierarchy& hierarchy,
                                             const std::vector<bool>& inModel,
                                             const std::vector<int>& effects) const {
  SelectionCandidate best;
  best.Test.PValue = kBelowEveryLimit;
  for (const int effect : effects) {
    if (!inModel[static_cast<std::size_t>(effect - 1)] || hierarchy.IsHeldByAnother(effect, inModel)) continue;
    const SelectionTest test = Test(effect);
    if (test.PValue > best.Test.PValue) best = {effect, test};
  }
  return best;
}

SelectionTest RemovalTests::Test(int effect) const {
  if (m_fit.m_Covariance.size() != m_fit.m_ActiveColumns.size() || m_fit.m_BetaHistory.empty()) {
    throw NumericalFailure();
  }
  const EffectColumns columns = ColumnsOfEffect(*m_fit.m_pData, effect);
  const int counted = columns.Count() - DroppedColumns(*m_fit.m_pData, columns);
  if (counted == 0) return {};
  if (counted == 1) {
    const std::size_t first = PositionOf(m_fit, columns.First);
    const double z = m_fit.m_BetaHistory.back()[first] / std::sqrt(m_fit.m_Covariance[first][first]);
    return TestOf(m_fit, z * z, 1);
  }
  int df = 0;
  int failed = 0;
  const double chiSquare = WaldForEffect(m_fit, HypothesisOf(effect), LastIterationOf(m_fit), df, failed);
  return TestOf(m_fit, chiSquare, df);
}

std::vector<std::vector<double>> RemovalTests::HypothesisOf(int effect) const {
  DenseMatrix L;
  if (m_fit.Owner().m_Settings.Coding == Codings::Overparameterized) {
    // Without functions that can be told apart nothing is tested.
    static_cast<void>(BuildType3Contrast(m_fit, m_nullInformation, m_fit.m_ActiveColumns, L, effect - 1));
    return L;
  }
  const EffectColumns columns = ColumnsOfEffect(*m_fit.m_pData, effect);
  L.assign(m_fit.m_ActiveColumns.size(), std::vector<double>(static_cast<std::size_t>(columns.Count()), 0.0));
  for (int c = columns.First; c <= columns.Last; ++c) {
    L[PositionOf(m_fit, c)][static_cast<std::size_t>(c - columns.First)] = 1.0;
  }
  return L;
}

double WaldForEffect(const CCoxFit& fit,
                     const std::vector<std::vector<double>>& L,
                     int lastIteration,
                     int& df,
                     int& failed) {
  double estimate = 0.0;
  double standardError = 0.0;
  const std::vector<double>& b = fit.m_BetaHistory[static_cast<std::size_t>(lastIteration)];
  return TestLinearHypothesis(L, b, fit.m_Covariance, estimate, standardError, df, failed);
}

}  // namespace orv
