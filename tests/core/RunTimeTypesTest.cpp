// Whole runs on intervals and with time-dependent covariates.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "data/TimeExpressions.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TestAnalysis;
using testing::TestColumn;

constexpr const char* kNoResults =
    "dsplst 0: A numerical issue was encountered during estimation and the Cox Proportional Hazards algorithm was "
    "unable to converge.  No results are available.  New start values should be considered.";
constexpr double kAccuracy = 1e-6;

struct Case {
  double x, time, status;
};

const std::vector<Case>& Trial() {
  static const std::vector<Case> trial = {{1, 5, 1}, {4, 3, 1}, {2, 8, 0}, {5, 1, 1}, {3, 4, 1},
                                          {7, 2, 0}, {6, 7, 1}, {2, 6, 1}, {5, 9, 1}, {3, 10, 0}};
  return trial;
}

std::vector<TestColumn> Columns(const std::vector<Case>& cases) {
  std::vector<TestColumn> columns = {{"x", {}}, {"time", {}}, {"status", {}}, {"start", {}}, {"read", {}}};
  for (const Case& c : cases) {
    columns[0].Values.push_back(c.x);
    columns[1].Values.push_back(c.time);
    columns[2].Values.push_back(c.status);
    columns[3].Values.push_back(0.0);
    columns[4].Values.push_back(c.x);
  }
  return columns;
}

class SurvivalRun : public TestAnalysis {
 public:
  explicit SurvivalRun(const std::vector<TestColumn>& columns) : TestAnalysis(columns) {
    Covariates({"x"}).Time({"time"}).Status("status").DefaultDesign();
  }
  std::vector<double> Estimate() { return Fit().m_BetaHistory.back(); }
  double LogLikelihood() { return Fit().m_LogLikHistory.back(); }
  std::vector<std::string> Shown() const {
    std::vector<std::string> shown;
    for (const std::string& event : Host.Trace) {
      if (event.rfind("dsplst", 0) == 0 || event.rfind("box", 0) == 0 || event.rfind("instance", 0) == 0) {
        shown.push_back(event);
      }
    }
    return shown;
  }
};

class IntervalRun : public SurvivalRun {
 public:
  explicit IntervalRun(const std::vector<TestColumn>& columns) : SurvivalRun(columns) {
    Interval("start", "time");
    Settings().SurvivalVariableCount = 0;
  }
};

// The covariate x and the formulas named t1, t2, and so on, each an effect; x may be left out of the design.
class TimeDependentRun : public SurvivalRun {
 public:
  TimeDependentRun(const std::vector<TestColumn>& columns, const std::vector<std::string>& formulas, bool withX = true)
      : SurvivalRun(columns) {
    Settings().InputType = InputTypes::TimeDependent;
    for (const std::string& formula : formulas) {
      Settings().TimeDependentCovariateNames.push_back(
          "t" + std::to_string(Settings().TimeDependentCovariateNames.size() + 1));
      Settings().TimeDependentCovariateExpressions.push_back(formula);
    }
    DefaultDesign();
    if (!withX) Settings().DesignEffects.erase(Settings().DesignEffects.begin());
  }
};

// Every case as one row up to the change and one after it, with x in force only from then on.
std::vector<TestColumn> SplitAt(double change) {
  std::vector<TestColumn> columns = {{"x", {}}, {"time", {}}, {"status", {}}, {"start", {}}, {"read", {}}};
  const auto add = [&columns](double x, double start, double stop, double status) {
    const double values[] = {x, stop, status, start, x};
    for (std::size_t k = 0; k < columns.size(); ++k) columns[k].Values.push_back(values[k]);
  };
  for (const Case& c : Trial()) {
    if (c.time <= change) {
      add(0.0, 0.0, c.time, c.status);
    } else {
      add(0.0, 0.0, change, 0.0);
      add(c.x, change, c.time, c.status);
    }
  }
  return columns;
}

void ExpectSameFit(SurvivalRun& a, SurvivalRun& b) {
  ASSERT_EQ(a.Run(), 0);
  ASSERT_EQ(b.Run(), 0);
  ASSERT_EQ(a.Estimate().size(), b.Estimate().size());
  for (std::size_t k = 0; k < a.Estimate().size(); ++k) EXPECT_NEAR(a.Estimate()[k], b.Estimate()[k], kAccuracy);
  EXPECT_NEAR(a.LogLikelihood(), b.LogLikelihood(), kAccuracy);
}

// ---- Intervals ----------------------------------------------------------------------------------------------------

TEST(IntervalRun, IntervalsFromZeroAreSurvivalTimes) {
  IntervalRun intervals(Columns(Trial()));
  SurvivalRun times(Columns(Trial()));
  ExpectSameFit(intervals, times);
  EXPECT_EQ(intervals.Fit().m_InputType, InputTypes::CountingProcess);
  EXPECT_THAT(intervals.Shown(), IsEmpty());
}

TEST(IntervalRun, OnlyUsableIntervalsAreCounted) {
  std::vector<TestColumn> columns = Columns(Trial());
  const std::pair<double, double> unusable[] = {{-1, 5}, {-3, -2}, {4, 4}, {6, 5}, {0, 0}};
  for (const auto& [start, stop] : unusable) {
    const double values[] = {1.0, stop, 1.0, start, 1.0};
    for (std::size_t k = 0; k < columns.size(); ++k) columns[k].Values.push_back(values[k]);
  }
  IntervalRun with(columns);
  IntervalRun without(Columns(Trial()));
  ExpectSameFit(with, without);
  EXPECT_EQ(with.Data().ValidCaseCount, Trial().size());
  EXPECT_EQ(with.Data().Excluded.Of(Exclusion::Time), 5);
}

TEST(IntervalRun, WithoutAStartNothingIsRead) {
  IntervalRun run(Columns(Trial()));
  run.Settings().StartVariableCount = 0;
  EXPECT_EQ(run.Run(), 1);
  EXPECT_THAT(run.Shown(), ElementsAre("dsplst 0: Please specify a start variable."));
  EXPECT_EQ(run.Host.CaseFetches, 0);
}

// ---- Time-dependent covariates ------------------------------------------------------------------------------------

TEST(TimeDependentRun, AFormulaThatDoesNotChangeIsAnOrdinaryCovariate) {
  TimeDependentRun formula(Columns(Trial()), {"read+0*T_"}, false);
  SurvivalRun covariate(Columns(Trial()));
  ExpectSameFit(formula, covariate);
  EXPECT_THAT(formula.Shown(), IsEmpty());
  EXPECT_THAT(formula.Settings().TimeExpressionVariables, ElementsAre(5));
  EXPECT_EQ(formula.Fit().m_InputType, InputTypes::TimeDependent);
}

TEST(TimeDependentRun, AStepAtATimeIsTheSplitOfEveryCaseThere) {
  for (const double change : {2.5, 4.0, 6.5}) {
    TimeDependentRun formula(Columns(Trial()), {"read*(T_>" + std::to_string(change) + ")"}, false);
    IntervalRun split(SplitAt(change));
    ExpectSameFit(formula, split);
  }
}

TEST(TimeDependentRun, ACrossIsTheProductOfItsParts) {
  TimeDependentRun cross(Columns(Trial()), {"T_"});
  cross.Design({{"x", "v1"}, {"x*t1", "v1*TIME_EXPRESSION1"}});
  TimeDependentRun formula(Columns(Trial()), {"T_*read"});
  ExpectSameFit(cross, formula);
  TimeDependentRun twice(Columns(Trial()), {"T_", "2*T_+1"});
  twice.Design({{"x", "v1"}, {"x*t1*t2", "v1*TIME_EXPRESSION1*TIME_EXPRESSION2"}});
  TimeDependentRun product(Columns(Trial()), {"T_*(2*T_+1)*read"});
  ExpectSameFit(twice, product);
}

TEST(TimeDependentRun, ACaseWithoutAValueThatAFormulaReadsIsLeftOut) {
  std::vector<TestColumn> missing = Columns(Trial());
  missing[4].Values[2] = kMissingCode;
  TimeDependentRun with(missing, {"read*log(T_)"});
  std::vector<Case> fewer = Trial();
  fewer.erase(fewer.begin() + 2);
  TimeDependentRun without(Columns(fewer), {"read*log(T_)"});
  ExpectSameFit(with, without);
  EXPECT_EQ(with.Data().Excluded.Of(Exclusion::Expression), 1);
  EXPECT_EQ(with.Data().ValidCaseCount, 9U);
  EXPECT_THAT(with.Shown(), IsEmpty());
}

TEST(TimeDependentRun, WithoutPredictorsAndDesignIsTheModelWithoutCovariates) {
  TimeDependentRun run(Columns(Trial()), {"T_"});
  run.Settings().CovariateVariables.clear();
  run.Settings().CovariateCount = 0;
  run.Design({});
  EXPECT_EQ(run.Run(), 0);
  EXPECT_EQ(run.Data().CoefficientCount, 0U);
  EXPECT_THAT(run.Shown(), IsEmpty());
}

TEST(TimeDependentRun, AWrongFormulaKeepsTheDialogOpenAndReadsNothing) {
  TimeDependentRun run(Columns(Trial()), {"T_*nobody"});
  EXPECT_EQ(run.Run(), 1);
  EXPECT_THAT(run.Host.Trace, ElementsAre("instance text 10025"));
  EXPECT_EQ(run.Host.CaseFetches, 0);
  EXPECT_EQ(run.Analysis.m_pCoxData, nullptr);
  EXPECT_EQ(run.Host.LiveBlocks(), 0);
  run.Settings().TimeDependentCovariateExpressions = {"T_*x"};
  EXPECT_EQ(run.Run(), 0) << "after the correction everything runs again";
}

// Case 9 alone lives on beyond 8 with x = 5, so only it meets the division by zero, at the event of case 7.
TEST(TimeDependentRun, AFormulaThatFailsInTheFitEndsItAndIsNamed) {
  TimeDependentRun run(Columns(Trial()), {"T_*read", "if(read=5, 1/(T_-7), T_)"});
  EXPECT_EQ(run.Run(), 1);
  EXPECT_THAT(run.Shown(), ElementsAre(kNoResults));
  EXPECT_EQ(run.Host.Trace.front(), "lock");
  EXPECT_EQ(run.Host.Trace.back(), "unlock");
  EXPECT_EQ(run.Analysis.m_pCoxData, nullptr);
  EXPECT_EQ(run.Analysis.m_pCoxFit, nullptr);
  EXPECT_EQ(run.Host.LiveBlocks(), 1) << "the store alone";
  ASSERT_NE(run.Analysis.m_pExpressions, nullptr);
  const auto& failure = run.Analysis.m_pExpressions->Failure();
  ASSERT_TRUE(failure.has_value());
  EXPECT_EQ(failure->Expression, 2);
  EXPECT_EQ(failure->CaseNumber, 9);
  EXPECT_EQ(failure->Time, 7.0);

  run.Settings().TimeDependentCovariateExpressions[1] = "T_^2*read";
  EXPECT_EQ(run.Run(), 0);
  EXPECT_FALSE(run.Analysis.m_pExpressions->Failure().has_value());
}

TEST(TimeDependentRun, AFailureOutsideEveryRiskSetDoesNotHappen) {
  TimeDependentRun run(Columns(Trial()), {"if(read=7, 1/(T_-3), T_*read)"});  // case 6 is censored at 2
  EXPECT_EQ(run.Run(), 0);
  EXPECT_FALSE(run.Analysis.m_pExpressions->Failure().has_value());
}

}  // namespace
}  // namespace orv
