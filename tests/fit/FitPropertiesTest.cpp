// What a change of the data that changes nothing, or something known, does to a whole fit.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>
#include <vector>

#include "fit/CCoxFit.h"
#include "fit/TwelveCases.h"
#include "support/TestMatrix.h"

namespace orv {
namespace {

using testing::IterateToTheEnd;
using testing::TestAnalysis;
using testing::TestColumn;
using testing::TwelveCaseAnalysis;
using testing::TwelveCases;
using Vector = std::vector<double>;

struct Result {
  double logLik = 0.0;
  double nullLogLik = 0.0;
  double score = 0.0;
  Vector beta;
  DenseMatrix covariance;
};

Result Fitted(TestAnalysis& analysis) {
  IterateToTheEnd(analysis);
  EXPECT_EQ(analysis.Run(), 0);
  const CCoxFit& fit = analysis.Fit();
  EXPECT_TRUE(fit.m_Converged);
  return {fit.m_LogLikHistory.back(), fit.m_NullLogLik, fit.m_ScoreStatistic, fit.m_BetaHistory.back(),
          fit.m_Covariance};
}

void ExpectSame(const Result& a, const Result& b, const std::string& what) {
  EXPECT_NEAR(a.logLik, b.logLik, 1e-11) << what;
  EXPECT_NEAR(a.nullLogLik, b.nullLogLik, 1e-11) << what;
  EXPECT_NEAR(a.score, b.score, 1e-10) << what;
  ASSERT_EQ(a.beta.size(), b.beta.size()) << what;
  for (std::size_t j = 0; j < a.beta.size(); ++j) {
    EXPECT_NEAR(a.beta[j], b.beta[j], 1e-10) << what;
    for (std::size_t l = 0; l < a.beta.size(); ++l) {
      EXPECT_NEAR(a.covariance[j][l], b.covariance[j][l], 1e-9) << what;
    }
  }
}

void SetLikelihood(TestAnalysis& analysis, bool efron) {
  analysis.Settings().Likelihood = efron ? Likelihoods::Efron : Likelihoods::Breslow;
}

TestAnalysis& WithTimes(TestAnalysis& analysis) {
  return analysis.Time({"time"}).Status("status");
}

TestColumn& Named(std::vector<TestColumn>& columns, const std::string& name) {
  return *std::find_if(columns.begin(), columns.end(), [&](const TestColumn& column) { return column.Name == name; });
}

TEST(FitProperties, ShiftAndScaleOfACovariateChangeItsParameterOnly) {
  for (const bool efron : {false, true}) {
    TwelveCaseAnalysis plain({"a", "b"});
    SetLikelihood(plain, efron);
    const Result before = Fitted(plain);
    for (const double scale : {2.0, -3.0, 1e-3, 1e6}) {
      std::vector<TestColumn> columns = TwelveCases();
      for (double& x : Named(columns, "a").Values) x = scale * x + 50.0 * scale;
      TestAnalysis changed(columns);
      WithTimes(changed).Covariates({"a", "b"}).DefaultDesign();
      SetLikelihood(changed, efron);
      Result after = Fitted(changed);
      after.beta[0] *= scale;
      after.covariance[0][0] *= scale * scale;
      after.covariance[0][1] *= scale;
      after.covariance[1][0] *= scale;
      ExpectSame(before, after, "scale " + std::to_string(scale));
    }
  }
}

TEST(FitProperties, OrderOfTheRowsDoesNotMatter) {
  for (const bool efron : {false, true}) {
    Result first;
    for (unsigned seed = 0; seed < 4; ++seed) {
      std::vector<std::size_t> order(12);
      std::iota(order.begin(), order.end(), 0U);
      TestRandom random(seed);
      for (std::size_t i = 11; i > 0 && seed > 0; --i) {
        std::swap(order[i], order[static_cast<std::size_t>(random.Integer(static_cast<int>(i) + 1))]);
      }
      std::vector<TestColumn> columns = TwelveCases();
      for (TestColumn& column : columns) {
        const Vector values = column.Values;
        for (std::size_t i = 0; i < 12; ++i) column.Values[i] = values[order[i]];
      }
      TestAnalysis analysis(columns);
      WithTimes(analysis).Covariates({"a", "b"}).DefaultDesign().Strata("g", {1, 2}).Weights("w");
      SetLikelihood(analysis, efron);
      const Result result = Fitted(analysis);
      if (seed == 0) first = result;
      ExpectSame(first, result, "order " + std::to_string(seed));
    }
  }
}

TEST(FitProperties, OrderOfTheCovariatesOrdersTheParameters) {
  TwelveCaseAnalysis ab({"a", "b"});
  TwelveCaseAnalysis ba({"b", "a"});
  const Result first = Fitted(ab);
  Result second = Fitted(ba);
  std::swap(second.beta[0], second.beta[1]);
  std::swap(second.covariance[0][0], second.covariance[1][1]);
  ExpectSame(first, second, "covariates exchanged");
}

TEST(FitProperties, WeightOfTwoIsTheCaseTwiceUnderBreslow) {
  std::vector<TestColumn> weighted = TwelveCases();
  std::vector<TestColumn> repeated = TwelveCases();
  for (double& w : Named(weighted, "w").Values) w = 1.0;
  for (const std::size_t i : {0U, 1U, 5U, 10U}) {
    Named(weighted, "w").Values[i] = 2.0;
    for (TestColumn& column : repeated) column.Values.push_back(column.Values[i]);
  }
  TestAnalysis a(weighted);
  WithTimes(a).Covariates({"a", "b"}).DefaultDesign().Weights("w");
  TestAnalysis b(repeated);
  WithTimes(b).Covariates({"a", "b"}).DefaultDesign();
  ExpectSame(Fitted(a), Fitted(b), "weights and copies");
}

TEST(FitProperties, CommonWeightMultipliesTheLikelihood) {
  std::vector<TestColumn> columns = TwelveCases();
  for (double& w : Named(columns, "w").Values) w = 3.0;
  TestAnalysis weighted(columns);
  WithTimes(weighted).Covariates({"a"}).DefaultDesign().Weights("w");
  TwelveCaseAnalysis plain({"a"});
  const Result a = Fitted(weighted);
  const Result b = Fitted(plain);
  EXPECT_NEAR(a.beta[0], b.beta[0], 1e-10);
  EXPECT_NEAR(a.covariance[0][0], b.covariance[0][0] / 3, 1e-9);
  EXPECT_NEAR(a.score, b.score * 3, 1e-10);
  // Eight of the nine events fall into risk sets whose sums grow by 3 too: L = 3 L - sum of weights times log 3.
  EXPECT_NEAR(a.logLik, 3 * b.logLik - 3 * 9 * std::log(3.0), 1e-10);
}

TEST(FitProperties, CodingOfAFactorDoesNotMoveTheLikelihood) {
  for (const bool efron : {false, true}) {
    Result first;
    for (const int coding : {Codings::SigmaRestricted, Codings::Reference, Codings::Overparameterized}) {
      TwelveCaseAnalysis analysis;
      analysis.Settings().Coding = static_cast<std::int16_t>(coding);
      analysis.Covariates({"a"}).Factor("f", {1, 2, 3}).DefaultDesign();
      SetLikelihood(analysis, efron);
      const Result result = Fitted(analysis);
      if (coding == Codings::SigmaRestricted) first = result;
      EXPECT_NEAR(result.logLik, first.logLik, 1e-10) << coding;
      EXPECT_NEAR(result.nullLogLik, first.nullLogLik, 1e-11) << coding;
      EXPECT_NEAR(result.score, first.score, 1e-9) << coding;
      EXPECT_NEAR(result.beta[0], first.beta[0], 1e-10) << coding;
    }
  }
}

// With the parameters held at one vector the stratified likelihood is the sum of the likelihoods of its strata.
TEST(FitProperties, LikelihoodOfStrataIsTheSumOfTheirLikelihoods) {
  for (const bool efron : {false, true}) {
    const auto held = [&](TestAnalysis& analysis) -> double {
      analysis.StartAt({0.5, -0.25}).Fix({true, true});
      SetLikelihood(analysis, efron);
      EXPECT_EQ(analysis.Run(), 0);
      return analysis.Fit().m_LogLikHistory.back();
    };
    TwelveCaseAnalysis stratified({"a", "b"});
    stratified.Strata("g", {1, 2});
    double sum = 0.0;
    for (const int stratum : {1, 2}) {
      std::vector<TestColumn> part = TwelveCases();
      const Vector strata = Named(part, "g").Values;
      for (TestColumn& column : part) {
        Vector values;
        for (std::size_t i = 0; i < 12; ++i) {
          if (strata[i] == stratum) values.push_back(column.Values[i]);
        }
        column.Values = values;
      }
      TestAnalysis analysis(part);
      WithTimes(analysis).Covariates({"a", "b"}).DefaultDesign();
      sum += held(analysis);
    }
    EXPECT_NEAR(held(stratified), sum, 1e-12);
  }
}

TEST(FitProperties, EfronIsBreslowWithoutTies) {
  std::vector<TestColumn> columns = TwelveCases();
  Vector& times = Named(columns, "time").Values;
  for (std::size_t i = 0; i < times.size(); ++i) times[i] += 0.01 * static_cast<double>(i);
  std::vector<Result> results;
  for (const bool efron : {false, true}) {
    TestAnalysis analysis(columns);
    WithTimes(analysis).Covariates({"a", "b"}).DefaultDesign();
    SetLikelihood(analysis, efron);
    results.push_back(Fitted(analysis));
  }
  EXPECT_EQ(results[0].logLik, results[1].logLik);
  EXPECT_EQ(results[0].beta, results[1].beta);
  EXPECT_EQ(results[0].covariance, results[1].covariance);
}

TEST(FitProperties, TiesWithinRoundingAreTies) {
  std::vector<TestColumn> columns = TwelveCases();
  Vector& times = Named(columns, "time").Values;
  times[10] = std::nextafter(times[10], 100.0);  // tied with the other 3
  times[2] = std::nextafter(times[2], 0.0);      // tied with the other 8
  for (const bool efron : {false, true}) {
    TwelveCaseAnalysis exact({"a", "b"});
    SetLikelihood(exact, efron);
    TestAnalysis rounded(columns);
    WithTimes(rounded).Covariates({"a", "b"}).DefaultDesign();
    SetLikelihood(rounded, efron);
    ExpectSame(Fitted(exact), Fitted(rounded), efron ? "Efron" : "Breslow");
  }
}

TEST(FitProperties, OnlyTheOrderOfTheTimesMatters) {
  std::vector<TestColumn> columns = TwelveCases();
  for (double& time : Named(columns, "time").Values) time = std::exp(time) / 7.0;
  for (const bool efron : {false, true}) {
    TwelveCaseAnalysis plain({"a", "b"});
    SetLikelihood(plain, efron);
    TestAnalysis transformed(columns);
    WithTimes(transformed).Covariates({"a", "b"}).DefaultDesign();
    SetLikelihood(transformed, efron);
    ExpectSame(Fitted(plain), Fitted(transformed), efron ? "Efron" : "Breslow");
  }
}

}  // namespace
}  // namespace orv
