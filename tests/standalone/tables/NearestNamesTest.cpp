#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "standalone/tables/NearestNames.h"

namespace orv {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(EditDistance, CountsSingleEdits) {
  struct {
    const char *a, *b;
    std::size_t distance;
  } const cases[] = {
      {"", "", 0},        {"", "age", 3},      {"age", "", 3},           {"age", "age", 0},
      {"agee", "age", 1}, {"ge", "age", 1},    {"aqe", "age", 1},        {"aeg", "age", 1},
      {"AGE", "age", 0},  {"time", "mite", 2}, {"kitten", "sitting", 3}, {"stauts", "status", 1},
      {"ca", "abc", 3},   {"x-1", "X_1", 1},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(EditDistance(c.a, c.b), c.distance) << c.a << " / " << c.b;
    EXPECT_EQ(EditDistance(c.b, c.a), c.distance) << c.b << " / " << c.a;
  }
}

TEST(NearestNames, OrdersByDistanceThenByPlace) {
  EXPECT_THAT(NearestNames("tim", {"age", "time", "Tim2", "TIM"}, 3), ElementsAre("TIM", "time", "Tim2"));
  EXPECT_THAT(NearestNames("agee", {"sex", "age"}, 1), ElementsAre("age"));
}

TEST(NearestNames, GivesNoMoreThanThereAre) {
  EXPECT_THAT(NearestNames("x", {"a", "b"}, 5), ElementsAre("a", "b"));
  EXPECT_THAT(NearestNames("x", {"a", "b"}, 0), IsEmpty());
  EXPECT_THAT(NearestNames("x", {}, 3), IsEmpty());
}

}  // namespace
}  // namespace orv
