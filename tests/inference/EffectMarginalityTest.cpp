#include <gtest/gtest.h>

#include <vector>

#include "inference/EffectContainment.h"
#include "inference/EffectMarginality.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::TestAnalysis;
using Numbers = std::vector<std::int32_t>;

constexpr std::int32_t C = VariableRole::Covariate;
constexpr std::int32_t F = VariableRole::Factor;
constexpr std::int32_t T = VariableRole::TimeExpression;

CoxDesignColumn Term(const Numbers& variables, const Numbers& roles, const Numbers& expressions = {}) {
  CoxDesignColumn column;
  column.VariableCount = static_cast<std::int32_t>(variables.size());
  column.Variables = variables;
  column.VariableRoles = roles;
  column.ExpressionIds = expressions;
  column.ExpressionCount = static_cast<std::int32_t>(expressions.size());
  return column;
}

TEST(EffectMarginality, TakesTheSameCovariatesAndMoreFactors) {
  struct {
    const char* what;
    CoxDesignColumn a;
    CoxDesignColumn b;
    bool isMarginal;
  } const cases[] = {
      {"a factor to its interaction", Term({5}, {F}), Term({5, 6}, {F, F}), true},
      {"in either order", Term({6}, {F}), Term({5, 6}, {F, F}), true},
      {"two factors to three", Term({5, 7}, {F, F}), Term({7, 6, 5}, {F, F, F}), true},
      {"not the other way", Term({5, 6}, {F, F}), Term({5}, {F}), false},
      {"not to itself", Term({5}, {F}), Term({5}, {F}), false},
      {"another factor", Term({4}, {F}), Term({5, 6}, {F, F}), false},
      {"one of two factors is another", Term({4, 5}, {F, F}), Term({5, 6, 7}, {F, F, F}), false},
      {"a covariate to its product with a factor", Term({3}, {C}), Term({3, 5}, {C, F}), true},
      {"a covariate to a product with another one", Term({3}, {C}), Term({4, 5}, {C, F}), false},
      {"a factor to a product with a covariate", Term({5}, {F}), Term({3, 5, 6}, {C, F, F}), false},
      {"a product to one with more factors", Term({3, 5}, {C, F}), Term({3, 5, 6}, {C, F, F}), true},
      {"a covariate to a product of covariates", Term({3}, {C}), Term({3, 4}, {C, C}), false},
      {"a covariate to its power", Term({3}, {C}), Term({3, 3}, {C, C}), false},
      {"covariates in the same order", Term({3, 4}, {C, C}), Term({3, 4, 5}, {C, C, F}), true},
      {"covariates in another order", Term({4, 3}, {C, C}), Term({3, 4, 5}, {C, C, F}), false},
      {"no covariate to one", Term({}, {}), Term({3}, {C}), false},
      {"nothing to a factor", Term({}, {}), Term({5}, {F}), true},
  };
  for (const auto& c : cases) EXPECT_EQ(TermMarginalTo(c.a, c.b), c.isMarginal) << c.what;
}

TEST(EffectMarginality, TimeExpressionsCountAsFactors) {
  EXPECT_TRUE(TermMarginalTo(Term({3}, {C}), Term({3}, {C, T}, {1}))) << "x to x*t";
  EXPECT_TRUE(TermMarginalTo(Term({}, {T}, {1}), Term({5}, {F, T}, {1}))) << "t to f*t";
  EXPECT_TRUE(TermMarginalTo(Term({}, {T}, {1}), Term({5}, {T, F}, {1}))) << "whichever comes first";
  EXPECT_TRUE(TermMarginalTo(Term({3}, {C}), Term({3}, {T, C}, {1}))) << "the covariate after the expression";
  EXPECT_FALSE(TermMarginalTo(Term({}, {T}, {1}), Term({3}, {C, T}, {1}))) << "t to x*t: another covariate";
  EXPECT_FALSE(TermMarginalTo(Term({}, {T}, {1}), Term({5}, {F, T}, {2}))) << "another expression";
  EXPECT_FALSE(TermMarginalTo(Term({}, {T}, {5}), Term({5, 6}, {F, F}))) << "an expression is no variable";
}

// Containment asks for all variables of A in B, whatever else B has.
TEST(EffectMarginality, DiffersFromContainment) {
  const CoxDesignColumn covariate = Term({3}, {C});
  const CoxDesignColumn product = Term({3, 4}, {C, C});
  EXPECT_TRUE(TermContains(covariate, product));
  EXPECT_FALSE(TermMarginalTo(covariate, product));
  EXPECT_TRUE(TermContains(covariate, covariate));
  EXPECT_FALSE(TermMarginalTo(covariate, covariate));
}

TEST(EffectMarginality, ReadsTheFirstColumnOfEachEffect) {
  TestAnalysis analysis({{"time", {1, 2, 3, 4, 5, 6}},
                         {"status", {1, 1, 1, 1, 1, 1}},
                         {"x", {1, 4, 2, 8, 5, 7}},
                         {"f", {1, 2, 1, 2, 2, 1}},
                         {"g", {1, 1, 2, 2, 3, 3}}});
  analysis.Settings().Coding = Codings::Overparameterized;
  analysis.Time({"time"}).Status("status").Covariates({"x"}).Factor("f", {1, 2}).Factor("g", {1, 2, 3});
  analysis.Design({{"x", "v3"}, {"f", "v4"}, {"g", "v5"}, {"f*g", "v4*v5"}, {"x*f", "v3*v4"}});
  const CCoxFit& fit = analysis.PrepareFit();
  for (int a = 0; a < 5; ++a) {
    for (int b = 0; b < 5; ++b) {
      const bool expected = (a == 0 && b == 4) || ((a == 1 || a == 2) && b == 3);
      EXPECT_EQ(EffectMarginalTo(fit, a, b), expected) << a << ' ' << b;
    }
  }
}

}  // namespace
}  // namespace orv
