// What holds for any data: reading is checked against a plain reading in two passes, and against itself under changes
// of the input that must not matter.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "data/TestCases.h"

namespace orv {
namespace {

using testing::ColumnByCase;
using testing::KeptCases;
using testing::ReadData;
using testing::TestAnalysis;
using testing::TrialCase;
using testing::TrialColumns;

const std::vector<int> kFactorCodes = {1, 2, 3, 4};
const std::vector<int> kStrata = {1, 2, 3};

// A trial in which about a fifth of the cases has something wrong with it.
std::vector<TrialCase> RandomTrial(std::uint32_t seed, int count) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal;
  const auto draw = [&](unsigned range) { return static_cast<double>(random() % range); };
  std::vector<TrialCase> cases;
  for (int k = 0; k < count; ++k) {
    TrialCase c;
    c.x = 3.0 + normal(random);
    c.z = -100.0 + 10.0 * normal(random);
    c.f = 1.0 + draw(4);
    c.g = 1.0 + draw(3);
    c.time = draw(25);
    c.status = draw(3) > 0 ? 1.0 : 0.0;
    c.w = 0.25 * (1.0 + draw(8));
    c.id = draw(40);
    c.entry = 0.5 * draw(6);
    switch (random() % 30) {
      case 0:
        c.x = kMissingCode;
        break;
      case 1:
        c.f = 5.0;
        break;
      case 2:
        c.g = 9.0;
        break;
      case 3:
        c.time = -1.0;
        break;
      case 4:
        c.status = 2.0;
        break;
      case 5:
        c.w = 0.0;
        break;
      case 6:
        c.f = kMissingCode;
        break;
      default:
        break;
    }
    cases.push_back(c);
  }
  return cases;
}

// x is variable 1, f variable 2, z variable 9.
const std::vector<std::pair<std::string, std::string>> kEffects = {{"x", "v1"},
                                                                   {"f", "v2"},
                                                                   {"x*z", "v1*v9"},
                                                                   {"f*z", "v2*v9"},
                                                                   {"z*f*x", "v9*v2*v1"}};

void Options(TestAnalysis& test, int coding, bool strata) {
  test.Covariates({"x", "z"}).Factor("f", {1, 2, 3, 4}).Time({"time"}).Status("status").Weights("w");
  test.Settings().Coding = static_cast<std::int16_t>(coding);
  test.Settings().ReferenceCodeIndex[0] = 2;
  test.Settings().ReferenceCodes[0] = 2;
  test.Settings().SubjectVariable = test.Number("id");
  if (strata) test.Strata("g", {1, 2, 3});
  test.Design(kEffects);
}

// ---- A plain reading ----------------------------------------------------------------------------------------------

bool IsKept(const TrialCase& c, bool strata) {
  const auto holds = [](const std::vector<int>& codes, double value) {
    return std::any_of(codes.begin(), codes.end(), [&](int code) { return value == code; });
  };
  const bool complete = c.x != kMissingCode && c.f != kMissingCode;
  const bool inStrata = !strata || holds(kStrata, c.g);
  return complete && c.w > 0.0 && c.time >= 0.0 && inStrata && (c.status == 0.0 || c.status == 1.0) &&
         holds(kFactorCodes, c.f);
}

// What a factor with reference code 2 contributes to the column of a level.
double FactorValue(double value, int coding, int level) {
  static const std::map<int, int> levelOfCode = {{1, 1}, {2, 4}, {3, 2}, {4, 3}};
  const int code = static_cast<int>(value);
  const int own = coding == Codings::Overparameterized ? code : levelOfCode.at(code);
  if (coding == Codings::SigmaRestricted && own == 4) return -1.0;
  return own == level ? 1.0 : 0.0;
}

// Partial products of the columns of one effect: per column, one value a variable.
std::vector<std::vector<double>> PartialProducts(const TrialCase& c, const std::string& term, int coding) {
  const int levels = coding == Codings::Overparameterized ? 4 : 3;
  const bool hasFactor = term.find("v2") != std::string::npos;
  std::vector<std::vector<double>> columns;
  for (int level = 1; level <= (hasFactor ? levels : 1); ++level) {
    std::vector<double> products;
    double product = 1.0;
    for (std::size_t at = 0; at < term.size(); at += 3) {
      const char variable = term[at + 1];
      product *= variable == '1' ? c.x : variable == '9' ? c.z : FactorValue(c.f, coding, level);
      products.push_back(product);
    }
    columns.push_back(products);
  }
  return columns;
}

struct Statistics {
  long double Count = 0, WeightSum = 0, Mean = 0, WeightedMean = 0, Variance = 0, WeightedVariance = 0, Scale = 0;
};

// The textbook formulas, the data walked twice.
Statistics TwoPass(const std::vector<std::pair<double, double>>& valuesAndWeights) {
  Statistics s;
  for (const auto& [value, weight] : valuesAndWeights) {
    s.Count += 1;
    s.WeightSum += weight;
    s.Mean += value;
    s.WeightedMean += static_cast<long double>(value) * weight;
    s.Scale = std::max(s.Scale, std::abs(static_cast<long double>(value)));
  }
  s.Mean /= s.Count;
  s.WeightedMean /= s.WeightSum;
  for (const auto& [value, weight] : valuesAndWeights) {
    s.Variance += (value - s.Mean) * (value - s.Mean);
    s.WeightedVariance += weight * (value - s.WeightedMean) * (value - s.WeightedMean);
  }
  s.Variance /= s.Count - 1;
  s.WeightedVariance /= s.WeightSum - 1;
  return s;
}

// A running mean of n values is off by at most about n roundings of the largest of them.
constexpr double kRunningRounding = 1e-13;

void ExpectStatistics(const CoxDesignColumn& column, const Statistics& expected, const std::string& what) {
  const auto scale = static_cast<double>(expected.Scale) + 1e-300;
  EXPECT_EQ(column.Count, static_cast<int>(expected.Count)) << what;
  EXPECT_NEAR(column.WeightSum, static_cast<double>(expected.WeightSum), 1e-9) << what;
  EXPECT_NEAR(column.Mean, static_cast<double>(expected.Mean), kRunningRounding * scale) << what;
  EXPECT_NEAR(column.WeightedMean, static_cast<double>(expected.WeightedMean), kRunningRounding * scale) << what;
  EXPECT_NEAR(column.Variance, static_cast<double>(expected.Variance), kRunningRounding * scale * scale) << what;
  EXPECT_NEAR(column.WeightedVariance, static_cast<double>(expected.WeightedVariance), kRunningRounding * scale * scale)
      << what;
  EXPECT_EQ(column.StdDev, std::sqrt(column.Variance)) << what;
  EXPECT_EQ(column.WeightedStdDev, std::sqrt(column.WeightedVariance)) << what;
}

TEST(Reading, EqualsAPlainReadingInTwoPasses) {
  for (const int coding : {Codings::SigmaRestricted, Codings::Reference, Codings::Overparameterized}) {
    for (const bool strata : {false, true}) {
      const std::string what = "coding " + std::to_string(coding) + ", strata " + std::to_string(strata);
      const std::vector<TrialCase> cases = RandomTrial(5 + static_cast<std::uint32_t>(coding), 400);
      TestAnalysis test(TrialColumns(cases));
      Options(test, coding, strata);
      const CCoxData& data = ReadData(test);

      std::vector<int> kept;
      std::map<std::uint32_t, std::vector<std::pair<double, double>>> values;  // with their weights, by column
      std::map<std::uint32_t, std::map<int, double>> cells;
      std::map<double, double> levelWeights;
      std::vector<std::pair<double, double>> xs;
      for (std::size_t k = 0; k < cases.size(); ++k) {
        const TrialCase& c = cases[k];
        if (!IsKept(c, strata)) continue;
        const int number = static_cast<int>(k) + 1;
        kept.push_back(number);
        levelWeights[c.f] += c.w;
        xs.emplace_back(c.x, c.w);
        std::uint32_t column = 0;
        for (const auto& effect : kEffects) {
          for (const std::vector<double>& products : PartialProducts(c, effect.second, coding)) {
            for (const double product : products) values[column].emplace_back(product, c.w);
            cells[column++][number] = products.back();
          }
        }
      }
      std::vector<int> keptByReading = KeptCases(data);
      std::sort(keptByReading.begin(), keptByReading.end());
      ASSERT_EQ(keptByReading, kept) << what;
      ASSERT_EQ(values.size(), data.DesignColumnCount) << what;
      EXPECT_LT(kept.size(), cases.size()) << "some cases must be left out for this test to mean anything";
      for (std::uint32_t column = 0; column < data.DesignColumnCount; ++column) {
        const std::string name =
            what + ", column " + std::to_string(column) + " of " + data.DesignColumns[column].EffectTerm;
        EXPECT_EQ(ColumnByCase(data, static_cast<std::int32_t>(column)), cells[column]) << name;
        ExpectStatistics(data.DesignColumns[column], TwoPass(values[column]), name);
      }
      EXPECT_EQ(data.FactorLevelWeights[0], levelWeights) << what;  // the weights are quarters, so their sums are exact
      EXPECT_NEAR(data.CovariateMeans[0], static_cast<double>(TwoPass(xs).WeightedMean), 1e-12) << what;
    }
  }
}

TEST(Reading, LeavesTheCasesInOrder) {
  for (const bool strata : {false, true}) {
    TestAnalysis test(TrialColumns(RandomTrial(17, 500)));
    Options(test, Codings::Reference, strata);
    const CCoxData& data = ReadData(test);
    for (int row = 2; row <= static_cast<int>(data.ValidCaseCount); ++row) {
      const double* before = data.CaseTable.GetRow(row - 1);
      const double* after = data.CaseTable.GetRow(row);
      const auto key = [&](const double* cells) {
        return std::vector<double>{strata ? cells[data.StratumColumn] : 0.0, cells[data.SurvivalColumn],
                                   -cells[data.StatusColumn]};
      };
      EXPECT_LE(key(before), key(after)) << "rows " << row - 1 << " and " << row << ", strata " << strata;
      EXPECT_GT(after[data.WeightColumn], 0.0) << "row " << row;
    }
  }
}

// ---- Changes that must not matter ---------------------------------------------------------------------------------

struct Reading {
  explicit Reading(const std::vector<TrialCase>& cases, int coding = Codings::SigmaRestricted)
      : Test(TrialColumns(cases)) {
    Options(Test, coding, true);
    ReadData(Test);
  }
  CCoxData& Data() { return Test.Data(); }
  // The rows without their case numbers and subject ids, in an order that does not depend on the input.
  std::vector<std::vector<double>> SortedRows() {
    std::vector<std::vector<double>> rows;
    for (int row = 1; row <= static_cast<int>(Data().ValidCaseCount); ++row) {
      const double* cells = Data().CaseTable.GetRow(row);
      rows.emplace_back(cells, cells + Data().CaseTable.ColumnCount());
      rows.back()[static_cast<std::size_t>(Data().CaseNumberColumn)] = 0.0;
      rows.back()[static_cast<std::size_t>(Data().SubjectColumn)] = 0.0;
    }
    std::sort(rows.begin(), rows.end());
    return rows;
  }
  TestAnalysis Test;
};

TEST(Reading, DoesNotDependOnTheOrderOfTheInputRows) {
  std::vector<TrialCase> cases = RandomTrial(23, 300);
  Reading first(cases);
  std::mt19937 random(1);
  for (int trial = 0; trial < 5; ++trial) {
    std::shuffle(cases.begin(), cases.end(), random);
    Reading shuffled(cases);
    const CCoxData& a = first.Data();
    const CCoxData& b = shuffled.Data();
    EXPECT_EQ(b.CompleteCaseCount, a.CompleteCaseCount);
    EXPECT_EQ(b.CensoredCaseCount, a.CensoredCaseCount);
    EXPECT_EQ(b.CasesByStratum, a.CasesByStratum);
    EXPECT_EQ(b.CompleteByStratum, a.CompleteByStratum);
    EXPECT_EQ(b.FactorModalCodes, a.FactorModalCodes);
    EXPECT_EQ(b.FactorLevelWeights, a.FactorLevelWeights);
    EXPECT_EQ(b.Excluded.ByReason, a.Excluded.ByReason);
    EXPECT_EQ(b.SubjectIds.size(), a.SubjectIds.size());
    EXPECT_EQ(shuffled.SortedRows(), first.SortedRows());
    for (std::uint32_t c = 0; c < a.DesignColumnCount; ++c) {
      // Only the order of additions differs.
      const double scale = 1e-12 * (1.0 + std::abs(a.DesignColumns[c].Mean) + a.DesignColumns[c].Variance);
      EXPECT_NEAR(b.DesignColumns[c].Mean, a.DesignColumns[c].Mean, scale) << "column " << c;
      EXPECT_NEAR(b.DesignColumns[c].Variance, a.DesignColumns[c].Variance, scale) << "column " << c;
      EXPECT_NEAR(b.DesignColumns[c].WeightedMean, a.DesignColumns[c].WeightedMean, scale) << "column " << c;
    }
  }
}

TEST(Reading, AWeightOfTwoHasTheWeightedStatisticsOfTheCaseTwice) {
  std::vector<TrialCase> once = RandomTrial(31, 120);
  std::vector<TrialCase> twice;
  for (TrialCase& c : once) {
    if (c.w > 0.0) c.w = 1.0;
    twice.push_back(c);
    twice.push_back(c);
    if (c.w > 0.0) c.w = 2.0;
  }
  Reading weighted(once);
  Reading repeated(twice);
  const CCoxData& a = weighted.Data();
  const CCoxData& b = repeated.Data();
  EXPECT_EQ(b.ValidCaseCount, 2 * a.ValidCaseCount);
  EXPECT_EQ(a.FactorLevelWeights, b.FactorLevelWeights);
  EXPECT_EQ(a.FactorModalCodes, b.FactorModalCodes);
  EXPECT_EQ(a.CovariateWeights, b.CovariateWeights);
  for (std::uint32_t c = 0; c < a.DesignColumnCount; ++c) {
    const CoxDesignColumn& x = a.DesignColumns[c];
    const CoxDesignColumn& y = b.DesignColumns[c];
    const double scale = 1e-12 * (1.0 + std::abs(x.WeightedMean) + x.WeightedVariance);
    EXPECT_EQ(x.WeightSum, y.WeightSum) << "column " << c;
    EXPECT_NEAR(x.WeightedMean, y.WeightedMean, scale) << "column " << c;
    EXPECT_NEAR(x.WeightedVariance, y.WeightedVariance, scale) << "column " << c;
    EXPECT_EQ(2 * x.Count, y.Count) << "column " << c;
    EXPECT_NEAR(x.Mean, y.Mean, scale) << "column " << c << ": the unweighted mean does not see weights";
  }
}

TEST(Reading, CasesThatAreLeftOutChangeNothing) {
  const std::vector<TrialCase> all = RandomTrial(41, 200);
  std::vector<TrialCase> keptOnly;
  for (const TrialCase& c : all) {
    if (IsKept(c, true)) keptOnly.push_back(c);
  }
  ASSERT_LT(keptOnly.size(), all.size());
  Reading with(all);
  Reading without(keptOnly);
  EXPECT_EQ(with.SortedRows(), without.SortedRows());
  for (std::uint32_t c = 0; c < with.Data().DesignColumnCount; ++c) {
    EXPECT_EQ(with.Data().DesignColumns[c].Mean, without.Data().DesignColumns[c].Mean) << "column " << c;
    EXPECT_EQ(with.Data().DesignColumns[c].WeightedVariance, without.Data().DesignColumns[c].WeightedVariance);
  }
  EXPECT_EQ(with.Data().CovariateMeans, without.Data().CovariateMeans);
  EXPECT_EQ(with.Data().FactorLevelWeights, without.Data().FactorLevelWeights);
  EXPECT_EQ(with.Data().CasesByStratum, without.Data().CasesByStratum);
}

TEST(Reading, ShiftingACovariateShiftsItsMeanAndLeavesItsVariance) {
  std::vector<TrialCase> cases = RandomTrial(43, 200);
  Reading first(cases);
  for (TrialCase& c : cases) {
    if (c.x != kMissingCode) c.x += 1000.0;
  }
  Reading shifted(cases);
  const CoxDesignColumn& a = first.Data().DesignColumns[0];
  const CoxDesignColumn& b = shifted.Data().DesignColumns[0];
  EXPECT_NEAR(b.Mean, a.Mean + 1000.0, 1e-9);
  EXPECT_NEAR(b.WeightedMean, a.WeightedMean + 1000.0, 1e-9);
  EXPECT_NEAR(b.Variance, a.Variance, 1e-9);
  EXPECT_NEAR(b.WeightedVariance, a.WeightedVariance, 1e-9);
}

TEST(Reading, EveryColumnOfASigmaRestrictedFactorIsADifferenceOfTwoOverparameterizedOnes) {
  const std::vector<TrialCase> cases = RandomTrial(47, 150);
  Reading sigma(cases, Codings::SigmaRestricted);
  Reading over(cases, Codings::Overparameterized);
  // The factor follows x: columns 1 to 3 of sigma, 1 to 4 of the indicators. Code 2 is the reference.
  const std::map<int, double> reference = ColumnByCase(over.Data(), 2);
  const std::int32_t indicators[] = {1, 3, 4};
  for (std::int32_t level = 0; level < 3; ++level) {
    std::map<int, double> difference = ColumnByCase(over.Data(), indicators[level]);
    for (auto& [number, value] : difference) value -= reference.at(number);
    EXPECT_EQ(ColumnByCase(sigma.Data(), 1 + level), difference) << "level " << level + 1;
  }
}

}  // namespace
}  // namespace orv
