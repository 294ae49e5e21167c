#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/TimeCovariateSyntax.h"

namespace orv {
namespace {

std::string RefusalOf(const std::function<void()>& parse) {
  try {
    parse();
  } catch (const DefinitionError& error) {
    return error.what();
  }
  return "accepted";
}

TEST(ParseTimeCovariate, TheNameEndsAtTheFirstEqualsSign) {
  struct {
    const char *Text, *Name, *Formula;
  } const cases[] = {
      {"late=age*(T_>30)", "late", "age*(T_>30)"},
      {"  late  =  log(T_ + 1)  ", "late", "log(T_ + 1)"},
      {"late age=T_", "late age", "T_"},
      {"late=T_=30", "late", "T_=30"},
      {"late==T_", "late", "=T_"},
      {"a*b=T_", "a*b", "T_"},
      {"late=arm = 'x=y'", "late", "arm = 'x=y'"},
      {"log(t)=log(t_)", "log(t)", "log(t_)"},
  };
  for (const auto& c : cases) {
    const TimeCovariate covariate = ParseTimeCovariate(c.Text);
    EXPECT_EQ(covariate.Name, c.Name) << c.Text;
    EXPECT_EQ(covariate.Formula, c.Formula) << c.Text;
  }
}

TEST(ParseTimeCovariate, NeedsANameAndAFormula) {
  for (const std::string text : {"", "late", "late=", "late= ", "=T_", "  =T_", "=", " = "}) {
    EXPECT_EQ(RefusalOf([&] { ParseTimeCovariate(text); }),
              "--time-covariate: \"" + text + "\" is not of the form NAME=FORMULA, such as late=age*(T_>30).");
  }
}

TEST(ParseTimeCovariates, KeepTheirOrder) {
  EXPECT_TRUE(ParseTimeCovariates({}).empty());
  const std::vector<TimeCovariate> covariates = ParseTimeCovariates({"late=T_", "early=1/(T_+1)", "Late=T_"});
  ASSERT_EQ(covariates.size(), 3U);
  EXPECT_EQ(covariates[0].Name, "late");
  EXPECT_EQ(covariates[1].Name, "early");
  EXPECT_EQ(covariates[1].Formula, "1/(T_+1)");
  EXPECT_EQ(covariates[2].Name, "Late") << "capitals count";
}

TEST(ParseTimeCovariates, ANameStandsOnce) {
  EXPECT_EQ(RefusalOf([] {
              ParseTimeCovariates({"late=T_", "early=T_", " late =T_^2"});
            }),
            "--time-covariate: \"late\" is named twice.");
  EXPECT_EQ(RefusalOf([] {
              ParseTimeCovariates({"late=T_", "early"});
            }),
            "--time-covariate: \"early\" is not of the form NAME=FORMULA, such as late=age*(T_>30).");
}

TEST(ParseTimeCovariates, FortyAreTheMost) {
  std::vector<std::string> texts;
  for (int k = 1; k <= 40; ++k) texts.push_back("t" + std::to_string(k) + "=T_");
  EXPECT_EQ(ParseTimeCovariates(texts).size(), 40U);
  texts.emplace_back("t41=T_");
  EXPECT_EQ(RefusalOf([&] { ParseTimeCovariates(texts); }), "--time-covariate: 41 are given; at most 40 are possible.");
}

}  // namespace
}  // namespace orv
