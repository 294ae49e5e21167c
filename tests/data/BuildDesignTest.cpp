#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "data/CCoxData.h"
#include "data/EffectTerm.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using testing::TestAnalysis;
using testing::TestColumn;

using Effects = std::vector<std::pair<std::string, std::string>>;
using Flags = std::vector<bool>;

// Variables 1 to 12: x y z are covariates, f has codes 1 2 3, g has codes 1 2, h has codes 5 6 7 8.
std::vector<TestColumn> SomeColumns() {
  const std::vector<double> any = {1, 2, 3, 4, 5};
  return {{"x", any},    {"y", any},     {"z", any},      {"f", any},       {"g", any},    {"h", any},
          {"time", any}, {"start", any}, {"status", any}, {"stratum", any}, {"site", any}, {"entry", any}};
}

class BuildDesign : public ::testing::Test {
 protected:
  BuildDesign() : m_test(SomeColumns()) {
    m_test.Covariates({"x", "y", "z"}).Factor("f", {1, 2, 3}).Factor("g", {1, 2}).Factor("h", {5, 6, 7, 8});
    m_test.Time({"time"}).Status("status");
  }
  CoxSettings& Settings() { return m_test.Settings(); }
  const CCoxData& Build(const Effects& effects) {
    m_test.Design(effects);
    return Build();
  }
  const CCoxData& Build() {
    m_test.Analysis.ReplaceData(std::make_unique<CCoxData>(&m_test.Analysis));
    m_test.Data().BuildDesign(Settings().InputType);
    return m_test.Data();
  }
  // The levels of the design columns, such as "1/1 1/2 2/1".
  static std::string Levels(const CCoxData& data) {
    std::ostringstream text;
    for (std::uint32_t c = 0; c < data.DesignColumnCount; ++c) {
      if (c > 0) text << ' ';
      const auto& levels = data.DesignColumns[c].LevelIndex;
      for (std::size_t k = 0; k < levels.size(); ++k) text << (k > 0 ? "/" : "") << levels[k];
    }
    return text.str();
  }
  static Flags FixedColumns(const CCoxData& data) {
    Flags fixed;
    for (std::uint32_t c = 0; c < data.DesignColumnCount; ++c) fixed.push_back(data.DesignColumns[c].Fixed);
    return fixed;
  }

  TestAnalysis m_test;
};

TEST_F(BuildDesign, EachCodingHasItsNumberOfColumnsAndItsOrderOfLevels) {
  struct {
    const char* What;
    const char* Term;
    std::string SigmaAndReference, Overparameterized;
  } const cases[] = {
      {"a covariate", "v1", "1", "1"},
      {"a factor of 3 codes", "v4", "1 2", "1 2 3"},
      {"a factor of 2 codes", "v5", "1", "1 2"},
      {"a product of covariates", "v1*v2", "1/1", "1/1"},
      {"a product of three covariates", "v1*v2*v3", "1/1/1", "1/1/1"},
      {"a covariate by a factor", "v1*v4", "1/1 1/2", "1/1 1/2 1/3"},
      {"a factor by a covariate", "v4*v1", "1/1 2/1", "1/1 2/1 3/1"},
      {"factors of 3 and 2 codes", "v4*v5", "1/1 2/1", "1/1 1/2 2/1 2/2 3/1 3/2"},
      {"factors of 2 and 3 codes", "v5*v4", "1/1 1/2", "1/1 1/2 1/3 2/1 2/2 2/3"},
      {"factors of 3 and 4 codes", "v4*v6", "1/1 1/2 1/3 2/1 2/2 2/3",
       "1/1 1/2 1/3 1/4 2/1 2/2 2/3 2/4 3/1 3/2 3/3 3/4"},
      {"a covariate between factors", "v4*v1*v5", "1/1/1 2/1/1", "1/1/1 1/1/2 2/1/1 2/1/2 3/1/1 3/1/2"},
      {"a nested factor", "v5(v4)", "1/1 1/2", "1/1 1/2 1/3 2/1 2/2 2/3"},
  };
  for (const auto& c : cases) {
    for (const int coding : {Codings::SigmaRestricted, Codings::Reference, Codings::Overparameterized}) {
      Settings().Coding = static_cast<std::int16_t>(coding);
      const CCoxData& data = Build({{"effect", c.Term}});
      const std::string& expected = coding == Codings::Overparameterized ? c.Overparameterized : c.SigmaAndReference;
      // Behind the closing bracket of a nested term stands nothing, and nothing is added for it.
      EXPECT_EQ(Levels(data), expected) << c.What << ", coding " << coding;
    }
  }
}

TEST_F(BuildDesign, AnEffectKnowsItsFirstAndLastColumn) {
  Settings().Coding = Codings::Reference;
  const CCoxData& data = Build({{"x", "v1"}, {"f", "v4"}, {"x*f", "v1*v4"}, {"f*h", "v4*v6"}, {"y", "v2"}});
  EXPECT_THAT(data.EffectFirstColumn, ElementsAre(1, 2, 4, 6, 12));
  EXPECT_THAT(data.EffectLastColumn, ElementsAre(1, 3, 5, 11, 12));
  EXPECT_EQ(data.DesignColumnCount, 12U);
  EXPECT_EQ(data.CoefficientCount, 12U);
  EXPECT_EQ(data.EffectCount, 5U);
  EXPECT_EQ(data.EffectInModel, Flags(5, true));
  EXPECT_EQ(data.EffectFixed, Flags(5, false));
}

TEST_F(BuildDesign, ARecordDescribesItsColumn) {
  const CCoxData& data = Build({{"age", "v1"}, {"age by arm", "v1*v4"}});
  const CoxDesignColumn& covariate = data.DesignColumns[0];
  EXPECT_EQ(covariate.EffectName, "age");
  EXPECT_EQ(covariate.EffectTerm, "v1");
  EXPECT_EQ(covariate.VariableCount, 1);
  EXPECT_THAT(covariate.Variables, ElementsAre(1));
  EXPECT_THAT(covariate.VariableRoles, ElementsAre(0));
  EXPECT_THAT(covariate.LevelIndex, ElementsAre(1));
  for (std::size_t k = 1; k <= 2; ++k) {
    const CoxDesignColumn& column = data.DesignColumns[k];
    EXPECT_EQ(column.EffectName, "age by arm");
    EXPECT_EQ(column.EffectTerm, "v1*v4");
    EXPECT_EQ(column.VariableCount, 2);
    EXPECT_THAT(column.Variables, ElementsAre(1, 4));
    EXPECT_THAT(column.VariableRoles, ElementsAre(0, 1));
    EXPECT_EQ(column.ColumnInEffect, static_cast<int>(k));
    EXPECT_FALSE(column.Dropped);
  }
}

TEST_F(BuildDesign, ADesignWithoutEffectsHasNoColumns) {
  const CCoxData& data = Build(Effects{});
  EXPECT_EQ(data.DesignColumnCount, 0U);
  EXPECT_EQ(data.CoefficientCount, 0U);
  EXPECT_TRUE(data.EffectInModel.empty());
  EXPECT_EQ(data.SurvivalColumn, 0);
}

// Names and terms are edited in step; a name without a term is read as the first term of the map.
TEST_F(BuildDesign, ANameWithoutATermTakesTheFirstTermOfTheMap) {
  m_test.Design({{"beta", "v2"}, {"alpha", "v1*v3"}});
  Settings().DesignEffects = {"unknown"};
  const CCoxData& data = Build();
  ASSERT_EQ(data.DesignColumnCount, 1U);
  EXPECT_EQ(data.DesignColumns[0].EffectName, "unknown");
  EXPECT_EQ(data.DesignColumns[0].EffectTerm, "v1*v3");
  EXPECT_THAT(data.DesignColumns[0].Variables, ElementsAre(1, 3));
}

TEST_F(BuildDesign, GathersTheVariablesThatItUsesInTheirOrder) {
  Settings().DesignFactorSet = {{9, 1}};
  Build({{"h", "v6"}, {"z*f", "v3*v4"}, {"x", "v1"}, {"f", "v4"}});
  std::vector<int> variables;
  std::vector<int> roles;
  for (const auto& [variable, role] : Settings().DesignFactorSet) {
    variables.push_back(variable);
    roles.push_back(role);
  }
  EXPECT_THAT(variables, ElementsAre(1, 3, 4, 6));
  EXPECT_THAT(roles, ElementsAre(0, 0, 1, 1));
}

// ---- Fixed parameters ---------------------------------------------------------------------------------------------

Effects TenEffects() {
  Effects effects;
  const char* terms[] = {"v1", "v2", "v3", "v1*v2", "v1*v3", "v2*v3", "v1*v1", "v2*v2", "v3*v3", "v1*v2*v3"};
  for (const char* term : terms) effects.emplace_back(term, term);
  return effects;
}

TEST_F(BuildDesign, BitFourHoldsTheFifthOfTenEffects) {
  Settings().HasFixedParameters = true;
  Settings().FixedParameterFlags = {false, false, false, false, true, false, false, false, false, false};
  const CCoxData& data = Build(TenEffects());
  const Flags expected = {false, false, false, false, true, false, false, false, false, false};
  EXPECT_EQ(FixedColumns(data), expected);
  EXPECT_EQ(data.EffectFixed, expected);
  EXPECT_EQ(data.FixedEffectCount, 1U);
  EXPECT_FALSE(data.FixedFlagConflict);
}

TEST_F(BuildDesign, TheFlagsDoNothingWithoutFixedParameters) {
  Settings().HasFixedParameters = false;
  Settings().FixedParameterFlags = Flags(10, true);
  const CCoxData& data = Build(TenEffects());
  EXPECT_EQ(FixedColumns(data), Flags(10, false));
  EXPECT_EQ(data.EffectFixed, Flags(10, false));
  EXPECT_EQ(data.FixedEffectCount, 0U);
}

// Bit i belongs to effect i, though the columns before it may be more than i.
TEST_F(BuildDesign, TheFlagsCountEffectsAndNotColumns) {
  Settings().HasFixedParameters = true;
  Settings().FixedParameterFlags = {false, true, false, true};
  const CCoxData& data = Build({{"f", "v4"}, {"x", "v1"}, {"y", "v2"}, {"h", "v6"}});
  EXPECT_EQ(FixedColumns(data), (Flags{false, false, true, false, true, true, true}));
  EXPECT_EQ(data.EffectFixed, (Flags{false, true, false, true}));
  EXPECT_EQ(data.FixedEffectCount, 2U);
}

TEST_F(BuildDesign, FewerFlagsThanEffectsHoldNoneOfTheRest) {
  Settings().HasFixedParameters = true;
  Settings().FixedParameterFlags = {true};
  EXPECT_EQ(Build({{"x", "v1"}, {"f", "v4"}}).EffectFixed, (Flags{true, false}));
}

TEST_F(BuildDesign, TheStopTimeTakesTheFlagBehindThoseOfTheEffects) {
  m_test.Interval("start", "time");
  Settings().HasFixedParameters = true;
  for (const bool flag : {false, true}) {
    Settings().FixedParameterFlags = {false, false, flag};
    const CCoxData& data = Build({{"x", "v1"}, {"y", "v2"}});
    EXPECT_EQ(data.DesignColumns[static_cast<std::size_t>(data.StopColumn)].Fixed, flag);
    EXPECT_FALSE(data.DesignColumns[static_cast<std::size_t>(data.StartColumn)].Fixed);
    EXPECT_EQ(data.FixedEffectCount, 0U);
  }
  Settings().HasFixedParameters = false;
  const CCoxData& data = Build();
  EXPECT_FALSE(data.DesignColumns[static_cast<std::size_t>(data.StopColumn)].Fixed);
}

// ---- Layout -------------------------------------------------------------------------------------------------------

// What each column of the case table is, from the left.
std::string Layout(const CCoxData& data) {
  std::vector<std::string> names(data.ColumnCount);
  for (std::uint32_t c = 0; c < data.DesignColumnCount; ++c) names[c] = "design";
  const auto name = [&](std::int32_t column, const char* text) {
    if (column >= 0) names.at(static_cast<std::size_t>(column)) += text;
  };
  name(data.SurvivalColumn, "survival");
  name(data.StartColumn, "start");
  name(data.StopColumn, "stop");
  name(data.EntryTimeColumn, "entry");
  name(data.StratumColumn, "stratum");
  name(data.SubjectColumn, "subject");
  name(data.WeightColumn, "weight");
  name(data.StatusColumn, "status");
  name(data.CaseNumberColumn, "case");
  name(data.ExcludedColumn, "excluded");
  for (std::uint32_t k = 0; k < data.TimeVariableCount; ++k) {
    name(data.TimeVariableColumn + static_cast<std::int32_t>(k), "read");
  }
  std::string text;
  for (const std::string& each : names) text += each + " ";
  return text;
}

TEST_F(BuildDesign, LaysTheColumnsOut) {
  struct {
    const char* What;
    int InputType;
    bool Entry, Strata, Subject;
    int Read;  // variables that expressions read
    const char* Expected;
  } const cases[] = {
      {"a survival time", 1, false, false, false, 0, "survival weight status case excluded "},
      {"with everything", 1, true, true, true, 0, "survival entry stratum subject weight status case excluded "},
      {"with strata", 1, false, true, false, 0, "survival stratum weight status case excluded "},
      {"with a subject", 1, false, false, true, 0, "survival subject weight status case excluded "},
      {"expressions count for input type 3 alone", 1, false, false, false, 2, "survival weight status case excluded "},
      {"an interval", 2, false, false, false, 0, "start stop weight status case excluded "},
      {"an interval with everything", 2, true, true, true, 0,
       "start stop stratum subject weight status case excluded "},
      {"time-dependent", 3, false, false, false, 0, "survival weight status case excluded "},
      {"time-dependent, one variable read", 3, false, false, false, 1, "survival weight status case excluded read "},
      {"time-dependent, with everything", 3, true, true, true, 3,
       "survival entry stratum weight status case excluded read read read "},
  };
  for (const auto& c : cases) {
    Settings().InputType = static_cast<std::int16_t>(c.InputType);
    Settings().StartVariable = m_test.Number("start");
    Settings().StopVariable = m_test.Number("time");
    Settings().EntryTimeVariable = c.Entry ? m_test.Number("entry") : std::int16_t{0};
    Settings().StrataVariable = m_test.Number("stratum");
    Settings().StrataVariableCount = c.Strata ? 1 : 0;
    Settings().SubjectVariable = c.Subject ? m_test.Number("site") : std::int16_t{0};
    Settings().TimeExpressionVariables.assign(static_cast<std::size_t>(c.Read), 2);
    for (const Effects& effects : {Effects{}, Effects{{"x", "v1"}, {"f", "v4"}}}) {
      const CCoxData& data = Build(effects);
      const std::string design = effects.empty() ? "" : "design design design ";
      EXPECT_EQ(Layout(data), design + c.Expected) << c.What;
      EXPECT_EQ(data.CaseTable.ColumnCount(), static_cast<int>(data.ColumnCount)) << c.What;
      EXPECT_EQ(data.CaseTable.RowCount(), 5) << c.What;
      EXPECT_EQ(data.CaseCount, 5U) << c.What;
      EXPECT_EQ(data.TimeVariableCount, static_cast<std::uint32_t>(c.InputType == 3 ? c.Read : 0)) << c.What;
    }
  }
}

TEST_F(BuildDesign, TimeColumnsHaveRecordsAtTheirOwnIndex) {
  Settings().EntryTimeVariable = m_test.Number("entry");
  m_test.Strata("stratum", {1, 2});
  Settings().SubjectVariable = m_test.Number("site");
  const CCoxData& survival = Build({{"f", "v4"}});
  ASSERT_EQ(survival.DesignColumns.size(), 5U);  // two of the factor, survival, entry, subject; the stratum has none
  const auto expect = [](const CoxDesignColumn& record, const char* name, int variable) {
    EXPECT_EQ(record.EffectName, name);
    EXPECT_THAT(record.Variables, ElementsAre(variable)) << name;
    EXPECT_THAT(record.LevelIndex, ElementsAre(1)) << name;
    EXPECT_FALSE(record.Fixed) << name;
  };
  expect(survival.DesignColumns[static_cast<std::size_t>(survival.SurvivalColumn)], "SURVIVAL", m_test.Number("time"));
  expect(survival.DesignColumns[static_cast<std::size_t>(survival.EntryTimeColumn)], "LEFTTRUNCATION",
         m_test.Number("entry"));
  expect(survival.DesignColumns.back(), "SUBJECT", m_test.Number("site"));

  m_test.Interval("start", "time");
  Settings().SubjectVariable = 0;
  const CCoxData& interval = Build();
  ASSERT_EQ(interval.DesignColumns.size(), 4U);
  expect(interval.DesignColumns[static_cast<std::size_t>(interval.StartColumn)], "START", m_test.Number("start"));
  expect(interval.DesignColumns[static_cast<std::size_t>(interval.StopColumn)], "STOP", m_test.Number("time"));
}

TEST_F(BuildDesign, OfSeveralSurvivalVariablesTheRecordNamesTheFirst) {
  m_test.Time({"start", "time"});
  const CCoxData& data = Build({{"x", "v1"}});
  EXPECT_THAT(data.DesignColumns[static_cast<std::size_t>(data.SurvivalColumn)].Variables,
              ElementsAre(m_test.Number("start")));
}

// ---- Time-dependent covariates ------------------------------------------------------------------------------------

TEST_F(BuildDesign, ATimeDependentCovariateAloneHasOneColumnWithoutVariables) {
  Settings().InputType = InputTypes::TimeDependent;
  const CCoxData& data = Build({{"late", TimeExpressionSymbol(2)}});
  ASSERT_EQ(data.DesignColumnCount, 1U);
  const CoxDesignColumn& column = data.DesignColumns[0];
  EXPECT_TRUE(column.Variables.empty());
  EXPECT_EQ(column.VariableCount, 0);
  EXPECT_TRUE(column.LevelIndex.empty());
  EXPECT_THAT(column.ExpressionIds, ElementsAre(2));
  EXPECT_EQ(column.ExpressionCount, 1);
  EXPECT_THAT(column.VariableRoles, ElementsAre(-1));
}

TEST_F(BuildDesign, ACrossWithATimeDependentCovariateHasTheColumnsOfItsRegularVariables) {
  Settings().InputType = InputTypes::TimeDependent;
  struct {
    std::string Term;
    const char *Reference, *Overparameterized;
  } const cases[] = {
      {"v1*TIME_EXPRESSION1", "1", "1"},
      {"v4*TIME_EXPRESSION1", "1 2", "1 2 3"},
      {"v1*v4*TIME_EXPRESSION1", "1/1 1/2", "1/1 1/2 1/3"},
      {"v4*v5*TIME_EXPRESSION1", "1/1 2/1", "1/1 1/2 2/1 2/2 3/1 3/2"},
  };
  for (const auto& c : cases) {
    for (const int coding : {Codings::Reference, Codings::Overparameterized}) {
      Settings().Coding = static_cast<std::int16_t>(coding);
      const CCoxData& data = Build({{c.Term, c.Term}});
      EXPECT_EQ(Levels(data), coding == Codings::Reference ? c.Reference : c.Overparameterized) << c.Term;
      for (std::uint32_t column = 0; column < data.DesignColumnCount; ++column) {
        EXPECT_THAT(data.DesignColumns[column].ExpressionIds, ElementsAre(1)) << c.Term;
        EXPECT_EQ(data.DesignColumns[column].ColumnInEffect, static_cast<int>(column) + 1) << c.Term;
      }
    }
  }
}

TEST_F(BuildDesign, ANestedEffectTakesASpuriousExpressionWithTimeDependentCovariates) {
  Settings().Coding = Codings::Overparameterized;
  const Effects nested = {{"g(f)", "v5(v4)"}};
  Settings().InputType = InputTypes::TimeDependent;
  const CCoxData& data = Build(nested);
  EXPECT_EQ(Levels(data), "1/1 1/2 1/3 2/1 2/2 2/3");
  for (std::uint32_t column = 0; column < data.DesignColumnCount; ++column) {
    EXPECT_THAT(data.DesignColumns[column].ExpressionIds, ElementsAre(0));
  }
  Settings().InputType = InputTypes::SurvivalTime;
  const CCoxData& ordinary = Build(nested);
  EXPECT_EQ(Levels(ordinary), "1/1 1/2 1/3 2/1 2/2 2/3");
  EXPECT_TRUE(ordinary.DesignColumns[0].ExpressionIds.empty());
}

TEST_F(BuildDesign, EffectsOfEverySortStandSideBySide) {
  Settings().InputType = InputTypes::TimeDependent;
  Settings().Coding = Codings::Reference;
  const CCoxData& data = Build({{"late", "TIME_EXPRESSION2"},
                                {"f", "v4"},
                                {"x*late", "v1*TIME_EXPRESSION2"},
                                {"f*early*late", "v4*TIME_EXPRESSION1*TIME_EXPRESSION2"},
                                {"y", "v2"}});
  EXPECT_EQ(Levels(data), " 1 2 1 1 2 1");
  EXPECT_EQ(data.EffectFirstColumn, (std::vector<std::int32_t>{1, 2, 4, 5, 7}));
  EXPECT_EQ(data.EffectLastColumn, (std::vector<std::int32_t>{1, 3, 4, 6, 7}));
  EXPECT_EQ(data.CoefficientCount, 7U);
  EXPECT_EQ(data.DesignColumns[0].EffectName, "late");
  EXPECT_EQ(data.DesignColumns[0].EffectTerm, "TIME_EXPRESSION2");
  EXPECT_EQ(data.DesignColumns[5].EffectName, "f*early*late");
  EXPECT_THAT(data.DesignColumns[5].Variables, ElementsAre(4));
  EXPECT_THAT(data.DesignColumns[5].ExpressionIds, ElementsAre(1, 2));
}

// Only with time-dependent covariates are the flags kept from effects of several columns.
TEST_F(BuildDesign, IntervalsHoldEffectsOfSeveralColumns) {
  m_test.Interval("start", "time");
  Settings().HasFixedParameters = true;
  Settings().FixedParameterFlags = {false, true};
  const CCoxData& data = Build({{"x", "v1"}, {"f", "v4"}});
  EXPECT_EQ(FixedColumns(data), (Flags{false, true, true}));
  EXPECT_EQ(data.EffectFixed, (Flags{false, true}));
  EXPECT_EQ(data.FixedEffectCount, 1U);
}

TEST_F(BuildDesign, WithTimeDependentCovariatesOnlyEffectsOfOneColumnAreHeld) {
  Settings().InputType = InputTypes::TimeDependent;
  Settings().HasFixedParameters = true;
  Settings().FixedParameterFlags = {true, true, true, false, true};
  const CCoxData& data =
      Build({{"x", "v1"}, {"f", "v4"}, {"late", "TIME_EXPRESSION1"}, {"y", "v2"}, {"f*late", "v4*TIME_EXPRESSION1"}});
  EXPECT_EQ(FixedColumns(data), (Flags{true, false, false, true, false, false, false}));
  EXPECT_EQ(data.EffectFixed, (Flags{true, false, true, false, false}));
  EXPECT_EQ(data.FixedEffectCount, 2U);
  EXPECT_FALSE(data.FixedFlagConflict);
}

TEST_F(BuildDesign, ExpressionsAreNotAmongTheVariablesThatTheDesignUses) {
  Settings().InputType = InputTypes::TimeDependent;
  Build({{"f*late", "v4*TIME_EXPRESSION1"}, {"late", "TIME_EXPRESSION1"}, {"x", "v1"}});
  EXPECT_EQ(Settings().DesignFactorSet, (decltype(CoxSettings::DesignFactorSet){{1, 0}, {4, 1}}));
}

}  // namespace
}  // namespace orv
