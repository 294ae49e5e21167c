// How a formula names variables, the time and pi.
#include <gtest/gtest.h>

#include <numbers>
#include <string>
#include <vector>

#include "FormulaRuns.h"

namespace orv {
namespace {

using testing::NamedValue;
using testing::Names;
using testing::Refusal;
using testing::ValueOf;

std::vector<int> SymbolsOf(const std::string& formula, const std::vector<std::string>& names, TimeSymbol time) {
  return CompileFormula(formula, Names(names), time).Symbols;
}

TEST(FormulaNames, AreReadToTheirLastCharacter) {
  struct {
    const char* text;
    std::vector<NamedValue> values;
    double value;
  } const cases[] = {
      {"age+1", {{"age", 5.0}}, 6.0},
      {"ph.ecog*2", {{"ph.ecog", 5.0}, {"ph", 1.0}}, 10.0},
      {"ph", {{"ph.ecog", 5.0}, {"ph", 1.0}}, 1.0},
      {"_x_1", {{"_x_1", 5.0}}, 5.0},
      {".hidden", {{".hidden", 5.0}}, 5.0},
      {"x1+x10", {{"x1", 1.0}, {"x10", 2.0}}, 3.0},
      {"2nd.visit-1", {{"2nd.visit", 5.0}}, 4.0},
      {"1e", {{"1e", 5.0}}, 5.0},
      {"1e5", {{"1e5", 5.0}}, 1e5},  // a number comes first
      {"gr\xC3\xB6\xC3\x9F"
       "e/2",
       {{"gr\xC3\xB6\xC3\x9F"
         "e",
         5.0}},
       2.5},
      {"\xE5\xB9\xB4\xE9\xBD\xA2*2", {{"\xE5\xB9\xB4\xE9\xBD\xA2", 5.0}}, 10.0},
      {"android", {{"android", 5.0}, {"and", 1.0}}, 5.0},
      {"nothing", {{"nothing", 5.0}}, 5.0},
      {"order", {{"order", 5.0}}, 5.0},
      {"logx", {{"logx", 5.0}}, 5.0},
  };
  for (const auto& c : cases) EXPECT_EQ(ValueOf(c.text, c.values), c.value) << c.text;
}

TEST(FormulaNames, MayStandInQuotes) {
  struct {
    const char* text;
    std::vector<NamedValue> values;
  } const cases[] = {
      {"\"blood pressure\" * 2", {{"blood pressure", 5.0}}},
      {"'blood pressure' * 2", {{"blood pressure", 5.0}}},
      {"\"a+b\"*2", {{"a+b", 5.0}, {"a", 1.0}, {"b", 1.0}}},
      {"\"the \"\"best\"\" one\"*2", {{"the \"best\" one", 5.0}}},
      {"'patient''s'*2", {{"patient's", 5.0}}},
      {"\"patient's\"*2", {{"patient's", 5.0}}},
      {"\"and\"*2", {{"and", 5.0}}},
      {"'v2'*2", {{"v2", 5.0}, {"x", 1.0}}},
      {"\"T_\"*2", {{"T_", 5.0}, {"x", 1.0}}},
      {"\"12\"*2", {{"12", 5.0}}},
      {"\"x\"*2", {{"x", 5.0}}},
      {"'X'*2", {{"x", 5.0}}},
  };
  for (const auto& c : cases) EXPECT_EQ(ValueOf(c.text, c.values), 10.0) << c.text;
}

TEST(FormulaNames, MatchWithoutRegardToCase) {
  for (const char* text : {"Age", "AGE", "age", "aGe"}) EXPECT_EQ(ValueOf(text, {{"Age", 5.0}}), 5.0) << text;
  EXPECT_EQ(ValueOf("GR\xC3\x96\xC3\x9F"
                    "E",
                    {{"Gr\xC3\xB6\xC3\x9F"
                      "e",
                      5.0}}),
            5.0);
  EXPECT_EQ(ValueOf("\xCE\x91\xCE\xA3", {{"\xCE\xB1\xCF\x82", 5.0}}), 5.0);  // a final sigma
  EXPECT_EQ(ValueOf("\xD0\x92\xD0\x9E\xD0\x97", {{"\xD0\xB2\xD0\xBE\xD0\xB7", 5.0}}), 5.0);
}

TEST(FormulaNames, PreferTheExactCase) {
  const std::vector<NamedValue> values = {{"AGE", 1.0}, {"age", 2.0}, {"Age", 3.0}};
  EXPECT_EQ(ValueOf("AGE", values), 1.0);
  EXPECT_EQ(ValueOf("age", values), 2.0);
  EXPECT_EQ(ValueOf("'Age'", values), 3.0);
}

TEST(FormulaNames, MayBeNumbers) {
  const std::vector<NamedValue> values = {{"a", 1.0}, {"b", 2.0}, {"a b", 3.0}};
  EXPECT_EQ(ValueOf("v3", values), 3.0);
  EXPECT_EQ(ValueOf("V1+v2", values), 3.0);
  EXPECT_EQ(ValueOf("v03", values), 3.0);
  EXPECT_EQ(ValueOf("#3", values), 3.0);
  EXPECT_EQ(ValueOf("#1+#2*#3", values), 7.0);
}

TEST(FormulaNames, NumbersComeAfterVariablesOfThatName) {
  const std::vector<NamedValue> values = {{"v2", 1.0}, {"x", 2.0}, {"V3", 5.0}};
  EXPECT_EQ(ValueOf("v2", values), 1.0);
  EXPECT_EQ(ValueOf("#2", values), 2.0);
  EXPECT_EQ(ValueOf("v1", values), 1.0);
  EXPECT_EQ(ValueOf("v3", values), 5.0);
}

TEST(FormulaNames, PiIsANumberUnlessItIsAVariable) {
  EXPECT_EQ(ValueOf("pi"), std::numbers::pi);
  EXPECT_EQ(ValueOf("PI/2"), std::numbers::pi / 2.0);
  EXPECT_EQ(ValueOf("pi", {{"Pi", 4.0}}), 4.0);
}

TEST(FormulaNames, FunctionsAndVariablesMayShareAName) {
  EXPECT_EQ(ValueOf("log + log(1) + min", {{"log", 2.0}, {"min", 3.0}}), 5.0);
  EXPECT_EQ(ValueOf("if(if, max (if, 1), 0)", {{"if", 2.0}}), 2.0);
}

TEST(FormulaNames, TheTimeIsTheSymbolAfterTheLastVariable) {
  EXPECT_EQ(ValueOf("T_*x", {{"x", 2.0}, {"T_", 5.0}}), 10.0);
  EXPECT_EQ(ValueOf("t_+1", {{"x", 2.0}, {"T_", 5.0}}), 6.0);
  EXPECT_EQ(SymbolsOf("T_", {"a", "b"}, TimeSymbol::Allowed), (std::vector<int>{3}));
  EXPECT_EQ(SymbolsOf("t_", {}, TimeSymbol::Allowed), (std::vector<int>{1}));
  // The time comes before a variable of its name; quotes name the variable.
  EXPECT_EQ(SymbolsOf("T_", {"T_", "b"}, TimeSymbol::Allowed), (std::vector<int>{3}));
  EXPECT_EQ(SymbolsOf("'T_'", {"T_", "b"}, TimeSymbol::Allowed), (std::vector<int>{1}));
  // Where there is no time, it is a name like any other.
  EXPECT_EQ(SymbolsOf("t_", {"b", "T_"}, TimeSymbol::None), (std::vector<int>{2}));
}

TEST(FormulaNames, SymbolsComeInOrderOfFirstAppearance) {
  const std::vector<std::string> names = {"a", "b", "c", "d"};
  struct {
    const char* text;
    std::vector<int> symbols;
  } const cases[] = {
      {"1+2", {}},
      {"d", {4}},
      {"b+a", {2, 1}},
      {"b+a*b-a", {2, 1}},
      {"c*(d-T_)/a", {3, 4, 5, 1}},
      {"T_+t_+v1+A", {5, 1}},
      {"if(d, c, b)", {4, 3, 2}},
      {"d and c or b and a", {4, 3, 2, 1}},
      {"1 < d", {4}},
      {"a^b^c", {1, 2, 3}},
      {"max(c, b, a)", {3, 2, 1}},
      {"if(0, a, b)", {1, 2}},  // also of a part that is never reached
      {"0*a", {1}},
  };
  for (const auto& c : cases) EXPECT_EQ(SymbolsOf(c.text, names, TimeSymbol::Allowed), c.symbols) << c.text;
}

TEST(FormulaNames, ManySymbolsAreNoFault) {
  std::vector<std::string> names;
  std::string formula = "0";
  double expected = 0.0;
  std::vector<NamedValue> values;
  for (int i = 1; i <= 2000; ++i) {
    values.push_back({"x" + std::to_string(i), static_cast<double>(i)});
    formula += "+x" + std::to_string(i);
    expected += i;
  }
  EXPECT_EQ(ValueOf(formula, values), expected);
}

TEST(FormulaNames, OfATableComeWithTextsAndDates) {
  MemoryTable table;
  table.AddVariable({"arm", VariableType::Text, kMissingCode, {{1.0, "control"}, {2.0, "test"}}, {1.0}});
  table.AddVariable({"entry", VariableType::Date, kMissingCode, {}, {365.0}});
  table.AddVariable({"age", VariableType::Number, kMissingCode, {}, {50.0}});
  const FormulaNames names = FormulaNames::OfTable(table);
  EXPECT_EQ(names.Count(), 3);
  EXPECT_EQ(names.Variable(3).Name, "age");
  EXPECT_EQ(names.Find("ENTRY"), (std::vector<int>{2}));
  EXPECT_EQ(Refusal("arm = 'test' and entry > '1970-06-01'", names), "compiled");
  EXPECT_NE(Refusal("age = 'test'", names), "compiled");
}

}  // namespace
}  // namespace orv
