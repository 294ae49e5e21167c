#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/analysis/TableCodes.h"

namespace orv {
namespace {

MemoryTable TableWith(TableVariable variable) {
  MemoryTable table("trial.csv");
  table.AddVariable(std::move(variable));
  return table;
}

TableVariable Numbers(std::vector<double> values) {
  return {.Name = "x", .Labels = {}, .Values = std::move(values)};
}

TableVariable Texts() {
  return {.Name = "arm",
          .Type = VariableType::Text,
          .Labels = {{1, "2"}, {2, "Bonn, Beuel"}, {3, "drug"}},
          .Values = {3, 1, kMissingCode, 2}};
}

std::string RefusalOf(const MemoryTable& table) {
  try {
    FindCodes("--factors", table, 1);
  } catch (const DefinitionError& error) {
    return error.what();
  }
  return "accepted";
}

TEST(DistinctValues, AreAscendingWithoutMissingOnes) {
  EXPECT_EQ(DistinctValues(TableWith(Numbers({3, 3, kMissingCode, -1, 2.5, 3})), 1, 10),
            (std::vector<double>{-1, 2.5, 3}));
  EXPECT_TRUE(DistinctValues(TableWith(Numbers({kMissingCode, kMissingCode})), 1, 10).empty());
}

TEST(DistinctValues, StopOneBeyondTheLimit) {
  EXPECT_EQ(DistinctValues(TableWith(Numbers({5, 4, 3, 2, 1})), 1, 2), (std::vector<double>{3, 4, 5}));
}

TEST(DistinctValues, TakeTheTwoZerosAsOne) {
  EXPECT_EQ(DistinctValues(TableWith(Numbers({0.0, -0.0, 1})), 1, 10).size(), 2U);
}

TEST(FindCodes, AreTheWholeNumbersOfTheTable) {
  EXPECT_EQ(FindCodes("--factors", TableWith(Numbers({2, -9999999, kMissingCode, 9999999, 2})), 1),
            (std::vector<std::int32_t>{-9999999, 2, 9999999}));
  EXPECT_EQ(FindCodes("--factors", TableWith(Texts()), 1), (std::vector<std::int32_t>{1, 2, 3}));
  EXPECT_TRUE(FindCodes("--factors", TableWith(Numbers({kMissingCode})), 1).empty());
}

TEST(FindCodes, FiveHundredAreTheLimit) {
  std::vector<double> values(500);
  std::iota(values.begin(), values.end(), 1.0);
  EXPECT_EQ(FindCodes("--factors", TableWith(Numbers(values)), 1).size(), 500U);
  values.resize(700);
  std::iota(values.begin(), values.end(), 1.0);
  EXPECT_EQ(RefusalOf(TableWith(Numbers(values))),
            "--factors: \"x\" has 700 codes, and at most 500 can be used. Is it a continuous variable?");
}

TEST(FindCodes, OtherNumbersAreRefused) {
  EXPECT_EQ(RefusalOf(TableWith(Numbers({1, 2, 2.5}))),
            "--factors: \"x\" holds 2.5 (case 3), which is not a whole number. Codes are whole numbers or texts; a "
            "continuous variable belongs to --covariates.");
  for (const double large : {10000000.0, -10000000.0, 1e300}) {
    EXPECT_NE(RefusalOf(TableWith(Numbers({1, large}))).find("beyond the range of -9999999 to 9999999"),
              std::string::npos)
        << large;
  }
}

// ---- Selected cases -----------------------------------------------------------------------------------------------

TEST(DistinctValues, OfSelectedCasesAlone) {
  const MemoryTable table = TableWith(Numbers({5, 4, kMissingCode, 4, 2, 5}));
  EXPECT_EQ(DistinctValues(table, 1, 10, {1, 0, 1, 1, 0, 1}), (std::vector<double>{4, 5}));
  EXPECT_EQ(DistinctValues(table, 1, 10, {0, 0, 1, 0, 1, 0}), (std::vector<double>{2}));
  EXPECT_TRUE(DistinctValues(table, 1, 10, {0, 0, 0, 0, 0, 0}).empty());
  EXPECT_EQ(DistinctValues(table, 1, 10, {}), (std::vector<double>{2, 4, 5})) << "without flags every case counts";
  EXPECT_EQ(DistinctValues(table, 1, 1, {1, 0, 1, 0, 1, 1}), (std::vector<double>{2, 5})) << "one beyond the limit";
}

TEST(FindCodes, OfSelectedCasesAlone) {
  const MemoryTable table = TableWith(Numbers({1, 2.5, 3, 1e9, 2.5, 2}));
  EXPECT_EQ(FindCodes("--factors", table, 1, {1, 0, 1, 0, 0, 1}), (std::vector<std::int32_t>{1, 2, 3}));
  const auto refusal = [&](const std::vector<char>& isSelected) -> std::string {
    try {
      FindCodes("--factors", table, 1, isSelected);
    } catch (const DefinitionError& error) {
      return error.what();
    }
    return "accepted";
  };
  EXPECT_NE(refusal({1, 0, 0, 0, 1, 0}).find("holds 2.5 (case 5)"), std::string::npos) << "the first selected one";
  EXPECT_NE(refusal({1, 0, 0, 1, 0, 0}).find("beyond the range"), std::string::npos);
}

TEST(FindCodes, TooManyAreCountedAmongSelectedCases) {
  std::vector<double> values(1200);
  std::iota(values.begin(), values.end(), 1.0);
  std::vector<char> isSelected(1200, 0);
  std::fill_n(isSelected.begin() + 300, 500, 1);
  const MemoryTable table = TableWith(Numbers(values));
  EXPECT_EQ(FindCodes("--factors", table, 1, isSelected).size(), 500U);
  std::fill_n(isSelected.begin() + 100, 200, 1);
  try {
    FindCodes("--factors", table, 1, isSelected);
    ADD_FAILURE() << "700 codes were accepted";
  } catch (const DefinitionError& error) {
    EXPECT_STREQ(error.what(),
                 "--factors: \"x\" has 700 codes, and at most 500 can be used. Is it a continuous variable?");
  }
}

TEST(CodeOfText, IsALabelOrANumber) {
  TableVariable labelled = Numbers({0, 1});
  labelled.Labels = {{0, "alive"}, {1, "2"}};
  const MemoryTable numbers = TableWith(labelled);
  const MemoryTable texts = TableWith(Texts());
  struct {
    const char* what;
    const MemoryTable& table;
    const char* text;
    std::optional<double> code;
  } const cases[] = {
      {"a label of a number", numbers, "alive", 0.0},
      {"a label comes before a number of the same text", numbers, "2", 1.0},
      {"a number", numbers, "0", 0.0},
      {"a number that the table does not hold", numbers, "7", 7.0},
      {"neither", numbers, "dead", std::nullopt},
      {"a text", texts, "drug", 3.0},
      {"a text that is a number", texts, "2", 1.0},
      {"the number behind a text means nothing", texts, "3", std::nullopt},
      {"capitals count", texts, "Drug", std::nullopt},
  };
  for (const auto& c : cases) EXPECT_EQ(CodeOfText(c.table, 1, c.text), c.code) << c.what;
}

TEST(ValueText, IsWhatAPersonWouldWrite) {
  EXPECT_EQ(ValueText(TableWith(Numbers({1})), 1, 1.0), "1");
  EXPECT_EQ(ValueText(TableWith(Numbers({1})), 1, 0.1), "0.1");
  EXPECT_EQ(ValueText(TableWith(Texts()), 1, 3.0), "drug");
  EXPECT_EQ(ValueText(TableWith(Texts()), 1, 2.0), "\"Bonn, Beuel\"");
}

TEST(ValuesForMessage, AreTheFirstEight) {
  EXPECT_EQ(ValuesForMessage(TableWith(Numbers({2, 1, 2})), 1), "1, 2");
  EXPECT_EQ(ValuesForMessage(TableWith(Numbers({8, 7, 6, 5, 4, 3, 2, 1})), 1), "1, 2, 3, 4, 5, 6, 7, 8");
  EXPECT_EQ(ValuesForMessage(TableWith(Numbers({1, 2, 3, 4, 5, 6, 7, 8, 9, 10})), 1), "1, 2, 3, 4, 5, 6, 7, 8, ...");
  EXPECT_EQ(ValuesForMessage(TableWith(Numbers({kMissingCode})), 1), "none, all are missing");
  EXPECT_EQ(ValuesForMessage(TableWith(Numbers({3, 1, 2})), 1, {1, 0, 1}), "2, 3");
  EXPECT_EQ(ValuesForMessage(TableWith(Numbers({3, kMissingCode})), 1, {0, 1}), "none, all are missing");
}

TEST(ParseNumber, TakesDecimalNumbersAndNothingElse) {
  struct {
    const char* text;
    std::optional<double> number;
  } const cases[] = {
      {"5", 5.0},
      {"-5", -5.0},
      {"+5", 5.0},
      {".5", 0.5},
      {"5.", 5.0},
      {"-.5e-3", -0.0005},
      {" 1 ", 1.0},
      {"0.1", 0.1},
      {"", std::nullopt},
      {" ", std::nullopt},
      {"+", std::nullopt},
      {"+-5", std::nullopt},
      {"1,5", std::nullopt},
      {"5x", std::nullopt},
      {"0x10", std::nullopt},
      {"1 2", std::nullopt},
      {"inf", std::nullopt},
      {"nan", std::nullopt},
      {"1e999", std::nullopt},
  };
  for (const auto& c : cases) EXPECT_EQ(ParseNumber(c.text), c.number) << '"' << c.text << '"';
}

}  // namespace
}  // namespace orv
