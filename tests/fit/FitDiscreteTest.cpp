// Whole fits under the discrete likelihood: large groups, many cases, and what they cost in memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "fit/FittedResults.h"
#include "fit/ReferenceDiscrete.h"

namespace orv {
namespace {

using testing::CasesOf;
using testing::EvaluateDiscreteReference;
using testing::ExpectSameFit;
using testing::FitIntervals;
using testing::FitSubjects;
using testing::FittedModel;
using testing::FittedResults;
using testing::IntervalRow;
using testing::kEstimateError;
using testing::MaximizeReference;
using testing::RandomSubjects;
using testing::RealVector;
using testing::Subject;
using testing::TestAnalysis;

constexpr FittedModel kDiscrete = {"discrete", Likelihoods::Discrete, false};
constexpr FittedModel kDiscreteStrata = {"discrete, strata", Likelihoods::Discrete, true};

std::vector<IntervalRow> AsIntervals(const std::vector<Subject>& subjects) {
  std::vector<IntervalRow> rows;
  for (const Subject& one : subjects) rows.push_back({0.0, one.Time, one.Event, one.A, one.B, one.G});
  return rows;
}

TEST(FitDiscrete, FindsTheMaximum) {
  for (const FittedModel& model : {kDiscrete, kDiscreteStrata}) {
    TestAnalysis analysis(testing::SubjectColumns(RandomSubjects(1, 20, 6)));
    analysis.Time({"time"}).Status("status").Covariates({"a", "b"}).DefaultDesign();
    testing::ApplyModel(model, analysis);
    const FittedResults results = testing::FitToTheEnd(analysis, model.What);
    const auto evaluate = [cases = CasesOf(analysis.Data())](const RealVector& beta) {
      return EvaluateDiscreteReference(cases, beta);
    };
    const RealVector maximum = MaximizeReference(2, evaluate);
    EXPECT_NEAR(results.LogLik, static_cast<double>(evaluate(maximum).L), 1e-10) << model.What;
    for (std::size_t j = 0; j < 2; ++j) {
      EXPECT_NEAR(results.Beta[j], static_cast<double>(maximum[j]),
                  2 * kEstimateError * std::sqrt(results.Covariance[j][j]))
          << model.What;
    }
  }
}

TEST(FitDiscrete, IsTheFitOfBreslowWithoutTies) {
  std::vector<Subject> subjects = RandomSubjects(2, 80, 10);
  for (std::size_t i = 0; i < subjects.size(); ++i) subjects[i].Time += 0.001 * static_cast<double>(i);
  for (const bool strata : {false, true}) {
    const FittedModel breslow = {"Breslow", Likelihoods::Breslow, strata};
    const FittedModel discrete = {"discrete", Likelihoods::Discrete, strata};
    const FittedResults expected = FitSubjects(subjects, breslow);
    ExpectSameFit(expected, FitSubjects(subjects, discrete), 1e-10, strata ? "strata" : "no strata");
    ExpectSameFit(expected, FitIntervals(AsIntervals(subjects), discrete), 1e-10, "intervals");
  }
}

TEST(FitDiscrete, ThirtyTiedEventsOfFiveHundredFitAlikeInBothForms) {
  std::vector<Subject> subjects = RandomSubjects(3, 500, 40);
  // The last 30 cases of a time early on have their events there, and nobody else.
  for (std::size_t i = 0; i < subjects.size(); ++i) {
    Subject& one = subjects[i];
    if (i < 30) {
      one.Time = 0.5;
      one.Event = true;
    } else {
      one.Time += 1.0 + 0.001 * static_cast<double>(i);
    }
  }
  const FittedResults survival = FitSubjects(subjects, kDiscrete);
  ExpectSameFit(survival, FitIntervals(AsIntervals(subjects), kDiscrete), 1e-10, "30 of 500");
  const FittedResults breslow = FitSubjects(subjects, {"Breslow", Likelihoods::Breslow, false});
  EXPECT_GT(survival.LogLik, breslow.LogLik + 1.0) << "the group counts subsets and not sequences";
}

// Sums of orders that nothing reads would be around the number of subsets of 600 of 1200, beyond a double.
TEST(FitDiscrete, TwelveHundredTiedEventsFitAlikeInBothForms) {
  std::vector<Subject> subjects = RandomSubjects(4, 1220, 10);
  for (std::size_t i = 0; i < subjects.size(); ++i) {
    subjects[i].Time = i < 1200 ? 1.0 : 2.0 + static_cast<double>(i);
    subjects[i].Event = true;
  }
  ExpectSameFit(FitSubjects(subjects, kDiscrete), FitIntervals(AsIntervals(subjects), kDiscrete), 1e-9, "1200 of 1220");
}

// ---- Memory ---------------------------------------------------------------------------------------------------------

std::vector<std::size_t> AllocationsOfAFit(bool intervals, int n) {
  std::vector<Subject> subjects = RandomSubjects(5, n, 10);
  // Groups of 5 events at four times, and no other ties.
  for (std::size_t i = 0; i < subjects.size(); ++i) {
    const std::size_t group = i / 5;
    subjects[i].Time = i < 20 ? 10.5 + static_cast<double>(group) : 20.0 + static_cast<double>(i);
    subjects[i].Event = i < 20 || subjects[i].Event;
  }
  TestAnalysis analysis(intervals ? testing::IntervalColumns(AsIntervals(subjects))
                                  : testing::SubjectColumns(subjects));
  if (intervals) {
    analysis.Interval("start", "stop");
  } else {
    analysis.Time({"time"});
  }
  analysis.Status("status").Covariates({"a", "b"}).DefaultDesign();
  testing::ApplyModel(kDiscrete, analysis);
  CCoxFit& fit = analysis.PrepareFit();
  analysis.Host.AllocationSizes.clear();
  fit.FitCurrentModel();
  EXPECT_TRUE(fit.m_Converged);
  return analysis.Host.AllocationSizes;
}

// The sums over subsets belong to the largest group: with more cases only arrays of a few bytes a case grow.
TEST(FitDiscrete, MemoryOfTheSubsetSumsIsThatOfTheLargestGroup) {
  for (const bool intervals : {false, true}) {
    const std::vector<std::size_t> few = AllocationsOfAFit(intervals, 200);
    const std::vector<std::size_t> many = AllocationsOfAFit(intervals, 2000);
    ASSERT_EQ(few.size(), many.size()) << "a pass allocates nothing";
    std::size_t ofTheGroup = 0;
    for (std::size_t k = 0; k < few.size(); ++k) {
      EXPECT_LE(many[k] - few[k], 1800U * 2 * sizeof(double)) << "allocation " << k;
      if (few[k] == many[k]) ofTheGroup += few[k];
    }
    // Orders 0 to 5 of a compensated value, 2 first and 3 second derivatives are among those that stay.
    EXPECT_GE(ofTheGroup, 6U * (2 + 2 + 3) * sizeof(double)) << intervals;
  }
}

}  // namespace
}  // namespace orv
