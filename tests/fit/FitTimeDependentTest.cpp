// Whole fits with covariates that change with time: against the definition and against the fit of the table expanded
// to intervals, and where the routine differs from the others.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "data/TimeExpressions.h"
#include "fit/FailureTexts.h"
#include "fit/FittedResults.h"
#include "fit/ReferenceTimeDependent.h"
#include "fit/TimeDependentAnalysis.h"

namespace orv {
namespace {

using testing::CasesOf;
using testing::DotReference;
using testing::EvaluateTimeDependentReference;
using testing::ExpectSameFit;
using testing::FitIntervals;
using testing::FittedModel;
using testing::FittedResults;
using testing::FitToTheEnd;
using testing::IntervalRow;
using testing::InvertReference;
using testing::kEstimateError;
using testing::kLastIterationUsed;
using testing::kNoResults;
using testing::MaximizeReference;
using testing::RandomSubjects;
using testing::RealMatrix;
using testing::RealVector;
using testing::ReferenceCase;
using testing::ReferenceValue;
using testing::SolveReference;
using testing::Subject;
using testing::SubjectColumns;
using testing::TimeDependentAnalysis;
using testing::TimeEffect;
using Vector = std::vector<double>;
using Texts = std::vector<std::string>;

std::vector<Subject> Subjects() {
  return RandomSubjects(1, 50, 12);
}

// Covariate b, and a times a function of the time.
TimeDependentAnalysis AnalysisOf(const std::vector<Subject>& subjects, const std::string& formula) {
  return {SubjectColumns(subjects), {"a", "b"}, {formula}, {{"b", "b"}, {"a_t", "a", {1}}}};
}

// The design of AnalysisOf with log(T_ + 1): b, and a log(t + 1).
Vector LogDesign(const ReferenceCase& one, double time) {
  return {one.X[0], one.X[1] * std::log(time + 1.0)};
}

ReferenceValue LogReference(const CCoxData& data, const RealVector& beta, bool efron, bool strata) {
  return EvaluateTimeDependentReference(CasesOf(data), beta, efron, strata, LogDesign);
}

struct Model {
  const char* what;
  bool efron;
  bool strata;
};

const Model kModels[] = {{"Breslow", false, false},
                         {"Efron", true, false},
                         {"Breslow, strata", false, true},
                         {"Efron, strata", true, true}};

void Apply(const Model& model, testing::TestAnalysis& analysis) {
  analysis.Settings().Likelihood = model.efron ? Likelihoods::Efron : Likelihoods::Breslow;
  if (model.strata) analysis.Strata("g", {1, 2});
}

TEST(FitTimeDependent, FindsTheMaximumWithItsInformationAndTests) {
  for (const Model& model : kModels) {
    TimeDependentAnalysis analysis = AnalysisOf(Subjects(), "log(t_ + 1)");
    Apply(model, analysis);
    const FittedResults results = FitToTheEnd(analysis, model.what);
    ASSERT_EQ(results.Beta.size(), 2U) << model.what;
    const auto evaluate = [&](const RealVector& beta) {
      return LogReference(analysis.Data(), beta, model.efron, model.strata);
    };
    const RealVector maximum = MaximizeReference(2, evaluate);
    const ReferenceValue atZero = evaluate({0.0L, 0.0L});
    const ReferenceValue atEstimate = evaluate({results.Beta[0], results.Beta[1]});
    const RealMatrix covariance = InvertReference(atEstimate.H);
    EXPECT_NEAR(results.NullLogLik, static_cast<double>(atZero.L), 1e-11) << model.what;
    EXPECT_NEAR(results.Score, static_cast<double>(DotReference(atZero.U, SolveReference(atZero.H, atZero.U))), 1e-10)
        << model.what;
    EXPECT_NEAR(results.LogLik, static_cast<double>(atEstimate.L), 1e-11) << model.what;
    for (std::size_t j = 0; j < 2; ++j) {
      // |L| is four times what kEstimateError counts on.
      EXPECT_NEAR(results.Beta[j], static_cast<double>(maximum[j]),
                  4 * kEstimateError * std::sqrt(results.Covariance[j][j]))
          << model.what;
      for (std::size_t l = 0; l < 2; ++l) {
        EXPECT_NEAR(results.Covariance[j][l], static_cast<double>(covariance[j][l]), 1e-11) << model.what;
      }
    }
  }
}

// A row for each time with events that the subject lives to see, from the event time before; the covariate is that of
// its end.
std::vector<IntervalRow> Expanded(const std::vector<Subject>& subjects, double (*value)(const Subject&, double)) {
  std::set<double> eventTimes;
  for (const Subject& one : subjects) {
    if (one.Event) eventTimes.insert(one.Time);
  }
  std::vector<IntervalRow> rows;
  for (const Subject& one : subjects) {
    double start = 0.0;
    for (const double time : eventTimes) {
      if (time > one.Time) break;
      rows.push_back({start, time, one.Event && one.Time == time, value(one, time), one.B, one.G});
      start = time;
    }
  }
  return rows;
}

TEST(FitTimeDependent, IsTheFitOfTheTableExpandedToIntervals) {
  const struct {
    const char* formula;
    double (*value)(const Subject&, double);
  } cases[] = {
      {"T_", [](const Subject& one, double t) { return one.A * t; }},
      {"log(T_ + 1)", [](const Subject& one, double t) { return one.A * std::log(t + 1.0); }},
      {"T_ > 3", [](const Subject& one, double t) { return t > 3.0 ? one.A : 0.0; }},
      {"if(t_ <= 2 + b, 1, 0.25)",
       [](const Subject& one, double t) { return one.A * (t <= 2.0 + one.B ? 1.0 : 0.25); }},
  };
  for (const auto& c : cases) {
    for (const bool efron : {false, true}) {
      const FittedModel model = {c.formula, efron ? Likelihoods::Efron : Likelihoods::Breslow, false};
      TimeDependentAnalysis analysis = AnalysisOf(Subjects(), c.formula);
      testing::ApplyModel(model, analysis);
      FittedResults expanded = FitIntervals(Expanded(Subjects(), c.value), model);
      // The columns of the intervals are a, b.
      std::swap(expanded.Beta[0], expanded.Beta[1]);
      std::swap(expanded.Covariance[0], expanded.Covariance[1]);
      for (Vector& row : expanded.Covariance) std::swap(row[0], row[1]);
      ExpectSameFit(FitToTheEnd(analysis, c.formula), expanded, 1e-10, c.formula);
    }
  }
}

// Were the expressions products of separate effects, or taken at the case's own time, the fit would differ.
TEST(FitTimeDependent, SeveralFormulasOfAnEffectMultiply) {
  TimeDependentAnalysis product(SubjectColumns(Subjects()), {"a", "b"}, {"T_ + 1", "1 / T_"},
                                {{"b", "b"}, {"a_t", "a", {1, 2}}});
  TimeDependentAnalysis one = AnalysisOf(Subjects(), "(T_ + 1) / T_");
  ExpectSameFit(FitToTheEnd(product, "product"), FitToTheEnd(one, "one"), 1e-10, "(T_ + 1) / T_");
}

TEST(FitTimeDependent, FormulaOfTheTimeAloneIsDropped) {
  TimeDependentAnalysis analysis(SubjectColumns(Subjects()), {"a", "b"}, {"1 + 0 * T_"},
                                 {{"late", "", {1}}, {"a", "a"}});
  const FittedResults results = FitToTheEnd(analysis, "time alone");
  EXPECT_TRUE(analysis.Data().DesignColumns[0].Dropped) << "every member of a risk set has the same value";
  EXPECT_EQ(results.Beta[0], 0.0);
  EXPECT_EQ(results.Covariance[0], (Vector{0.0, 0.0}));
  EXPECT_FALSE(analysis.Data().DesignColumns[1].Dropped);
}

// ---- Where the routine differs --------------------------------------------------------------------------------------

TEST(FitTimeDependent, NullLikelihoodAndScoreTestBelongToTheStartVector) {
  for (const Model& model : kModels) {
    TimeDependentAnalysis analysis = AnalysisOf(Subjects(), "log(T_ + 1)");
    Apply(model, analysis);
    analysis.StartAt({0.25, -0.125});
    ASSERT_EQ(analysis.Run(), 0) << model.what;
    const CCoxFit& fit = analysis.Fit();
    const ReferenceValue atStart = LogReference(analysis.Data(), {0.25L, -0.125L}, model.efron, model.strata);
    const RealVector step = SolveReference(atStart.H, atStart.U);
    EXPECT_NEAR(fit.m_NullLogLik, static_cast<double>(atStart.L), 1e-11) << model.what;
    EXPECT_EQ(fit.m_LogLikHistory[0], fit.m_NullLogLik) << model.what;
    EXPECT_NEAR(fit.m_ScoreStatistic, static_cast<double>(DotReference(atStart.U, step)), 1e-10) << model.what;
    ASSERT_GE(fit.m_BetaHistory.size(), 2U) << model.what;
    EXPECT_NEAR(fit.m_BetaHistory[1][0], 0.25 + static_cast<double>(step[0]), 1e-12) << model.what;
    EXPECT_NEAR(fit.m_BetaHistory[1][1], -0.125 + static_cast<double>(step[1]), 1e-12) << model.what;
    EXPECT_EQ(fit.m_BetaHistory.size(), fit.m_LogLikHistory.size()) << model.what;
  }
}

TEST(FitTimeDependent, RunsOnRawValues) {
  TimeDependentAnalysis analysis = AnalysisOf(Subjects(), "log(T_ + 1)");
  analysis.StartAt({0.25, -0.125}).Fix({false, false});
  CCoxFit& fit = analysis.PrepareTimeFit();
  const auto bytes = [&] {
    std::vector<double> cells;
    const CaseTable& table = analysis.Data().CaseTable;
    for (int row = 1; row <= table.RowCount(); ++row) {
      cells.insert(cells.end(), table.GetRow(row), table.GetRow(row) + table.ColumnCount());
    }
    return cells;
  };
  const std::vector<double> before = bytes();
  fit.FitCurrentModel();
  EXPECT_TRUE(fit.m_Converged);
  EXPECT_EQ(bytes(), before) << "there and back would have cost a digit here or there";
  EXPECT_EQ(fit.m_BetaHistory[0], (Vector{0.25, -0.125})) << "start values count on the raw scale";
}

TEST(FitTimeDependent, HasNoProgressBarAndNoCancelQuery) {
  TimeDependentAnalysis analysis = AnalysisOf(Subjects(), "T_");
  CCoxFit& fit = analysis.PrepareTimeFit();
  analysis.Host.CancelBarAt = 1;
  analysis.Host.Cancelled = analysis.Host.External = true;
  fit.FitCurrentModel();
  EXPECT_TRUE(analysis.Host.Bars.empty());
  EXPECT_EQ(fit.m_FitStatus, 0);
  EXPECT_TRUE(fit.m_Converged);
}

TEST(FitTimeDependent, CandidateOfASelectionUsesItsColumnsOnly) {
  TimeDependentAnalysis whole(SubjectColumns(Subjects()), {"a", "b"}, {"T_", "log(T_)"},
                              {{"b_t", "b", {2}}, {"a_t", "a", {1}}, {"b", "b"}});
  testing::IterateToTheEnd(whole);
  CCoxFit& fit = whole.PrepareTimeFit();
  whole.Settings().FinalFitReady = false;
  whole.Settings().ModelBuilding = ModelBuildings::Forward;
  fit.m_ActiveColumns = {2, 1};
  fit.m_ActiveCount = 2;
  fit.FitCurrentModel();
  ASSERT_TRUE(fit.m_Converged);
  TimeDependentAnalysis alone = AnalysisOf(Subjects(), "T_");
  const FittedResults expected = FitToTheEnd(alone, "alone");
  EXPECT_EQ(fit.m_BetaHistory.back(), expected.Beta);
  EXPECT_EQ(fit.m_LogLikHistory.back(), expected.LogLik);
  EXPECT_EQ(fit.m_Covariance, expected.Covariance);
}

// ---- Failures -------------------------------------------------------------------------------------------------------

TEST(FitTimeDependent, FormulaThatFailsAtAnEventTimeLeavesNoResults) {
  std::vector<Subject> subjects = Subjects();
  subjects[7].Time = 4.25;
  subjects[7].Event = true;
  for (const char* formula : {"1 / (T_ - 4.25)", "log(4.25 - T_ + 0 * a)", "sqrt(4 - T_)", "exp(T_ * 1000)"}) {
    TimeDependentAnalysis analysis = AnalysisOf(subjects, formula);
    EXPECT_NE(analysis.Run(), 0) << formula;
    EXPECT_EQ(analysis.Host.Messages(), Texts{kNoResults}) << formula;
    EXPECT_EQ(analysis.Analysis.m_pCoxFit, nullptr) << formula;
    EXPECT_EQ(analysis.Analysis.m_pCoxData, nullptr) << formula;
    EXPECT_EQ(analysis.Host.Events.back(), "message") << formula;
  }
}

TEST(FitTimeDependent, FormulaThatFailsLeavesItsPlace) {
  std::vector<Subject> subjects = Subjects();
  subjects[7].Time = 4.25;
  subjects[7].Event = true;
  TimeDependentAnalysis analysis = AnalysisOf(subjects, "1 / (T_ - 4.25)");
  CCoxFit& fit = analysis.PrepareTimeFit();
  fit.FitCurrentModel();
  EXPECT_EQ(fit.m_FitStatus, FitStatuses::Failed);
  EXPECT_EQ(fit.m_pData, nullptr);
  ASSERT_NE(analysis.Analysis.m_pExpressions, nullptr);
  ASSERT_TRUE(analysis.Analysis.m_pExpressions->Failure().has_value());
  EXPECT_EQ(analysis.Analysis.m_pExpressions->Failure()->Expression, 1);
  EXPECT_EQ(analysis.Analysis.m_pExpressions->Failure()->Time, 4.25);
}

TEST(FitTimeDependent, CandidatePassesTheFailureOfAFormulaOn) {
  std::vector<Subject> subjects = Subjects();
  subjects[7].Time = 4.25;
  subjects[7].Event = true;
  TimeDependentAnalysis analysis = AnalysisOf(subjects, "1 / (T_ - 4.25)");
  CCoxFit& fit = analysis.PrepareTimeFit();
  analysis.Settings().FinalFitReady = false;
  EXPECT_ANY_THROW(fit.FitCurrentModel());
  EXPECT_NE(fit.m_pData, nullptr);
  EXPECT_TRUE(analysis.Host.Messages().empty());
}

TEST(FitTimeDependent, OverflowAtTheStartLeavesNoResults) {
  for (const Model& model : kModels) {
    TimeDependentAnalysis analysis = AnalysisOf(Subjects(), "T_");
    Apply(model, analysis);
    analysis.StartAt({0.0, 1000.0});
    EXPECT_NE(analysis.Run(), 0) << model.what;
    EXPECT_EQ(analysis.Host.Messages(), Texts{kNoResults}) << model.what;
  }
}

// The start is so far from the maximum that its information is next to nothing and the step leads out of range.
TEST(FitTimeDependent, OverflowAfterTheStartGivesTheResultsOfTheStart) {
  for (const Model& model : kModels) {
    TimeDependentAnalysis analysis(SubjectColumns(Subjects()), {"a", "b"}, {"log(T_ + 1)"}, {{"a_t", "a", {1}}});
    Apply(model, analysis);
    analysis.StartAt({30.0});
    ASSERT_EQ(analysis.Run(), 0) << model.what;
    EXPECT_EQ(analysis.Host.Messages(), Texts{kLastIterationUsed}) << model.what;
    const CCoxFit& fit = analysis.Fit();
    EXPECT_FALSE(fit.m_Converged) << model.what;
    EXPECT_EQ(fit.m_FitStatus, 0) << model.what;
    ASSERT_EQ(fit.m_BetaHistory, (DenseMatrix{{30.0}})) << model.what;
    const ReferenceValue value = EvaluateTimeDependentReference(
        CasesOf(analysis.Data()), {30.0L}, model.efron, model.strata,
        [](const ReferenceCase& one, double time) { return Vector{one.X[0] * std::log(time + 1.0)}; });
    // The information is the small difference of two sums of the order of ten.
    EXPECT_NEAR(fit.m_Information[0][0], static_cast<double>(value.H[0][0]), 1e-11) << model.what;
    EXPECT_DOUBLE_EQ(fit.m_Covariance[0][0] * fit.m_Information[0][0], 1.0) << model.what;
  }
}

}  // namespace
}  // namespace orv
