#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/CCoxPH.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using testing::TestAnalysis;

// ---- The object ---------------------------------------------------------------------------------------------------

TEST(CCoxPH, StartsWithDefaultsAndWithoutRunObjects) {
  int document = 0;
  const CCoxPH analysis(&document);
  EXPECT_EQ(analysis.m_pDocument, &document);
  EXPECT_EQ(analysis.m_pCoxData, nullptr);
  EXPECT_EQ(analysis.m_pCoxFit, nullptr);
  EXPECT_EQ(analysis.m_pProgress, nullptr);
  EXPECT_TRUE(analysis.m_Settings.FinalFitReady);
  EXPECT_EQ(analysis.m_Commons.Weights, nullptr);
}

TEST(CCoxPH, SaysWhatItIs) {
  const CCoxPH analysis(nullptr);
  EXPECT_EQ(analysis.GetAnalysisID(), 6784);
  EXPECT_EQ(analysis.GetAnalysisName(), "Cox Proportional Hazards Regression.");
  EXPECT_STREQ(analysis.GetLibInstance().LoadText(10000), "Cox Proportional Hazards Regression.");
}

TEST(CCoxPH, SavesNoOptionsWithTheContextOfTheHost) {
  CCoxPH analysis(nullptr);
  analysis.m_Settings.MaxIterations = 77;
  EXPECT_EQ(analysis.WriteContext(nullptr), 0);
  EXPECT_EQ(analysis.ReadContext(nullptr), 0);
  EXPECT_EQ(analysis.m_Settings.MaxIterations, 77);
}

TEST(CCoxPH, HasThreeStages) {
  const CCoxPH analysis(nullptr);
  struct {
    int Stage, Forward, Back;
  } const cases[] = {{100, 101, 0}, {101, 102, 0}, {102, 0, 101}};
  ASSERT_EQ(analysis.Stages().size(), 3U);
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_EQ(analysis.Stages()[k].Stage, cases[k].Stage);
    EXPECT_EQ(analysis.Stages()[k].ForwardTo, cases[k].Forward) << cases[k].Stage;
    EXPECT_EQ(analysis.Stages()[k].BackTo, cases[k].Back) << cases[k].Stage;
  }
}

TEST(CCoxPH, TheFirstStageBindsTheRecordsOfTheHost) {
  const MemoryTable table;
  testing::TestHost host(table);
  CCoxPH analysis(nullptr);
  analysis.AttachHost(host);
  EXPECT_EQ(analysis.RunStage(100), 1);
  EXPECT_NE(analysis.m_Commons.Weights, nullptr);
}

TEST(CCoxPH, TheOtherStagesCreateTheirDialogs) {
  const MemoryTable table;
  testing::TestHost host(table);
  CCoxPH analysis(nullptr);
  analysis.AttachHost(host);
  EXPECT_EQ(analysis.RunStage(101), -1);
  EXPECT_EQ(analysis.RunStage(102), -1);
  host.Dialogs = {"CDefineTask"};
  EXPECT_EQ(analysis.RunStage(101), 0);
  EXPECT_EQ(analysis.RunStage(102), -1);
  host.Dialogs = {"CCoxPHResults"};
  EXPECT_EQ(analysis.StartAnalysis(), -1);
  EXPECT_EQ(analysis.AnalysisResults(), 0);
  EXPECT_EQ(host.Trace.size(), 6U);
  EXPECT_THAT((std::vector<std::string>{host.Trace[0], host.Trace[1]}),
              ElementsAre("dialog CDefineTask", "dialog CCoxPHResults"));
}

TEST(CCoxPH, ForwardsMovesBetweenStagesToTheHost) {
  const MemoryTable table;
  testing::TestHost host(table);
  host.ForwardAnswer = 3;
  CCoxPH analysis(nullptr);
  analysis.AttachHost(host);
  EXPECT_EQ(analysis.ForwardSequence(101, 102), 3);
  EXPECT_THAT(host.Trace, ElementsAre("forward 101 102"));
}

TEST(CCoxPH, ANewDataFileResetsTheOptions) {
  CCoxPH analysis(nullptr);
  analysis.m_Settings.MaxIterations = 7;
  analysis.m_Settings.DisplayBest = 4;
  analysis.ResetOptions();
  EXPECT_EQ(analysis.m_Settings.MaxIterations, 50);
  EXPECT_EQ(analysis.m_Settings.DisplayBest, 4);
  EXPECT_FALSE(analysis.m_Settings.FinalFitReady);
}

// ---- Run objects --------------------------------------------------------------------------------------------------

TestAnalysis SmallAnalysis() {
  return TestAnalysis({{"x", {1, 4, 2, 5, 3, 7}}, {"time", {1, 2, 3, 4, 5, 6}}, {"status", {1, 1, 0, 1, 1, 0}}});
}

void Choose(TestAnalysis& test) {
  test.Covariates({"x"}).Time({"time"}).Status("status").DefaultDesign();
}

TEST(CCoxPH, DataThatAFitRefersToLiveAsLongAsTheFit) {
  TestAnalysis test = SmallAnalysis();
  Choose(test);
  ASSERT_EQ(test.Run(), 0);
  const CCoxData* fitted = test.Fit().m_pData;
  const double mean = fitted->DesignColumns[0].Mean;
  for (int time = 0; time < 3; ++time) {
    test.Analysis.ReplaceData(std::make_unique<CCoxData>(&test.Analysis));
    EXPECT_NE(test.Analysis.m_pCoxData.get(), fitted);
    ASSERT_EQ(test.Fit().m_pData, fitted);
    EXPECT_EQ(fitted->DesignColumns[0].Mean, mean) << "replaced " << time + 1 << " times";
    EXPECT_EQ(fitted->CaseTable.RowCount(), 6);
  }
  test.Analysis.CreateParameterEstimateSpreadsheet(0.95);
  EXPECT_EQ(test.Host.Sheets.size(), 1U);
}

TEST(CCoxPH, ReleasesBothRunObjects) {
  TestAnalysis test = SmallAnalysis();
  Choose(test);
  ASSERT_EQ(test.Run(), 0);
  test.Analysis.ReleaseRunObjects();
  EXPECT_EQ(test.Analysis.m_pCoxData, nullptr);
  EXPECT_EQ(test.Analysis.m_pCoxFit, nullptr);
  test.Analysis.ReleaseRunObjects();  // nothing is left to release
  EXPECT_EQ(test.Run(), 0);
}

TEST(CCoxPH, AllMemoryOfTheHostGoesBack) {
  TestAnalysis test = SmallAnalysis();
  Choose(test);
  ASSERT_EQ(test.Run(), 0);
  EXPECT_EQ(test.Host.LiveBlocks(), 0);
}

TEST(CCoxPH, GoingBackToTheStartupDialogForgetsTheRunAndTheModelBuilding) {
  TestAnalysis test = SmallAnalysis();
  Choose(test);
  ASSERT_EQ(test.Run(), 0);
  ASSERT_TRUE(test.Settings().HasRun);
  test.Settings().ModelBuilding = ModelBuildings::Stepwise;
  test.Settings().Likelihood = Likelihoods::Efron;
  test.Analysis.ModifyAnalysis();
  EXPECT_EQ(test.Analysis.m_pCoxData, nullptr);
  EXPECT_EQ(test.Analysis.m_pCoxFit, nullptr);
  EXPECT_EQ(test.Settings().ModelBuilding, ModelBuildings::AllEffects);
  EXPECT_FALSE(test.Settings().HasRun);
  EXPECT_EQ(test.Settings().Likelihood, Likelihoods::Efron) << "the other choices stay";
  EXPECT_EQ(test.Settings().DesignEffects.size(), 1U);
}

TEST(CCoxPH, TheTextOfALevelComesFromTheTableOrIsTheCode) {
  TestAnalysis test({{"arm", {1, 2}, {{2.0, "drug"}}}});
  test.Factor("arm", {1, 2});
  test.Settings().Coding = Codings::Overparameterized;
  EXPECT_EQ(test.Analysis.GetFactorLevel(1, 1), "1");
  EXPECT_EQ(test.Analysis.GetFactorLevel(1, 2), "drug");
}

}  // namespace
}  // namespace orv
