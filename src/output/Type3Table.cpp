#include "output/Type3Table.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "fit/NumericalFailure.h"
#include "inference/LinearHypothesis.h"
#include "inference/Type3Contrast.h"
#include "output/CResultSpreadsheet.h"
#include "output/SignificanceLevel.h"

namespace orv {

namespace {

enum Column { kWald, kDf, kPValue, kColumnCount };

// Tests L'b = 0. `df`: out, the degrees of freedom of the test.
EffectTest TestEffect(const CCoxFit& fit, std::size_t effect, const DenseMatrix& L, int& df) {
  const CCoxData& data = *fit.m_pData;
  EffectTest test;
  // The name that the design was built with: the options may have changed since.
  test.Name = data.DesignColumns[static_cast<std::size_t>(data.EffectFirstColumn[effect] - 1)].EffectName;
  double estimate = 0.0;
  double standardError = 0.0;
  int failed = 0;
  test.ChiSquare = TestLinearHypothesis(fit, L, estimate, standardError, df, failed);
  if (df > 0) test.PValue = 1.0 - fit.Owner().GetHost().ChiSquareCdf(test.ChiSquare, df);
  return test;
}

std::vector<EffectTest> TestColumns(const CCoxFit& fit) {
  const CCoxData& data = *fit.m_pData;
  const bool isReference = fit.Owner().m_Settings.Coding == Codings::Reference;
  std::vector<EffectTest> tests;
  for (std::size_t effect = 0; effect < data.EffectFirstColumn.size(); ++effect) {
    const auto first = static_cast<std::size_t>(data.EffectFirstColumn[effect] - 1);
    const auto end = static_cast<std::size_t>(data.EffectLastColumn[effect]);
    int kept = 0;
    for (std::size_t c = first; c < end; ++c) kept += data.DesignColumns[c].Dropped ? 0 : 1;
    if (kept == 0) continue;
    DenseMatrix L(data.CoefficientCount, std::vector<double>(end - first, 0.0));
    for (std::size_t c = first; c < end; ++c) L[c][c - first] = 1.0;
    int df = 0;
    EffectTest test = TestEffect(fit, effect, L, df);
    test.ShownDf = isReference ? df : kept;
    tests.push_back(test);
  }
  return tests;
}

// The information at beta = 0. False when it cannot be had.
bool EvaluateInformation(CCoxFit& fit) {
  // Emptied, so that what an earlier evaluation left is not taken for it.
  fit.m_PackedInformation.clear();
  try {
    fit.EvaluateScoreAtStart();
  } catch (const NumericalFailure&) {
    return false;
  }
  return !fit.m_PackedInformation.empty();
}

std::vector<EffectTest> TestEstimableFunctions(CCoxFit& fit) {
  if (!EvaluateInformation(fit)) return {};
  std::vector<EffectTest> tests;
  for (std::size_t effect = 0; effect < fit.m_pData->EffectFirstColumn.size(); ++effect) {
    DenseMatrix L;
    if (!BuildType3Contrast(fit, L, static_cast<int>(effect))) return {};
    if (L.empty() || L.front().empty()) continue;
    int df = 0;
    EffectTest test = TestEffect(fit, effect, L, df);
    test.ShownDf = static_cast<int>(L.front().size());
    tests.push_back(test);
  }
  return tests;
}

}  // namespace

std::vector<EffectTest> ComputeType3Tests(CCoxFit& fit) {
  const std::size_t p = fit.m_pData->CoefficientCount;
  if (fit.CovarianceInUse().size() != p || fit.m_BetaHistory.empty()) return {};
  const bool isOverparameterized = fit.Owner().m_Settings.Coding == Codings::Overparameterized;
  return isOverparameterized ? TestEstimableFunctions(fit) : TestColumns(fit);
}

void ShowType3Tests(CCoxFit& fit, double confidenceLevel) {
  const std::vector<EffectTest> tests = ComputeType3Tests(fit);
  const bool isReference = fit.Owner().m_Settings.Coding == Codings::Reference;
  CResultSpreadsheet sheet(fit.Owner().GetHost(), static_cast<int>(tests.size()), kColumnCount);
  sheet.SetTitle1("Type 3 Tests");
  sheet.SetColumnName(kWald, "Wald");
  sheet.SetColumnName(kDf, "df");
  sheet.SetColumnName(kPValue, "P value");
  for (int row = 0; row < static_cast<int>(tests.size()); ++row) {
    const EffectTest& test = tests[static_cast<std::size_t>(row)];
    sheet.SetRowName(row, test.Name);
    if (isReference && test.ShownDf == 0) continue;
    sheet.SetNumber(row, kDf, test.ShownDf);
    if (!std::isfinite(test.ChiSquare)) continue;
    sheet.SetNumber(row, kWald, test.ChiSquare);
    sheet.SetNumber(row, kPValue, test.PValue);
    if (!(test.PValue < AlphaOf(confidenceLevel))) continue;
    for (int column = 0; column < kColumnCount; ++column) sheet.HighlightCell(row, column);
  }
  sheet.Show();
}

}  // namespace orv
