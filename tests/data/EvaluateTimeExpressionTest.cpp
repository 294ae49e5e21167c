// Evaluating the formulas of time-dependent covariates.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "data/TimeExpressionCases.h"
#include "data/TimeExpressions.h"
#include "support/AllocationHook.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using testing::NumberedColumns;
using testing::SumOf;
using testing::TimeExpressions;

TEST(EvaluateTimeExpression, IsTheArithmeticOfItsFormula) {
  struct {
    const char* Formula;
    std::function<double(double time, double a, double b)> Value;
  } const cases[] = {
      {"t_", [](double t, double, double) { return t; }},
      {"a*T_", [](double t, double a, double) { return a * t; }},
      {"B-a/T_", [](double t, double a, double b) { return b - a / t; }},
      {"log(T_+1)*b", [](double t, double, double b) { return std::log(t + 1.0) * b; }},
      {"(T_>10)*a+(T_<=10)*b", [](double t, double a, double b) { return t > 10.0 ? a : b; }},
      {"if(T_<b, a, T_^2)", [](double t, double a, double b) { return t < b ? a : t * t; }},
      {"exp(-t_/20)+abs(a)", [](double t, double a, double) { return std::exp(-t / 20.0) + std::abs(a); }},
      {"0*T_", [](double, double, double) { return 0.0; }},
  };
  TimeExpressions test({{"b", {1}}, {"unread", {1}}, {"A", {1}}});
  std::vector<std::string> formulas = {"a+b*T_"};  // so that the list is a, b in every store
  for (const auto& c : cases) formulas.emplace_back(c.Formula);
  ASSERT_EQ(test.Compile(formulas), 0);
  ASSERT_THAT(test.Listed, ElementsAre(3, 1));
  for (const double time : {0.25, 3.0, 10.0, 10.5, 400.0}) {
    for (const auto& [a, b] : {std::pair{2.0, 5.0}, std::pair{-1.5, 0.0}, std::pair{0.1, 1e6}}) {
      for (std::size_t k = 0; k < std::size(cases); ++k) {
        int error = -1;
        EXPECT_DOUBLE_EQ(test.Evaluate(static_cast<int>(k) + 2, time, {a, b}, error), cases[k].Value(time, a, b))
            << cases[k].Formula << " at " << time << " with " << a << ", " << b;
        EXPECT_EQ(error, 0) << cases[k].Formula;
      }
    }
  }
}

TEST(EvaluateTimeExpression, TakesTheVariablesByTheirPlaceInTheListOfTheStore) {
  TimeExpressions test(NumberedColumns(6));
  ASSERT_EQ(test.Compile({"x6*T_", "x2*T_+x6*100+x4*10"}), 0);
  ASSERT_THAT(test.Listed, ElementsAre(6, 2, 4));
  int error = -1;
  EXPECT_EQ(test.Evaluate(1, 2.0, {3.0, 5.0, 7.0}, error), 6.0);
  EXPECT_EQ(test.Evaluate(2, 2.0, {3.0, 5.0, 7.0}, error), 10.0 + 300.0 + 70.0);
}

TEST(EvaluateTimeExpression, TheTimeIsNoVariableOfTheTable) {
  TimeExpressions test({{"T_", {1}}, {"x", {1}}});
  ASSERT_EQ(test.Compile({"T_*x+#1"}), 0);
  EXPECT_THAT(test.Listed, ElementsAre(2, 1));
  int error = -1;
  EXPECT_EQ(test.Evaluate(1, 3.0, {5.0, 100.0}, error), 115.0);
}

TEST(EvaluateTimeExpression, ASymbolOutsideTheListLeavesItsArgumentAsItWas) {
  TimeExpressions test(NumberedColumns(3));
  ASSERT_EQ(test.Compile({"x1+x2+T_"}), 0);
  int error = -1;
  EXPECT_EQ(test.Evaluate(1, 1.0, {10.0, 200.0}, error), 211.0);
  test.Store->Symbols(1)[1] = 3;  // x2 was the second argument
  EXPECT_EQ(test.Evaluate(1, 2.0, {20.0, 999.0}, error), 222.0);
  EXPECT_EQ(error, 0);
}

TEST(EvaluateTimeExpression, WithoutAStoreThereIsNoValue) {
  TimeExpressions test(NumberedColumns(1));
  int error = 0;
  EXPECT_EQ(test.Evaluate(1, 1.0, {1.0}, error), 0.0);
  EXPECT_EQ(error, 1);
}

TEST(EvaluateTimeExpression, AnExpressionThatTheStoreDoesNotHoldHasNoValue) {
  TimeExpressions test(NumberedColumns(1));
  ASSERT_EQ(test.Compile({"T_", "T_*2"}), 0);
  for (const int expression : {-1, 0, 3, 41}) {
    int error = 0;
    EXPECT_EQ(test.Evaluate(expression, 1.0, {1.0}, error), 0.0) << expression;
    EXPECT_EQ(error, 1) << expression;
  }
}

TEST(EvaluateTimeExpression, AFormulaThatFailsIsZeroWithAnError) {
  TimeExpressions test(NumberedColumns(1));
  ASSERT_EQ(test.Compile({"1/(T_-5)", "log(x1)*T_", "exp(T_*1000)"}), 0);
  struct {
    int Expression;
    double Time, Variable;
    bool Fails;
  } const cases[] = {
      {1, 5.0, 0.0, true},  {1, 6.0, 0.0, false}, {2, 1.0, -1.0, true},
      {2, 1.0, 1.0, false}, {3, 10.0, 0.0, true}, {3, 0.001, 0.0, false},
  };
  for (const auto& c : cases) {
    int error = -1;
    const double value = test.Evaluate(c.Expression, c.Time, {c.Variable}, error);
    EXPECT_EQ(error, c.Fails ? 1 : 0) << "expression " << c.Expression << " at " << c.Time;
    if (c.Fails) {
      EXPECT_EQ(value, 0.0) << "expression " << c.Expression << " at " << c.Time;
    }
  }
}

TEST(EvaluateTimeExpression, AllocatesNothing) {
  TimeExpressions test(NumberedColumns(38));
  ASSERT_EQ(test.Compile({SumOf(1, 38), "log(T_)*x38"}), 0);
  const std::vector<double> values(38, 1.5);
  int error = 0;
  const int requests = test.Host.Requests();
  double sum = 0.0;
  const long before = testing::AllocationCount();
  for (int time = 1; time <= 100; ++time) {
    sum += test.Evaluate(1, time, values, error) + test.Evaluate(2, time, values, error);
  }
  EXPECT_EQ(testing::AllocationCount(), before);
  EXPECT_EQ(test.Host.Requests(), requests);
  EXPECT_GT(sum, 0.0);
}

}  // namespace
}  // namespace orv
