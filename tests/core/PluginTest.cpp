// The module as a plug-in: loaded at run time, driven through its entry function, its stages and its exported names.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/ScriptFunctions.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using testing::TestAnalysis;
using testing::TestHost;

class Plugin {
 public:
  Plugin() : m_handle(dlopen(ORV_PLUGIN, RTLD_NOW | RTLD_LOCAL)) {}
  ~Plugin() {
    if (m_handle != nullptr) dlclose(m_handle);
  }
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  bool IsLoaded() const { return m_handle != nullptr; }
  template <typename Function>
  Function* Find(const char* name) const {
    return reinterpret_cast<Function*>(dlsym(m_handle, name));
  }

 private:
  void* m_handle;
};

// The file that an address of code or of a table of virtual functions was loaded from.
std::string FileOf(const void* address) {
  Dl_info info{};
  return dladdr(address, &info) != 0 ? info.dli_fname : "";
}

using EntryFunction = CAnalysisSupport*();
using ScriptFunction = int(ScriptVariant*);
// Members of the analysis are exported under their own names; they are called with the object first.
using RunMember = int(CCoxPH*, StartupFields&, void*);
using TableMember = void(CCoxPH*);
using EstimateMember = void(CCoxPH*, double);

constexpr const char* kRunFromStartup = "_ZN3orv6CCoxPH14RunFromStartupERNS_13StartupFieldsEPv";
constexpr const char* kRunCoxRegression = "_ZN3orv6CCoxPH16RunCoxRegressionEPv";
constexpr const char* kCheckInputs = "_ZN3orv6CCoxPH25CheckInputsForCorrectnessEPv";
constexpr const char* kSummary = "_ZN3orv6CCoxPH24CreateSummarySpreadsheetEv";
constexpr const char* kNoCovariateSummary = "_ZN3orv6CCoxPH35CreateNoCovariateSummarySpreadsheetEv";
constexpr const char* kEstimates = "_ZN3orv6CCoxPH34CreateParameterEstimateSpreadsheetEd";

class Dialog : public AutomationObject {
 public:
  explicit Dialog(CAnalysisSupport* analysis) : m_analysis(analysis) {}
  CAnalysisSupport* Analysis() override { return m_analysis; }

 private:
  CAnalysisSupport* m_analysis;
};

TestAnalysis LinkedAnalysis() {
  return TestAnalysis({{"x", {1, 4, 2, 5, 3, 7, 6, 2, 8, 1}},
                       {"f", {1, 2, 3, 1, 2, 3, 1, 2, 3, 1}},
                       {"w", {1, 2, 1, 1, 3, 1, 2, 1, 1, 0}},
                       {"time", {5, 3, 8, 1, 4, 2, 7, 6, 3, 9}},
                       {"status", {1, 1, 0, 1, 1, 0, 1, 1, 1, 1}}});
}

class PluginTest : public ::testing::Test {
 protected:
  PluginTest() : m_linked(LinkedAnalysis()), m_host(m_linked.Table) {
    m_linked.Covariates({"x"}).Factor("f", {1, 2, 3}).Time({"time"}).Status("status").Weights("w").DefaultDesign();
    m_linked.Settings().Likelihood = Likelihoods::Efron;
    m_host.SetWeightVariable(m_linked.Number("w"));
  }
  void SetUp() override { ASSERT_TRUE(m_plugin.IsLoaded()) << dlerror(); }

  // An analysis of the plug-in that this host serves.
  std::unique_ptr<CAnalysisSupport> NewAnalysis() {
    auto* entry = m_plugin.Find<EntryFunction>("Qvd6NewAnalysis");
    if (entry == nullptr) return nullptr;
    std::unique_ptr<CAnalysisSupport> analysis(entry());
    if (analysis) analysis->AttachHost(m_host);
    return analysis;
  }

  Plugin m_plugin;
  TestAnalysis m_linked;
  TestHost m_host;
};

TEST_F(PluginTest, ExportsTheEntryFunctionTheScriptFunctionsAndTheMembers) {
  for (const char* name : {"Qvd6NewAnalysis", "GetNumberOfDesignCoefficients", "GetNumberOfFactors",
                           "GetDesignNumberOfCoefficientsBeforeRun", kRunFromStartup, kRunCoxRegression, kCheckInputs,
                           kSummary, kNoCovariateSummary, kEstimates}) {
    void* address = m_plugin.Find<void>(name);
    ASSERT_NE(address, nullptr) << name;
    EXPECT_EQ(FileOf(address), ORV_PLUGIN) << name;
  }
}

TEST_F(PluginTest, TheEntryFunctionMakesAnAnalysisOfThePlugin) {
  const std::unique_ptr<CAnalysisSupport> analysis = NewAnalysis();
  ASSERT_NE(analysis, nullptr);
  const void* virtualFunctions = *reinterpret_cast<void* const*>(analysis.get());
  EXPECT_EQ(FileOf(virtualFunctions), ORV_PLUGIN);
  EXPECT_EQ(analysis->GetAnalysisID(), 6784);
  EXPECT_EQ(analysis->GetAnalysisName(), "Cox Proportional Hazards Regression.");
  EXPECT_EQ(analysis->m_pDocument, nullptr);
}

TEST_F(PluginTest, TwoAnalysesDoNotShareTheirOptions) {
  const std::unique_ptr<CAnalysisSupport> first = NewAnalysis();
  const std::unique_ptr<CAnalysisSupport> second = NewAnalysis();
  ASSERT_TRUE(first && second);
  static_cast<CCoxPH&>(*first).m_Settings.MaxIterations = 7;
  EXPECT_EQ(static_cast<CCoxPH&>(*second).m_Settings.MaxIterations, 50);
}

void ExpectSameSheet(const testing::RawSheet& a, const testing::RawSheet& b) {
  EXPECT_EQ(a.Fixed.RowCount, b.Fixed.RowCount);
  EXPECT_EQ(a.Fixed.ColumnCount, b.Fixed.ColumnCount);
  ASSERT_EQ(a.Cells.size(), b.Cells.size());
  EXPECT_EQ(std::memcmp(a.Cells.data(), b.Cells.data(), a.Cells.size() * sizeof(double)), 0);
  EXPECT_EQ(a.TextCells, b.TextCells);
  EXPECT_EQ(a.ColumnNames, b.ColumnNames);
  EXPECT_EQ(a.RowNames, b.RowNames);
  EXPECT_EQ(a.HighlightBits, b.HighlightBits);
  EXPECT_EQ(a.Title1, b.Title1);
}

// The host walks the stage table; its two dialogs are played by the test, which presses OK and asks for two tables.
TEST_F(PluginTest, RunsAWholeAnalysisWithTheNumbersOfTheLinkedModule) {
  ASSERT_EQ(m_linked.Run(), 0);
  m_linked.Analysis.CreateSummarySpreadsheet();
  m_linked.Analysis.CreateParameterEstimateSpreadsheet(95.0);

  auto* run = m_plugin.Find<RunMember>(kRunFromStartup);
  auto* summary = m_plugin.Find<TableMember>(kSummary);
  auto* estimates = m_plugin.Find<EstimateMember>(kEstimates);
  ASSERT_TRUE(run != nullptr && summary != nullptr && estimates != nullptr);

  const std::unique_ptr<CAnalysisSupport> analysis = NewAnalysis();
  ASSERT_NE(analysis, nullptr);
  auto& loaded = static_cast<CCoxPH&>(*analysis);
  StartupFields fields = m_linked.Fields;
  int runResult = -1;
  m_host.OnDialog = [&](const std::string& dialog) {
    if (dialog == "CDefineTask") {
      loaded.m_Settings = m_linked.Settings();
      loaded.m_Settings.HasRun = false;
      runResult = run(&loaded, fields, nullptr);
    } else {
      summary(&loaded);
      estimates(&loaded, 95.0);
    }
    return true;
  };

  std::vector<int> visited;
  std::vector<int> results;
  for (int stage = 100; stage != 0;) {
    visited.push_back(stage);
    results.push_back(analysis->RunStage(stage));
    int next = 0;
    for (const CAnalysisSupport::StageRow& row : analysis->Stages()) {
      if (row.Stage == stage) next = row.ForwardTo;
    }
    stage = next;
  }
  EXPECT_THAT(visited, ElementsAre(100, 101, 102));
  EXPECT_THAT(results, ElementsAre(1, 0, 0));
  ASSERT_EQ(runResult, 0);

  ASSERT_TRUE(loaded.m_pCoxFit && loaded.m_pCoxData);
  EXPECT_TRUE(loaded.m_pCoxFit->m_Converged);
  EXPECT_EQ(loaded.m_pCoxData->ValidCaseCount, 9U) << "a case of weight 0 is left out, so the host's weights are used";
  EXPECT_EQ(loaded.m_pCoxFit->m_BetaHistory, m_linked.Fit().m_BetaHistory);
  EXPECT_EQ(loaded.m_pCoxFit->m_LogLikHistory, m_linked.Fit().m_LogLikHistory);
  EXPECT_EQ(loaded.m_pCoxFit->m_Covariance, m_linked.Fit().m_Covariance);
  EXPECT_EQ(loaded.m_pCoxFit->m_NullLogLik, m_linked.Fit().m_NullLogLik);
  EXPECT_EQ(loaded.m_pCoxFit->m_ScoreStatistic, m_linked.Fit().m_ScoreStatistic);

  ASSERT_EQ(m_host.Sheets.size(), m_linked.Host.Sheets.size());
  ASSERT_EQ(m_host.Sheets.size(), 2U);
  for (std::size_t k = 0; k < m_host.Sheets.size(); ++k) ExpectSameSheet(m_host.Sheets[k], m_linked.Host.Sheets[k]);
  EXPECT_TRUE(m_host.Messages().empty());
  EXPECT_EQ(m_host.LiveBlocks(), 0);
}

TEST_F(PluginTest, AnswersScriptsByItsExportedFunctions) {
  const std::unique_ptr<CAnalysisSupport> analysis = NewAnalysis();
  ASSERT_NE(analysis, nullptr);
  ASSERT_EQ(analysis->RunStage(100), 1);
  static_cast<CCoxPH&>(*analysis).m_Settings = m_linked.Settings();
  Dialog dialog(analysis.get());
  ScriptVariant variant{&dialog};
  ScriptVariant empty;
  struct {
    const char* Name;
    int Result;
  } const cases[] = {{"GetNumberOfFactors", 1},
                     {"GetNumberOfDesignCoefficients", 0},
                     {"GetDesignNumberOfCoefficientsBeforeRun", 3},
                     {"GetNumberOfDesignCoefficients", 3}};
  for (const auto& c : cases) {
    auto* function = m_plugin.Find<ScriptFunction>(c.Name);
    ASSERT_NE(function, nullptr) << c.Name;
    EXPECT_EQ(function(&variant), c.Result) << c.Name;
    EXPECT_EQ(function(&empty), 2) << c.Name;
  }
  EXPECT_EQ(m_host.CaseFetches, 0);
}

TEST_F(PluginTest, ShowsItsMessagesThroughTheHost) {
  const std::unique_ptr<CAnalysisSupport> analysis = NewAnalysis();
  ASSERT_NE(analysis, nullptr);
  ASSERT_EQ(analysis->RunStage(100), 1);
  auto* run = m_plugin.Find<RunMember>(kRunFromStartup);
  ASSERT_NE(run, nullptr);
  StartupFields fields = m_linked.Fields;
  EXPECT_EQ(run(static_cast<CCoxPH*>(analysis.get()), fields, nullptr), 1);
  EXPECT_THAT(m_host.Messages(), ElementsAre("Please specify a censoring indicator variable."));
}

TEST_F(PluginTest, CanBeLoadedAgainAfterItsAnalysesAreGone) {
  for (int time = 0; time < 3; ++time) {
    const Plugin again;
    ASSERT_TRUE(again.IsLoaded());
    auto* entry = again.Find<EntryFunction>("Qvd6NewAnalysis");
    ASSERT_NE(entry, nullptr);
    const std::unique_ptr<CAnalysisSupport> analysis(entry());
    ASSERT_NE(analysis, nullptr);
    EXPECT_EQ(analysis->GetAnalysisID(), 6784);
  }
}

}  // namespace
}  // namespace orv
