#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "output/CoefficientLabels.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::TestAnalysis;
using Labels = std::vector<std::string>;

class CoefficientLabelsTest : public ::testing::Test {
 protected:
  CoefficientLabelsTest()
      : analysis({{"time", {1, 2, 3, 4, 5, 6}},
                  {"status", {1, 1, 1, 1, 1, 1}},
                  {"age", {1, 4, 2, 8, 5, 7}},
                  {"grade", {1, 2, 3, 1, 2, 3}, {{1, "low"}, {3, "high"}}},
                  {"arm", {10, 20, 10, 20, 10, 20}}}) {
    analysis.Time({"time"}).Status("status").Covariates({"age"}).Factor("grade", {1, 2, 3}).Factor("arm", {10, 20});
  }
  Labels Build(int coding) {
    analysis.Settings().Coding = static_cast<std::int16_t>(coding);
    analysis.PrepareFit();
    return CoefficientLabels(analysis.Data());
  }
  TestAnalysis analysis;
};

TEST_F(CoefficientLabelsTest, NameTheEffectAndTheLevelOfAFactor) {
  analysis.DefaultDesign();
  EXPECT_EQ(Build(Codings::SigmaRestricted), (Labels{"age", "grade_low", "grade_2", "arm_10"}));
  EXPECT_EQ(Build(Codings::Reference), (Labels{"age", "grade_low", "grade_2", "arm_10"}));
  EXPECT_EQ(Build(Codings::Overparameterized),
            (Labels{"age", "grade_low", "grade_2", "grade_high", "arm_10", "arm_20"}));
}

TEST_F(CoefficientLabelsTest, LevelNumbersSkipTheReferenceLevelUnderRestrictedCoding) {
  analysis.DefaultDesign();
  analysis.Settings().ReferenceCodes = {1, 10};
  analysis.Settings().ReferenceCodeIndex = {1, 1};
  EXPECT_EQ(Build(Codings::Reference), (Labels{"age", "grade_2", "grade_high", "arm_20"}));
  EXPECT_EQ(Build(Codings::Overparameterized),
            (Labels{"age", "grade_low", "grade_2", "grade_high", "arm_10", "arm_20"}));
}

TEST_F(CoefficientLabelsTest, CountTheColumnsOfATermWithAFactor) {
  analysis.Design({{"age", "v3"}, {"age*age", "v3*v3"}, {"grade*arm", "v4*v5"}, {"age*grade", "v3*v4"}});
  EXPECT_EQ(Build(Codings::SigmaRestricted),
            (Labels{"age", "age*age", "grade*arm_1", "grade*arm_2", "age*grade_1", "age*grade_2"}));
}

TEST_F(CoefficientLabelsTest, AreNoneWithoutCoefficients) {
  TestAnalysis empty({{"time", {1, 2}}, {"status", {1, 1}}});
  empty.Time({"time"}).Status("status");
  empty.PrepareFit();
  EXPECT_TRUE(CoefficientLabels(empty.Data()).empty());
}

}  // namespace
}  // namespace orv
