#include <gtest/gtest.h>

#include "standalone/tables/VariableHints.h"

namespace orv {
namespace {

TableVariable Variable(std::vector<double> values, VariableType type = VariableType::Number) {
  TableVariable variable;
  variable.Name = "x";
  variable.Type = type;
  variable.Values = std::move(values);
  return variable;
}

TableVariable Labelled(std::vector<double> values) {
  TableVariable variable = Variable(std::move(values));
  variable.Labels = {{1.0, "one"}};
  return variable;
}

std::vector<double> Repeated(int distinct, int cases, double step = 1.0) {
  std::vector<double> values;
  for (int i = 0; i < cases; ++i) values.push_back((i % distinct) * step);
  return values;
}

TEST(VariableHints, ComeFromTheValues) {
  const struct {
    const char* what;
    TableVariable variable;
    const char* hint;
  } cases[] = {
      {"two whole values", Variable({0, 1, 1, 0}), "status or factor?"},
      {"two whole values, one case each", Variable({3, -8}), "status or factor?"},
      {"two values with a missing one", Variable({0, kMissingCode, 1}), "status or factor?"},
      {"two fractions", Variable({0.5, 1, 0.5, 1}), ""},
      {"two texts", Variable({1, 2, 2}, VariableType::Text), "status or factor?"},
      {"ten codes", Variable(Repeated(10, 40)), "factor?"},
      {"eleven codes", Variable(Repeated(11, 40)), ""},
      {"three fractions", Variable(Repeated(3, 40, 0.5)), ""},
      {"three codes, hardly repeated", Variable({1, 3, 2, 1, 2}), "time?"},
      {"500 labelled codes", Labelled(Repeated(500, 1000)), "factor?"},
      {"501 labelled codes", Labelled(Repeated(501, 2000)), ""},
      {"labelled codes, hardly repeated", Labelled({1, 3, 2, 1, 2}), ""},
      {"many numbers", Variable(Repeated(30, 300)), "time?"},
      {"many fractions", Variable({0.5, 2.25, 8, 8}), "time?"},
      {"a negative number among many", Variable({-0.5, 2.25, 8, 9}), ""},
      {"the numbers of the cases", Variable({1, 2, 3, 4, 5}), ""},
      {"one value", Variable({7, 7, 7}), ""},
      {"nothing", Variable({kMissingCode, kMissingCode}), ""},
      {"dates", Variable({0, 1, 1}, VariableType::Date), "date?"},
  };
  for (const auto& c : cases) EXPECT_EQ(HintOnVariable(c.variable), c.hint) << c.what;
}

}  // namespace
}  // namespace orv
