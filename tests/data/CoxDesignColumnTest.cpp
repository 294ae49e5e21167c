#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <type_traits>
#include <vector>

#include "data/CoxDesignColumn.h"

namespace orv {
namespace {

template <typename Field, typename Wanted>
constexpr bool kHasType = std::is_same_v<Field, Wanted>;

TEST(CoxDesignColumn, FieldsHaveTheTypesThatTheRestReads) {
  using C = CoxDesignColumn;
  EXPECT_TRUE((kHasType<decltype(C::VariableCount), std::int32_t>));
  EXPECT_TRUE((kHasType<decltype(C::Variables), std::vector<std::int32_t>>));
  EXPECT_TRUE((kHasType<decltype(C::VariableRoles), std::vector<std::int32_t>>));
  EXPECT_TRUE((kHasType<decltype(C::LevelIndex), std::vector<std::int32_t>>));
  EXPECT_TRUE((kHasType<decltype(C::ColumnInEffect), std::int32_t>));
  EXPECT_TRUE((kHasType<decltype(C::Count), std::int32_t>));
  EXPECT_TRUE((kHasType<decltype(C::ExpressionIds), std::vector<std::int32_t>>));
  EXPECT_TRUE((kHasType<decltype(C::ExpressionCount), std::int32_t>));
}

TEST(CoxDesignColumn, ANewRecordIsEmpty) {
  const CoxDesignColumn column;
  EXPECT_TRUE(column.Variables.empty() && column.VariableRoles.empty() && column.LevelIndex.empty());
  EXPECT_TRUE(column.ExpressionIds.empty() && column.EffectName.empty() && column.EffectTerm.empty());
  for (const int number : {column.VariableCount, column.ColumnInEffect, column.Count, column.ExpressionCount}) {
    EXPECT_EQ(number, 0);
  }
  for (const double number : {column.Mean, column.Variance, column.StdDev, column.WeightedMean, column.WeightedVariance,
                              column.WeightedStdDev, column.WeightSum}) {
    EXPECT_EQ(number, 0.0);
  }
  EXPECT_FALSE(column.Dropped);
  EXPECT_FALSE(column.Fixed);
}

TEST(CoxDesignColumn, HasAFactorWhenOneOfItsRolesSaysSo) {
  struct {
    std::vector<std::int32_t> Roles;
    bool HasFactor;
  } const cases[] = {{{}, false}, {{0}, false}, {{1}, true}, {{-1}, false}, {{0, 1}, true}, {{0, 0, -1}, false}};
  for (const auto& c : cases) {
    CoxDesignColumn column;
    column.VariableRoles = c.Roles;
    EXPECT_EQ(column.HasFactor(), c.HasFactor) << ::testing::PrintToString(c.Roles);
  }
}

// The values 2, 4, 9 with weights 1, 2, 1, worked out by hand.
TEST(CoxDesignColumn, HoldsSumsOfSquaresUntilItIsFinished) {
  CoxDesignColumn column;
  column.AddValue(2.0, 1.0);
  column.AddValue(4.0, 2.0);
  column.AddValue(9.0, 1.0);
  EXPECT_EQ(column.Count, 3);
  EXPECT_DOUBLE_EQ(column.Mean, 5.0);
  EXPECT_DOUBLE_EQ(column.Variance, 26.0);
  EXPECT_EQ(column.StdDev, 0.0);
  EXPECT_EQ(column.WeightSum, 4.0);
  EXPECT_DOUBLE_EQ(column.WeightedMean, 4.75);
  EXPECT_DOUBLE_EQ(column.WeightedVariance, 26.75);  // 4 + 2 * 16 + 81 - 4 * 4.75 * 4.75
  EXPECT_EQ(column.WeightedStdDev, 0.0);

  column.FinishStatistics();
  EXPECT_DOUBLE_EQ(column.Variance, 13.0);
  EXPECT_DOUBLE_EQ(column.StdDev, std::sqrt(13.0));
  EXPECT_DOUBLE_EQ(column.WeightedVariance, 26.75 / 3.0);
  EXPECT_DOUBLE_EQ(column.WeightedStdDev, std::sqrt(26.75 / 3.0));
}

TEST(CoxDesignColumn, RunningStatisticsEqualTheTwoPassFormulas) {
  std::mt19937_64 random(3);
  std::uniform_real_distribution<double> weightOf(0.05, 4.0);
  for (const double center : {0.0, 1.0, -1000.0, 1e6}) {
    std::normal_distribution<double> valueOf(center, 3.0);
    std::vector<double> values, weights;
    CoxDesignColumn column;
    for (int k = 0; k < 500; ++k) {
      values.push_back(valueOf(random));
      weights.push_back(weightOf(random));
      column.AddValue(values.back(), weights.back());
    }
    column.FinishStatistics();
    long double sum = 0, weightSum = 0, weightedSum = 0;
    for (std::size_t k = 0; k < values.size(); ++k) {
      sum += values[k];
      weightSum += weights[k];
      weightedSum += static_cast<long double>(weights[k]) * values[k];
    }
    const long double mean = sum / 500, weightedMean = weightedSum / weightSum;
    long double squares = 0, weightedSquares = 0;
    for (std::size_t k = 0; k < values.size(); ++k) {
      squares += (values[k] - mean) * (values[k] - mean);
      weightedSquares += weights[k] * (values[k] - weightedMean) * (values[k] - weightedMean);
    }
    // An updated mean is off by a few units in the last place of the values; so are the squares around it.
    const double rounding = 1e-14 * (1.0 + std::abs(center));
    EXPECT_NEAR(column.Mean, static_cast<double>(mean), rounding) << "center " << center;
    EXPECT_NEAR(column.WeightedMean, static_cast<double>(weightedMean), rounding) << "center " << center;
    EXPECT_NEAR(column.Variance, static_cast<double>(squares / 499), 100 * rounding) << "center " << center;
    EXPECT_NEAR(column.WeightedVariance, static_cast<double>(weightedSquares / (weightSum - 1)), 100 * rounding)
        << "center " << center;
    EXPECT_EQ(column.StdDev, std::sqrt(column.Variance)) << "center " << center;
    EXPECT_EQ(column.WeightedStdDev, std::sqrt(column.WeightedVariance)) << "center " << center;
  }
}

TEST(CoxDesignColumn, WithoutEnoughWeightTheSumsStand) {
  struct {
    const char* What;
    std::vector<double> Values, Weights;
    double Variance, StdDev, WeightedVariance, WeightedStdDev;
  } const cases[] = {
      {"nothing read", {}, {}, 0.0, 0.0, 0.0, 0.0},
      {"one value of weight 1", {7.0}, {1.0}, 0.0, 0.0, 0.0, 0.0},
      {"one value of weight 3", {7.0}, {3.0}, 0.0, 0.0, 0.0, 0.0},
      {"a weight sum of exactly 1", {1.0, 3.0}, {0.5, 0.5}, 2.0, std::sqrt(2.0), 1.0, 0.0},
      {"a weight sum below 1", {1.0, 3.0}, {0.25, 0.25}, 2.0, std::sqrt(2.0), 0.5, 0.0},
      {"a weight sum of 2", {1.0, 3.0}, {1.0, 1.0}, 2.0, std::sqrt(2.0), 2.0, std::sqrt(2.0)},
      {"a constant", {4.0, 4.0, 4.0}, {1.0, 2.0, 1.0}, 0.0, 0.0, 0.0, 0.0},
  };
  for (const auto& c : cases) {
    CoxDesignColumn column;
    for (std::size_t k = 0; k < c.Values.size(); ++k) column.AddValue(c.Values[k], c.Weights[k]);
    column.FinishStatistics();
    EXPECT_DOUBLE_EQ(column.Variance, c.Variance) << c.What;
    EXPECT_DOUBLE_EQ(column.StdDev, c.StdDev) << c.What;
    EXPECT_DOUBLE_EQ(column.WeightedVariance, c.WeightedVariance) << c.What;
    EXPECT_DOUBLE_EQ(column.WeightedStdDev, c.WeightedStdDev) << c.What;
  }
}

// A weight that is no binary fraction may leave a sum of squares a rounding below zero.
TEST(CoxDesignColumn, ANegativeWeightedSumGivesNoDeviation) {
  CoxDesignColumn column;
  column.WeightSum = 5.0;
  column.WeightedVariance = -1e-17;
  column.FinishStatistics();
  EXPECT_EQ(column.WeightedVariance, -1e-17 / 4.0);
  EXPECT_EQ(column.WeightedStdDev, 0.0);
}

TEST(ColumnsAgreeOnFixed, ComparesNeighbours) {
  struct {
    std::vector<bool> Fixed;
    bool Agree;
  } const cases[] = {{{}, true},
                     {{true}, true},
                     {{false, false}, true},
                     {{true, true, true}, true},
                     {{false, true}, false},
                     {{true, true, false}, false},
                     {{false, true, false}, false}};
  for (const auto& c : cases) {
    std::vector<CoxDesignColumn> columns(c.Fixed.size());
    for (std::size_t k = 0; k < columns.size(); ++k) columns[k].Fixed = c.Fixed[k];
    EXPECT_EQ(ColumnsAgreeOnFixed(columns.begin(), columns.end()), c.Agree) << ::testing::PrintToString(c.Fixed);
  }
}

}  // namespace
}  // namespace orv
