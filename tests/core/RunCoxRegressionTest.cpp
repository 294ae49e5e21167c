// The run driver: its steps, its failures, and what it leaves behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "core/SettingsFields.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::ChangedFields;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TestAnalysis;
using testing::TestColumn;

using Names = std::set<std::string>;

constexpr const char* kReviewFixed = "dsplst 0: Please review the fixed parameters for appropriate values.";
constexpr const char* kStartValueCount =
    "dsplst 0: Number of start values specified does not equal number of coefficients in full model.";
constexpr const char* kNoResults =
    "dsplst 0: A numerical issue was encountered during estimation and the Cox Proportional Hazards algorithm was "
    "unable to converge.  No results are available.  New start values should be considered.";

// What a reading of the cases may change in the options.
const Names kReadingChanges = {"DesignFactorSet",          "HasRun",
                               "BackupCovariateVariables", "BackupCovariateCount",
                               "BackupFactorVariables",    "BackupFactorCount",
                               "BackupFactorCodes",        "BackupFactorCodeCounts",
                               "BackupReferenceCodes",     "BackupReferenceCodeIndex",
                               "BackupDesignEffects",      "BackupEffectSymbols"};

bool IsSubset(const Names& names, const Names& of) {
  return std::includes(of.begin(), of.end(), names.begin(), names.end());
}

std::vector<TestColumn> Trial() {
  return {{"x", {1, 4, 2, 5, 3, 7, 6, 2}},      {"f", {1, 2, 3, 1, 2, 3, 1, 2}},
          {"g", {1, 1, 1, 1, 2, 2, 2, 2}},      {"time", {5, 3, 8, 1, 4, 2, 7, 6}},
          {"status", {1, 1, 0, 1, 1, 0, 1, 1}}, {"huge", {1e300, -1e300, 1e300, -1e300, 1e300, -1e300, 1e300, -1e300}}};
}

class Run : public ::testing::Test {
 protected:
  Run() : m_test(Trial()) {
    m_test.Covariates({"x"}).Factor("f", {1, 2, 3}).Time({"time"}).Status("status").DefaultDesign();
  }
  CoxSettings& Settings() { return m_test.Settings(); }
  std::vector<std::string> Shown() const {
    std::vector<std::string> shown;
    for (const std::string& event : m_test.Host.Trace) {
      if (event.rfind("dsplst", 0) == 0 || event.rfind("box", 0) == 0) shown.push_back(event);
    }
    return shown;
  }

  TestAnalysis m_test;
};

// ---- A run that succeeds ------------------------------------------------------------------------------------------

TEST_F(Run, LeavesAFittedModelOfItsOptions) {
  Settings().Likelihood = Likelihoods::Efron;
  Settings().MaxIterations = 25;
  Settings().ConvergenceExponent = 6;
  EXPECT_EQ(m_test.RunUnchecked(), 0);
  ASSERT_NE(m_test.Analysis.m_pCoxData, nullptr);
  ASSERT_NE(m_test.Analysis.m_pCoxFit, nullptr);
  EXPECT_EQ(m_test.Fit().m_pData, &m_test.Data());
  EXPECT_EQ(m_test.Fit().m_Likelihood, Likelihoods::Efron);
  EXPECT_EQ(m_test.Fit().m_InputType, InputTypes::SurvivalTime);
  EXPECT_EQ(m_test.Fit().m_MaxIterations, 25);
  EXPECT_DOUBLE_EQ(m_test.Fit().m_ConvergenceTolerance, 1e-6);
  EXPECT_TRUE(m_test.Fit().m_Converged);
  EXPECT_EQ(m_test.Fit().m_BetaHistory.back().size(), 3U);
  EXPECT_THAT(Shown(), IsEmpty());
}

TEST_F(Run, TakesTheSnapshotAndMarksTheRun) {
  const CoxSettings before = Settings();
  EXPECT_EQ(m_test.RunUnchecked(), 0);
  EXPECT_TRUE(Settings().HasRun);
  EXPECT_EQ(Settings().BackupDesignEffects, before.DesignEffects);
  EXPECT_EQ(Settings().BackupEffectSymbols, before.EffectSymbols);
  EXPECT_EQ(Settings().BackupFactorCodes, before.FactorCodes);
  EXPECT_TRUE(IsSubset(ChangedFields(before, Settings()), kReadingChanges)) << "the options stay as they were";
}

TEST_F(Run, WithoutPredictorsFitsTheModelWithoutCovariates) {
  TestAnalysis test(Trial());
  test.Time({"time"}).Status("status");
  EXPECT_EQ(test.Run(), 0);
  EXPECT_EQ(test.Data().CoefficientCount, 0U);
  EXPECT_TRUE(test.Fit().m_Converged);
  EXPECT_THAT(test.Host.Messages(), IsEmpty());
}

TEST_F(Run, ASecondRunHasRunObjectsOfItsOwn) {
  ASSERT_EQ(m_test.Run(), 0);
  const std::vector<double> first = m_test.Fit().m_BetaHistory.back();
  const int fetches = m_test.Host.CaseFetches;
  Settings().Coding = Codings::Overparameterized;
  ASSERT_EQ(m_test.Run(), 0);
  EXPECT_EQ(m_test.Host.CaseFetches, 2 * fetches);
  EXPECT_EQ(m_test.Data().CoefficientCount, 4U);
  EXPECT_EQ(m_test.Fit().m_pData, &m_test.Data());
  Settings().Coding = Codings::SigmaRestricted;
  ASSERT_EQ(m_test.Run(), 0);
  EXPECT_EQ(m_test.Fit().m_BetaHistory.back(), first) << "the same options give the same bits";
}

TEST_F(Run, AfterANewDataFileARunGivesTheSameNumbers) {
  ASSERT_EQ(m_test.Run(), 0);
  const std::vector<double> first = m_test.Fit().m_BetaHistory.back();
  const CoxSettings chosen = Settings();
  m_test.Analysis.ModifyAnalysis();
  m_test.Analysis.ResetOptions();
  EXPECT_FALSE(Settings().FinalFitReady);
  Settings() = chosen;
  Settings().FinalFitReady = false;
  ASSERT_EQ(m_test.Run(), 0);
  EXPECT_EQ(m_test.Fit().m_BetaHistory.back(), first);
}

// ---- Failures before the cases are read ---------------------------------------------------------------------------

TEST_F(Run, AnotherNumberOfStartValuesFailsBeforeAnyCaseIsRead) {
  for (const std::size_t count : {0U, 1U, 2U, 4U}) {
    m_test.StartAt(std::vector<double>(count, 0.1));
    const CoxSettings before = Settings();
    m_test.Host.Trace.clear();
    EXPECT_EQ(m_test.RunUnchecked(), 1) << count << " values for 3 coefficients";
    EXPECT_THAT(m_test.Host.Trace, ElementsAre(kStartValueCount)) << count << " values";
    EXPECT_EQ(m_test.Host.CaseFetches, 0) << count << " values";
    EXPECT_TRUE(IsSubset(ChangedFields(before, Settings()), {"DesignFactorSet"})) << count << " values";
    EXPECT_FALSE(Settings().HasRun);
  }
  m_test.StartAt({0.1, 0.1, 0.1});
  EXPECT_EQ(m_test.RunUnchecked(), 0);
}

TEST_F(Run, TheNumberOfStartValuesDoesNotMatterWhenTheyAreSwitchedOff) {
  Settings().StartValues = {1.0};
  EXPECT_EQ(m_test.RunUnchecked(), 0);
}

// No design that the options can describe has columns of one effect that disagree on being held, so the message about
// them is not shown.
TEST_F(Run, HeldEffectsOfSeveralColumnsDoNotDisagree) {
  m_test.StartAt({0.1, 0.2, 0.2}).Fix({false, true});
  EXPECT_EQ(m_test.RunUnchecked(), 0);
  EXPECT_FALSE(m_test.Data().FixedFlagConflict);
  for (const std::string& event : m_test.Host.Trace) EXPECT_NE(event, kReviewFixed);
}

// ---- Failures while the cases are read ----------------------------------------------------------------------------

TEST_F(Run, AFailedReadingLeavesTheOptionsAndTheData) {
  Settings().CensorVariable = m_test.Number("x");  // neither code in most cases, no complete one
  Settings().CodeForCompleteResponses = 99.0;
  const CoxSettings before = Settings();
  EXPECT_EQ(m_test.RunUnchecked(), 1);
  EXPECT_THAT(Shown(), ElementsAre("box 0: There are no valid cases.  Please review the data for appropriate values."));
  EXPECT_FALSE(Settings().HasRun);
  EXPECT_TRUE(IsSubset(ChangedFields(before, Settings()), {"DesignFactorSet"}));
  EXPECT_NE(m_test.Analysis.m_pCoxData, nullptr) << "the data stay until the next run replaces them";
  EXPECT_EQ(m_test.Analysis.m_pCoxFit, nullptr);
}

TEST_F(Run, CancelWhileReadingEndsTheRunInSilence) {
  m_test.Host.CancelBarAt = 3;
  EXPECT_EQ(m_test.RunUnchecked(), 1);
  EXPECT_EQ(m_test.Host.CaseFetches, 3);
  EXPECT_THAT(Shown(), IsEmpty());
  EXPECT_FALSE(Settings().HasRun);
  m_test.Host.CancelBarAt = 0;
  EXPECT_EQ(m_test.RunUnchecked(), 0);
}

// ---- OK in the startup dialog -------------------------------------------------------------------------------------

TEST_F(Run, OkLocksTheResultsAroundTheRun) {
  EXPECT_EQ(m_test.Run(), 0);
  const std::vector<std::string>& trace = m_test.Host.Trace;
  ASSERT_GE(trace.size(), 2U);
  EXPECT_EQ(trace.front(), "lock");
  EXPECT_EQ(trace.back(), "unlock");
}

TEST_F(Run, OkReadsTheFieldsFirst) {
  m_test.Fields.Iterations = 17;
  m_test.Fields.CodeForCompleteResponses = 0.0;
  m_test.Fields.CodeForCensoredResponses = 1.0;
  EXPECT_EQ(m_test.Run(), 0);
  EXPECT_EQ(Settings().MaxIterations, 17);
  EXPECT_EQ(m_test.Fit().m_MaxIterations, 17);
  EXPECT_EQ(m_test.Data().CompleteCaseCount, 2U) << "the codes are the other way round";
}

TEST_F(Run, AFieldOrACheckThatFailsKeepsTheDialogOpenAndRunsNothing) {
  m_test.Fields.CodeForCompleteResponses.reset();
  EXPECT_EQ(m_test.Run(), 1);
  m_test.Fields.CodeForCompleteResponses = 0.0;
  EXPECT_EQ(m_test.Run(), 1);
  EXPECT_THAT(m_test.Host.Trace,
              ElementsAre("dsplst 0: The code used to identify complete cases is not valid.",
                          "dsplst 0: Codes for censored and complete observations are identical.  Please select two "
                          "different codes."));
  EXPECT_EQ(m_test.Host.CaseFetches, 0);
  EXPECT_EQ(m_test.Analysis.m_pCoxData, nullptr);
}

TEST_F(Run, AFailureOfTheRunIsShownWithTheResultsLocked) {
  m_test.StartAt({0.1});
  EXPECT_EQ(m_test.Run(), 1);
  EXPECT_THAT(m_test.Host.Trace, ElementsAre("lock", kStartValueCount, "unlock"));
}

TEST_F(Run, AfterAFailureWithoutAFitTheDataStayAndASecondOkWorks) {
  m_test.StartAt({0.1});
  EXPECT_EQ(m_test.Run(), 1);
  EXPECT_NE(m_test.Analysis.m_pCoxData, nullptr);
  EXPECT_EQ(m_test.Analysis.m_pCoxFit, nullptr);
  m_test.StartAt({0.1, 0.1, 0.1});
  EXPECT_EQ(m_test.Run(), 0);
  EXPECT_TRUE(m_test.Fit().m_Converged);
}

TEST_F(Run, AFailureAfterAnEarlierRunReleasesItsFitToo) {
  ASSERT_EQ(m_test.Run(), 0);
  m_test.StartAt({0.1});
  EXPECT_EQ(m_test.Run(), 1);
  EXPECT_EQ(m_test.Analysis.m_pCoxData, nullptr);
  EXPECT_EQ(m_test.Analysis.m_pCoxFit, nullptr);
  Settings().UseStartValues = false;
  EXPECT_EQ(m_test.Run(), 0);
}

// The spread of a column is beyond the range of a double, so no pass can be made.
TEST_F(Run, ANumericalFailureWithoutResultsReleasesDataAndFit) {
  TestAnalysis test(Trial());
  test.Covariates({"huge"}).Time({"time"}).Status("status").DefaultDesign();
  const CoxSettings before = test.Settings();
  EXPECT_EQ(test.Run(), 1);
  EXPECT_EQ(test.Analysis.m_pCoxData, nullptr);
  EXPECT_EQ(test.Analysis.m_pCoxFit, nullptr);
  std::vector<std::string> messages;
  for (const std::string& event : test.Host.Trace) {
    if (event.rfind("dsplst", 0) == 0) messages.push_back(event);
  }
  EXPECT_THAT(messages, ElementsAre(kNoResults));
  EXPECT_EQ(test.Host.Trace.front(), "lock");
  EXPECT_EQ(test.Host.Trace.back(), "unlock");
  EXPECT_TRUE(IsSubset(ChangedFields(before, test.Settings()), kReadingChanges));
  EXPECT_EQ(test.Host.LiveBlocks(), 0);

  test.Settings().CovariateVariables = {test.Number("x")};
  test.DefaultDesign();
  EXPECT_EQ(test.Run(), 0) << "a second OK builds new run objects";
}

TEST_F(Run, ANumericalFailureSetsTheStatusOfTheFit) {
  TestAnalysis test(Trial());
  test.Covariates({"huge"}).Time({"time"}).Status("status").DefaultDesign();
  EXPECT_EQ(test.RunUnchecked(), 1);
  EXPECT_EQ(test.Fit().m_FitStatus, -1);
  EXPECT_FALSE(test.Fit().m_Converged);
  EXPECT_EQ(test.Fit().m_pData, nullptr);
  EXPECT_EQ(test.Analysis.m_pCoxData, nullptr);
}

// ---- The design alone ---------------------------------------------------------------------------------------------

TEST_F(Run, TheDesignIsCountedWithoutReadingACase) {
  EXPECT_EQ(m_test.Analysis.DesignCoefficientCount(), 3);
  EXPECT_EQ(m_test.Host.CaseFetches, 0);
  ASSERT_NE(m_test.Analysis.m_pCoxData, nullptr);
  EXPECT_EQ(m_test.Data().CoefficientCount, 3U);
  EXPECT_EQ(m_test.Data().ValidCaseCount, 0U);
  Settings().Coding = Codings::Overparameterized;
  EXPECT_EQ(m_test.Analysis.DesignCoefficientCount(), 4);
}

TEST_F(Run, ADesignWithoutEffectsHasNoCoefficients) {
  Settings().DesignEffects.clear();
  EXPECT_EQ(m_test.Analysis.DesignCoefficientCount(), 0);
}

TEST_F(Run, CountingTheDesignLeavesTheFitOfARunAlone) {
  ASSERT_EQ(m_test.Run(), 0);
  const CCoxData* fitted = &m_test.Data();
  const std::vector<double> estimate = m_test.Fit().m_BetaHistory.back();
  EXPECT_EQ(m_test.Analysis.DesignCoefficientCount(), 3);
  EXPECT_NE(&m_test.Data(), fitted);
  EXPECT_EQ(m_test.Fit().m_pData, fitted);
  EXPECT_EQ(fitted->ValidCaseCount, 8U);
  EXPECT_EQ(m_test.Fit().m_BetaHistory.back(), estimate);
  m_test.Analysis.CreateSummarySpreadsheet();
  EXPECT_EQ(m_test.Host.Sheets.size(), 1U);
}

}  // namespace
}  // namespace orv
