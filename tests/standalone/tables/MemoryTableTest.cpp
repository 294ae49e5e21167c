#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "standalone/tables/MemoryTable.h"
#include "standalone/tables/TableError.h"

namespace orv {
namespace {

using ::testing::ElementsAre;

TableVariable Numbers(std::string name, std::vector<double> values) {
  TableVariable variable;
  variable.Name = std::move(name);
  variable.Values = std::move(values);
  return variable;
}

MemoryTable Trial() {
  MemoryTable table("trial.csv");
  table.AddVariable(Numbers("time", {5.0, 8.0, kMissingCode}));
  TableVariable arm = Numbers("arm", {2.0, 1.0, 2.0});
  arm.Type = VariableType::Text;
  arm.Labels = {{1.0, "drug"}, {2.0, "placebo"}};
  table.AddVariable(arm);
  TableVariable stage = Numbers("Time", {9.0, 1.0, 99.0});
  stage.MissingCode = 99.0;
  table.AddVariable(stage);
  return table;
}

TEST(MemoryTable, MissingCodeIsTheNegatedPowerOfTwo) {
  EXPECT_EQ(kMissingCode, -std::ldexp(1.0, 1023));
  EXPECT_TRUE(std::isfinite(kMissingCode));
}

TEST(MemoryTable, CountsVariablesAndCasesFromOne) {
  const MemoryTable table = Trial();
  EXPECT_EQ(table.Source(), "trial.csv");
  EXPECT_EQ(table.VariableCount(), 3);
  EXPECT_EQ(table.CaseCount(), 3);
  EXPECT_EQ(table.Variable(1).Name, "time");
  EXPECT_EQ(table.Variable(3).Name, "Time");
  EXPECT_EQ(table.Value(1, 2), 8.0);
  EXPECT_EQ(table.Value(3, 1), 9.0);
}

TEST(MemoryTable, IsEmptyAtFirst) {
  const MemoryTable table;
  EXPECT_EQ(table.VariableCount(), 0);
  EXPECT_EQ(table.CaseCount(), 0);
  EXPECT_EQ(table.FindVariable("time"), 0);
  EXPECT_EQ(table.FindVariable("#1"), 0);
}

TEST(MemoryTable, MissingIsEachVariablesOwnCodeUpToRounding) {
  MemoryTable table = Trial();
  EXPECT_TRUE(table.IsMissing(1, 3));
  EXPECT_FALSE(table.IsMissing(1, 1));
  EXPECT_TRUE(table.IsMissing(3, 3));
  TableVariable near = Numbers("near", {std::nextafter(99.0, 100.0), 99.0001, kMissingCode});
  near.MissingCode = 99.0;
  table.AddVariable(near);
  EXPECT_TRUE(table.IsMissing(4, 1));
  EXPECT_FALSE(table.IsMissing(4, 2));
  EXPECT_FALSE(table.IsMissing(4, 3));
}

TEST(MemoryTable, FindsVariablesByExactNameThenByNumber) {
  MemoryTable table = Trial();
  struct {
    const char* name;
    int variable;
  } const cases[] = {
      {"time", 1}, {"Time", 3}, {"TIME", 0}, {"arm", 2}, {"", 0},    {"#1", 1}, {"#3", 3},  {"#4", 0},
      {"#0", 0},   {"#-1", 0},  {"#", 0},    {"# 1", 0}, {"#1x", 0}, {"1", 0},  {"#+1", 0}, {"#99999999999", 0},
  };
  for (const auto& c : cases) EXPECT_EQ(table.FindVariable(c.name), c.variable) << c.name;
  table.AddVariable(Numbers("#1", {0.0, 0.0, 0.0}));
  EXPECT_EQ(table.FindVariable("#1"), 4) << "a name goes before a number";
}

TEST(MemoryTable, NearestNamesIgnoreCase) {
  const MemoryTable table = Trial();
  EXPECT_THAT(table.NearestNames("ARMS", 1), ElementsAre("arm"));
  EXPECT_THAT(table.NearestNames("tme", 2), ElementsAre("time", "Time"));
}

TEST(MemoryTable, TranslatesBetweenCodesAndLabels) {
  const MemoryTable table = Trial();
  EXPECT_EQ(table.LabelOf(2, 1.0), "drug");
  EXPECT_EQ(table.LabelOf(2, 2.0), "placebo");
  EXPECT_EQ(table.LabelOf(2, 1.5), "");
  EXPECT_EQ(table.LabelOf(2, 3.0), "");
  EXPECT_EQ(table.LabelOf(1, 5.0), "");
  EXPECT_EQ(table.CodeOf(2, "placebo"), 2.0);
  EXPECT_EQ(table.CodeOf(2, "Placebo"), std::nullopt);
  EXPECT_EQ(table.CodeOf(1, "drug"), std::nullopt);
}

TEST(MemoryTable, CaseNamesAreOptional) {
  MemoryTable table = Trial();
  EXPECT_FALSE(table.HasCaseNames());
  EXPECT_EQ(table.CaseName(2), "");
  table.SetCaseNames({"Ann", "Bob", "Cid"});
  EXPECT_TRUE(table.HasCaseNames());
  EXPECT_EQ(table.CaseName(1), "Ann");
  EXPECT_EQ(table.CaseName(3), "Cid");
}

TEST(MemoryTable, RefusesAVariableBeyondTheSixteenBitNumbers) {
  MemoryTable table("wide.csv");
  for (int i = 0; i < kMaximumVariables; ++i) table.AddVariable(Numbers("x", {}));
  EXPECT_EQ(table.VariableCount(), 32767);
  try {
    table.AddVariable(Numbers("x", {}));
    FAIL() << "the 32768th variable was taken";
  } catch (const TableError& error) {
    EXPECT_STREQ(error.what(),
                 "wide.csv: more than 32767 variables. Leave out columns that the analysis does not need.");
  }
  EXPECT_EQ(table.VariableCount(), 32767);
}

}  // namespace
}  // namespace orv
