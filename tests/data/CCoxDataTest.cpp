#include <gtest/gtest.h>

#include <map>
#include <type_traits>
#include <vector>

#include "data/CCoxData.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::TestAnalysis;

template <typename Field, typename Wanted>
constexpr bool kHasType = std::is_same_v<Field, Wanted>;

TEST(CCoxData, FieldsHaveTheTypesThatTheRestReads) {
  using D = CCoxData;
  EXPECT_TRUE((kHasType<decltype(D::Owner), CCoxPH*>));
  EXPECT_TRUE((kHasType<decltype(D::DesignColumnCount), std::uint32_t>));
  EXPECT_TRUE((kHasType<decltype(D::CaseCount), std::uint32_t>));
  EXPECT_TRUE((kHasType<decltype(D::CoefficientCount), std::uint32_t>));
  EXPECT_TRUE((kHasType<decltype(D::ValidCaseCount), std::uint32_t>));
  EXPECT_TRUE((kHasType<decltype(D::EffectCount), std::uint32_t>));
  EXPECT_TRUE((kHasType<decltype(D::ColumnCount), std::uint32_t>));
  EXPECT_TRUE((kHasType<decltype(D::CensoredCaseCount), std::uint32_t>));
  EXPECT_TRUE((kHasType<decltype(D::CompleteCaseCount), std::uint32_t>));
  EXPECT_TRUE((kHasType<decltype(D::TimeVariableCount), std::uint32_t>));
  EXPECT_TRUE((kHasType<decltype(D::FixedEffectCount), std::uint32_t>));
  EXPECT_TRUE((kHasType<decltype(D::CasesByStratum), std::map<double, double>>));
  EXPECT_TRUE((kHasType<decltype(D::SubjectIds), std::map<double, int>>));
  EXPECT_TRUE((kHasType<decltype(D::NextSubjectId), std::int32_t>));
  EXPECT_TRUE((kHasType<decltype(D::SurvivalColumn), std::int32_t>));
  EXPECT_TRUE((kHasType<decltype(D::EffectFirstColumn), std::vector<std::int32_t>>));
  EXPECT_TRUE((kHasType<decltype(D::CovariateMeans), std::vector<double>>));
  EXPECT_TRUE((kHasType<decltype(D::FactorLevelWeights), std::vector<std::map<double, double>>>));
}

TEST(CCoxData, StartsEmptyAndSizedByTheOptions) {
  TestAnalysis test({{"a", {1, 2}}, {"b", {1, 2}}, {"c", {1, 2}}, {"f", {1, 2}}, {"g", {1, 2}}});
  test.Covariates({"a", "b", "c"}).Factor("f", {1, 2}).Factor("g", {1, 2}).DefaultDesign();
  const CCoxData data(&test.Analysis);
  EXPECT_EQ(data.Owner, &test.Analysis);
  EXPECT_EQ(data.EffectCount, 5U);
  EXPECT_EQ(data.CovariateMeans, std::vector<double>(3, 0.0));
  EXPECT_EQ(data.CovariateWeights, std::vector<double>(3, 0.0));
  EXPECT_EQ(data.FactorModalCodes, std::vector<double>(2, 0.0));
  EXPECT_EQ(data.FactorLevelWeights.size(), 2U);
  for (const std::uint32_t count :
       {data.DesignColumnCount, data.CaseCount, data.CoefficientCount, data.ValidCaseCount, data.ColumnCount,
        data.CensoredCaseCount, data.CompleteCaseCount, data.TimeVariableCount, data.FixedEffectCount}) {
    EXPECT_EQ(count, 0U);
  }
  EXPECT_FALSE(data.FixedFlagConflict);
  EXPECT_TRUE(data.SubjectIds.empty() && data.CasesByStratum.empty() && data.CompleteByStratum.empty() &&
              data.CensoredByStratum.empty());
  EXPECT_EQ(data.NextSubjectId, 0);
  EXPECT_TRUE(data.DesignColumns.empty() && data.EffectFirstColumn.empty() && data.EffectLastColumn.empty());
  EXPECT_TRUE(data.EffectInModel.empty() && data.EffectFixed.empty());
}

TEST(CCoxData, WithoutPredictorsNothingIsSized) {
  TestAnalysis test({{"a", {1, 2}}});
  const CCoxData data(&test.Analysis);
  EXPECT_EQ(data.EffectCount, 0U);
  EXPECT_TRUE(data.CovariateMeans.empty() && data.FactorModalCodes.empty() && data.FactorLevelWeights.empty());
}

}  // namespace
}  // namespace orv
