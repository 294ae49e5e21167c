#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/CAnalysisSupport.h"
#include "standalone/tables/MemoryTable.h"
#include "support/TestHost.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using testing::TestHost;

const char* ProbeText(int id) {
  return id == 7 ? "seven" : "";
}

// The smallest analysis: two stages and one text.
class ProbeAnalysis : public CAnalysisSupport {
 public:
  explicit ProbeAnalysis(void* document = nullptr)
      : CAnalysisSupport(document,
                         {{1, static_cast<StageFunction>(&ProbeAnalysis::First), 2, 0},
                          {2, static_cast<StageFunction>(&ProbeAnalysis::Second), 0, 1}}) {}
  const ModuleInstance& GetLibInstance() const override { return m_module; }
  int GetAnalysisID() const override { return 42; }
  std::string GetAnalysisName() const override { return "probe"; }

  int First() { return 10 + ++m_calls; }
  int Second() { return 20; }

 private:
  ModuleInstance m_module{&ProbeText};
  int m_calls = 0;
};

MemoryTable TableOfThree() {
  MemoryTable table("three.csv");
  TableVariable x;
  x.Name = "x";
  x.Values = {5.0, kMissingCode, 7.0};
  x.Labels = {{5.0, "five"}};
  TableVariable w;
  w.Name = "w";
  w.Values = {2.0, 3.0, 0.5};
  w.MissingCode = -99.0;
  table.AddVariable(x);
  table.AddVariable(w);
  return table;
}

class AnalysisSupport : public ::testing::Test {
 protected:
  AnalysisSupport() : m_table(TableOfThree()), m_host(m_table) { m_analysis.AttachHost(m_host); }

  MemoryTable m_table;
  TestHost m_host;
  ProbeAnalysis m_analysis;
};

TEST_F(AnalysisSupport, KeepsTheDocumentAndServesTheAttachedHost) {
  int document = 0;
  EXPECT_EQ(ProbeAnalysis(&document).m_pDocument, &document);
  EXPECT_EQ(m_analysis.m_pDocument, nullptr);
  EXPECT_EQ(&m_analysis.GetHost(), &m_host);
}

TEST_F(AnalysisSupport, RunsTheFunctionOfAStage) {
  EXPECT_EQ(m_analysis.RunStage(1), 11);
  EXPECT_EQ(m_analysis.RunStage(1), 12);
  EXPECT_EQ(m_analysis.RunStage(2), 20);
}

TEST_F(AnalysisSupport, AStageOutsideTheTableIsRefused) {
  for (const int stage : {0, -1, 3, 100}) {
    EXPECT_EQ(m_analysis.RunStage(stage), -1) << "stage " << stage;
    EXPECT_EQ(m_analysis.FindStage(stage), nullptr) << "stage " << stage;
  }
}

TEST_F(AnalysisSupport, FindsTheRowOfAStage) {
  ASSERT_EQ(m_analysis.Stages().size(), 2U);
  const CAnalysisSupport::StageRow* row = m_analysis.FindStage(2);
  ASSERT_NE(row, nullptr);
  EXPECT_EQ(row->Stage, 2);
  EXPECT_EQ(row->ForwardTo, 0);
  EXPECT_EQ(row->BackTo, 1);
}

TEST_F(AnalysisSupport, AsksTheHostToMoveBetweenStages) {
  m_host.ForwardAnswer = 5;
  EXPECT_EQ(m_analysis.ForwardSequence(1, 2), 5);
  EXPECT_THAT(m_host.Trace, ElementsAre("forward 1 2"));
}

TEST_F(AnalysisSupport, SavesNoContext) {
  int context = 3;
  EXPECT_EQ(m_analysis.WriteContext(&context), 0);
  EXPECT_EQ(m_analysis.ReadContext(&context), 0);
  EXPECT_EQ(context, 3);
}

TEST_F(AnalysisSupport, TakesTextsFromTheModule) {
  EXPECT_EQ(m_analysis.GetResourceString(7), "seven");
  EXPECT_EQ(m_analysis.GetResourceStringDirect(7), "seven");
  EXPECT_EQ(m_analysis.GetResourceString(8), "");
}

TEST_F(AnalysisSupport, ShowsATextOfTheModuleWithKindZero) {
  m_analysis.ShowText(7);
  EXPECT_THAT(m_host.Trace, ElementsAre("dsplst 0: seven"));
}

TEST_F(AnalysisSupport, ShowsAnErrorTextThroughItsOwnInstance) {
  m_analysis.DisplayInstError(nullptr, 7);
  EXPECT_THAT(m_host.Trace, ElementsAre("instance text 7"));
  EXPECT_THAT(m_host.Messages(), ElementsAre("seven"));
}

TEST_F(AnalysisSupport, APressedKeyOrTheHostCancels) {
  struct {
    bool Pressed, External, Cancelled;
  } const cases[] = {{false, false, false}, {true, false, true}, {false, true, true}, {true, true, true}};
  for (const auto& c : cases) {
    m_host.Cancelled = c.Pressed;
    m_host.External = c.External;
    EXPECT_EQ(m_analysis.IsCancelled(), c.Cancelled) << "pressed " << c.Pressed << ", external " << c.External;
  }
}

TEST_F(AnalysisSupport, ATableWithoutSelectionKeepsEveryCase) {
  std::vector<double> values(static_cast<std::size_t>(m_analysis.GetNbVars()) + 1);
  const double expected[][3] = {{1.0, 5.0, 2.0}, {2.0, kMissingCode, 3.0}, {3.0, 7.0, 0.5}};
  for (int caseNumber = 1; caseNumber <= m_analysis.GetInputTable().CaseCount(); ++caseNumber) {
    int hasWeight = -1;
    double weight = -1.0;
    int weightVariable = -1;
    EXPECT_EQ(m_analysis.cstrtw(caseNumber, values.data(), hasWeight, weight, weightVariable), 0)
        << "case " << caseNumber;
    EXPECT_THAT(values, ::testing::ElementsAreArray(expected[caseNumber - 1])) << "case " << caseNumber;
    EXPECT_EQ(hasWeight, 0);
    EXPECT_EQ(weight, 1.0);
    EXPECT_EQ(weightVariable, 0);
  }
}

TEST_F(AnalysisSupport, FetchingACaseRefreshesItsWeight) {
  m_host.InitCommons(m_analysis.m_Commons);
  ASSERT_NE(m_analysis.m_Commons.Weights, nullptr);
  EXPECT_FALSE(m_analysis.m_Commons.Weights->On);
  m_host.SetWeightVariable(2);
  std::vector<double> values(3);
  int hasWeight = 0;
  double weight = 0.0;
  int weightVariable = 0;
  EXPECT_EQ(m_analysis.cstrtw(3, values.data(), hasWeight, weight, weightVariable), 0);
  EXPECT_NE(hasWeight, 0);
  EXPECT_EQ(weight, 0.5);
  EXPECT_EQ(weightVariable, 2);
  EXPECT_TRUE(m_analysis.m_Commons.Weights->On);
  EXPECT_EQ(m_analysis.m_Commons.Weights->Variable, 2);
  EXPECT_EQ(m_analysis.m_Commons.Weights->Weight, 0.5);
}

TEST_F(AnalysisSupport, EachVariableHasItsOwnMissingCode) {
  double code = 0.0;
  m_analysis.getmd5(1, code);
  EXPECT_EQ(code, kMissingCode);
  m_analysis.getmd5(2, code);
  EXPECT_EQ(code, -99.0);
}

TEST_F(AnalysisSupport, TheInputTableLabelsValuesThatHaveATextAndNoOther) {
  const InputTable& table = m_analysis.GetInputTable();
  EXPECT_EQ(table.CaseCount(), 3);
  EXPECT_EQ(table.ValueLabel(1, 5.0), "five");
  EXPECT_EQ(table.ValueLabel(1, 7.0), "");
  EXPECT_EQ(table.ValueLabel(2, 5.0), "");
}

TEST_F(AnalysisSupport, MemoryComesFromTheHostAndGoesBackToIt) {
  void* block = nullptr;
  ASSERT_EQ(m_analysis.AllocMem(&block, 24), 0);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(m_host.LiveBlocks(), 1);
  m_analysis.FreeMem(block);
  EXPECT_EQ(m_host.LiveBlocks(), 0);
  m_host.FailAllocation(1);
  EXPECT_NE(m_analysis.AllocMem(&block, 24), 0);
}

TEST_F(AnalysisSupport, AMessageBoxPassesItsFlagsAndItsParent) {
  int window = 0;
  m_analysis.DspMessageBox(0, &window, "text");
  EXPECT_THAT(m_host.Trace, ElementsAre("box 0: text"));
  EXPECT_EQ(m_host.BoxParent, &window);
}

TEST_F(AnalysisSupport, LocksResultsForAsLongAsTheLockLives) {
  m_analysis.LockResults();
  m_analysis.UnlockResults();
  {
    const ResultsLock lock(m_host);
    m_analysis.dsplst(0, "inside");
  }
  EXPECT_THAT(m_host.Trace, ElementsAre("lock", "unlock", "lock", "dsplst 0: inside", "unlock"));
}

TEST_F(AnalysisSupport, AnErrorOfTheHostUnlocksTheResults) {
  const auto fail = [this] {
    const ResultsLock lock(m_host);
    throw std::runtime_error("no document");
  };
  EXPECT_THROW(fail(), std::runtime_error);
  EXPECT_THAT(m_host.Trace, ElementsAre("lock", "unlock"));
}

}  // namespace
}  // namespace orv
