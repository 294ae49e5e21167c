// Which effects wait for others, and which are held by others.
#include <gtest/gtest.h>

#include "select/EffectHierarchy.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::TestAnalysis;
using testing::TestColumn;

std::vector<TestColumn> Cases() {
  return {{"x", {1, 4, 2, 5, 3, 7, 6, 2}},
          {"z", {2, 1, 2, 4, 3, 5, 6, 1}},
          {"f", {1, 2, 3, 1, 2, 3, 1, 2}},
          {"time", {5, 3, 8, 1, 4, 2, 7, 6}},
          {"status", {1, 1, 0, 1, 1, 0, 1, 1}}};
}

// x, f, x*f, z: the product waits for x and f, which it holds once it is in.
TEST(EffectHierarchy, AProductComesAfterItsPartsAndHoldsThem) {
  TestAnalysis analysis(Cases());
  analysis.Time({"time"}).Status("status").Covariates({"x", "z"}).Factor("f", {1, 2, 3});
  analysis.Design({{"x", "v1"}, {"f", "v3"}, {"x*f", "v1*v3"}, {"z", "v2"}});
  const EffectHierarchy hierarchy(analysis.PrepareFit());
  struct {
    const char* what;
    std::vector<bool> inModel;
    std::vector<bool> waits;
    std::vector<bool> held;
  } const cases[] = {
      {"nothing", {false, false, false, false}, {false, false, true, false}, {false, false, false, false}},
      {"one part", {true, false, false, false}, {false, false, true, false}, {false, false, false, false}},
      {"both parts", {true, true, false, false}, {false, false, false, false}, {false, false, false, false}},
      {"the product", {true, true, true, false}, {false, false, false, false}, {true, true, false, false}},
      {"a stranger", {false, false, false, true}, {false, false, true, false}, {false, false, false, false}},
  };
  for (const auto& c : cases) {
    for (int effect = 1; effect <= 4; ++effect) {
      const auto place = static_cast<std::size_t>(effect - 1);
      EXPECT_EQ(hierarchy.WaitsForAnother(effect, c.inModel), c.waits[place]) << c.what << ", effect " << effect;
      EXPECT_EQ(hierarchy.IsHeldByAnother(effect, c.inModel), c.held[place]) << c.what << ", effect " << effect;
    }
  }
}

// Containment asks for variables and not for powers, so x and x*x contain each other.
TEST(EffectHierarchy, EffectsOfTheSameVariablesWaitForEachOther) {
  TestAnalysis analysis(Cases());
  analysis.Time({"time"}).Status("status").Covariates({"x", "z"});
  analysis.Design({{"x", "v1"}, {"x*x", "v1*v1"}, {"z", "v2"}});
  const EffectHierarchy hierarchy(analysis.PrepareFit());
  const std::vector<bool> none(3, false);
  EXPECT_TRUE(hierarchy.WaitsForAnother(1, none));
  EXPECT_TRUE(hierarchy.WaitsForAnother(2, none));
  EXPECT_FALSE(hierarchy.WaitsForAnother(3, none));
  const std::vector<bool> both = {true, true, true};
  EXPECT_TRUE(hierarchy.IsHeldByAnother(1, both));
  EXPECT_TRUE(hierarchy.IsHeldByAnother(2, both));
  EXPECT_FALSE(hierarchy.IsHeldByAnother(3, both));
}

}  // namespace
}  // namespace orv
