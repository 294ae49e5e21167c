// The passes on tables of many blocks, against the pass as the textbooks write it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "fit/CountingPass.h"
#include "fit/PassCases.h"
#include "fit/RightCensoredPass.h"
#include "support/PlainPass.h"

namespace orv {
namespace {

using testing::LeadingColumns;
using testing::PassCases;
using testing::PassValue;
using testing::PlainCases;
using testing::PlainPass;
using testing::PlainValue;
using testing::RandomCases;
using testing::RandomVector;
using testing::ReferenceCase;
using testing::RunPass;

struct Table {
  const char* What;
  int Rows;
  int Parameters;
  int Times;
  int Strata;
  bool Weighted;
};

constexpr Table kTables[] = {
    {"a row", 1, 2, 1, 1, false},
    {"a block", 64, 3, 1000000, 1, false},
    {"a block and a row", 65, 3, 1000000, 1, true},
    {"no ties", 2000, 7, 1000000000, 1, true},
    {"ties", 2000, 12, 150, 1, true},
    {"groups larger than a block", 3000, 5, 9, 1, true},
    {"one time", 700, 4, 1, 1, true},
    {"small strata", 2000, 9, 40, 500, true},
    {"large strata", 3000, 17, 60, 3, false},
    {"many columns", 600, 70, 200, 2, false},
};

std::string Describe(const Table& table, bool efron) {
  return std::string(table.What) + (efron ? ", Efron" : ", Breslow");
}

// Every number in units of the largest information of its kind.
void ExpectAgrees(const PassValue& value, const PlainValue& plain, const std::string& what) {
  constexpr double kDigits = 1e-11;
  EXPECT_NEAR(value.L, plain.L, kDigits * (1.0 + std::abs(plain.L))) << what;
  const std::size_t p = plain.U.size();
  const auto size = [&](std::size_t j) { return std::sqrt(plain.H[PackedSize(j) + j]) + 1e-300; };
  for (std::size_t j = 0; j < p; ++j) {
    ASSERT_NEAR(value.U[j], plain.U[j], kDigits * (1.0 + size(j))) << what;
    for (std::size_t l = 0; l <= j; ++l) {
      ASSERT_NEAR(value.H(static_cast<int>(j), static_cast<int>(l)), plain.H[PackedSize(j) + l],
                  kDigits * (1.0 + size(j) * size(l)))
          << what << ", element " << j << ' ' << l;
    }
  }
}

std::vector<double> SmallVector(unsigned seed, int p) {
  std::vector<double> beta = RandomVector(seed, p);
  for (double& b : beta) b /= std::sqrt(p);
  return beta;
}

TEST(BlockedPass, AgreesWithThePlainPassOverSurvivalTimes) {
  for (const Table& table : kTables) {
    const PassCases cases(RandomCases(7, table.Rows, table.Parameters, table.Times, table.Strata, table.Weighted));
    const CaseColumns columns = cases.Columns(table.Strata > 1);
    for (const bool efron : {false, true}) {
      HeapOnlyHost host;
      RightCensoredPass pass(host, cases.Table(), cases.Count(), columns, LeadingColumns(table.Parameters),
                             efron ? 1 : 0);
      PlainPass plain({host, cases.Table(), cases.Count(), columns, -1, table.Parameters}, efron ? 1 : 0);
      const std::vector<double> beta = SmallVector(8, table.Parameters);
      ExpectAgrees(RunPass(pass, table.Parameters, beta), plain.Evaluate(beta.data()), Describe(table, efron));
      ExpectAgrees(RunPass(pass, table.Parameters, {}), plain.Evaluate(nullptr), Describe(table, efron) + ", at zero");
    }
  }
}

TEST(BlockedPass, AgreesWithThePlainPassOverIntervals) {
  for (const Table& table : kTables) {
    std::vector<ReferenceCase> rows =
        RandomCases(9, table.Rows, table.Parameters, table.Times, table.Strata, table.Weighted);
    TestRandom random(10);
    for (ReferenceCase& row : rows) row.Start = row.Time - 1.0 - random.Integer(table.Times);
    const PassCases cases(rows);
    const CaseColumns columns = cases.Columns(table.Strata > 1);
    for (const bool efron : {false, true}) {
      HeapOnlyHost host;
      CountingPass pass(host, cases.Table(), cases.Count(), columns, cases.StartColumn(),
                        LeadingColumns(table.Parameters), efron ? 1 : 0);
      PlainPass plain({host, cases.Table(), cases.Count(), columns, cases.StartColumn(), table.Parameters},
                      efron ? 1 : 0);
      const std::vector<double> beta = SmallVector(11, table.Parameters);
      ExpectAgrees(RunPass(pass, table.Parameters, beta), plain.Evaluate(beta.data()), Describe(table, efron));
    }
  }
}

// A row of a very high risk that leaves: what is left of the sums is built anew, from more rows than a block holds.
TEST(BlockedPass, AgreesWithTheDefinitionWhereTheRiskSetIsBuiltAnew) {
  constexpr int kRows = 300;
  TestRandom random(21);
  std::vector<ReferenceCase> rows = RandomCases(20, kRows, 3, 40, 1, true);
  for (ReferenceCase& row : rows) row.Start = random.Integer(2) == 0 ? 0.0 : std::max(0.0, row.Time - 8.0);
  ReferenceCase heavy = rows.front();
  heavy.Start = 20.0;
  heavy.Time = 35.0;
  heavy.Event = false;
  heavy.X = {30.0, 0.0, 0.0};
  rows.push_back(heavy);
  const PassCases cases(rows);
  const std::vector<double> beta = {1.0, -0.5, 0.25};
  for (const bool efron : {false, true}) {
    HeapOnlyHost host;
    CountingPass pass(host, cases.Table(), cases.Count(), cases.Columns(false), cases.StartColumn(), LeadingColumns(3),
                      efron ? 1 : 0);
    const testing::ReferenceValue expected = EvaluateReference(cases.Cases(), testing::ToReal(beta), efron);
    testing::ExpectAgrees(RunPass(pass, 3, beta), expected, 1e-9, efron ? "Efron" : "Breslow");
  }
}

// The same pass twice: what waited in a block of the first does not reach the second.
TEST(BlockedPass, LeavesNothingBehind) {
  const PassCases cases(RandomCases(12, 150, 4, 20, 2, true));
  HeapOnlyHost host;
  RightCensoredPass pass(host, cases.Table(), cases.Count(), cases.Columns(true), LeadingColumns(4), 1);
  const std::vector<double> beta = SmallVector(13, 4);
  const PassValue first = RunPass(pass, 4, beta);
  RunPass(pass, 4, {});
  const PassValue again = RunPass(pass, 4, beta);
  EXPECT_EQ(first.L, again.L);
  EXPECT_EQ(first.U, again.U);
  EXPECT_EQ(first.H, again.H);
}

}  // namespace
}  // namespace orv
