#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "core/SettingsFields.h"
#include "core/StringTable.h"
#include "core/VariableSelection.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::ChangedFields;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TestAnalysis;

using Names = std::set<std::string>;
using Symbols = std::map<std::string, std::string>;

std::vector<testing::TestColumn> SomeColumns() {
  const std::vector<double> any = {1, 2};
  return {{"x", any},     {"y", any},    {"f", any},      {"g", any},  {"time", any},
          {"start", any}, {"stop", any}, {"status", any}, {"id", any}, {"site", any}};
}

class Selection : public ::testing::Test {
 protected:
  Selection() : m_test(SomeColumns()) {}
  CoxSettings& Settings() { return m_test.Settings(); }
  CCoxPH& Analysis() { return m_test.Analysis; }
  // The id of the message shown, 0 when there was none.
  int Message() {
    const std::vector<std::string> trace = m_test.Host.Trace;
    m_test.Host.Trace.clear();
    if (trace.empty()) return 0;
    EXPECT_EQ(trace.size(), 1U);
    EXPECT_EQ(trace[0].substr(0, 10), "dsplst 0: ");
    return FindModuleTextId(trace[0].substr(10));
  }

  TestAnalysis m_test;
};

// ---- Checks at the moment of choosing -----------------------------------------------------------------------------

TEST_F(Selection, OneTwoOrSixVariablesMakeASurvivalTime) {
  for (const int inputType : {InputTypes::SurvivalTime, InputTypes::TimeDependent}) {
    Settings().InputType = static_cast<std::int16_t>(inputType);
    for (std::int16_t count = 0; count <= 8; ++count) {
      Settings().SurvivalVariableCount = count;
      const bool valid = count == 1 || count == 2 || count == 6;
      EXPECT_EQ(CheckSurvivalTimeSelection(Analysis(), {1, 0, 0}), valid ? 0 : 1) << count << " variables";
      EXPECT_EQ(Message(), valid ? 0 : 10026) << count << " variables";
    }
  }
}

TEST_F(Selection, FewerThan2012PredictorsCanBeChosen) {
  struct {
    std::int16_t Covariates, Factors;
    bool Valid;
  } const cases[] = {{0, 0, true},     {2011, 0, true},  {0, 2011, true},     {1000, 1011, true},
                     {2012, 0, false}, {0, 2012, false}, {1000, 1012, false}, {32000, 32000, false}};
  for (const auto& c : cases) {
    const std::string what = std::to_string(c.Covariates) + " covariates, " + std::to_string(c.Factors) + " factors";
    Settings() = CoxSettings();
    Settings().SurvivalVariableCount = 1;
    Settings().CovariateCount = c.Covariates;
    Settings().FactorCount = c.Factors;
    EXPECT_EQ(CheckSurvivalTimeSelection(Analysis(), {1, 0, 0}), c.Valid ? 0 : 1) << what;
    EXPECT_EQ(Message(), c.Valid ? 0 : 10010) << what;

    Settings().StartVariableCount = Settings().StopVariableCount = Settings().CensorVariableCount = 1;
    Settings().CovariateCount = c.Covariates;
    Settings().FactorCount = c.Factors;
    EXPECT_EQ(CheckIntervalSelection(Analysis()), c.Valid ? 0 : 1) << what;
    EXPECT_EQ(Message(), c.Valid ? 0 : 10010) << what;
  }
}

TEST_F(Selection, ARefusedSelectionPutsTheCountsBack) {
  Settings().SurvivalVariableCount = 2;
  Settings().CovariateCount = 3;
  Settings().FactorCount = 1;
  const SelectionCounts previous = CountsOf(Analysis());
  Settings().SurvivalVariableCount = 3;
  Settings().CovariateCount = 5;
  Settings().FactorCount = 4;
  EXPECT_EQ(CheckSurvivalTimeSelection(Analysis(), previous), 1);
  EXPECT_EQ(Message(), 10026);
  EXPECT_EQ(Settings().SurvivalVariableCount, 2);
  EXPECT_EQ(Settings().CovariateCount, 3);
  EXPECT_EQ(Settings().FactorCount, 1);

  Settings().SurvivalVariableCount = 6;
  Settings().CovariateCount = 2012;
  EXPECT_EQ(CheckSurvivalTimeSelection(Analysis(), previous), 1);
  EXPECT_EQ(Message(), 10010);
  EXPECT_EQ(Settings().SurvivalVariableCount, 2);
  EXPECT_EQ(Settings().CovariateCount, 3);
}

TEST_F(Selection, AnAcceptedSelectionKeepsItsCounts) {
  Settings().SurvivalVariableCount = 6;
  Settings().CovariateCount = 5;
  EXPECT_EQ(CheckSurvivalTimeSelection(Analysis(), {1, 0, 0}), 0);
  EXPECT_EQ(Settings().SurvivalVariableCount, 6);
  EXPECT_EQ(Settings().CovariateCount, 5);
}

TEST_F(Selection, ASurvivalTimeIsLookedAtBeforeTheNumberOfPredictors) {
  Settings().SurvivalVariableCount = 0;
  Settings().CovariateCount = 2012;
  EXPECT_EQ(CheckSurvivalTimeSelection(Analysis(), {1, 0, 0}), 1);
  EXPECT_EQ(Message(), 10026);
}

TEST_F(Selection, AnIntervalNeedsStartStopAndStatusInThisOrder) {
  Settings().CovariateCount = 2012;
  EXPECT_EQ(CheckIntervalSelection(Analysis()), 1);
  EXPECT_EQ(Message(), 10014);
  Settings().StartVariableCount = 1;
  EXPECT_EQ(CheckIntervalSelection(Analysis()), 1);
  EXPECT_EQ(Message(), 10015);
  Settings().StopVariableCount = 1;
  EXPECT_EQ(CheckIntervalSelection(Analysis()), 1);
  EXPECT_EQ(Message(), 10009);
  Settings().CensorVariableCount = 1;
  EXPECT_EQ(CheckIntervalSelection(Analysis()), 1);
  EXPECT_EQ(Message(), 10010);
  Settings().CovariateCount = 2011;
  EXPECT_EQ(CheckIntervalSelection(Analysis()), 0);
  EXPECT_EQ(Message(), 0);
}

// ---- The subject --------------------------------------------------------------------------------------------------

TEST_F(Selection, ASubjectMustHaveNoOtherRole) {
  m_test.Covariates({"x"}).Factor("f", {1, 2}).Strata("g", {1, 2}).Status("status");
  Settings().SurvivalVariables = {m_test.Number("time"), m_test.Number("stop")};
  Settings().SurvivalVariableCount = 1;
  Settings().StartVariable = m_test.Number("start");
  Settings().StopVariable = m_test.Number("stop");
  struct {
    int InputType;
    const char* Name;
    int Message;
  } const cases[] = {
      {1, "time", 10111}, {3, "time", 10111}, {2, "time", 0},  {1, "start", 0},  {2, "start", 10111},
      {2, "stop", 10111}, {1, "stop", 0},  // a survival variable beyond the number chosen has no role
      {1, "g", 10112},    {2, "g", 10112},    {1, "f", 10113}, {2, "f", 10113},  {1, "x", 10114},
      {3, "x", 10114},    {1, "id", 0},       {2, "id", 0},    {1, "status", 0},
  };
  for (const auto& c : cases) {
    Settings().InputType = static_cast<std::int16_t>(c.InputType);
    Settings().SubjectVariable = m_test.Number("site");
    Settings().SubjectVariableCount = 1;
    const int result = SelectSubjectVariable(Analysis(), m_test.Number(c.Name));
    EXPECT_EQ(Message(), c.Message) << c.Name << ", input type " << c.InputType;
    EXPECT_EQ(result, c.Message != 0 ? 1 : 0) << c.Name << ", input type " << c.InputType;
    EXPECT_EQ(Settings().SubjectVariable, m_test.Number(c.Message != 0 ? "site" : c.Name))
        << c.Name << ", input type " << c.InputType;
    EXPECT_EQ(Settings().SubjectVariableCount, 1);
  }
}

TEST_F(Selection, TheRolesOfASubjectAreLookedAtInTheirOrder) {
  // One variable with every role; they are taken away one after the other.
  m_test.Time({"id"}).Strata("id", {1, 2}).Factor("id", {1, 2}).Covariates({"id"});
  const int id = m_test.Number("id");
  EXPECT_EQ(SelectSubjectVariable(Analysis(), id), 1);
  EXPECT_EQ(Message(), 10111);
  m_test.Time({"time"});
  EXPECT_EQ(SelectSubjectVariable(Analysis(), id), 1);
  EXPECT_EQ(Message(), 10112);
  Settings().StrataVariableCount = 0;
  EXPECT_EQ(SelectSubjectVariable(Analysis(), id), 1);
  EXPECT_EQ(Message(), 10113);
  Settings().FactorVariables.clear();
  EXPECT_EQ(SelectSubjectVariable(Analysis(), id), 1);
  EXPECT_EQ(Message(), 10114);
  Settings().CovariateVariables.clear();
  EXPECT_EQ(SelectSubjectVariable(Analysis(), id), 0);
  EXPECT_EQ(Message(), 0);
}

TEST_F(Selection, NoSubjectCanBeChosen) {
  Settings().SubjectVariable = 3;
  Settings().SubjectVariableCount = 1;
  EXPECT_EQ(SelectSubjectVariable(Analysis(), 0), 0);
  EXPECT_EQ(Settings().SubjectVariable, 0);
  EXPECT_EQ(Settings().SubjectVariableCount, 0);
}

TEST_F(Selection, TimeDependentCovariatesExcludeTheRobustVarianceAndItsSubject) {
  for (const int inputType : {1, 2, 3}) {
    Settings().InputType = static_cast<std::int16_t>(inputType);
    Settings().UseRobustVariance = true;
    Settings().SubjectVariable = 3;
    Settings().SubjectVariableCount = 1;
    const CoxSettings before = Settings();
    DropRobustForTimeDependent(Analysis());
    const Names expected =
        inputType == 3 ? Names{"UseRobustVariance", "SubjectVariable", "SubjectVariableCount"} : Names{};
    EXPECT_EQ(ChangedFields(before, Settings()), expected) << "input type " << inputType;
  }
}

// ---- The default design -------------------------------------------------------------------------------------------

TEST_F(Selection, TheDefaultDesignHoldsEveryPredictorCovariatesFirst) {
  m_test.Factor("f", {1, 2}).Covariates({"y", "x"}).Factor("g", {1, 2});
  BuildDefaultDesign(Analysis());
  EXPECT_THAT(Settings().DesignEffects, ElementsAre("y", "x", "f", "g"));
  const Symbols terms = {{"x", "v1"}, {"y", "v2"}, {"f", "v3"}, {"g", "v4"}};
  EXPECT_EQ(Settings().EffectSymbols, terms);
  EXPECT_EQ(Settings().FullEffectSymbols, terms);
  EXPECT_EQ(Settings().VariableSymbols, terms);
}

TEST_F(Selection, WithTimeDependentCovariatesTheyComeLast) {
  m_test.Covariates({"x"}).Factor("f", {1, 2});
  Settings().TimeDependentCovariateNames = {" late <b>", "early"};
  for (const int inputType : {1, 2}) {
    Settings().InputType = static_cast<std::int16_t>(inputType);
    BuildDefaultDesign(Analysis());
    EXPECT_THAT(Settings().DesignEffects, ElementsAre("x", "f")) << "input type " << inputType;
  }
  Settings().InputType = InputTypes::TimeDependent;
  BuildDefaultDesign(Analysis());
  EXPECT_THAT(Settings().DesignEffects, ElementsAre("x", "f", " late <b>", "early")) << "names as they stand";
  const Symbols terms = {{"x", "v1"}, {"f", "v3"}, {" late <b>", "TIME_EXPRESSION1"}, {"early", "TIME_EXPRESSION2"}};
  EXPECT_EQ(Settings().EffectSymbols, terms);
  EXPECT_EQ(Settings().FullEffectSymbols, terms);
  EXPECT_EQ(Settings().VariableSymbols,
            (Symbols{{"x", "v1"}, {"f", "v3"}, {" late <b>", "TIME_EXPRESSION"}, {"early", "TIME_EXPRESSION"}}));
}

TEST_F(Selection, TheDefaultDesignReplacesTheDesignBefore) {
  m_test.Covariates({"x"});
  const Symbols old = {{"old", "v9"}};
  Settings().DesignEffects = {"old"};
  Settings().EffectSymbols = Settings().FullEffectSymbols = Settings().VariableSymbols = old;
  BuildDefaultDesign(Analysis());
  EXPECT_THAT(Settings().DesignEffects, ElementsAre("x"));
  const Symbols terms = {{"x", "v1"}};
  EXPECT_EQ(Settings().EffectSymbols, terms);
  EXPECT_EQ(Settings().FullEffectSymbols, terms);
  EXPECT_EQ(Settings().VariableSymbols, terms);
}

TEST_F(Selection, WithoutPredictorsTheDefaultDesignIsEmpty) {
  BuildDefaultDesign(Analysis());
  EXPECT_TRUE(Settings().DesignEffects.empty());
  EXPECT_TRUE(Settings().EffectSymbols.empty());
}

TEST_F(Selection, EffectsHaveTheNamesThatTheUserSees) {
  TestAnalysis test({{"  padded name  ", {1, 2}}, {"plain", {1, 2}}});
  Settings() = CoxSettings();
  test.Settings().CovariateVariables = {1, 2};
  test.Settings().CovariateCount = 2;
  BuildDefaultDesign(test.Analysis);
  EXPECT_THAT(test.Settings().DesignEffects, ElementsAre("padded name", "plain"));
  EXPECT_EQ(DisplayName(test.Analysis, 1), "padded name");
}

TEST_F(Selection, TheLargestCodeOfAFactorIsItsReference) {
  m_test.Factor("f", {3, 9, 1}).Factor("g", {-5, -7}).Factor("x", {4, 8, 8});
  EXPECT_THAT(Settings().ReferenceCodes, ElementsAre(9, -5, 8));
  EXPECT_THAT(Settings().ReferenceCodeIndex, ElementsAre(2, 1, 2));
}

}  // namespace
}  // namespace orv
