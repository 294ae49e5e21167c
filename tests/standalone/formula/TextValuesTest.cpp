// Comparisons with the texts of values and with dates.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FormulaRuns.h"
#include "standalone/formula/EvaluateFormula.h"

namespace orv {
namespace {

using testing::Refusal;

const std::vector<ValueLabel> kArms = {{1.0, "control"}, {2.0, "test"}};
const std::vector<ValueLabel> kSexes = {{1.0, "M"}, {2.0, "f"}, {3.0, "m"}};
const std::vector<ValueLabel> kCentres = {{10.0, "arm"}, {20.0, "\"north\" side"}, {30.0, "2024-01-01"}};

FormulaNames TrialNames() {
  return FormulaNames({{"arm", &kArms, false},
                       {"sex", &kSexes, false},
                       {"centre", &kCentres, false},
                       {"age", nullptr, false},
                       {"entry", nullptr, true},
                       {"test", nullptr, false}});
}

// The values of a case in the order of the names.
double ValueFor(const std::string& formula, const std::vector<double>& values) {
  const CompiledFormula compiled = CompileFormula(formula, TrialNames());
  std::vector<double> arguments;
  for (const int symbol : compiled.Symbols) arguments.push_back(values.at(static_cast<std::size_t>(symbol) - 1));
  double result = 0.0;
  EXPECT_EQ(EvaluateFormula(compiled.Program.data(), arguments.data(), result), 0) << formula;
  return result;
}

TEST(TextValues, AreComparedByTheirCodes) {
  //                                 arm  sex  centre age  entry     test
  const std::vector<double> values = {2.0, 1.0, 20.0, 50.0, 19723.0, 7.0};  // entry: 2024-01-01
  struct {
    const char* text;
    double value;
  } const cases[] = {
      {"arm = 'control'", 0.0},
      {"arm = 'test'", 1.0},
      {"arm == \"test\"", 1.0},
      {"arm <> 'test'", 0.0},
      {"arm != 'control'", 1.0},
      {"'test' = arm", 1.0},
      {"(arm) = ('test')", 1.0},
      {"v1 = 'test'", 1.0},
      {"#1 = 'test'", 1.0},
      {"'arm' = 'test'", 1.0},
      {"arm = 'TEST'", 1.0},
      {"ARM = 'Control'", 0.0},
      {"arm = 2", 1.0},
      {"arm = 'test' and age > 40", 1.0},
      {"not arm = 'test'", 0.0},
      {"if(arm = 'test', age, 0)", 50.0},
      {"age * (arm = 'test')", 50.0},
      {"centre = '\"north\" side'", 1.0},
      {"centre = \"\"\"north\"\" side\"", 1.0},
      {"centre = '2024-01-01'", 0.0},  // a text, the variable holding no dates
      // Exact case first.
      {"sex = 'M'", 1.0},
      {"sex = 'm'", 0.0},
      {"sex = 'F'", 0.0},
      // Dates, by any comparison.
      {"entry = '2024-01-01'", 1.0},
      {"entry >= '2024-01-01'", 1.0},
      {"entry < '2024-01-02'", 1.0},
      {"'2023-12-31' < entry", 1.0},
      {"entry > '2024-01-01'", 0.0},
      {"entry = 19723", 1.0},
      // What is no value is a variable.
      {"age = 'test'", 0.0},
      {"'test' < age", 1.0},
      {"'test' + 0 = 7", 1.0},
      {"arm < 'test'", 1.0},  // texts have no order, so this is the variable
      {"arm + 0 = 'test'", 0.0},
      {"+arm = 'test'", 0.0},
      {"arm = +'test'", 0.0},
      {"centre = 'age'", 0.0},
  };
  for (const auto& c : cases) EXPECT_EQ(ValueFor(c.text, values), c.value) << c.text;
}

TEST(TextValues, MayBeQuotedNamesOfVariablesAsWell) {
  const std::vector<double> values = {2.0, 1.0, 10.0, 50.0, 19723.0, 7.0};
  EXPECT_EQ(ValueFor("'arm' = 'test'", values), 1.0);
  EXPECT_EQ(ValueFor("'test' = 'arm'", values), 1.0);
  EXPECT_EQ(ValueFor("'centre' = 'arm'", values), 1.0);
  EXPECT_EQ(ValueFor("'arm' = 'centre'", values), 1.0);
  EXPECT_EQ(ValueFor("'age' = 'test'", values), 0.0);  // no text of either, so two variables
  // When each is a text of the other, the left one is the variable.
  const std::vector<ValueLabel> ofA = {{5.0, "b"}};
  const std::vector<ValueLabel> ofB = {{6.0, "a"}};
  const FormulaNames names({{"a", &ofA, false}, {"b", &ofB, false}});
  EXPECT_EQ(CompileFormula("'a' = 'b'", names).Symbols, (std::vector<int>{1}));
  EXPECT_EQ(CompileFormula("'b' = 'a'", names).Symbols, (std::vector<int>{2}));
}

TEST(TextValues, AreNoSymbols) {
  EXPECT_EQ(CompileFormula("arm = 'test'", TrialNames()).Symbols, (std::vector<int>{1}));
  EXPECT_EQ(CompileFormula("'test' = arm", TrialNames()).Symbols, (std::vector<int>{1}));
  EXPECT_EQ(CompileFormula("'test' < arm", TrialNames()).Symbols, (std::vector<int>{6, 1}));
  EXPECT_EQ(CompileFormula("age = 'test'", TrialNames()).Symbols, (std::vector<int>{4, 6}));
}

TEST(TextValues, AreRefusedWhereTheyMeanNothing) {
  struct {
    const char* text;
    const char* message;
  } const cases[] = {
      {"arm = 'tset'", "at character 7: \"arm\" has no value \"tset\". Closest: \"test\", \"control\"."},
      {"'tset' <> arm", "at character 1: \"arm\" has no value \"tset\". Closest: \"test\", \"control\"."},
      {"arm < 'control'", "at character 7: \"control\" is a value of \"arm\". Texts are compared with = and <> only."},
      {"age = '50'",
       "at character 7: no variable \"50\", and \"age\" holds numbers, not texts. Numbers are written without quotes."},
      {"entry > 'May 2024'",
       "at character 9: \"May 2024\" is no date. \"entry\" holds dates, which are written as \"2024-03-31\"."},
      {"entry > '2023-02-30'", "at character 9: \"2023-02-30\" is no day of the calendar."},
      {"arm = Control", "at character 7: no variable \"Control\". It is a value of \"arm\": put it in quotes."},
      {"control = arm", "at character 1: no variable \"control\". It is a value of \"arm\": put it in quotes."},
      {"arm + 'control'", "at character 7: no variable \"control\". Closest: \"centre\", \"entry\", \"arm\"."},
      {"arm + 0 = 'control'", "at character 11: no variable \"control\". Closest: \"centre\", \"entry\", \"arm\"."},
      {"'control' = 'test'",
       "at character 1: no variable \"control\", and \"test\" holds numbers, not texts. Numbers are written without "
       "quotes."},
  };
  for (const auto& c : cases) EXPECT_EQ(Refusal(c.text, TrialNames()), c.message) << c.text;
}

TEST(TextValues, AreAmbiguousWhenSeveralDifferByCaseOnly) {
  const std::vector<ValueLabel> labels = {{1.0, "Yes"}, {2.0, "YES"}};
  const FormulaNames names({{"reply", &labels, false}});
  EXPECT_EQ(Refusal("reply = 'Yes'", names), "compiled");
  EXPECT_EQ(
      Refusal("reply = 'yes'", names),
      "at character 9: \"yes\" differs from several values of \"reply\" by case only. Write one of them as it is.");
}

}  // namespace
}  // namespace orv
