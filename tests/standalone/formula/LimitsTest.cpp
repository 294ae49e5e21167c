// Formulas that are too long or too deep are refused; none brings the compiler down.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "FormulaRuns.h"
#include "standalone/formula/EvaluateFormula.h"
#include "standalone/formula/FormulaProgram.h"

namespace orv {
namespace {

using testing::Names;
using testing::Refusal;
using testing::ValueOf;

std::string Repeated(const std::string& text, int times) {
  std::string repeated;
  for (int i = 0; i < times; ++i) repeated += text;
  return repeated;
}

const char* const kTooDeep = "nested too deeply. A formula may have 200 levels, and 256 intermediate values at a time.";

TEST(FormulaLimits, NestingOfEveryKindIsBounded) {
  struct {
    const char* what;
    std::string before;  // of each level
    std::string after;
    std::string core;
    double value;  // at 200 levels
  } const cases[] = {
      {"parentheses", "(", ")", "x", 2.0},    {"functions", "abs(", ")", "x", 2.0},
      {"arguments", "max(1,", ")", "x", 2.0}, {"minus signs", "-", "", "x", 2.0},
      {"plus signs", "+", "", "x", 2.0},      {"not", "not ", "", "x", 1.0},
      {"powers", "1^", "", "x", 1.0},         {"conditions", "if(x,", ",1)", "x", 2.0},
      {"sums", "x+(", ")", "x", 402.0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ValueOf(Repeated(c.before, 200) + c.core + Repeated(c.after, 200), {{"x", 2.0}}), c.value) << c.what;
    const std::string deeper = Repeated(c.before, 201) + c.core + Repeated(c.after, 201);
    const std::string message = Refusal(deeper, Names({"x"}));
    EXPECT_TRUE(message.ends_with(kTooDeep)) << c.what << ": " << message;
    // Unfinished and far too deep.
    const std::string endless = Repeated(c.before, static_cast<int>(32000 / c.before.size()));
    EXPECT_TRUE(Refusal(endless, Names({"x"})).ends_with(kTooDeep)) << c.what;
  }
  EXPECT_EQ(Refusal(Repeated("(", 201) + "1", Names({})), "at character 201: " + std::string(kTooDeep));
}

TEST(FormulaLimits, IntermediateValuesAreBounded) {
  // Each level leaves five values pending.
  const auto nested = [&](int levels) {
    return "x or " + Repeated("x and x < x + x * x ^ (", levels) + "x" + Repeated(")", levels);
  };
  EXPECT_EQ(Refusal(nested(50), Names({"x"})), "compiled");
  const std::string message = Refusal(nested(100), Names({"x"}));
  EXPECT_TRUE(message.ends_with(kTooDeep)) << message;
}

TEST(FormulaLimits, TheDeepestFormulaThatCompilesRuns) {
  for (int levels = 1; levels <= 100; ++levels) {
    const std::string formula = Repeated("x and x < x + x * x ^ (", levels) + "x" + Repeated(")", levels);
    if (Refusal(formula, Names({"x"})) != "compiled") {
      EXPECT_GT(levels, 50);
      return;
    }
    EXPECT_EQ(ValueOf(formula, {{"x", 1.0}}), 1.0) << levels;
  }
  FAIL() << "no limit was met";
}

TEST(FormulaLimits, TextIsBounded) {
  EXPECT_EQ(ValueOf(std::string(31999, ' ') + "1"), 1.0);
  EXPECT_EQ(Refusal(std::string(32000, ' ') + "1", Names({})),
            "at character 1: the formula has 32001 characters, more than "
            "32000.");
  // Characters count, not bytes.
  std::string name;
  for (int i = 0; i < 30000; ++i) name += "\xC3\xA4";
  EXPECT_EQ(Refusal(name, Names({name})), "compiled");
}

TEST(FormulaLimits, ProgramsAreBounded) {
  // 3 bytes for x, 9 for each sum with a constant, 1 for the end: 3555 sums take 31999 bytes.
  const auto sums = [](int count) { return "x" + Repeated("+1", count); };
  const CompiledFormula longest = CompileFormula(sums(3555), Names({"x"}));
  EXPECT_EQ(longest.Program.size(), 3U + 3555U * 9U + 1U);
  EXPECT_EQ(ValueOf(sums(3555), {{"x", 0.0}}), 3555.0);
  EXPECT_EQ(Refusal(sums(3556), Names({"x"})),
            "at character 7113: the formula is too long: up to here it takes more than 32000 bytes when compiled.");
  EXPECT_TRUE(Refusal(sums(15000), Names({"x"})).starts_with("at character 7113: "));
  // Constants are added up on the way, so they take no room.
  EXPECT_EQ(ValueOf("1" + Repeated("+1", 15000)), 15001.0);
}

TEST(FormulaLimits, JumpsReachOverALongProgram) {
  const std::string longPart = "x" + Repeated("+1", 1700);
  const std::string formula = "if(x < 0, " + longPart + ", " + longPart + ") + 0.5";
  EXPECT_GT(CompileFormula(formula, Names({"x"})).Program.size(), 30000U);
  EXPECT_EQ(ValueOf(formula, {{"x", -1.0}}), 1699.5);
  EXPECT_EQ(ValueOf(formula, {{"x", 1.0}}), 1701.5);
  EXPECT_TRUE(std::isnan(ValueOf(formula, {{"x", testing::kMissing}})));
}

}  // namespace
}  // namespace orv
