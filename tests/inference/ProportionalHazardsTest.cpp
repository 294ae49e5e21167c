#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "inference/ProportionalHazards.h"
#include "inference/RandomSurvival.h"
#include "inference/SchoenfeldResiduals.h"
#include "inference/TimeTransforms.h"

namespace orv {
namespace {

using testing::DefineForm;
using testing::RandomForm;
using testing::RandomForms;
using testing::RandomSurvivalColumns;
using testing::TestAnalysis;

// Five cases in the order of the table, three of them events, with residuals and covariance written by hand.
class ProportionalHazards : public ::testing::Test {
 protected:
  ProportionalHazards()
      : analysis({{"time", {1, 2, 3, 4, 5}},
                  {"status", {1, 0, 1, 1, 0}},
                  {"a", {1, 4, 2, 8, 5}},
                  {"b", {0, 1, 1, 0, 1}},
                  {"w", {1, 2, 3, 4, 5}}}) {
    analysis.Time({"time"}).Status("status").Covariates({"a", "b"}).Weights("w").DefaultDesign();
    CCoxFit& fit = analysis.PrepareFit();
    fit.m_Covariance = {{0.5, -0.25}, {-0.25, 2.0}};
    fit.m_SchoenfeldResiduals = {{1.0, 0.0, -2.0, 4.0, 0.0}, {3.0, 0.0, 1.0, -1.0, 0.0}};
    fit.m_ScaledSchoenfeldResiduals = {{2.0, 0.0, 1.0, 5.0, 0.0}, {-1.0, 0.0, 3.0, 2.0, 0.0}};
  }
  TestAnalysis analysis;
  const std::vector<double> g = {0.0, 2.0, 4.0};
};

// The mean is (1 0 + 3 2 + 4 4) / 8 = 2.75 by weight; the sums with c take no weights.
TEST_F(ProportionalHazards, FollowsItsFormulas) {
  const auto test = ComputeProportionalHazardsTest(analysis.Fit(), g);
  ASSERT_TRUE(test.has_value());
  EXPECT_EQ(test->Columns, (std::vector<int>{0, 1}));
  EXPECT_DOUBLE_EQ(test->Mean, 2.75);
  const double c[] = {-2.75, -0.75, 1.25};
  const double SS = 1 * c[0] * c[0] + 3 * c[1] * c[1] + 4 * c[2] * c[2];
  EXPECT_DOUBLE_EQ(test->SumOfSquares, SS);
  const double R0 = c[0] * 1 + c[1] * -2 + c[2] * 4;
  const double R1 = c[0] * 3 + c[1] * 1 + c[2] * -1;
  EXPECT_DOUBLE_EQ(test->Overall, 3 * (0.5 * R0 * R0 - 2 * 0.25 * R0 * R1 + 2.0 * R1 * R1) / SS);
  const double T0 = c[0] * 2 + c[1] * 1 + c[2] * 5;
  const double T1 = c[0] * -1 + c[1] * 3 + c[2] * 2;
  ASSERT_EQ(test->ChiSquares.size(), 2U);
  EXPECT_DOUBLE_EQ(test->ChiSquares[0], T0 * T0 / (0.5 * 3 * SS));
  EXPECT_DOUBLE_EQ(test->ChiSquares[1], T1 * T1 / (2.0 * 3 * SS));
}

TEST_F(ProportionalHazards, DroppedColumnsTakeNoPart) {
  const auto both = ComputeProportionalHazardsTest(analysis.Fit(), g);
  analysis.Data().DesignColumns[0].Dropped = true;
  const auto test = ComputeProportionalHazardsTest(analysis.Fit(), g);
  ASSERT_TRUE(test.has_value());
  EXPECT_EQ(test->Columns, (std::vector<int>{1}));
  EXPECT_EQ(test->ChiSquares, (std::vector<double>{both->ChiSquares[1]}));
  const double R1 = -2.75 * 3 - 0.75 * 1 + 1.25 * -1;
  EXPECT_DOUBLE_EQ(test->Overall, 3 * 2.0 * R1 * R1 / test->SumOfSquares);
  analysis.Data().DesignColumns[1].Dropped = true;
  EXPECT_FALSE(ComputeProportionalHazardsTest(analysis.Fit(), g).has_value());
}

TEST_F(ProportionalHazards, RobustCovarianceIsTakenWhenAskedFor) {
  const auto model = ComputeProportionalHazardsTest(analysis.Fit(), g);
  CCoxFit& fit = analysis.Fit();
  fit.m_RobustCovariance = {{1.0, 0.0}, {0.0, 4.0}};
  EXPECT_EQ(ComputeProportionalHazardsTest(fit, g)->ChiSquares, model->ChiSquares) << "not asked for";
  analysis.Settings().UseRobustVariance = true;
  const auto robust = ComputeProportionalHazardsTest(fit, g);
  EXPECT_DOUBLE_EQ(robust->ChiSquares[0], model->ChiSquares[0] / 2.0);
  EXPECT_DOUBLE_EQ(robust->ChiSquares[1], model->ChiSquares[1] / 2.0);
  EXPECT_NE(robust->Overall, model->Overall);
  fit.m_RobustCovariance.clear();
  EXPECT_FALSE(ComputeProportionalHazardsTest(fit, g).has_value());
}

TEST_F(ProportionalHazards, EqualTransformsCannotBeTested) {
  EXPECT_FALSE(ComputeProportionalHazardsTest(analysis.Fit(), {3.0, 3.0, 3.0}).has_value());
}

TEST_F(ProportionalHazards, QuadraticFormMustBePositive) {
  CCoxFit& fit = analysis.Fit();
  fit.m_Covariance = {{-0.5, 0.0}, {0.0, -2.0}};
  EXPECT_FALSE(ComputeProportionalHazardsTest(fit, g).has_value());
  fit.m_Covariance = {{0.5, 0.0}, {0.0, 2.0}};
  fit.m_SchoenfeldResiduals = DenseMatrix(2, std::vector<double>(5, 0.0));
  EXPECT_FALSE(ComputeProportionalHazardsTest(fit, g).has_value()) << "no residuals, no trend";
}

TEST_F(ProportionalHazards, NeedsResidualsAndCovariance) {
  CCoxFit& fit = analysis.Fit();
  const DenseMatrix scaled = fit.m_ScaledSchoenfeldResiduals;
  fit.m_ScaledSchoenfeldResiduals.clear();
  EXPECT_FALSE(ComputeProportionalHazardsTest(fit, g).has_value());
  fit.m_ScaledSchoenfeldResiduals = scaled;
  EXPECT_TRUE(ComputeProportionalHazardsTest(fit, g).has_value());
  fit.m_Covariance.clear();
  EXPECT_FALSE(ComputeProportionalHazardsTest(fit, g).has_value());
}

// Fits the random form and tests it under a transform, from 0: identity, log, Kaplan-Meier, rank.
std::optional<ProportionalHazardsTest> FitAndTest(TestAnalysis& analysis, const RandomForm& form, int transform) {
  DefineForm(analysis, form);
  EXPECT_EQ(analysis.Run(), 0);
  CCoxFit& fit = analysis.Fit();
  ComputeScaledSchoenfeldResiduals(fit);
  const CCoxData& data = analysis.Data();
  const TransformedTimes times = transform == 0   ? IdentityTimes(data)
                                 : transform == 1 ? LogTimes(data).value()
                                 : transform == 2 ? KaplanMeierTimes(data)
                                                  : RankTimes(data);
  return ComputeProportionalHazardsTest(fit, times.Values);
}

TEST(ProportionalHazardsProperties, StatisticsDoNotChangeWithTheUnitOfTime) {
  for (const RandomForm& form : RandomForms()) {
    for (int transform = 0; transform < 4; ++transform) {
      SCOPED_TRACE(std::string(form.What) + ", transform " + std::to_string(transform));
      auto columns = RandomSurvivalColumns(8, 120, form.MeetingStrata);
      TestAnalysis days(columns);
      for (const std::size_t c : {0U, 1U}) {
        for (double& time : columns[c].Values) time *= 7.0;
      }
      TestAnalysis weeks(columns);
      const auto a = FitAndTest(days, form, transform);
      const auto b = FitAndTest(weeks, form, transform);
      ASSERT_TRUE(a.has_value() && b.has_value());
      EXPECT_NEAR(a->Overall, b->Overall, 1e-10 * a->Overall);
      for (std::size_t k = 0; k < 2; ++k) EXPECT_NEAR(a->ChiSquares[k], b->ChiSquares[k], 1e-10 * a->Overall);
    }
  }
}

// In a stratified analysis the transforms in order of time do not meet the rows that they were made of.
TEST(ProportionalHazardsProperties, TransformsAreePairedWithEventsByPosition) {
  for (const bool strata : {false, true}) {
    TestAnalysis analysis(RandomSurvivalColumns(3, 60, false));
    const auto test = FitAndTest(analysis, {"", false, strata, false, false}, 3);
    ASSERT_TRUE(test.has_value());
    const TransformedTimes ranks = RankTimes(analysis.Data());
    const DenseMatrix& scaled = analysis.Fit().m_ScaledSchoenfeldResiduals;
    const std::vector<int> eventRows = IdentityTimes(analysis.Data()).Rows;
    double byPosition = 0.0;
    double byRow = 0.0;
    for (std::size_t e = 0; e < ranks.Values.size(); ++e) {
      const double c = ranks.Values[e] - test->Mean;
      byPosition += c * scaled[0][static_cast<std::size_t>(eventRows[e]) - 1];
      byRow += c * scaled[0][static_cast<std::size_t>(ranks.Rows[e]) - 1];
    }
    const double unit =
        analysis.Fit().m_Covariance[0][0] * static_cast<double>(ranks.Values.size()) * test->SumOfSquares;
    EXPECT_NEAR(test->ChiSquares[0], byPosition * byPosition / unit, 1e-10);
    EXPECT_EQ(std::abs(byPosition - byRow) > 1e-6, strata);
  }
}

// A trend that is there shows: the effect of the covariate turns round half way.
TEST(ProportionalHazardsProperties, EffectThatTurnsRoundIsFound) {
  TestAnalysis analysis({{"time", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}},
                         {"status", std::vector<double>(16, 1.0)},
                         {"a", {1, 1, 1, 1, 0, 1, 1, 0, 1, 0, 0, 0, 0, 1, 1, 1}}});
  analysis.Time({"time"}).Status("status").Covariates({"a"}).DefaultDesign();
  ASSERT_EQ(analysis.Run(), 0);
  ComputeScaledSchoenfeldResiduals(analysis.Fit());
  const auto test = ComputeProportionalHazardsTest(analysis.Fit(), RankTimes(analysis.Data()).Values);
  ASSERT_TRUE(test.has_value());
  EXPECT_GT(test->Overall, 3.84);
  EXPECT_NEAR(test->Overall, test->ChiSquares[0], 1e-12) << "one column: both tests are the same";
}

}  // namespace
}  // namespace orv
