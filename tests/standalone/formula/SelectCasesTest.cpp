// Conditions that select cases of a table.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "standalone/formula/FormulaNames.h"
#include "standalone/formula/SelectCases.h"
#include "standalone/tables/MemoryTable.h"

namespace orv {
namespace {

using Flags = std::vector<char>;

// Five cases; the dose is missing in the second, the arm and the day in the fourth.
MemoryTable Trial() {
  MemoryTable table("trial.csv");
  table.AddVariable({.Name = "age", .Labels = {}, .Values = {63, 51, 17, 0, -2.5}});
  table.AddVariable({.Name = "Dose (mg)", .MissingCode = -99, .Labels = {}, .Values = {10, -99, 0, 30, 5}});
  table.AddVariable({.Name = "arm",
                     .Type = VariableType::Text,
                     .Labels = {{1, "control"}, {2, "test"}},
                     .Values = {2, 1, 2, kMissingCode, 1}});
  // 2024-01-01 is day 19723.
  table.AddVariable({.Name = "entry",
                     .Type = VariableType::Date,
                     .Labels = {},
                     .Values = {19722, 19723, 19724, kMissingCode, 19000}});
  return table;
}

Flags FlagsOf(const std::string& condition, const MemoryTable& table) {
  return SelectCases(condition, FormulaNames::OfTable(table), table);
}

TEST(SelectCases, KeepsTheCasesForWhichTheConditionIsTrue) {
  const MemoryTable table = Trial();
  struct {
    const char* Condition;
    Flags Selected;
  } const cases[] = {
      {"age >= 18", {1, 1, 0, 0, 0}},
      {"age", {1, 1, 1, 0, 1}},  // every number but 0 is true
      {"not age", {0, 0, 0, 1, 0}},
      {"1", {1, 1, 1, 1, 1}},
      {"0", {0, 0, 0, 0, 0}},
      {"0.001", {1, 1, 1, 1, 1}},
      {"#1 > 50", {1, 1, 0, 0, 0}},
      {"v1 > 50", {1, 1, 0, 0, 0}},
      {"AGE > 50", {1, 1, 0, 0, 0}},
      {"\"Dose (mg)\" = 10 or age < 0", {1, 0, 0, 0, 1}},
      {"#2 >= 5 and #1 <> 63", {0, 0, 0, 1, 1}},
  };
  for (const auto& c : cases) EXPECT_EQ(FlagsOf(c.Condition, table), c.Selected) << c.Condition;
}

TEST(SelectCases, LeavesOutCasesForWhichTheConditionIsMissing) {
  const MemoryTable table = Trial();
  struct {
    const char* Condition;
    Flags Selected;
  } const cases[] = {
      {"#2 < 20", {1, 0, 1, 0, 1}},
      {"not (#2 < 20)", {0, 0, 0, 1, 0}},  // neither true nor false for the second
      {"#2 < 20 or age = 51", {1, 1, 1, 0, 1}},
      {"#2 + 1", {1, 0, 1, 1, 1}},
      {"missing(#2)", {0, 1, 0, 0, 0}},
      {"not missing(#2)", {1, 0, 1, 1, 1}},
      {"missing(arm) or #2 > 6", {1, 0, 0, 1, 0}},
  };
  for (const auto& c : cases) EXPECT_EQ(FlagsOf(c.Condition, table), c.Selected) << c.Condition;
}

TEST(SelectCases, KnowsTheTextsAndDatesOfTheTable) {
  const MemoryTable table = Trial();
  struct {
    const char* Condition;
    Flags Selected;
  } const cases[] = {
      {"arm = 'test'", {1, 0, 1, 0, 0}},
      {"arm <> 'test'", {0, 1, 0, 0, 1}},
      {"#3 = \"Control\"", {0, 1, 0, 0, 1}},
      {"entry >= '2024-01-01'", {0, 1, 1, 0, 0}},
      {"entry < '2024-01-01' and arm = 'control'", {0, 0, 0, 0, 1}},
  };
  for (const auto& c : cases) EXPECT_EQ(FlagsOf(c.Condition, table), c.Selected) << c.Condition;
}

TEST(SelectCases, NamesTheFirstCaseForWhichTheConditionFails) {
  const MemoryTable table = Trial();
  const std::pair<const char*, int> cases[] = {
      {"1/#2 > 0", 3},       {"log(age) > 1", 4}, {"sqrt(age) > 1", 5},
      {"1/(age-63) > 0", 1}, {"exp(#2*100)", 1},  {"1/(#2-5) < 1 or 1/0", 2},
  };
  for (const auto& [condition, caseNumber] : cases) {
    try {
      FlagsOf(condition, table);
      ADD_FAILURE() << "selected by " << condition;
    } catch (const CaseSelectionError& error) {
      EXPECT_EQ(error.what(), "it cannot be computed for case " + std::to_string(caseNumber) +
                                  ": a division by zero, a logarithm or root of a negative number, or a number beyond "
                                  "the range. if(condition, a, b) computes only the part that is needed.")
          << condition;
    }
  }
}

TEST(SelectCases, ComputesOnlyThePartThatIsNeeded) {
  const MemoryTable table = Trial();
  EXPECT_EQ(FlagsOf("#2 <> 0 and 1/#2 > 0.1", table), (Flags{0, 0, 0, 0, 1}));
  EXPECT_EQ(FlagsOf("if(age > 0, log(age) > 4, 0)", table), (Flags{1, 0, 0, 0, 0}));
}

TEST(SelectCases, RefusesWhatIsNoCondition) {
  const MemoryTable table = Trial();
  const std::pair<const char*, const char*> cases[] = {
      {"", "at character 1: "},
      {"age >", "at character 6: "},
      {"age = 18 and sex = 1", "at character 14: "},
      {"arm = 'sham'", "at character 7: "},
      {"#5 > 0", "at character 1: "},
      {"age > T_", "at character 7: "},  // there is no time to speak of
      {"age = 18;", "at character 9: "},
  };
  for (const auto& [condition, place] : cases) {
    try {
      FlagsOf(condition, table);
      ADD_FAILURE() << "selected by \"" << condition << '"';
    } catch (const FormulaError& error) {
      EXPECT_EQ(std::string(error.what()).substr(0, std::string(place).size()), place) << condition;
    }
  }
}

TEST(SelectCases, ATableWithoutCasesHasNoFlags) {
  MemoryTable table("empty.csv");
  table.AddVariable({.Name = "age", .Labels = {}, .Values = {}});
  EXPECT_TRUE(FlagsOf("age > 18", table).empty());
}

}  // namespace
}  // namespace orv
