// The programs that formulas become.
#include <gtest/gtest.h>

#include <string>

#include "FormulaRuns.h"

namespace orv {
namespace {

using testing::Listing;
using testing::Names;

std::string ProgramOf(const std::string& formula) {
  return Listing(CompileFormula(formula, Names({"x", "y"}), TimeSymbol::Allowed).Program);
}

TEST(Program, TakesSymbolsAndConstantsIntoOperations) {
  struct {
    const char* formula;
    const char* program;
  } const cases[] = {
      {"x", "symbol 0, end"},
      {"2.5", "constant 2.5, end"},
      {"y", "symbol 0, end"},
      {"x+y", "symbol 0, add symbol 1, end"},
      {"x-1", "symbol 0, subtract constant 1, end"},
      {"1-x", "constant 1, subtract symbol 0, end"},
      {"log(T_+1)*x", "symbol 0, add constant 1, log, multiply symbol 1, end"},
      {"x*(x+y)", "symbol 0, symbol 0, add symbol 1, multiply, end"},
      {"x < y", "symbol 0, less symbol 1, end"},
      {"max(x, y, 3)", "symbol 0, max symbol 1, max constant 3, end"},
      {"-x", "symbol 0, negate, end"},
      {"x and y", "symbol 0, if false 3, and symbol 1, end"},
      {"x or y > 2", "symbol 0, if true 13, symbol 1, greater constant 2, or, end"},
      {"if(x, y, 3)", "symbol 0, branch 6 15, symbol 1, jump 9, constant 3, end"},
  };
  for (const auto& c : cases) EXPECT_EQ(ProgramOf(c.formula), c.program) << c.formula;
}

TEST(Program, HoldsTheResultsOfConstants) {
  struct {
    const char* formula;
    const char* program;
  } const cases[] = {
      {"1+2*3", "constant 7, end"},
      {"-2", "constant -2, end"},
      {"2^10*x", "constant 1024, multiply symbol 0, end"},
      {"x*(2+3)", "symbol 0, multiply constant 5, end"},
      {"x+1+2", "symbol 0, add constant 1, add constant 2, end"},
      {"sqrt(16)/x", "constant 4, divide symbol 0, end"},
      {"x > 365.25*2", "symbol 0, greater constant 730.5, end"},
      {"min(4, 3, 5)", "constant 3, end"},
      {"if(x, 1+1, 2*3)", "symbol 0, branch 12 21, constant 2, jump 9, constant 6, end"},
      // What fails stays, since it may not be reached.
      {"1/0", "constant 1, divide constant 0, end"},
      {"if(x, 1/0, log(0))", "symbol 0, branch 21 31, constant 1, divide constant 0, jump 10, constant 0, log, end"},
  };
  for (const auto& c : cases) EXPECT_EQ(ProgramOf(c.formula), c.program) << c.formula;
}

}  // namespace
}  // namespace orv
