#include <gtest/gtest.h>

#include <cmath>
#include <new>
#include <numeric>
#include <string>

#include "data/AlmostEqual.h"
#include "inference/RandomSurvival.h"
#include "inference/SchoenfeldResiduals.h"

namespace orv {
namespace {

using testing::DefineForm;
using testing::RandomForm;
using testing::RandomForms;
using testing::RandomSurvivalColumns;
using testing::TestAnalysis;

constexpr int kRules[] = {Likelihoods::Breslow, Likelihoods::Efron, Likelihoods::Discrete};

// A fit whose estimate and covariance are written by hand.
CCoxFit& WriteFit(TestAnalysis& analysis, int likelihood, const std::vector<double>& beta) {
  analysis.Settings().Likelihood = static_cast<std::int16_t>(likelihood);
  CCoxFit& fit = analysis.PrepareFit();
  fit.m_BetaHistory = {std::vector<double>(beta.size(), 9.0), beta};
  fit.m_Covariance = {{0.5, -0.125}, {-0.125, 0.25}};
  fit.m_Covariance.resize(beta.size());
  for (auto& row : fit.m_Covariance) row.resize(beta.size());
  return fit;
}

// Everything collected anew for each run of tied times, as the definition has it. O(n^2).
class PlainSchoenfeld {
 public:
  explicit PlainSchoenfeld(const CCoxFit& fit) : m_data(*fit.m_pData), m_beta(fit.m_BetaHistory.back()), m_fit(fit) {}

  DenseMatrix Residuals() const {
    const int n = static_cast<int>(m_data.ValidCaseCount);
    DenseMatrix residuals(m_beta.size(), std::vector<double>(static_cast<std::size_t>(n), 0.0));
    for (int last = n; last >= 1;) {
      int first = last;
      while (first > 1 && AlmostEqual(Time(first), Time(first - 1))) --first;
      const std::vector<double> mean = Mean(first, last);
      for (int row = first; row <= last; ++row) {
        if (!IsEvent(row)) continue;
        for (std::size_t k = 0; k < mean.size(); ++k) {
          residuals[k][static_cast<std::size_t>(row) - 1] = X(row)[k] - mean[k];
        }
      }
      last = first - 1;
    }
    return residuals;
  }

 private:
  const double* X(int row) const { return m_data.CaseTable.GetRow(row); }
  bool Intervals() const { return m_fit.m_InputType == InputTypes::CountingProcess; }
  double Time(int row) const { return X(row)[Intervals() ? m_data.StopColumn : m_data.SurvivalColumn]; }
  bool IsEvent(int row) const { return X(row)[m_data.StatusColumn] == 1.0; }
  bool SameStratum(int a, int b) const {
    return m_data.StratumColumn < 0 || X(a)[m_data.StratumColumn] == X(b)[m_data.StratumColumn];
  }
  double Risk(int row) const {
    double eta = 0.0;
    for (std::size_t k = 0; k < m_beta.size(); ++k) eta += m_beta[k] * X(row)[k];
    return X(row)[m_data.WeightColumn] * std::exp(eta);
  }

  // The average of a run that closes at row `first`: its risk set and event moments lie in the stratum of that row, the
  // number and the risks of its events come from the whole run.
  std::vector<double> Mean(int first, int last) const {
    const std::size_t p = m_beta.size();
    double S0 = 0.0;
    double D = 0.0;
    int count = 0;
    std::vector<double> S1(p, 0.0);
    std::vector<double> T(p, 0.0);
    std::vector<double> mean(p, 0.0);
    for (int row = first; row <= static_cast<int>(m_data.ValidCaseCount); ++row) {
      const bool isEvent = row <= last && IsEvent(row);
      if (isEvent) ++count;
      if (isEvent) D += Risk(row);
      if (!SameStratum(first, row)) continue;
      if (Intervals() && X(row)[m_data.StartColumn] >= Time(first)) continue;
      S0 += Risk(row);
      for (std::size_t k = 0; k < p; ++k) {
        S1[k] += Risk(row) * X(row)[k];
        if (isEvent) T[k] += Risk(row) * X(row)[k];
      }
    }
    for (int step = 0; step < count; ++step) {
      const double fraction = m_fit.m_Likelihood == Likelihoods::Efron ? static_cast<double>(step) / count : 0.0;
      for (std::size_t k = 0; k < p; ++k) mean[k] += (S1[k] - fraction * T[k]) / (S0 - fraction * D) / count;
    }
    return mean;
  }

  const CCoxData& m_data;
  const std::vector<double> m_beta;
  const CCoxFit& m_fit;
};

TEST(SchoenfeldResiduals, AgreeWithTheirDefinition) {
  for (const RandomForm& form : RandomForms()) {
    for (const int likelihood : kRules) {
      if (form.Weights && likelihood == Likelihoods::Discrete) continue;  // refused
      for (unsigned seed = 1; seed <= 3; ++seed) {
        SCOPED_TRACE(std::string(form.What) + ", rule " + std::to_string(likelihood) + ", seed " +
                     std::to_string(seed));
        TestAnalysis analysis(RandomSurvivalColumns(seed, 90, form.MeetingStrata));
        DefineForm(analysis, form);
        CCoxFit& fit = WriteFit(analysis, likelihood, {0.7, -0.4});
        ComputeSchoenfeldResiduals(fit);
        const DenseMatrix expected = PlainSchoenfeld(fit).Residuals();
        ASSERT_EQ(fit.m_SchoenfeldResiduals.size(), 2U);
        for (std::size_t k = 0; k < 2; ++k) {
          for (std::size_t i = 0; i < expected[k].size(); ++i) {
            ASSERT_NEAR(fit.m_SchoenfeldResiduals[k][i], expected[k][i], 1e-12) << k << ' ' << i;
          }
        }
      }
    }
  }
}

// The score is the sum over the events of x less its average, at any vector.
TEST(SchoenfeldResiduals, AddUpToTheScore) {
  for (const RandomForm& form : RandomForms()) {
    if (form.Weights || form.MeetingStrata) continue;
    for (const int likelihood : {Likelihoods::Breslow, Likelihoods::Efron}) {
      SCOPED_TRACE(std::string(form.What) + ", rule " + std::to_string(likelihood));
      TestAnalysis analysis(RandomSurvivalColumns(11, 200, false));
      DefineForm(analysis, form);
      std::vector<double> beta = {-0.3, 0.6};
      CCoxFit& fit = WriteFit(analysis, likelihood, beta);
      ComputeSchoenfeldResiduals(fit);
      fit.EvaluateScoreAt(beta.data());
      for (std::size_t k = 0; k < 2; ++k) {
        const auto& residuals = fit.m_SchoenfeldResiduals[k];
        const double sum = std::accumulate(residuals.begin(), residuals.end(), 0.0);
        EXPECT_GT(std::abs(sum), 0.1) << "the vector is far from the maximum";
        EXPECT_NEAR(sum, fit.m_ScoreVector[k], 1e-11) << k;
      }
    }
  }
}

TEST(SchoenfeldResiduals, AddUpToZeroAtTheEstimate) {
  TestAnalysis analysis(RandomSurvivalColumns(5, 150, false));
  DefineForm(analysis, {"", true, true, false, false});
  analysis.Settings().ConvergenceExponent = 12;
  ASSERT_EQ(analysis.Run(), 0);
  CCoxFit& fit = analysis.Fit();
  ComputeSchoenfeldResiduals(fit);
  for (const auto& residuals : fit.m_SchoenfeldResiduals) {
    EXPECT_NEAR(std::accumulate(residuals.begin(), residuals.end(), 0.0), 0.0, 1e-4);
  }
}

// Four cases at the zero vector, where averages are plain means.
TEST(SchoenfeldResiduals, TiedEventsShareOneAverage) {
  struct {
    int likelihood;
    std::vector<double> residuals;
  } const cases[] = {
      {Likelihoods::Breslow, {1.0 - 4.0, 3.0 - 5.0, 5.0 - 5.0, 0.0}},
      {Likelihoods::Efron, {1.0 - 4.0, 3.0 - 5.25, 5.0 - 5.25, 0.0}},  // 5.25: the mean of 15 / 3 and 11 / 2
      {Likelihoods::Discrete, {1.0 - 4.0, 3.0 - 5.0, 5.0 - 5.0, 0.0}},
  };
  for (const auto& c : cases) {
    TestAnalysis analysis({{"time", {1, 2, 2, 3}}, {"status", {1, 1, 1, 0}}, {"a", {1, 3, 5, 7}}});
    analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
    CCoxFit& fit = WriteFit(analysis, c.likelihood, {0.0});
    ComputeSchoenfeldResiduals(fit);
    EXPECT_EQ(fit.m_SchoenfeldResiduals, DenseMatrix{c.residuals}) << c.likelihood;
  }
}

TEST(SchoenfeldResiduals, EventsTiedAtTheLargestTimeAreATiedGroup) {
  TestAnalysis analysis({{"time", {1, 4, 4}}, {"status", {1, 1, 1}}, {"a", {0, 2, 6}}});
  analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.0});
  ComputeSchoenfeldResiduals(fit);
  EXPECT_EQ(fit.m_SchoenfeldResiduals[0][1], -2.0);
  EXPECT_EQ(fit.m_SchoenfeldResiduals[0][2], 2.0);
}

TEST(SchoenfeldResiduals, CensoredCaseAtATimeWithTiesIsZero) {
  TestAnalysis analysis({{"time", {2, 2, 2, 3}}, {"status", {1, 1, 0, 1}}, {"a", {1, 3, 8, 4}}});
  analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Efron, {0.5});
  ComputeScaledSchoenfeldResiduals(fit);
  EXPECT_NE(fit.m_SchoenfeldResiduals[0][0], 0.0);
  EXPECT_EQ(fit.m_SchoenfeldResiduals[0][2], 0.0);
  EXPECT_EQ(fit.m_ScaledSchoenfeldResiduals[0][2], 0.0);
}

TEST(SchoenfeldResiduals, IntervalIsAtRiskAfterItsStart) {
  TestAnalysis analysis({{"start", {0, 1, 2}}, {"stop", {2, 3, 4}}, {"status", {1, 1, 0}}, {"a", {1, 3, 8}}});
  analysis.Interval("start", "stop").Status("status").Covariates({"a"}).DefaultDesign();
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.0});
  ComputeSchoenfeldResiduals(fit);
  // The third case starts at the first event: it is not at risk there, but at the second.
  EXPECT_EQ(fit.m_SchoenfeldResiduals, (DenseMatrix{{1.0 - 2.0, 3.0 - 5.5, 0.0}}));
}

// Stratum 1 ends at the time at which stratum 2 begins: one run of three events, with the risk set of stratum 1.
TEST(SchoenfeldResiduals, TieCountRunsAcrossTheBoundaryOfStrataThatMeet) {
  TestAnalysis analysis(
      {{"time", {1, 5, 5, 5, 9}}, {"status", {1, 1, 1, 1, 1}}, {"a", {1, 2, 4, 20, 30}}, {"g", {1, 1, 1, 2, 2}}});
  analysis.Time({"time"}).Status("status").Covariates({"a"}).Strata("g", {1, 2}).DefaultDesign();
  CCoxFit& breslow = WriteFit(analysis, Likelihoods::Breslow, {0.0});
  ComputeSchoenfeldResiduals(breslow);
  EXPECT_NEAR(breslow.m_SchoenfeldResiduals[0][3], 20.0 - 3.0, 1e-14) << "the mean of 2 and 4, not of 20 and 30";

  CCoxFit& efron = WriteFit(analysis, Likelihoods::Efron, {0.0});
  ComputeSchoenfeldResiduals(efron);
  // S0 = 2, S1 = 6 and T = 6 of stratum 1; three events in three steps, whose risk D = 3 counts that of stratum 2 too.
  const double mean = (6.0 / 2.0 + (6.0 - 2.0) / (2.0 - 1.0)) / 3.0;
  const double lastStep = (6.0 - 4.0) / (2.0 - 2.0);
  EXPECT_EQ(efron.m_SchoenfeldResiduals[0][3], 20.0 - (mean + lastStep));
}

TEST(SchoenfeldResiduals, AreComputedOnlyWhenAbsent) {
  TestAnalysis analysis(RandomSurvivalColumns(1, 20, false));
  DefineForm(analysis, {});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Breslow, {0.1, 0.2});
  const DenseMatrix mark(2, std::vector<double>(20, 0.25));
  fit.m_SchoenfeldResiduals = mark;
  ComputeSchoenfeldResiduals(fit);
  EXPECT_EQ(fit.m_SchoenfeldResiduals, mark);
  ComputeScaledSchoenfeldResiduals(fit);
  EXPECT_DOUBLE_EQ(fit.m_ScaledSchoenfeldResiduals[0][7], analysis.Data().CompleteCaseCount * 0.375 * 0.25);
  fit.m_ScaledSchoenfeldResiduals = mark;
  ComputeScaledSchoenfeldResiduals(fit);
  EXPECT_EQ(fit.m_ScaledSchoenfeldResiduals, mark);
}

TEST(ScaledSchoenfeldResiduals, AreTheNumberOfEventsTimesCovarianceTimesResiduals) {
  TestAnalysis analysis(RandomSurvivalColumns(4, 60, false));
  DefineForm(analysis, {"", false, true, true, false});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Efron, {0.3, -0.2});
  ComputeScaledSchoenfeldResiduals(fit);
  ASSERT_EQ(fit.m_SchoenfeldResiduals.size(), 2U) << "computed when absent";
  const auto& [a, b] = std::tie(fit.m_SchoenfeldResiduals[0], fit.m_SchoenfeldResiduals[1]);
  const double N = analysis.Data().CompleteCaseCount;
  for (std::size_t i = 0; i < a.size(); ++i) {
    EXPECT_NEAR(fit.m_ScaledSchoenfeldResiduals[0][i], N * (0.5 * a[i] - 0.125 * b[i]), 1e-12);
    EXPECT_NEAR(fit.m_ScaledSchoenfeldResiduals[1][i], N * (-0.125 * a[i] + 0.25 * b[i]), 1e-12);
  }
}

TEST(ScaledSchoenfeldResiduals, NeedACovarianceAndAnEstimate) {
  TestAnalysis analysis(RandomSurvivalColumns(4, 20, false));
  DefineForm(analysis, {});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Efron, {0.3, -0.2});
  fit.m_Covariance.clear();
  ComputeScaledSchoenfeldResiduals(fit);
  EXPECT_TRUE(fit.m_ScaledSchoenfeldResiduals.empty());
  fit.m_BetaHistory.clear();
  ComputeSchoenfeldResiduals(fit);
  EXPECT_TRUE(fit.m_SchoenfeldResiduals.empty());
}

TEST(SchoenfeldResiduals, MemoryThatIsOutLeavesThemAbsent) {
  TestAnalysis analysis(RandomSurvivalColumns(4, 20, false));
  DefineForm(analysis, {"", true, false, false, false});
  CCoxFit& fit = WriteFit(analysis, Likelihoods::Efron, {0.3, -0.2});
  const int before = analysis.Host.LiveBlocks();
  analysis.Host.FailAllocation(0);
  ComputeSchoenfeldResiduals(fit);
  const int requests = analysis.Host.Requests();
  ASSERT_GT(requests, 0);
  for (int failing = 1; failing <= requests; ++failing) {
    fit.m_SchoenfeldResiduals.clear();
    analysis.Host.FailAllocation(failing);
    EXPECT_THROW(ComputeSchoenfeldResiduals(fit), std::bad_alloc) << failing;
    EXPECT_TRUE(fit.m_SchoenfeldResiduals.empty());
    EXPECT_EQ(analysis.Host.LiveBlocks(), before);
  }
}

}  // namespace
}  // namespace orv
