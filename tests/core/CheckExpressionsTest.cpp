// The checks of the options with time-dependent covariates: what is compiled, what stays, what is said.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "data/TimeExpressions.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TestAnalysis;
using testing::TestColumn;

using Expressions = std::vector<std::string>;
using Variables = std::vector<std::int32_t>;

constexpr const char* kReview = "Please review the time-dependent covariate expressions for correctness.";
constexpr const char* kLimit = "Maximum number of iterations must be between 1 and 1000.";

// x time status and dose are variables 1 to 4, x5 to x45 the others.
std::vector<TestColumn> ManyColumns() {
  std::vector<TestColumn> columns = {{"x", {1, 2}}, {"time", {1, 2}}, {"status", {1, 0}}, {"Dose", {3, 4}}};
  for (int k = 5; k <= 45; ++k) columns.push_back({"x" + std::to_string(k), {1, 1}});
  return columns;
}

class CheckExpressions : public ::testing::Test {
 protected:
  CheckExpressions() : m_test(ManyColumns()) {
    m_test.Covariates({"x"}).Time({"time"}).Status("status");
    Settings().InputType = InputTypes::TimeDependent;
    Settings().TimeDependentCovariateNames = {"late"};
    Settings().TimeDependentCovariateExpressions = {"x*(T_>5)"};
    m_test.DefaultDesign();
  }
  CoxSettings& Settings() { return m_test.Settings(); }
  const Variables& Read() { return Settings().TimeExpressionVariables; }
  int Check() {
    m_test.Host.Trace.clear();
    m_test.Host.AllocationSizes.clear();
    return m_test.Analysis.CheckInputsForCorrectness(nullptr);
  }
  int Check(const Expressions& expressions) {
    Settings().TimeDependentCovariateExpressions = expressions;
    return Check();
  }
  bool HasStore() const { return m_test.Analysis.m_pExpressions != nullptr; }

  TestAnalysis m_test;
};

TEST_F(CheckExpressions, CompilesAllAndListsTheirVariables) {
  EXPECT_EQ(Check({"t_*dose", "log(T_)", "X+x5*T_-dose"}), 0);
  EXPECT_THAT(m_test.Host.Trace, IsEmpty());
  EXPECT_THAT(Read(), ElementsAre(4, 1, 5));
  ASSERT_TRUE(HasStore());
  const ExpressionStore& store = *m_test.Analysis.m_pExpressions;
  EXPECT_EQ(store.ExpressionCount(), 3);
  const std::vector<double> values = {10.0, 100.0, 1000.0};
  const int timeSymbol = m_test.Table.VariableCount() + 1;
  int error = -1;
  EXPECT_EQ(EvaluateTimeExpression(m_test.Host, &store, 1, 2.0, values.data(), timeSymbol, error), 20.0);
  EXPECT_EQ(EvaluateTimeExpression(m_test.Host, &store, 3, 2.0, values.data(), timeSymbol, error), 100.0 + 2000 - 10);
}

TEST_F(CheckExpressions, TheLongestExpressionIsTheLimitOfAll) {
  EXPECT_EQ(Check({"T_", "T_*dose + x5 - x6", "T_*x7"}), 0);
  EXPECT_THAT(Read(), ElementsAre(4, 5, 6, 7)) << "none is cut";
}

TEST_F(CheckExpressions, AnExpressionEndsAtAZeroByte) {
  EXPECT_EQ(Check({std::string("T_*dose\0+(", 10)}), 0);
  EXPECT_THAT(Read(), ElementsAre(4));
}

TEST_F(CheckExpressions, TakesTwoBlocksAndTheStoreAndKeepsTheStoreAlone) {
  EXPECT_EQ(Check(), 0);
  EXPECT_THAT(m_test.Host.AllocationSizes, ElementsAre(76U, 76U, 1284672U));
  EXPECT_EQ(m_test.Host.LiveBlocks(), 1);
  EXPECT_EQ(Check(), 0);
  EXPECT_EQ(m_test.Host.LiveBlocks(), 1);
}

TEST_F(CheckExpressions, OtherInputTypesCompileNothing) {
  for (const int inputType : {InputTypes::SurvivalTime, InputTypes::CountingProcess}) {
    m_test.Interval("x", "time");
    Settings().InputType = static_cast<std::int16_t>(inputType);
    EXPECT_EQ(Check({"T_+"}), 0) << inputType;
    EXPECT_THAT(m_test.Host.AllocationSizes, IsEmpty()) << inputType;
    EXPECT_FALSE(HasStore()) << inputType;
  }
}

// ---- Failures -----------------------------------------------------------------------------------------------------

TEST_F(CheckExpressions, AWrongFormulaAsksForAReviewOfAll) {
  for (const char* const wrong : {"T_+", "T_*nobody", "T_*'x", "", "dose dose T_"}) {
    ASSERT_EQ(Check({"T_*dose"}), 0);
    EXPECT_EQ(Check({"T_*dose", wrong}), 1) << wrong;
    EXPECT_THAT(m_test.Host.Trace, ElementsAre("instance text 10025")) << wrong;
    EXPECT_EQ(m_test.Host.Messages().back(), kReview) << wrong;
    EXPECT_THAT(Read(), IsEmpty()) << wrong;
    EXPECT_FALSE(HasStore()) << wrong;
    EXPECT_EQ(m_test.Host.LiveBlocks(), 0) << wrong;
  }
}

TEST_F(CheckExpressions, ABrokenLimitShowsTwoMessages) {
  std::string sum = "T_+x+dose";  // 38 variables with those up to x40
  for (int k = 5; k <= 40; ++k) sum += "+x" + std::to_string(k);
  EXPECT_EQ(Check({sum}), 0);
  EXPECT_EQ(Read().size(), 38U);
  EXPECT_EQ(Check({"T_", sum + "+x41"}), 1);
  EXPECT_THAT(m_test.Host.Trace, ElementsAre("instance text 10024", "instance text 10025"));
  EXPECT_THAT(m_test.Host.Messages(), ElementsAre(kLimit, kReview));
  EXPECT_THAT(Read(), IsEmpty());
  EXPECT_FALSE(HasStore());
  EXPECT_EQ(m_test.Host.LiveBlocks(), 0);
}

TEST_F(CheckExpressions, MoreThanFortyAreRefused) {
  EXPECT_EQ(Check(Expressions(40, "T_")), 0);
  EXPECT_EQ(Check(Expressions(41, "T_")), 1);
  EXPECT_THAT(m_test.Host.Trace, ElementsAre("instance text 10025"));
  EXPECT_FALSE(HasStore());
}

TEST_F(CheckExpressions, MemoryThatIsOutIsSaidOfTheBlocksButNotOfTheStore) {
  struct {
    int Block;
    const char* Shown;
  } const cases[] = {{1, "dsplst 0: Not enough memory to perform requested operations."},
                     {2, "dsplst 0: Not enough memory to perform requested operations."},
                     {3, "instance text 10025"}};
  for (const auto& c : cases) {
    m_test.Analysis.m_pExpressions.reset();
    m_test.Host.FailAllocation(c.Block);
    EXPECT_EQ(Check(), 1) << "block " << c.Block;
    EXPECT_THAT(m_test.Host.Trace, ElementsAre(c.Shown)) << "block " << c.Block;
    EXPECT_EQ(m_test.Host.LiveBlocks(), 0) << "block " << c.Block;
    EXPECT_THAT(Read(), IsEmpty()) << "block " << c.Block;
  }
  m_test.Host.FailAllocation(0);
  EXPECT_EQ(Check(), 0);
}

struct Fault {
  const char* Shown;
  std::function<void(TestAnalysis&)> Break;
};

TEST_F(CheckExpressions, TheFirstFaultSpeaks) {
  const Fault faults[] = {
      {"dsplst 0: Please specify a censoring indicator variable.",
       [](TestAnalysis& t) { t.Settings().CensorVariableCount = 0; }},
      {"dsplst 0: Not enough memory to perform requested operations.",
       [](TestAnalysis& t) { t.Host.FailAllocation(2); }},
      {"dsplst 0: Please specify a variable that contains the survival times.",
       [](TestAnalysis& t) { t.Settings().SurvivalVariableCount = 0; }},
      {"instance text 10025", [](TestAnalysis& t) { t.Settings().TimeDependentCovariateExpressions = {"T_+"}; }},
      {"dsplst 0: Please review variable selection.  Design was specified, but no predictor variables were (covariates "
       "or factors) were selected.",
       [](TestAnalysis& t) { t.Settings().CovariateCount = 0; }},
      {"dsplst 0: Codes for censored and complete observations are identical.  Please select two different codes.",
       [](TestAnalysis& t) { t.Settings().CodeForCompleteResponses = 0.0; }},
      {"dsplst 0: The design is invalid.  Please review effects in design.",
       [](TestAnalysis& t) { t.Settings().EffectSymbols["x"] = ""; }},
  };
  const CoxSettings valid = Settings();
  const auto check = [&](const std::vector<const Fault*>& broken) {
    Settings() = valid;
    m_test.Host.FailAllocation(0);
    for (const Fault* fault : broken) fault->Break(m_test);
    EXPECT_EQ(Check(), 1);
    EXPECT_THAT(m_test.Host.Trace, ElementsAre(broken.front()->Shown));
  };
  for (const Fault& first : faults) {
    check({&first});
    for (const Fault* second = &first + 1; second != std::end(faults); ++second) check({&first, second});
  }
}

TEST_F(CheckExpressions, NoExpressionsAreMissedAfterTheSurvivalTime) {
  EXPECT_EQ(Check({}), 1);
  EXPECT_THAT(m_test.Host.Trace,
              ElementsAre("dsplst 0: Please define a time-dependent covariate or specify another input type."));
  Settings().CovariateCount = 0;
  EXPECT_EQ(Check({}), 1);
  EXPECT_THAT(m_test.Host.Trace,
              ElementsAre("dsplst 0: Please define a time-dependent covariate or specify another input type."));
  Settings().SurvivalVariableCount = 0;
  EXPECT_EQ(Check({}), 1);
  EXPECT_THAT(m_test.Host.Trace, ElementsAre("dsplst 0: Please specify a variable that contains the survival times."));
}

// ---- What stays ---------------------------------------------------------------------------------------------------

TEST_F(CheckExpressions, TheListIsMadeAnewAtEachCheck) {
  EXPECT_EQ(Check({"T_*dose+x"}), 0);
  EXPECT_THAT(Read(), ElementsAre(4, 1));
  EXPECT_EQ(Check(), 0);
  EXPECT_THAT(Read(), ElementsAre(4, 1)) << "not appended twice";
  EXPECT_EQ(Check({"T_*x+dose"}), 0);
  EXPECT_THAT(Read(), ElementsAre(1, 4)) << "in the order of the new store";
  EXPECT_EQ(Check({"T_"}), 0);
  EXPECT_THAT(Read(), IsEmpty());
}

TEST_F(CheckExpressions, TheListIsEmptiedBeforeAMessageOfItsStepButNotBefore) {
  ASSERT_EQ(Check({"T_*dose"}), 0);
  Settings().CensorVariableCount = 0;
  EXPECT_EQ(Check(), 1);
  EXPECT_THAT(Read(), ElementsAre(4));
  Settings().CensorVariableCount = 1;
  Settings().SurvivalVariableCount = 0;
  EXPECT_EQ(Check(), 1);
  EXPECT_THAT(Read(), IsEmpty());
}

TEST_F(CheckExpressions, TheStoreStaysUntilTheNextCompilation) {
  ASSERT_EQ(Check({"T_*dose"}), 0);
  const ExpressionStore* store = m_test.Analysis.m_pExpressions.get();
  Settings().CensorVariableCount = 0;
  EXPECT_EQ(Check(), 1);
  EXPECT_EQ(m_test.Analysis.m_pExpressions.get(), store) << "a message before the compilation";
  Settings().CensorVariableCount = 1;
  EXPECT_EQ(Check({}), 1);
  EXPECT_EQ(m_test.Analysis.m_pExpressions.get(), store) << "nothing to compile";
  Settings().InputType = InputTypes::SurvivalTime;
  EXPECT_EQ(Check(), 0);
  EXPECT_EQ(m_test.Analysis.m_pExpressions.get(), store) << "another input type";
  m_test.Analysis.ModifyAnalysis();
  m_test.Analysis.ReleaseRunObjects();
  EXPECT_EQ(m_test.Analysis.m_pExpressions.get(), store) << "run objects do not own it";
  EXPECT_EQ(store->ExpressionCount(), 1);
}

TEST_F(CheckExpressions, ALaterMessageLeavesTheStoreOfItsExpressions) {
  ASSERT_EQ(Check({"T_*dose"}), 0);
  Settings().MaxIterations = -1;
  EXPECT_EQ(Check({"T_*x", "T_*x5"}), 1);
  EXPECT_THAT(m_test.Host.Trace, ElementsAre("dsplst 0: Number of iterations should be greater than 0."));
  ASSERT_TRUE(HasStore());
  EXPECT_EQ(m_test.Analysis.m_pExpressions->ExpressionCount(), 2);
  EXPECT_THAT(Read(), ElementsAre(1, 5));
  EXPECT_EQ(m_test.Host.LiveBlocks(), 1);
}

// ---- The design ---------------------------------------------------------------------------------------------------

TEST_F(CheckExpressions, TheDesignNeedsAPredictorBesideTheTimeDependentOnes) {
  struct {
    const char* What;
    int Predictors;
    bool Design;
    const char* Shown;  // null when it passes
  } const cases[] = {
      {"both", 1, true, nullptr},
      {"no design", 1, false, "dsplst 0: Please specify one or more effects in the design."},
      {"no predictor", 0, true,
       "dsplst 0: Please review variable selection.  Design was specified, but no predictor variables were (covariates "
       "or factors) were selected."},
      {"neither, for an analysis without covariates", 0, false, nullptr},
  };
  const CoxSettings valid = Settings();
  for (const auto& c : cases) {
    Settings() = valid;
    Settings().CovariateCount = static_cast<std::int16_t>(c.Predictors);
    Settings().DesignEffects = {"late"};
    Settings().EffectSymbols.clear();
    if (c.Design) Settings().EffectSymbols["late"] = "TIME_EXPRESSION1";
    EXPECT_EQ(Check(), c.Shown != nullptr ? 1 : 0) << c.What;
    EXPECT_EQ(m_test.Host.Trace, c.Shown != nullptr ? Expressions{c.Shown} : Expressions{}) << c.What;
  }
}

TEST_F(CheckExpressions, TermsOfScriptsAreRepairedAfterTheCompilation) {
  Settings().EffectSymbols = {{"x", "v1"}, {"late", ""}, {"x*late", ""}};
  EXPECT_EQ(Check({"T_+"}), 1);
  EXPECT_EQ(Settings().EffectSymbols["late"], "");
  EXPECT_EQ(Check({"T_"}), 0);
  EXPECT_EQ(Settings().EffectSymbols["x"], "v1");
  EXPECT_EQ(Settings().EffectSymbols["late"], "TIME_EXPRESSION1");
  EXPECT_EQ(Settings().EffectSymbols["x*late"], "TIME_EXPRESSION1") << "only the last token counts";
}

}  // namespace
}  // namespace orv
