// Whole fits of intervals: against an independent maximisation, and what splitting a subject's time changes, which is
// nothing.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "fit/FittedResults.h"
#include "fit/ReferenceDiscrete.h"
#include "support/ReferenceLikelihood.h"

namespace orv {
namespace {

using testing::CasesOf;
using testing::EvaluateDiscreteReference;
using testing::EvaluateReference;
using testing::ExpectSameFit;
using testing::FitIntervals;
using testing::FitSubjects;
using testing::FittedModel;
using testing::FittedResults;
using testing::IntervalRow;
using testing::InvertReference;
using testing::kEstimateError;
using testing::kFittedModels;
using testing::MaximizeReference;
using testing::RandomSubjects;
using testing::RealMatrix;
using testing::RealVector;
using testing::ReferenceCase;
using testing::ReferenceValue;
using testing::Subject;
using testing::TestAnalysis;

std::vector<IntervalRow> Whole(const std::vector<Subject>& subjects) {
  std::vector<IntervalRow> rows;
  for (const Subject& one : subjects) rows.push_back({0.0, one.Time, one.Event, one.A, one.B, one.G});
  return rows;
}

// Cuts each row at some of the times, or at times between them.
std::vector<IntervalRow> Split(const std::vector<IntervalRow>& whole, unsigned seed) {
  TestRandom random(seed);
  std::vector<IntervalRow> rows;
  for (const IntervalRow& row : whole) {
    IntervalRow part = row;
    for (int halves = 1; halves < 2 * row.Stop; ++halves) {
      const double cut = 0.5 * halves;
      if (cut <= row.Start || random.Integer(4) != 0) continue;
      part.Stop = cut;
      part.Event = false;
      rows.push_back(part);
      part.Start = cut;
    }
    part.Stop = row.Stop;
    part.Event = row.Event;
    rows.push_back(part);
  }
  return rows;
}

// Late entries, covariates that change from row to row, more than one event a subject.
std::vector<IntervalRow> Histories(unsigned seed, int subjects) {
  TestRandom random(seed);
  std::vector<IntervalRow> rows;
  for (int subject = 0; subject < subjects; ++subject) {
    double start = random.Integer(2) == 0 ? 0.0 : random.Integer(4);
    const int g = 1 + random.Integer(2);
    for (int k = 1 + random.Integer(2); k > 0; --k) {
      IntervalRow row{start, start + 1.0 + random.Integer(5), random.Integer(5) < 2, 0, 0, g};
      row.A = random.Value() * 2.0;
      row.B = random.Integer(2);
      rows.push_back(row);
      start = row.Stop;
    }
  }
  return rows;
}

// ---- The maximum ----------------------------------------------------------------------------------------------------

TEST(FitIntervals, FindTheMaximumWithItsInformation) {
  for (const FittedModel& model : kFittedModels) {
    TestAnalysis analysis(testing::IntervalColumns(Histories(3, 16)));
    analysis.Interval("start", "stop").Status("status").Covariates({"a", "b"}).DefaultDesign();
    testing::ApplyModel(model, analysis);
    const FittedResults results = testing::FitToTheEnd(analysis, model.What);
    const std::vector<ReferenceCase> cases = CasesOf(analysis.Data());
    const auto evaluate = [&](const RealVector& beta) {
      return model.Likelihood == Likelihoods::Discrete
                 ? EvaluateDiscreteReference(cases, beta)
                 : EvaluateReference(cases, beta, model.Likelihood == Likelihoods::Efron);
    };
    const RealVector maximum = MaximizeReference(2, evaluate);
    const ReferenceValue atEstimate = evaluate({results.Beta[0], results.Beta[1]});
    const RealMatrix covariance = InvertReference(atEstimate.H);
    EXPECT_NEAR(results.NullLogLik, static_cast<double>(evaluate({0.0L, 0.0L}).L), 1e-11) << model.What;
    EXPECT_NEAR(results.LogLik, static_cast<double>(atEstimate.L), 1e-11) << model.What;
    for (std::size_t j = 0; j < 2; ++j) {
      const double standardError = std::sqrt(results.Covariance[j][j]);
      EXPECT_NEAR(results.Beta[j], static_cast<double>(maximum[j]), 2 * kEstimateError * standardError) << model.What;
      for (std::size_t l = 0; l < 2; ++l) {
        EXPECT_NEAR(results.Covariance[j][l], static_cast<double>(covariance[j][l]), 1e-11) << model.What;
      }
    }
  }
}

// ---- Splitting ------------------------------------------------------------------------------------------------------

TEST(FitIntervals, RowsFromTheBeginningGiveTheFitOfTheSurvivalTimes) {
  for (const unsigned seed : {1U, 2U}) {
    const std::vector<Subject> subjects = RandomSubjects(seed, 60, 14);
    for (const FittedModel& model : kFittedModels) {
      ExpectSameFit(FitSubjects(subjects, model), FitIntervals(Whole(subjects), model), 1e-10, model.What);
    }
  }
}

TEST(FitIntervals, SplittingSubjectsAtAnyTimesChangesNothing) {
  const std::vector<Subject> subjects = RandomSubjects(3, 60, 14);
  for (const FittedModel& model : kFittedModels) {
    const FittedResults whole = FitSubjects(subjects, model);
    for (const unsigned seed : {11U, 12U, 13U}) {
      const std::vector<IntervalRow> rows = Split(Whole(subjects), seed);
      ASSERT_GT(rows.size(), subjects.size() + 40);
      ExpectSameFit(whole, FitIntervals(rows, model), 1e-10,
                    std::string(model.What) + ", cuts " + std::to_string(seed));
    }
  }
}

TEST(FitIntervals, SplittingHistoriesChangesNothing) {
  const std::vector<IntervalRow> rows = Histories(4, 40);
  for (const FittedModel& model : kFittedModels) {
    ExpectSameFit(FitIntervals(rows, model), FitIntervals(Split(rows, 21), model), 1e-10, model.What);
  }
}

TEST(FitIntervals, LateEntryMatters) {
  const std::vector<Subject> subjects = RandomSubjects(5, 60, 14);
  std::vector<IntervalRow> late = Whole(subjects);
  for (std::size_t i = 0; i < late.size(); i += 3) late[i].Start = late[i].Stop - 0.5;
  for (const FittedModel& model : kFittedModels) {
    const FittedResults a = FitSubjects(subjects, model);
    const FittedResults b = FitIntervals(late, model);
    EXPECT_GT(b.NullLogLik, a.NullLogLik + 1.0) << model.What << ": smaller risk sets";
    EXPECT_GT(std::abs(a.Beta[0] - b.Beta[0]), 1e-3) << model.What;
  }
}

TEST(FitIntervals, OrderOfTheRowsDoesNotMatter) {
  const std::vector<IntervalRow> rows = Histories(6, 40);
  const std::vector<IntervalRow> reversed(rows.rbegin(), rows.rend());
  for (const FittedModel& model : kFittedModels) {
    ExpectSameFit(FitIntervals(rows, model), FitIntervals(reversed, model), 1e-10, model.What);
  }
}

TEST(FitIntervals, ShiftOfAllTimesDoesNotMatter) {
  const std::vector<IntervalRow> rows = Histories(7, 40);
  std::vector<IntervalRow> later = rows;
  for (IntervalRow& row : later) {
    row.Start += 1000.0;
    row.Stop += 1000.0;
  }
  for (const FittedModel& model : kFittedModels) {
    ExpectSameFit(FitIntervals(rows, model), FitIntervals(later, model), 1e-10, model.What);
  }
}

}  // namespace
}  // namespace orv
