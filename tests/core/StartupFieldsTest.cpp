// Reading the numeric fields of the startup dialog into the options.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>

#include "core/SettingsFields.h"
#include "core/StartupFields.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::ChangedFields;
using ::testing::ElementsAre;
using testing::TestAnalysis;

using Names = std::set<std::string>;

class StartupFieldsTest : public ::testing::Test {
 protected:
  StartupFieldsTest() : m_test({{"x", {1, 2}}}) {
    m_fields.CodeForCensoredResponses = 2.0;
    m_fields.CodeForCompleteResponses = 3.0;
    m_fields.PToEnter = 0.2;
    m_fields.PToRemove = 0.3;
    m_fields.Iterations = 60;
    m_fields.EffectsToForce = 4;
    m_fields.DisplayBest = 5;
    m_test.Settings() = CoxSettings();
  }
  // The options that reading the fields changed.
  Names Changed(int building, int expected = 0) {
    m_test.Settings() = CoxSettings();
    m_test.Settings().ModelBuilding = static_cast<std::int16_t>(building);
    const CoxSettings before = m_test.Settings();
    EXPECT_EQ(m_test.Analysis.ReadStartupFields(m_fields, nullptr), expected);
    return ChangedFields(before, m_test.Settings());
  }

  TestAnalysis m_test;
  StartupFields m_fields;
};

TEST_F(StartupFieldsTest, AreReadAsFarAsTheModelBuildingUsesThem) {
  const Names always = {"CodeForCensoredResponses", "CodeForCompleteResponses", "MaxIterations"};
  struct {
    int Building;
    Names Besides;
  } const cases[] = {
      {ModelBuildings::AllEffects, {}},
      {ModelBuildings::Forward, {"PToEnter", "EffectsToForce"}},
      {ModelBuildings::Backward, {"PToRemove", "EffectsToForce"}},
      {ModelBuildings::Stepwise, {"PToEnter", "PToRemove", "EffectsToForce"}},
      {ModelBuildings::BestSubsets, {"EffectsToForce", "DisplayBest"}},
  };
  for (const auto& c : cases) {
    Names expected = always;
    expected.insert(c.Besides.begin(), c.Besides.end());
    EXPECT_EQ(Changed(c.Building), expected) << "model building " << c.Building;
  }
  EXPECT_TRUE(m_test.Host.Trace.empty());
}

TEST_F(StartupFieldsTest, GiveTheirValues) {
  Changed(ModelBuildings::Stepwise);
  EXPECT_EQ(m_test.Settings().CodeForCensoredResponses, 2.0);
  EXPECT_EQ(m_test.Settings().CodeForCompleteResponses, 3.0);
  EXPECT_EQ(m_test.Settings().PToEnter, 0.2);
  EXPECT_EQ(m_test.Settings().PToRemove, 0.3);
  EXPECT_EQ(m_test.Settings().MaxIterations, 60);
  EXPECT_EQ(m_test.Settings().EffectsToForce, 4);
  Changed(ModelBuildings::BestSubsets);
  EXPECT_EQ(m_test.Settings().DisplayBest, 5);
}

TEST_F(StartupFieldsTest, ACensoredCodeThatIsNoNumberIsRefusedFirst) {
  m_fields.CodeForCensoredResponses.reset();
  m_fields.CodeForCompleteResponses.reset();
  m_fields.Iterations = 0;
  EXPECT_EQ(Changed(ModelBuildings::Stepwise, 1), Names{});
  EXPECT_THAT(m_test.Host.Trace, ElementsAre("dsplst 0: The code used to identify censored cases is not valid."));
}

TEST_F(StartupFieldsTest, ACompleteCodeThatIsNoNumberIsRefusedNext) {
  m_fields.CodeForCompleteResponses.reset();
  m_fields.Iterations = 0;
  EXPECT_EQ(Changed(ModelBuildings::Stepwise, 1), Names{"CodeForCensoredResponses"});
  EXPECT_THAT(m_test.Host.Trace, ElementsAre("dsplst 0: The code used to identify complete cases is not valid."));
}

TEST_F(StartupFieldsTest, IterationsMustLieBetweenOneAndAThousand) {
  struct {
    double Field;
    int MaxIterations;  // 0: refused
  } const cases[] = {{1, 1},
                     {1000, 1000},
                     {50, 50},
                     {1.49, 1},
                     {1.5, 2},
                     {999.5, 1000},
                     {0.999, 0},
                     {0, 0},
                     {-5, 0},
                     {1000.001, 0},
                     {1000.4, 0},
                     {1e9, 0},
                     {std::numeric_limits<double>::quiet_NaN(), 0}};
  for (const auto& c : cases) {
    m_fields.Iterations = c.Field;
    m_test.Settings().MaxIterations = 33;
    m_test.Host.Trace.clear();
    int window = 0;
    const int result = m_test.Analysis.ReadStartupFields(m_fields, &window);
    if (c.MaxIterations > 0) {
      EXPECT_EQ(result, 0) << c.Field;
      EXPECT_EQ(m_test.Settings().MaxIterations, c.MaxIterations) << c.Field;
      EXPECT_TRUE(m_test.Host.Trace.empty()) << c.Field;
    } else {
      EXPECT_EQ(result, 1) << c.Field;
      EXPECT_EQ(m_test.Settings().MaxIterations, 33) << c.Field;
      EXPECT_EQ(m_fields.Iterations, 33.0) << "the old value goes back into the field, which held " << c.Field;
      EXPECT_THAT(m_test.Host.Trace, ElementsAre("box 0: Maximum number of iterations must be between 1 and 1000."));
      EXPECT_EQ(m_test.Host.BoxParent, &window);
    }
  }
}

// The fields are read in their order, so those before a refused one have been taken.
TEST_F(StartupFieldsTest, RefusedIterationsComeBehindThePLevelsAndBeforeTheEffectsToForce) {
  m_fields.Iterations = 0;
  EXPECT_EQ(Changed(ModelBuildings::Stepwise, 1),
            (Names{"CodeForCensoredResponses", "CodeForCompleteResponses", "PToEnter", "PToRemove"}));
}

}  // namespace
}  // namespace orv
