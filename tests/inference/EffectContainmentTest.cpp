#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "data/CoxDesignColumn.h"
#include "inference/EffectContainment.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::TestAnalysis;

// A term of covariates, factors and time expressions, in this order.
CoxDesignColumn Term(const std::vector<int>& covariates,
                     const std::vector<int>& factors,
                     const std::vector<int>& expressions = {}) {
  CoxDesignColumn term;
  for (const int variable : covariates) {
    term.Variables.push_back(variable);
    term.VariableRoles.push_back(VariableRole::Covariate);
  }
  for (const int variable : factors) {
    term.Variables.push_back(variable);
    term.VariableRoles.push_back(VariableRole::Factor);
  }
  term.VariableCount = static_cast<std::int32_t>(term.Variables.size());
  for (const int expression : expressions) {
    term.ExpressionIds.push_back(expression);
    term.VariableRoles.push_back(VariableRole::TimeExpression);
  }
  term.ExpressionCount = static_cast<std::int32_t>(expressions.size());
  return term;
}

TEST(TermContains, HoldsWhenAllVariablesOccurWithTheirRoles) {
  struct {
    const char* what;
    CoxDesignColumn a;
    CoxDesignColumn b;
    bool contained;
  } const cases[] = {
      {"covariate in itself", Term({3}, {}), Term({3}, {}), true},
      {"covariate in its product", Term({3}, {}), Term({3, 4}, {}), true},
      {"product not in its covariate", Term({3, 4}, {}), Term({3}, {}), false},
      {"order does not matter", Term({4, 3}, {}), Term({3, 4}, {}), true},
      {"other covariate", Term({5}, {}), Term({3, 4}, {}), false},
      {"factor in its interaction", Term({}, {1}), Term({}, {1, 2}), true},
      {"interaction not in its factor", Term({}, {1, 2}), Term({}, {1}), false},
      {"factor in a product with a covariate", Term({}, {1}), Term({3}, {1}), true},
      {"covariate in a product with a factor", Term({3}, {}), Term({3}, {1}), true},
      {"one number in two roles", Term({1}, {}), Term({}, {1}), false},
      {"factor and covariate against a factor alone", Term({3}, {1}), Term({}, {1}), false},
      {"power in a higher power", Term({3, 3}, {}), Term({3, 3, 3}, {}), true},
      {"higher power in the covariate", Term({3, 3}, {}), Term({3}, {}), true},
      {"nothing in anything", Term({}, {}), Term({3}, {}), true},
      {"nothing in nothing", Term({}, {}), Term({}, {}), true},
  };
  for (const auto& c : cases) EXPECT_EQ(TermContains(c.a, c.b), c.contained) << c.what;
}

// The expressions of the second term are read from the first, and count among what the first needs. So a pure time
// expression is contained in nothing.
TEST(TermContains, TakesExpressionsFromTheFirstTerm) {
  struct {
    const char* what;
    CoxDesignColumn a;
    CoxDesignColumn b;
    bool contained;
  } const cases[] = {
      {"expression in itself", Term({}, {}, {1}), Term({}, {}, {1}), false},
      {"expression in another", Term({}, {}, {1}), Term({}, {}, {2}), false},
      {"expression in a covariate of the same number", Term({}, {}, {3}), Term({3}, {}), false},
      {"expression in a covariate of another number", Term({}, {}, {3}), Term({4}, {}), false},
      {"covariate in an expression", Term({3}, {}), Term({}, {}, {3}), false},
      {"nothing in an expression", Term({}, {}), Term({}, {}, {1}), true},
  };
  for (const auto& c : cases) EXPECT_EQ(TermContains(c.a, c.b), c.contained) << c.what;
}

// With variables in the term its count is that of the variables, so expressions after them are not reached.
TEST(TermContains, ExpressionsBesideVariablesDoNotCount) {
  EXPECT_TRUE(TermContains(Term({3}, {}, {1}), Term({3}, {})));
  EXPECT_TRUE(TermContains(Term({3}, {}), Term({3}, {}, {1})));
}

TEST(EffectContains, LooksAtTheFirstColumnOfEachEffect) {
  TestAnalysis analysis({{"time", {1, 2, 3, 4, 5, 6}},
                         {"status", {1, 1, 1, 1, 1, 1}},
                         {"x", {1, 4, 2, 8, 5, 7}},
                         {"f", {1, 2, 3, 1, 2, 3}},
                         {"h", {1, 2, 1, 2, 1, 2}}});
  analysis.Time({"time"}).Status("status").Covariates({"x"}).Factor("f", {1, 2, 3}).Factor("h", {1, 2});
  analysis.Design({{"x", "v3"}, {"f", "v4"}, {"x*f", "v3*v4"}, {"f*h", "v4*v5"}});
  const CCoxFit& fit = analysis.PrepareFit();
  const std::vector<std::vector<bool>> expected = {
      {true, false, true, false}, {false, true, true, true}, {false, false, true, false}, {false, false, false, true}};
  for (int a = 0; a < 4; ++a) {
    for (int b = 0; b < 4; ++b) {
      EXPECT_EQ(EffectContains(fit, a, b), expected[static_cast<std::size_t>(a)][static_cast<std::size_t>(b)])
          << a << " in " << b;
    }
  }
}

}  // namespace
}  // namespace orv
