// The numbers of a whole fit, for tests that compare two fits, and random tables to fit.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fit/CCoxFit.h"
#include "fit/TwelveCases.h"
#include "support/TestMatrix.h"

namespace orv::testing {

struct FittedResults {
  double LogLik = 0.0;
  double NullLogLik = 0.0;
  double Score = 0.0;
  std::vector<double> Beta;
  DenseMatrix Covariance;
};

// Runs an analysis to the end of what rounding allows. It must converge.
inline FittedResults FitToTheEnd(TestAnalysis& analysis, const std::string& what) {
  IterateToTheEnd(analysis);
  EXPECT_EQ(analysis.Run(), 0) << what;
  if (analysis.Analysis.m_pCoxFit == nullptr) return {};
  const CCoxFit& fit = analysis.Fit();
  EXPECT_TRUE(fit.m_Converged) << what;
  return {fit.m_LogLikHistory.back(), fit.m_NullLogLik, fit.m_ScoreStatistic, fit.m_BetaHistory.back(),
          fit.m_Covariance};
}

// The path of Newton's method does not depend on the scale of the columns, so two analyses of one likelihood agree up
// to rounding though their columns are standardised by other means and deviations.
inline void ExpectSameFit(const FittedResults& a, const FittedResults& b, double unit, const std::string& what) {
  EXPECT_NEAR(a.LogLik, b.LogLik, unit) << what;
  EXPECT_NEAR(a.NullLogLik, b.NullLogLik, unit) << what;
  EXPECT_NEAR(a.Score, b.Score, unit) << what;
  ASSERT_EQ(a.Beta.size(), b.Beta.size()) << what;
  ASSERT_EQ(a.Covariance.size(), a.Beta.size()) << what;
  ASSERT_EQ(b.Covariance.size(), a.Beta.size()) << what;
  for (std::size_t j = 0; j < a.Beta.size(); ++j) {
    EXPECT_NEAR(a.Beta[j], b.Beta[j], unit) << what;
    for (std::size_t l = 0; l < a.Beta.size(); ++l) EXPECT_NEAR(a.Covariance[j][l], b.Covariance[j][l], unit) << what;
  }
}

// One subject of a table to fit.
struct Subject {
  double Time = 0.0;
  bool Event = false;
  double A = 0.0;
  double B = 0.0;
  int G = 1;
};

// Random subjects with tied times 1 to `times`; A and B move their hazards.
inline std::vector<Subject> RandomSubjects(unsigned seed, int n, int times) {
  TestRandom random(seed);
  std::vector<Subject> subjects;
  for (int i = 0; i < n; ++i) {
    Subject one;
    one.A = random.Value() * 2.0;
    one.B = random.Integer(2);
    const double wait = -std::log(0.5 + 0.499 * random.Value()) * std::exp(-0.6 * one.A + 0.5 * one.B);
    one.Time = std::min(1.0 + std::floor(wait * times / 3.0), static_cast<double>(times));
    one.Event = random.Integer(4) > 0;
    one.G = 1 + random.Integer(2);
    subjects.push_back(one);
  }
  return subjects;
}

// One row of intervals: a subject from `Start` to `Stop`.
struct IntervalRow {
  double Start = 0.0;
  double Stop = 0.0;
  bool Event = false;
  double A = 0.0;
  double B = 0.0;
  int G = 1;
};

inline std::vector<TestColumn> IntervalColumns(const std::vector<IntervalRow>& rows) {
  std::vector<TestColumn> columns = {{"start", {}}, {"stop", {}}, {"status", {}}, {"a", {}}, {"b", {}}, {"g", {}}};
  for (const IntervalRow& row : rows) {
    const double cells[] = {row.Start, row.Stop, row.Event ? 1.0 : 0.0, row.A, row.B, static_cast<double>(row.G)};
    for (std::size_t k = 0; k < columns.size(); ++k) columns[k].Values.push_back(cells[k]);
  }
  return columns;
}

inline std::vector<TestColumn> SubjectColumns(const std::vector<Subject>& subjects) {
  std::vector<TestColumn> columns = {{"time", {}}, {"status", {}}, {"a", {}}, {"b", {}}, {"g", {}}};
  for (const Subject& one : subjects) {
    const double cells[] = {one.Time, one.Event ? 1.0 : 0.0, one.A, one.B, static_cast<double>(one.G)};
    for (std::size_t k = 0; k < columns.size(); ++k) columns[k].Values.push_back(cells[k]);
  }
  return columns;
}

// A likelihood, with strata by g or without.
struct FittedModel {
  const char* What;
  int Likelihood;
  bool Strata;
};

inline constexpr FittedModel kFittedModels[] = {
    {"Breslow", Likelihoods::Breslow, false},    {"Efron", Likelihoods::Efron, false},
    {"discrete", Likelihoods::Discrete, false},  {"Breslow, strata", Likelihoods::Breslow, true},
    {"Efron, strata", Likelihoods::Efron, true}, {"discrete, strata", Likelihoods::Discrete, true},
};

inline void ApplyModel(const FittedModel& model, TestAnalysis& analysis) {
  analysis.Settings().Likelihood = static_cast<std::int16_t>(model.Likelihood);
  if (model.Strata) analysis.Strata("g", {1, 2});
}

inline FittedResults FitSubjects(const std::vector<Subject>& subjects, const FittedModel& model) {
  TestAnalysis analysis(SubjectColumns(subjects));
  analysis.Time({"time"}).Status("status").Covariates({"a", "b"}).DefaultDesign();
  ApplyModel(model, analysis);
  return FitToTheEnd(analysis, model.What);
}

inline FittedResults FitIntervals(const std::vector<IntervalRow>& rows, const FittedModel& model) {
  TestAnalysis analysis(IntervalColumns(rows));
  analysis.Interval("start", "stop").Status("status").Covariates({"a", "b"}).DefaultDesign();
  ApplyModel(model, analysis);
  return FitToTheEnd(analysis, model.What);
}

}  // namespace orv::testing
