// Compiling the formulas of time-dependent covariates into their store.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "data/TimeExpressionCases.h"
#include "data/TimeExpressions.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::NumberedColumns;
using testing::SumOf;
using testing::TimeExpressions;

using Numbers = std::vector<std::int16_t>;

constexpr const char* kLimitMessage = "Maximum number of iterations must be between 1 and 1000.";

// A compiler that takes every text and finds these symbols in the formula of each call.
std::function<int(int, CompiledFormulaArea&)> Finding(const std::vector<Numbers>& symbols) {
  return [symbols](int call, CompiledFormulaArea& area) {
    const Numbers& found = symbols.at(static_cast<std::size_t>(call) - 1);
    area.SymbolCount = static_cast<int>(found.size());
    for (int k = 0; k < std::min(area.SymbolCount, area.SymbolRoom); ++k) {
      area.Symbols[k] = found[static_cast<std::size_t>(k)];
    }
    return 0;
  };
}

Numbers Range(int first, int last) {
  Numbers numbers;
  for (int k = first; k <= last; ++k) numbers.push_back(static_cast<std::int16_t>(k));
  return numbers;
}

// ---- The store ----------------------------------------------------------------------------------------------------

TEST(ExpressionStore, HasItsLayout) {
  TimeExpressions test(NumberedColumns(5));
  test.Host.Compile = [](int call, CompiledFormulaArea& area) {
    EXPECT_EQ(area.InstructionBytes, 32000);
    EXPECT_EQ(area.SymbolRoom, 50);
    std::memset(area.Instructions, 0x10 * call, 32000);
    return Finding({{6, 3}, {5, 6, 3, 1}})(call, area);
  };
  ASSERT_EQ(test.Compile({"first", "second"}), 0);
  EXPECT_THAT(test.Host.Blocks, ElementsAre("get 1284672"));
  EXPECT_EQ(test.At<std::uint16_t>(0), 2);
  const std::size_t first = 8;
  const std::size_t second = 8 + 32104;
  EXPECT_EQ(test.Host.Areas.at(0).Instructions, test.Host.Block + first);
  EXPECT_EQ(test.Host.Areas.at(1).Instructions, test.Host.Block + second);
  EXPECT_EQ(test.Host.Block[first + 31999], 0x10);
  EXPECT_EQ(test.ShortsAt(first + 32000, 3), (Numbers{2, 6, 3})) << "count, then the numbers";
  EXPECT_EQ(test.Host.Block[second], 0x20);
  EXPECT_EQ(test.Host.Block[second + 31999], 0x20);
  EXPECT_EQ(test.ShortsAt(second + 32000, 5), (Numbers{4, 5, 6, 3, 1}));
  EXPECT_EQ(test.ShortsAt(1284168, 4), (Numbers{3, 3, 5, 1})) << "distinct variables, the time apart";
}

TEST(ExpressionStore, EvaluatesInItsWorkArea) {
  TimeExpressions test(NumberedColumns(3));
  ASSERT_EQ(test.Compile({"x3+T_*x1"}), 0);
  int error = -1;
  EXPECT_EQ(test.Evaluate(1, 2.5, {30.0, 10.0}, error), 55.0);
  EXPECT_EQ(test.At<double>(1284272), 30.0);
  EXPECT_EQ(test.At<double>(1284280), 2.5);
  EXPECT_EQ(test.At<double>(1284288), 10.0);
}

TEST(ExpressionStore, FortyRecordsFitBeforeTheDistinctVariables) {
  TimeExpressions test(NumberedColumns(1));
  ASSERT_EQ(test.Compile(std::vector<std::string>(40, "T_*x1")), 0);
  EXPECT_EQ(test.At<std::uint16_t>(0), 40);
  const std::size_t last = 8 + 39 * std::size_t{32104};
  EXPECT_EQ(test.ShortsAt(last + 32000, 3), (Numbers{2, 2, 1}));
  EXPECT_EQ(last + 32104, 1284168U);
  EXPECT_EQ(test.ShortsAt(1284168, 2), (Numbers{1, 1}));
  for (const int expression : {1, 20, 40}) {
    int error = -1;
    EXPECT_EQ(test.Evaluate(expression, 3.0, {7.0}, error), 21.0) << expression;
    EXPECT_EQ(error, 0) << expression;
  }
}

// Memory of the host comes as it is.
TEST(ExpressionStore, CountsFromZeroWhateverTheBlockHeld) {
  TimeExpressions test(NumberedColumns(2));
  ASSERT_EQ(test.Compile({}), 0);
  EXPECT_EQ(test.At<std::uint16_t>(0), 0);
  EXPECT_EQ(test.At<std::int16_t>(1284168), 0);
  EXPECT_THAT(test.Listed, IsEmpty());
}

TEST(ExpressionStore, ReleasesItsBlockWithItself) {
  TimeExpressions test(NumberedColumns(1));
  ASSERT_EQ(test.Compile({"T_"}), 0);
  EXPECT_EQ(test.Host.LiveBlocks(), 1);
  test.Store.reset();
  EXPECT_EQ(test.Host.LiveBlocks(), 0);
}

TEST(ExpressionStore, KeepsTheFirstFailure) {
  TimeExpressions test(NumberedColumns(1));
  ASSERT_EQ(test.Compile({"T_"}), 0);
  EXPECT_FALSE(test.Store->Failure().has_value());
  test.Store->NoteFailure({2, 17, 4.5});
  test.Store->NoteFailure({1, 3, 9.0});
  ASSERT_TRUE(test.Store->Failure().has_value());
  EXPECT_EQ(test.Store->Failure()->Expression, 2);
  EXPECT_EQ(test.Store->Failure()->CaseNumber, 17);
  EXPECT_EQ(test.Store->Failure()->Time, 4.5);
  ASSERT_EQ(test.Compile({"T_"}), 0);
  EXPECT_FALSE(test.Store->Failure().has_value()) << "a new store has none";
}

// ---- What the compiler is given -----------------------------------------------------------------------------------

TEST(CompileTimeExpressions, HandsTheTextOverInUpperCaseBehindItsLength) {
  struct {
    const char* What;
    std::string Expression;
    std::size_t Longest;
    std::string Text;
  } const cases[] = {
      {"lower case", "t_*age", 6, "\x07T_*AGE;"},
      {"the first and the last letter", "az", 32000,
       "\x03"
       "AZ;"},
      {"capitals and blanks", " LOG( T_ )", 32000, "\x0B LOG( T_ );"},
      {"signs next to the letters", "`{@[", 4, "\x05`{@[;"},
      {"a zero byte", std::string("T_+1\0+ age", 10), 32000, "\x05T_+1;"},
      {"a zero byte at once", std::string("\0T_", 3), 32000, "\x01;"},
      {"beyond the given length", "T_+123", 3, "\x04T_+;"},
      {"a given length of zero", "T_", 0, "\x01;"},
      {"nothing", "", 32000, "\x01;"},
      {"letters beyond ASCII stay", "gr\xC3\xB6\xC3\x9F\x65*t_", 32000, "\x0BGR\xC3\xB6\xC3\x9F\x45*T_;"},
      {"a semicolon", "t_;x", 32000, "\x05T_;X;"},
  };
  for (const auto& c : cases) {
    TimeExpressions test(NumberedColumns(1));
    test.Host.Compile = Finding({{}});
    EXPECT_EQ(test.Compile({c.Expression}, c.Longest), 0) << c.What;
    EXPECT_THAT(test.Host.Texts, ElementsAre(c.Text)) << c.What;
  }
}

TEST(CompileTimeExpressions, CutsTheLengthOfALongTextToAByte) {
  for (const std::size_t length : {94U, 253U, 254U, 255U, 256U, 1000U, 32000U}) {
    TimeExpressions test(NumberedColumns(1));
    test.Host.Compile = Finding({{}});
    EXPECT_EQ(test.Compile({std::string(length, 'x')}, length), 0) << length;
    const std::string expected = static_cast<char>((length + 1) % 256) + std::string(length, 'X') + ";";
    EXPECT_THAT(test.Host.Texts, ElementsAre(expected)) << length;
  }
}

TEST(CompileTimeExpressions, OffersTheNamesOfTheTableWithTheTimeBehindThem) {
  TimeExpressions test({{"age", {1}}, {"Ph.Ecog", {1}}, {"blood pressure", {1}}});
  ASSERT_EQ(test.Compile({"T_"}), 0);
  EXPECT_THAT(test.Host.Names, ElementsAre("age", "Ph.Ecog", "blood pressure", "T_"));
}

// ---- What it yields -----------------------------------------------------------------------------------------------

TEST(CompileTimeExpressions, AFunctionOfTimeAloneHasOneSymbolAndReadsNothing) {
  TimeExpressions test(NumberedColumns(4));
  ASSERT_EQ(test.Compile({"T_*T_+log(T_+1)"}), 0);
  EXPECT_EQ(test.Store->SymbolCount(1), 1);
  EXPECT_EQ(test.Store->Symbols(1)[0], 5);
  EXPECT_EQ(test.Store->VariableCount(), 0);
  EXPECT_THAT(test.Listed, IsEmpty());
}

TEST(CompileTimeExpressions, ListsTheVariablesOnceInTheOrderOfTheirFirstAppearance) {
  struct {
    std::vector<std::string> Expressions;
    Numbers Listed;
  } const cases[] = {
      {{"x4*T_"}, {4}},          {{"T_*x4"}, {4}},
      {{"x3+x1+x3*T_"}, {3, 1}}, {{"x5*T_", "x2*T_+x5", "T_", "x1+x2-T_"}, {5, 2, 1}},
      {{"x1*T_", "x1+T_"}, {1}},
  };
  for (const auto& c : cases) {
    TimeExpressions test(NumberedColumns(5));
    ASSERT_EQ(test.Compile(c.Expressions), 0) << c.Expressions[0];
    EXPECT_EQ(test.Listed, c.Listed) << c.Expressions[0];
    EXPECT_EQ(Numbers(test.Store->Variables(), test.Store->Variables() + test.Store->VariableCount()), c.Listed)
        << c.Expressions[0];
    EXPECT_EQ(test.Store->ExpressionCount(), static_cast<int>(c.Expressions.size())) << c.Expressions[0];
    EXPECT_THAT(test.Host.Messages(), IsEmpty());
  }
}

TEST(CompileTimeExpressions, NamesMatchHoweverTheyAreCased) {
  TimeExpressions test({{"other", {1}}, {"Ph.Ecog", {1}}, {"AGE", {1}}, {"dose", {1}}});
  ASSERT_EQ(test.Compile({"t_*age+pH.eCOG-Dose"}), 0);
  EXPECT_THAT(test.Listed, ElementsAre(3, 2, 4));
}

// ---- Failures -----------------------------------------------------------------------------------------------------

TEST(CompileTimeExpressions, APlaceAboveZeroIsAnErrorAndOneBelowIsNot) {
  for (const int position : {-32000, -1, 0, 1, 7, 32000}) {
    TimeExpressions test(NumberedColumns(2));
    test.Host.Compile = [position](int, CompiledFormulaArea& area) {
      area.ErrorPosition = position;
      area.SymbolCount = 1;
      area.Symbols[0] = 2;
      return 0;
    };
    EXPECT_EQ(test.Compile({"x2*T_"}), std::max(position, 0));
    EXPECT_EQ(test.Store != nullptr, position <= 0) << position;
    EXPECT_EQ(test.Listed, position <= 0 ? Numbers{2} : Numbers{}) << position;
    EXPECT_THAT(test.Host.Messages(), IsEmpty()) << position;
  }
}

TEST(CompileTimeExpressions, TheFirstErrorEndsIt) {
  TimeExpressions test(NumberedColumns(2));
  EXPECT_NE(test.Compile({"T_", "T_+", "T_*x1"}), 0);
  EXPECT_EQ(test.Host.Texts.size(), 2U);
  EXPECT_EQ(test.Store, nullptr);
  EXPECT_EQ(test.Host.LiveBlocks(), 0);
  EXPECT_THAT(test.Listed, IsEmpty());
  EXPECT_THAT(test.Host.Messages(), IsEmpty()) << "the caller speaks";
}

TEST(CompileTimeExpressions, FormulasThatAreNoneAreErrors) {
  for (const std::string formula : {"", " ", "T_+", "T_*nobody", "log(T_", "T_ T_", "1;2", "T_ = = 1"}) {
    TimeExpressions test(NumberedColumns(2));
    EXPECT_GT(test.Compile({formula}), 0) << '"' << formula << '"';
    EXPECT_EQ(test.Store, nullptr) << '"' << formula << '"';
  }
}

TEST(CompileTimeExpressions, MemoryThatIsOutInTheCompilerIsFive) {
  TimeExpressions test(NumberedColumns(2));
  test.Host.Compile = [](int call, CompiledFormulaArea&) { return call == 2 ? 5 : 0; };
  EXPECT_EQ(test.Compile({"T_", "T_", "T_"}), 5);
  EXPECT_EQ(test.Host.Texts.size(), 2U);
  EXPECT_EQ(test.Store, nullptr);
  EXPECT_EQ(test.Host.LiveBlocks(), 0);
}

TEST(CompileTimeExpressions, MemoryThatIsOutForTheStoreIsOne) {
  TimeExpressions test(NumberedColumns(2));
  ASSERT_EQ(test.Compile({"T_"}), 0);
  test.Host.FailAllocation(1);
  EXPECT_EQ(test.Compile({"T_*x1"}), 1);
  EXPECT_THAT(test.Host.Texts, IsEmpty()) << "nothing is compiled";
  EXPECT_EQ(test.Store, nullptr) << "the store before is gone";
  EXPECT_EQ(test.Host.LiveBlocks(), 0);
  EXPECT_THAT(test.Host.Messages(), IsEmpty());
}

TEST(CompileTimeExpressions, TheOldBlockGoesBeforeTheNewOneComes) {
  TimeExpressions test(NumberedColumns(2));
  const std::string get = "get 1284672";
  ASSERT_EQ(test.Compile({"T_*x1"}), 0);
  ASSERT_EQ(test.Compile({"T_*x2"}), 0);
  EXPECT_THAT(test.Host.Blocks, ElementsAre(get, "free", get));
  EXPECT_THAT(test.Listed, ElementsAre(2)) << "the list begins anew";
  EXPECT_EQ(test.Compile({"T_", "T_+"}), 4);
  EXPECT_THAT(test.Host.Blocks, ElementsAre(get, "free", get, "free", get, "free"));
}

// ---- Limits -------------------------------------------------------------------------------------------------------

struct Limit {
  const char* What;
  std::vector<Numbers> Symbols;  // of each expression; the time is 61
  bool Passes;
  std::size_t Compiled;  // expressions that the compiler was asked for
};

Numbers Repeated(int variables, int symbols) {
  Numbers numbers;
  for (int k = 0; k < symbols; ++k) numbers.push_back(static_cast<std::int16_t>(k % variables + 1));
  return numbers;
}

TEST(CompileTimeExpressions, LimitsAreKept) {
  const Limit cases[] = {
      {"50 symbols of 38 variables", {Repeated(38, 50), {61}}, true, 2},
      {"51 symbols", {Repeated(2, 51), {61}}, false, 1},
      {"51 symbols in the second", {{61}, Repeated(2, 51), {61}}, false, 2},
      {"38 variables", {Range(1, 38), {61}}, true, 2},
      {"38 variables and the time", {Range(1, 38), {61, 38}}, true, 2},
      {"39 variables", {Range(1, 39), {61}}, false, 2},
      {"38 variables over all", {Range(1, 20), Range(15, 30), Range(30, 38)}, true, 3},
      {"39 variables over all", {Range(1, 20), Range(15, 30), Range(30, 39), {61}}, false, 4},
      {"50 variables over all", {Range(1, 40), Range(41, 50), {61}}, false, 3},
      {"51 variables over all", {Range(1, 40), Range(41, 51), {61}}, false, 2},
  };
  for (const Limit& c : cases) {
    TimeExpressions test(NumberedColumns(60));
    test.Host.Compile = Finding(c.Symbols);
    const int failed = test.Compile(std::vector<std::string>(c.Symbols.size(), "T_"));
    EXPECT_EQ(failed == 0, c.Passes) << c.What;
    EXPECT_EQ(test.Host.Texts.size(), c.Compiled) << c.What;
    EXPECT_EQ(test.Store != nullptr, c.Passes) << c.What;
    EXPECT_EQ(test.Host.LiveBlocks(), c.Passes ? 1 : 0) << c.What;
    if (c.Passes) {
      EXPECT_THAT(test.Host.Trace, IsEmpty()) << c.What;
      EXPECT_EQ(test.Listed, Range(1, 38)) << c.What;
      continue;
    }
    EXPECT_THAT(test.Host.Trace, ElementsAre("instance text 10024")) << c.What;
    EXPECT_THAT(test.Host.Messages(), ElementsAre(kLimitMessage)) << c.What;
    EXPECT_EQ(test.Host.MessageParent, test.Parent()) << c.What;
  }
}

TEST(CompileTimeExpressions, LimitsHoldForRealFormulas) {
  struct {
    std::vector<std::string> Expressions;
    bool Passes;
  } const cases[] = {
      {{SumOf(1, 38)}, true},
      {{SumOf(1, 39)}, false},
      {{SumOf(1, 49)}, false},
      {{SumOf(1, 50)}, false},
      {{SumOf(1, 20), SumOf(10, 38)}, true},
      {{SumOf(1, 20), SumOf(10, 39)}, false},
      {{SumOf(1, 30), SumOf(31, 60)}, false},
  };
  for (const auto& c : cases) {
    TimeExpressions test(NumberedColumns(60));
    EXPECT_EQ(test.Compile(c.Expressions) == 0, c.Passes) << c.Expressions.back();
    EXPECT_EQ(test.Host.Messages().size(), c.Passes ? 0U : 1U) << c.Expressions.back();
    if (!c.Passes) continue;
    EXPECT_EQ(test.Listed, Range(1, 38));
    int error = -1;
    std::vector<double> values(38);
    for (std::size_t k = 0; k < values.size(); ++k) values[k] = static_cast<double>(k + 1);
    const double last = test.Evaluate(static_cast<int>(c.Expressions.size()), 2.0, values, error);
    const double sum = c.Expressions.size() == 1 ? 741.0 : 741.0 - 45.0;  // of 1 to 38, or of 10 to 38
    EXPECT_EQ(last, 2.0 * sum);
  }
}

TEST(CompileTimeExpressions, AnErrorComesBeforeTooManyVariables) {
  TimeExpressions test(NumberedColumns(60));
  EXPECT_EQ(test.Compile({SumOf(1, 39), "T_+"}), 4);
  EXPECT_THAT(test.Host.Messages(), IsEmpty());
}

TEST(CompileTimeExpressions, FortyExpressionsAreTheMost) {
  TimeExpressions test(NumberedColumns(1));
  EXPECT_EQ(test.Compile(std::vector<std::string>(40, "T_")), 0);
  EXPECT_EQ(test.Host.Texts.size(), 40U);
  EXPECT_NE(test.Compile(std::vector<std::string>(41, "T_")), 0);
  EXPECT_THAT(test.Host.Texts, IsEmpty());
  EXPECT_EQ(test.Store, nullptr);
  EXPECT_EQ(test.Host.LiveBlocks(), 0);
}

}  // namespace
}  // namespace orv
