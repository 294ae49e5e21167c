// What a selection leaves is what an analysis of the selected effects alone gives, down to residuals and curves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "core/SettingsFields.h"
#include "inference/BreslowBaseline.h"
#include "inference/ScoreResiduals.h"
#include "inference/SurvivorFunctions.h"
#include "select/SelectionCases.h"

namespace orv {
namespace {

using ::testing::IsSubsetOf;
using testing::Names;
using testing::SelectionForm;
using testing::SelectionProblem;
using testing::TestAnalysis;

void ExpectNear(const std::vector<double>& made, const std::vector<double>& expected, const std::string& what) {
  ASSERT_EQ(made.size(), expected.size()) << what;
  double scale = 1.0;
  for (const double value : expected) scale = std::max(scale, std::abs(value));
  for (std::size_t k = 0; k < made.size(); ++k) EXPECT_NEAR(made[k], expected[k], 1e-10 * scale) << what << ", " << k;
}

void ExpectNear(const DenseMatrix& made, const DenseMatrix& expected, const std::string& what) {
  ASSERT_EQ(made.size(), expected.size()) << what;
  for (std::size_t row = 0; row < made.size(); ++row) ExpectNear(made[row], expected[row], what);
}

void ExpectSameData(const CCoxData& made, const CCoxData& expected) {
  EXPECT_EQ(made.CoefficientCount, expected.CoefficientCount);
  EXPECT_EQ(made.DesignColumnCount, expected.DesignColumnCount);
  EXPECT_EQ(made.ColumnCount, expected.ColumnCount);
  EXPECT_EQ(made.EffectCount, expected.EffectCount);
  EXPECT_EQ(made.EffectFirstColumn, expected.EffectFirstColumn);
  EXPECT_EQ(made.EffectLastColumn, expected.EffectLastColumn);
  EXPECT_EQ(made.EffectFixed, expected.EffectFixed);
  EXPECT_EQ(made.FixedEffectCount, expected.FixedEffectCount);
  EXPECT_EQ(made.SurvivalColumn, expected.SurvivalColumn);
  EXPECT_EQ(made.StartColumn, expected.StartColumn);
  EXPECT_EQ(made.StopColumn, expected.StopColumn);
  EXPECT_EQ(made.EntryTimeColumn, expected.EntryTimeColumn);
  EXPECT_EQ(made.StratumColumn, expected.StratumColumn);
  EXPECT_EQ(made.WeightColumn, expected.WeightColumn);
  EXPECT_EQ(made.CaseNumberColumn, expected.CaseNumberColumn);
  EXPECT_EQ(made.StatusColumn, expected.StatusColumn);
  EXPECT_EQ(made.ExcludedColumn, expected.ExcludedColumn);
  EXPECT_EQ(made.SubjectColumn, expected.SubjectColumn);
  for (std::size_t c = 0; c < expected.CoefficientCount; ++c) {
    EXPECT_EQ(made.DesignColumns[c].EffectName, expected.DesignColumns[c].EffectName);
    EXPECT_EQ(made.DesignColumns[c].LevelIndex, expected.DesignColumns[c].LevelIndex);
    EXPECT_EQ(made.DesignColumns[c].Fixed, expected.DesignColumns[c].Fixed);
    EXPECT_EQ(made.DesignColumns[c].Dropped, expected.DesignColumns[c].Dropped);
  }
  ASSERT_EQ(made.ValidCaseCount, expected.ValidCaseCount);
  for (int row = 1; row <= static_cast<int>(expected.ValidCaseCount); ++row) {
    const double* a = made.CaseTable.GetRow(row);
    const double* b = expected.CaseTable.GetRow(row);
    ExpectNear(std::vector<double>(a, a + made.ColumnCount), std::vector<double>(b, b + expected.ColumnCount),
               "row " + std::to_string(row));
  }
}

void ExpectSameCurves(CCoxFit& made, CCoxFit& expected) {
  FillEventRiskMoments(made);
  FillEventRiskMoments(expected);
  ASSERT_EQ(made.m_BreslowCurves.size(), expected.m_BreslowCurves.size());
  for (std::size_t s = 0; s < expected.m_BreslowCurves.size(); ++s) {
    ExpectNear(made.m_BreslowCurves[s].Times, expected.m_BreslowCurves[s].Times, "baseline times");
    ExpectNear(made.m_BreslowCurves[s].Values, expected.m_BreslowCurves[s].Values, "baseline");
    const std::vector<double> pattern(expected.m_pData->CoefficientCount, 0.5);
    const auto curveOf = [&](const CCoxFit& fit) {
      std::vector<double> numbers;
      const auto curve =
          SurvivorFunction(fit, s, pattern, SurvivorType::Breslow, SurvivorCIType::Log, 0.95, SmallRiskSums::Divided);
      EXPECT_TRUE(curve.has_value());
      if (!curve) return numbers;
      for (const CurvePoint& point : *curve) {
        numbers.insert(numbers.end(), {point.Time, point.Value, point.StandardError});
      }
      return numbers;
    };
    ExpectNear(curveOf(made), curveOf(expected), "survivor function");
  }
}

void ExpectSameType3Tests(TestAnalysis& made, TestAnalysis& expected) {
  made.Analysis.CreateType3Spreadsheet(0.95);
  expected.Analysis.CreateType3Spreadsheet(0.95);
  ASSERT_EQ(made.Host.Documents().Size(), expected.Host.Documents().Size());
  if (expected.Host.Documents().Size() == 0) return;
  const testing::SheetView a = LastSheet(made.Host);
  const testing::SheetView b = LastSheet(expected.Host);
  ASSERT_EQ(a.RowNames(), b.RowNames());
  for (int row = 0; row < b.Rows(); ++row) {
    for (int column = 0; column < b.Columns(); ++column) {
      const double value = b.Number(row, column).value_or(-1.0);
      EXPECT_NEAR(a.Number(row, column).value_or(-1.0), value, 1e-9 * std::max(1.0, std::abs(value)));
    }
  }
}

void ExpectSameFit(CCoxFit& made, CCoxFit& expected) {
  EXPECT_TRUE(made.m_Converged);
  ExpectNear(made.m_BetaHistory.back(), expected.m_BetaHistory.back(), "estimates");
  ExpectNear(made.m_Covariance, expected.m_Covariance, "covariance");
  ExpectNear(made.m_Information, expected.m_Information, "information");
  ExpectNear(made.m_RobustCovariance, expected.m_RobustCovariance, "robust covariance");
  ExpectNear({made.m_NullLogLik, made.m_LogLikHistory.back(), made.m_ScoreStatistic},
             {expected.m_NullLogLik, expected.m_LogLikHistory.back(), expected.m_ScoreStatistic}, "likelihoods");
  EXPECT_EQ(made.m_LogLikHistory.size(), expected.m_LogLikHistory.size());
  ExpectNear(made.m_MartingaleResiduals, expected.m_MartingaleResiduals, "martingale residuals");
  ComputeScoreResiduals(made);
  ComputeScoreResiduals(expected);
  ExpectNear(made.m_ScoreResiduals, expected.m_ScoreResiduals, "score residuals");
}

// The predictors that some effect needs, in the order of the full lists.
void ExpectPredictorsInUse(TestAnalysis& made, TestAnalysis& full) {
  std::set<std::string> used;
  for (const std::string& effect : made.Settings().DesignEffects) used.merge(testing::VariablesOf(effect));
  const CoxSettings& s = made.Settings();
  std::vector<std::int16_t> covariates;
  std::vector<std::int16_t> factors;
  std::vector<std::int32_t> codes;
  std::vector<std::int16_t> counts;
  std::vector<std::int32_t> references;
  std::map<int, int> inDesign;
  for (const std::string name : {"a", "b", "c", "d", "f", "h", "e"}) {
    if (used.count(name) == 0) continue;
    const bool isFactor = name == "f" || name == "h" || name == "e";
    inDesign[full.Number(name)] = isFactor ? VariableRole::Factor : VariableRole::Covariate;
    (isFactor ? factors : covariates).push_back(full.Number(name));
    if (!isFactor) continue;
    const int levels = name == "f" ? 3 : 2;
    for (int code = 1; code <= levels; ++code) codes.push_back(code);
    counts.push_back(static_cast<std::int16_t>(levels));
    references.push_back(levels);
  }
  EXPECT_EQ(s.CovariateVariables, covariates);
  EXPECT_EQ(s.CovariateCount, static_cast<int>(covariates.size()));
  EXPECT_EQ(s.FactorVariables, factors);
  EXPECT_EQ(s.FactorCount, static_cast<int>(factors.size()));
  EXPECT_EQ(s.FactorCodes, codes);
  EXPECT_EQ(s.FactorCodeCounts, counts);
  EXPECT_EQ(s.ReferenceCodes, references);
  EXPECT_EQ(s.ReferenceCodeIndex.size(), factors.size());
  EXPECT_EQ(s.DesignFactorSet, inDesign);
  EXPECT_EQ(made.Data().FactorModalCodes.size(), factors.size());
  EXPECT_EQ(s.EffectSymbols.size(), s.DesignEffects.size());
}

struct Extra {
  bool EntryTime = false;
  bool Subject = false;
};

SelectionProblem ProblemOf(const SelectionForm& form, const Extra& extra, unsigned seed) {
  SelectionProblem problem = testing::RandomSelection(form, seed);
  testing::TestColumn subject{"subject", {}};
  for (std::size_t i = 0; i < problem.Columns[0].Values.size(); ++i) subject.Values.push_back(std::floor(i / 2.0));
  problem.Columns.push_back(subject);
  problem.Define = [form, extra](TestAnalysis& analysis) {
    DefineSelectionForm(form, analysis);
    if (extra.EntryTime) analysis.Settings().EntryTimeVariable = analysis.Number("start");
    analysis.Settings().UseRobustVariance = extra.Subject;
    if (!extra.Subject) return;
    analysis.Settings().SubjectVariable = analysis.Number("subject");
    analysis.Settings().SubjectVariableCount = 1;
  };
  return problem;
}

// Fields that tell of the run and not of the model, and one that every build of the design fills anew.
const std::set<std::string> kOfTheRun = {"PToEnter", "PToRemove", "EffectsToForce", "ForcedStepCount",
                                         "DesignFactorSet"};

void CompareWithDirectAnalysis(const SelectionProblem& problem, int building, int& reduced) {
  TestAnalysis full(problem.Columns);
  // One run of all effects first, so that what any run changes has been changed.
  DefineSelection(problem, ModelBuildings::AllEffects, full);
  ASSERT_EQ(full.Run(), 0);
  full.Analysis.ModifyAnalysis();
  const CoxSettings before = full.Settings();
  full.Settings().ModelBuilding = static_cast<std::int16_t>(building);
  const bool hasModel = full.Run() == 0;
  if (hasModel) {
    std::vector<int> model;
    const Names& names = full.Settings().DesignEffects;
    for (int effect = 1; effect <= problem.EffectCount(); ++effect) {
      const std::string& name = problem.Effects[static_cast<std::size_t>(effect - 1)].first;
      if (std::find(names.begin(), names.end(), name) != names.end()) model.push_back(effect);
    }
    reduced += static_cast<int>(model.size()) < problem.EffectCount() ? 1 : 0;
    TestAnalysis direct(problem.Columns);
    DefineEffects(problem, model, direct);
    ASSERT_EQ(direct.Run(), 0);
    ExpectSameFit(full.Fit(), direct.Fit());
    ExpectSameData(full.Data(), direct.Data());
    ExpectSameCurves(full.Fit(), direct.Fit());
    full.Analysis.CreateSummarySpreadsheet();
    direct.Analysis.CreateSummarySpreadsheet();
    ExpectSameType3Tests(full, direct);
    ExpectPredictorsInUse(full, direct);
    EXPECT_EQ(full.Settings().StartValues, direct.Settings().StartValues);
    EXPECT_EQ(full.Settings().FixedParameterFlags, direct.Settings().FixedParameterFlags);
    full.Analysis.ModifyAnalysis();
  }
  std::set<std::string> changed = testing::ChangedFields(before, full.Settings());
  if (!hasModel) changed.erase("ModelBuilding");
  if (!hasModel) changed.erase("HasRun");
  EXPECT_THAT(changed, IsSubsetOf(kOfTheRun));
}

TEST(ReducedModel, IsThatOfADirectAnalysis) {
  struct {
    SelectionForm form;
    Extra extra;
  } const cases[] = {
      {{.What = "plain"}, {}},
      {{.What = "entry times and subjects", .Likelihood = Likelihoods::Efron, .Coding = Codings::Reference},
       {true, true}},
      {{.What = "strata and weights", .Coding = Codings::Overparameterized, .Strata = true, .Weights = true}, {}},
      {{.What = "intervals of subjects",
        .Likelihood = Likelihoods::Efron,
        .Intervals = true,
        .Strata = true,
        .Weights = true},
       {false, true}},
  };
  for (const auto& c : cases) {
    int reduced = 0;
    for (unsigned seed = 1; seed <= 20; ++seed) {
      const SelectionProblem problem = ProblemOf(c.form, c.extra, seed);
      for (const int building : {ModelBuildings::Forward, ModelBuildings::Backward, ModelBuildings::Stepwise}) {
        SCOPED_TRACE(std::string(c.form.What) + ", seed " + std::to_string(seed) + ", " + std::to_string(building));
        CompareWithDirectAnalysis(problem, building, reduced);
      }
    }
    EXPECT_GT(reduced, 20) << c.form.What;
  }
}

// Start values from which the final fit overflows at once are slipped in behind the search.
TEST(ReducedModel, AFailedFinalFitPutsTheFullModelBack) {
  testing::NamedSelection selection(ModelBuildings::Forward, {"f", "a", "c"}, {.Coding = Codings::Reference});
  testing::PreparedSelection run(selection.Limits(0.05, 0.5));
  TestAnalysis& analysis = run.Analysis;
  analysis.Analysis.ReadStartupFields(analysis.Fields, nullptr);
  CoxSettings& settings = analysis.Settings();
  const CoxSettings before = settings;
  analysis.Host.OnBarMove = [&](int) {
    if (analysis.Host.Bars.back().Title != "Performing model building") return;
    settings.UseStartValues = true;
    settings.StartValues.assign(4, 1e5);
    analysis.Host.CancelBarAt = 1;
  };
  EXPECT_EQ(analysis.RunUnchecked(), 1);
  settings.UseStartValues = false;
  EXPECT_EQ(analysis.Fit().m_FitStatus, FitStatuses::Failed);
  const std::set<std::string> changed = testing::ChangedFields(before, settings);
  for (const char* field : {"DesignEffects", "EffectSymbols", "CovariateVariables", "CovariateCount", "FactorVariables",
                            "FactorCount", "FactorCodes", "FactorCodeCounts", "ReferenceCodes", "ReferenceCodeIndex",
                            "StartValues", "FixedParameterFlags", "FinalFitReady"}) {
    EXPECT_EQ(changed.count(field), 0U) << field;
  }
}

}  // namespace
}  // namespace orv
