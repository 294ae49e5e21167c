#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/CoxSettings.h"
#include "data/EffectTerm.h"

namespace orv {
namespace {

using Numbers = std::vector<std::int32_t>;

// Variables 1, 2 and 12 are covariates; every other number is taken for a factor.
CoxSettings SomeCovariates() {
  CoxSettings settings;
  settings.CovariateVariables = {1, 2, 12};
  settings.CovariateCount = 3;
  return settings;
}

TEST(EffectTerm, WritesSymbolsOfVariablesAndExpressions) {
  EXPECT_EQ(VariableSymbol(3), "v3");
  EXPECT_EQ(VariableSymbol(32767), "v32767");
  EXPECT_EQ(TimeExpressionSymbol(1), "TIME_EXPRESSION1");
  EXPECT_EQ(TimeExpressionSymbol(12), "TIME_EXPRESSION12");
}

TEST(ParseEffect, TakesVariablesWithTheirRoles) {
  struct {
    const char* Term;
    Numbers Variables, Roles;
  } const cases[] = {
      {"v1", {1}, {0}},
      {"v5", {5}, {1}},
      {"v12", {12}, {0}},
      {"v120", {120}, {1}},
      {"v1*v2", {1, 2}, {0, 0}},
      {"v5*v1", {5, 1}, {1, 0}},
      {"v1*v5*v6", {1, 5, 6}, {0, 1, 1}},
      {"v5(v6)", {5, 6}, {1, 1}},
      {"v5*v7(v6)", {5, 7, 6}, {1, 1, 1}},
      {"v1*v1", {1, 1}, {0, 0}},
      {"x7", {7}, {1}},  // the first character is not looked at
      {"", {}, {}},
      {"v", {}, {}},
      {"v0", {}, {}},  // a number 0 at the end is dropped
      {"v5*", {5}, {1}},
      {"v*v5", {0, 5}, {1, 1}},  // but before a separator it is not
      {"v1**v2", {1, 0, 2}, {0, 1, 0}},
      {"v5(v6)*v1", {5, 6, 0, 1}, {1, 1, 1, 0}},
      {"TIME_EXPRESSION2", {}, {}},
  };
  const CoxSettings settings = SomeCovariates();
  for (const auto& c : cases) {
    CoxDesignColumn record;
    ParseEffect(settings, c.Term, record);
    EXPECT_EQ(record.Variables, c.Variables) << "term \"" << c.Term << "\"";
    EXPECT_EQ(record.VariableRoles, c.Roles) << "term \"" << c.Term << "\"";
    EXPECT_EQ(record.VariableCount, static_cast<int>(c.Variables.size())) << "term \"" << c.Term << "\"";
    EXPECT_TRUE(record.ExpressionIds.empty()) << "term \"" << c.Term << "\"";
    EXPECT_EQ(record.ExpressionCount, 0) << "term \"" << c.Term << "\"";
  }
}

TEST(ParseTimeEffect, TakesExpressionsApartFromVariables) {
  struct {
    const char* Term;
    Numbers Variables, Roles, Expressions;
  } const cases[] = {
      {"v1", {1}, {0}, {}},
      {"v5", {5}, {1}, {}},
      {"v5*v1", {5, 1}, {1, 0}, {}},
      {"TIME_EXPRESSION1", {}, {-1}, {1}},
      {"TIME_EXPRESSION3", {}, {-1}, {3}},
      {"v1*TIME_EXPRESSION3", {1}, {0, -1}, {3}},
      {"v5*TIME_EXPRESSION2", {5}, {1, -1}, {2}},
      {"v5*v6*TIME_EXPRESSION12", {5, 6}, {1, 1, -1}, {12}},
      {"TIME_EXPRESSION1*TIME_EXPRESSION2", {}, {-1, -1}, {1, 2}},
      {"v12*v120*TIME_EXPRESSION1*TIME_EXPRESSION40", {12, 120}, {0, 1, -1, -1}, {1, 40}},
      {"v1*v2*v12*v5*v6*v7*v8*TIME_EXPRESSION9", {1, 2, 12, 5, 6, 7, 8}, {0, 0, 0, 1, 1, 1, 1, -1}, {9}},
      {"v5*v7(v6)", {5, 7, 6}, {1, 1, 1, -1}, {0}},
      {"v5(TIME_EXPRESSION1)", {5}, {1, -1, -1}, {1, 0}},
      {"v5(v6)*v1", {5, 6, 1}, {1, 1, -1, 0}, {0}},
      {"v5(v6)", {5, 6}, {1, 1, -1}, {0}},  // the empty text behind ")" is taken for an expression
      {"v1*", {1}, {0, -1}, {0}},
      {"", {}, {-1}, {0}},
      {"v0", {}, {-1}, {0}},
  };
  const CoxSettings settings = SomeCovariates();
  for (const auto& c : cases) {
    CoxDesignColumn record;
    ParseTimeEffect(settings, c.Term, record);
    EXPECT_EQ(record.Variables, c.Variables) << "term \"" << c.Term << "\"";
    EXPECT_EQ(record.VariableRoles, c.Roles) << "term \"" << c.Term << "\"";
    EXPECT_EQ(record.ExpressionIds, c.Expressions) << "term \"" << c.Term << "\"";
    EXPECT_EQ(record.VariableCount, static_cast<int>(c.Variables.size())) << "term \"" << c.Term << "\"";
    EXPECT_EQ(record.ExpressionCount, static_cast<int>(c.Expressions.size())) << "term \"" << c.Term << "\"";
  }
}

TEST(ParseTimeEffect, ReadsTheSymbolsThatTheModuleWrites) {
  for (const int position : {1, 2, 9, 10, 11, 20, 100, 101, 110}) {
    CoxDesignColumn record;
    ParseTimeEffect(CoxSettings(), TimeExpressionSymbol(position), record);
    EXPECT_EQ(record.ExpressionIds, Numbers{position});
  }
}

// A variable that is both among the covariates and among the factors enters a term as a covariate.
TEST(ParseEffect, ACovariateStaysOneWhenItIsAFactorToo) {
  CoxSettings settings = SomeCovariates();
  settings.FactorVariables = {1};
  settings.FactorCount = 1;
  CoxDesignColumn record;
  ParseEffect(settings, "v1", record);
  EXPECT_EQ(record.VariableRoles, Numbers{0});
}

}  // namespace
}  // namespace orv
