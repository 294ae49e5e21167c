// Fits whose estimate and covariance a test writes down, and the sorted cases behind them.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "inference/RandomSurvival.h"
#include "support/TestAnalysis.h"

namespace orv::testing {

inline constexpr int kTieRules[] = {Likelihoods::Breslow, Likelihoods::Efron, Likelihoods::Discrete};

// Two vectors in the history, so that the last one is told from the first.
inline CCoxFit& WriteFit(TestAnalysis& analysis, int likelihood, const std::vector<double>& beta) {
  analysis.Settings().Likelihood = static_cast<std::int16_t>(likelihood);
  CCoxFit& fit = analysis.PrepareFit();
  fit.m_BetaHistory = {std::vector<double>(beta.size(), 9.0), beta};
  fit.m_Covariance = {{0.5, -0.125}, {-0.125, 0.25}};
  fit.m_Covariance.resize(beta.size());
  for (auto& row : fit.m_Covariance) row.resize(beta.size());
  return fit;
}

struct SortedCase {
  std::vector<double> x;
  double t = 0.0;      // time, or stop of an interval
  double s = -1.0;     // start of an interval
  double w = 1.0;      // weight
  double delta = 0.0;  // 1 complete, 0 censored
  double g = -1.0;     // stratum, the same for all cases without strata
  double r = 1.0;      // exp(x'beta)
  double e = 1.0;      // w r
};

inline std::vector<SortedCase> SortedCasesOf(const CCoxFit& fit, const std::vector<double>& beta) {
  const CCoxData& data = *fit.m_pData;
  std::vector<SortedCase> cases(data.ValidCaseCount);
  for (std::size_t i = 0; i < cases.size(); ++i) {
    const double* cells = data.CaseTable.GetRow(static_cast<int>(i) + 1);
    SortedCase& one = cases[i];
    one.x.assign(cells, cells + beta.size());
    one.t = cells[data.StopColumn >= 0 ? data.StopColumn : data.SurvivalColumn];
    if (data.StartColumn >= 0) one.s = cells[data.StartColumn];
    one.w = cells[data.WeightColumn];
    one.delta = cells[data.StatusColumn];
    if (data.StratumColumn >= 0) one.g = cells[data.StratumColumn];
    double eta = 0.0;
    for (std::size_t k = 0; k < beta.size(); ++k) eta += one.x[k] * beta[k];
    one.r = std::exp(eta);
    one.e = one.w * one.r;
  }
  return cases;
}

// Times that differ by a few units in the last place in place of equal ones. The computations compare some times
// exactly and some up to such a difference.
inline void BlurTimes(std::vector<TestColumn>& columns, unsigned seed) {
  TestRandom random(seed);
  for (TestColumn& column : columns) {
    if (column.Name != "time") continue;
    for (double& time : column.Values) time *= 1.0 + 4.0 * random.Integer(3) * 0x1p-52;
  }
}

// Runs `check` on fits of all forms of analyses under all rules for ties, with times that are equal or nearly so.
// `check` takes the fit, the vector it was written at, and the form.
template <typename Check>
void ForRandomFits(const Check& check) {
  const std::vector<double> beta = {0.7, -0.4};
  for (const RandomForm& form : RandomForms()) {
    for (const int likelihood : kTieRules) {
      if (form.Weights && likelihood == Likelihoods::Discrete) continue;  // refused
      for (unsigned seed = 1; seed <= 6; ++seed) {
        const bool blurred = seed > 4;
        SCOPED_TRACE(std::string(form.What) + (blurred ? ", blurred times" : "") + ", rule " +
                     std::to_string(likelihood) + ", seed " + std::to_string(seed));
        std::vector<TestColumn> columns = RandomSurvivalColumns(seed, 70, form.MeetingStrata);
        if (blurred) BlurTimes(columns, seed);
        TestAnalysis analysis(columns);
        DefineForm(analysis, form);
        check(WriteFit(analysis, likelihood, beta), beta, form);
        if (::testing::Test::HasFatalFailure()) return;
      }
    }
  }
}

// Intervals with one case of a risk that hides the others beside it. It starts late: at earlier event times it is not
// at risk, and the sums over those that are must have their digits.
inline std::vector<TestColumn> ColumnsWithALateHighRisk(unsigned seed) {
  std::vector<TestColumn> columns = RandomSurvivalColumns(seed, 60, false);
  const double row[] = {5.5, 8.0, 1.0, 50.0, 0.0, 1.0, 1.0};
  for (std::size_t c = 0; c < columns.size(); ++c) columns[c].Values[0] = row[c];
  return columns;
}

inline void ExpectNear(const std::vector<double>& actual, const std::vector<double>& expected, double tolerance) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) ASSERT_NEAR(actual[i], expected[i], tolerance) << "row " << i;
}

inline void ExpectNear(const DenseMatrix& actual, const DenseMatrix& expected, double tolerance) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t k = 0; k < expected.size(); ++k) {
    SCOPED_TRACE("parameter " + std::to_string(k));
    ExpectNear(actual[k], expected[k], tolerance);
  }
}

}  // namespace orv::testing
