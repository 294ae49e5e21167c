// Formulas in the form in which the module hands them over.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "FormulaRuns.h"
#include "standalone/formula/HostFormula.h"

namespace orv {
namespace {

using testing::kMissing;

// The record of one expression as the module lays it out.
struct Record {
  std::vector<unsigned char> Instructions = std::vector<unsigned char>(32000, 0xAB);
  std::vector<std::int16_t> Symbols = std::vector<std::int16_t>(51, -1);
  CompiledFormulaArea Area;

  explicit Record(int instructionBytes = 32000) {
    Area.Instructions = Instructions.data();
    Area.InstructionBytes = instructionBytes;
    Area.Symbols = Symbols.data();
    Area.SymbolRoom = 50;
    Area.SymbolCount = -1;
    Area.ErrorPosition = -1;
  }
  std::vector<std::int16_t> Listed() const { return {Symbols.begin(), Symbols.begin() + Area.SymbolCount}; }
};

std::string HostText(std::string formula) {
  std::transform(formula.begin(), formula.end(), formula.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  return static_cast<char>(formula.size() + 1) + formula + ";";
}

CAnalysisNamesArray HostNames(const std::vector<std::string>& names) {
  CAnalysisNamesArray array;
  for (const std::string& name : names) array.InsertNewStr(name);
  return array;
}

const std::vector<std::string> kNames = {"age", "Ph.Ecog", "blood pressure", "T_"};

TEST(HostFormula, CompilesAndRuns) {
  Record record;
  ASSERT_EQ(CompileHostFormula(HostText("log(t_+1)*ph.ecog + Age").c_str(), HostNames(kNames), record.Area), 0);
  EXPECT_EQ(record.Area.ErrorPosition, 0);
  EXPECT_EQ(record.Listed(), (std::vector<std::int16_t>{4, 2, 1}));
  EXPECT_EQ(record.Symbols[3], -1);
  const double arguments[] = {0.0, 3.0, 40.0};
  double result = 0.0;
  EXPECT_EQ(RunHostFormula(arguments, record.Instructions.data(), result), 0);
  EXPECT_EQ(result, 40.0);
  const double later[] = {1.718281828459045, 3.0, 40.0};
  EXPECT_EQ(RunHostFormula(later, record.Instructions.data(), result), 0);
  EXPECT_EQ(result, 43.0);
}

TEST(HostFormula, NeedsNoVariable) {
  Record record;
  ASSERT_EQ(CompileHostFormula(HostText("T_^2").c_str(), HostNames(kNames), record.Area), 0);
  EXPECT_EQ(record.Listed(), (std::vector<std::int16_t>{4}));
}

// Lengths above 254 do not fit the first byte, and one of 255 makes it zero.
TEST(HostFormula, IsReadToItsEndWhateverTheFirstByteSays) {
  for (const std::size_t length : {1U, 253U, 254U, 255U, 256U, 257U, 511U, 1000U, 31999U}) {
    const std::string text = HostText(std::string(length - 1, ' ') + "7");
    Record record;
    ASSERT_EQ(CompileHostFormula(text.c_str(), HostNames(kNames), record.Area), 0) << length;
    EXPECT_EQ(record.Area.ErrorPosition, 0) << length;
    double result = 0.0;
    EXPECT_EQ(RunHostFormula(nullptr, record.Instructions.data(), result), 0) << length;
    EXPECT_EQ(result, 7.0) << length;
  }
}

TEST(HostFormula, ReportsThePlaceOfAnErrorFromOne) {
  struct {
    const char* formula;
    int position;
  } const cases[] = {
      {"", 1}, {"*2", 1}, {"T_+", 4}, {"T_+unknown", 4}, {"T_;age", 3}, {"(T_", 4}, {"'blood pressure", 1},
  };
  for (const auto& c : cases) {
    Record record;
    EXPECT_EQ(CompileHostFormula(HostText(c.formula).c_str(), HostNames(kNames), record.Area), 0) << c.formula;
    EXPECT_EQ(record.Area.ErrorPosition, c.position) << c.formula;
    EXPECT_EQ(record.Area.SymbolCount, 0) << c.formula;
    EXPECT_EQ(record.Instructions.front(), 0xAB) << c.formula;
  }
}

TEST(HostFormula, TakesASemicolonInAQuotedName) {
  Record record;
  ASSERT_EQ(CompileHostFormula(HostText("'a;b'*2").c_str(), HostNames({"A;b", "T_"}), record.Area), 0);
  EXPECT_EQ(record.Area.ErrorPosition, 0);
}

TEST(HostFormula, HasNoTimeUnlessTheLastNameIsIt) {
  Record record;
  ASSERT_EQ(CompileHostFormula(HostText("T_").c_str(), HostNames({"age"}), record.Area), 0);
  EXPECT_EQ(record.Area.ErrorPosition, 1);
  ASSERT_EQ(CompileHostFormula(HostText("T_").c_str(), HostNames({"T_", "age"}), record.Area), 0);
  EXPECT_EQ(record.Area.ErrorPosition, 0);
  EXPECT_EQ(record.Listed(), (std::vector<std::int16_t>{1}));
  ASSERT_EQ(CompileHostFormula(HostText("1").c_str(), HostNames({}), record.Area), 0);
  EXPECT_EQ(record.Area.ErrorPosition, 0);
}

TEST(HostFormula, CountsMoreSymbolsThanThereIsRoomFor) {
  std::vector<std::string> names;
  std::string formula = "T_";
  for (int i = 1; i <= 60; ++i) {
    names.push_back("x" + std::to_string(i));
    formula += "+x" + std::to_string(i);
  }
  names.emplace_back("T_");
  Record record;
  ASSERT_EQ(CompileHostFormula(HostText(formula).c_str(), HostNames(names), record.Area), 0);
  EXPECT_EQ(record.Area.ErrorPosition, 0);
  EXPECT_EQ(record.Area.SymbolCount, 61);
  EXPECT_EQ(record.Symbols[0], 61);
  EXPECT_EQ(record.Symbols[49], 49);
  EXPECT_EQ(record.Symbols[50], -1);
}

TEST(HostFormula, WritesNoMoreThanThereIsRoomFor) {
  // Symbol, sum with a constant, end: 13 bytes.
  const std::string text = HostText("T_+1");
  Record enough(13);
  ASSERT_EQ(CompileHostFormula(text.c_str(), HostNames(kNames), enough.Area), 0);
  EXPECT_EQ(enough.Area.ErrorPosition, 0);
  EXPECT_EQ(enough.Instructions[13], 0xAB);
  Record tooLittle(12);
  ASSERT_EQ(CompileHostFormula(text.c_str(), HostNames(kNames), tooLittle.Area), 0);
  EXPECT_EQ(tooLittle.Area.ErrorPosition, 5);
  EXPECT_EQ(tooLittle.Instructions[0], 0xAB);
}

TEST(HostFormula, KnowsTextsWhereTheHostDoes) {
  const std::vector<ValueLabel> arms = {{1.0, "control"}, {2.0, "Test"}};
  const FormulaNames variables({{"arm", &arms, false}, {"age", nullptr, false}});
  Record record;
  ASSERT_EQ(CompileHostFormula(HostText("if(arm = 'Test', t_, 0)").c_str(), variables, record.Area), 0);
  ASSERT_EQ(record.Area.ErrorPosition, 0);
  EXPECT_EQ(record.Listed(), (std::vector<std::int16_t>{1, 3}));
  const double arguments[] = {2.0, 17.0};
  double result = 0.0;
  EXPECT_EQ(RunHostFormula(arguments, record.Instructions.data(), result), 0);
  EXPECT_EQ(result, 17.0);
}

TEST(HostFormula, FailsOnWhatIsNoNumber) {
  Record record;
  ASSERT_EQ(CompileHostFormula(HostText("1/T_").c_str(), HostNames(kNames), record.Area), 0);
  double result = 5.0;
  for (const double argument : {0.0, kMissing, 1e-310}) {
    EXPECT_NE(RunHostFormula(&argument, record.Instructions.data(), result), 0) << argument;
    EXPECT_EQ(result, 5.0) << argument;
  }
}

}  // namespace
}  // namespace orv
