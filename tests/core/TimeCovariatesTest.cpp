// Editing time-dependent covariates.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/StringTable.h"
#include "core/TimeCovariates.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TestAnalysis;

class SetTimeCovariate : public ::testing::Test {
 protected:
  SetTimeCovariate() : m_test({{"x", {1, 2}}, {"time", {1, 2}}, {"status", {1, 0}}}) {}

  // The id of the message, 0 when the covariate was stored in silence.
  int Message(int position, const std::string& name, const std::string& expression) {
    m_test.Host.Trace.clear();
    const int refused = orv::SetTimeCovariate(m_test.Analysis, position, name, expression);
    EXPECT_EQ(refused, static_cast<int>(m_test.Host.Trace.size()));
    if (m_test.Host.Trace.empty()) return 0;
    const std::string kind = "dsplst 0: ";
    EXPECT_EQ(m_test.Host.Trace[0].substr(0, kind.size()), kind);
    return FindModuleTextId(m_test.Host.Trace[0].substr(kind.size()));
  }
  const std::vector<std::string>& Names() { return m_test.Settings().TimeDependentCovariateNames; }
  const std::vector<std::string>& Expressions() { return m_test.Settings().TimeDependentCovariateExpressions; }

  TestAnalysis m_test;
};

TEST_F(SetTimeCovariate, AppendsANewOneAndReplacesOneThatIsEdited) {
  EXPECT_EQ(Message(0, "late", "x*(T_>5)"), 0);
  EXPECT_EQ(Message(0, "log time", "log(t_)"), 0);
  EXPECT_EQ(Message(0, "third", "T_"), 0);
  EXPECT_THAT(Names(), ElementsAre("late", "log time", "third"));
  EXPECT_THAT(Expressions(), ElementsAre("x*(T_>5)", "log(t_)", "T_"));
  EXPECT_EQ(Message(2, "root of time", "sqrt(T_)"), 0);
  EXPECT_EQ(Message(1, "late", "T_>6"), 0);
  EXPECT_THAT(Names(), ElementsAre("late", "root of time", "third"));
  EXPECT_THAT(Expressions(), ElementsAre("T_>6", "sqrt(T_)", "T_"));
}

TEST_F(SetTimeCovariate, RefusesInTheOrderNameEmptyFormulaFormulaWithoutTime) {
  struct {
    const char *Name, *Expression;
    int Message;
  } const cases[] = {
      {"", "", 10191},     {"", "x", 10191},     {"", "T_", 10191},
      {"late", "", 10023}, {"late", "x", 10034}, {"late", "T_", 0},
  };
  for (const int position : {0, 1}) {
    for (const auto& c : cases) {
      m_test.Settings().TimeDependentCovariateNames = {"before"};
      m_test.Settings().TimeDependentCovariateExpressions = {"T_^2"};
      EXPECT_EQ(Message(position, c.Name, c.Expression), c.Message) << c.Name << '=' << c.Expression;
      if (c.Message == 0) continue;
      EXPECT_THAT(Names(), ElementsAre("before")) << c.Name << '=' << c.Expression;
      EXPECT_THAT(Expressions(), ElementsAre("T_^2")) << c.Name << '=' << c.Expression;
    }
  }
}

TEST_F(SetTimeCovariate, SaysWhatIsWrong) {
  Message(0, "", "T_");
  Message(0, "late", "");
  Message(0, "late", "x");
  EXPECT_THAT(m_test.Host.Messages(),
              ElementsAre("Please specify a name for the time covariate.", "Error in expression (empty?).",
                          "The formula/expression is not valid.  \nThe specified time covariate is not a function of "
                          "time."));
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(SetTimeCovariate, LooksForTheTimeInTheTextAlone) {
  struct {
    const char* Expression;
    bool Stored;
  } const cases[] = {
      {"T_", true},
      {"t_", true},
      {"x+T_*2", true},
      {"weight_kg*2", true},
      {"START_DAY", true},
      {"T_ +", true},
      {"'T_' is no formula", true},
      {"T", false},
      {"t", false},
      {"T _", false},
      {"time", false},
      {"_T", false},
      {" ", false},
      {"x_", false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Message(0, "covariate", c.Expression), c.Stored ? 0 : 10034) << '"' << c.Expression << '"';
  }
}

// Names are not compared with each other, and a formula is compiled only when the options are checked.
TEST_F(SetTimeCovariate, TakesTheSameNameTwice) {
  EXPECT_EQ(Message(0, "late", "T_"), 0);
  EXPECT_EQ(Message(0, "late", "T_"), 0);
  EXPECT_THAT(Names(), ElementsAre("late", "late"));
  EXPECT_EQ(m_test.Analysis.m_pExpressions, nullptr);
}

TEST_F(SetTimeCovariate, KeepsTheFirst32000Characters) {
  const std::string expression = "T_+" + std::string(31996, ' ') + "1";
  ASSERT_EQ(expression.size(), 32000U);
  const std::string name(32000, 'n');
  EXPECT_EQ(Message(0, name, expression), 0);
  EXPECT_EQ(Names()[0], name);
  EXPECT_EQ(Expressions()[0], expression);
  EXPECT_EQ(Message(1, name + "n", expression + "9"), 0);
  EXPECT_EQ(Names()[0], name);
  EXPECT_EQ(Expressions()[0], expression);
}

}  // namespace
}  // namespace orv
