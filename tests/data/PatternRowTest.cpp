// The design values of covariate patterns.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "data/PatternRow.h"
#include "support/TwoWayCases.h"

namespace orv {
namespace {

using namespace testing;
using Vector = std::vector<double>;
using Effects = std::vector<std::pair<std::string, std::string>>;

constexpr int kX = 3;
constexpr int kF = 4;
constexpr int kG = 5;
const Effects kEverything = {{"x", "v3"},      {"f", "v4"},      {"g", "v5"},
                             {"x*x", "v3*v3"}, {"x*g", "v3*v5"}, {"f*g", "v4*v5"}};

// The two-way cases with their design built.
struct Pattern {
  Pattern(int coding, const Effects& effects) : analysis(TwoWayCases(kBalanced)) {
    SelectTwoWay(analysis, coding, effects);
    analysis.PrepareFit();
  }
  // The row of x, f and g; it has been filled before.
  int Evaluate(double x, double f, double g) {
    row = {7.0, 7.0};
    return PatternDesignRow(analysis.Data(), {{kX, x}, {kF, f}, {kG, g}}, row);
  }
  TestAnalysis analysis;
  Vector row;
};

TEST(PatternDesignRow, HasTheColumnsOfTheDesign) {
  struct {
    int coding;
    double f;
    double g;
    Vector expected;  // x, f, g, x*x, x*g, f*g
  } const cases[] = {
      {Codings::SigmaRestricted, 1, 1, {2, 1, 1, 0, 4, 2, 0, 1, 0}},
      {Codings::SigmaRestricted, 2, 2, {2, -1, 0, 1, 4, 0, 2, 0, -1}},
      {Codings::SigmaRestricted, 1, 3, {2, 1, -1, -1, 4, -2, -2, -1, -1}},
      {Codings::SigmaRestricted, 2, 3, {2, -1, -1, -1, 4, -2, -2, 1, 1}},
      {Codings::Reference, 1, 1, {2, 1, 1, 0, 4, 2, 0, 1, 0}},
      {Codings::Reference, 2, 2, {2, 0, 0, 1, 4, 0, 2, 0, 0}},
      {Codings::Reference, 1, 3, {2, 1, 0, 0, 4, 0, 0, 0, 0}},
      {Codings::Reference, 2, 3, {2, 0, 0, 0, 4, 0, 0, 0, 0}},
      {Codings::Overparameterized, 1, 1, {2, 1, 0, 1, 0, 0, 4, 2, 0, 0, 1, 0, 0, 0, 0, 0}},
      {Codings::Overparameterized, 2, 3, {2, 0, 1, 0, 0, 1, 4, 0, 0, 2, 0, 0, 0, 0, 0, 1}},
  };
  for (const auto& c : cases) {
    Pattern pattern(c.coding, kEverything);
    EXPECT_EQ(pattern.Evaluate(2.0, c.f, c.g), 0);
    EXPECT_EQ(pattern.row, c.expected) << "coding " << c.coding << " f " << c.f << " g " << c.g;
  }
}

// A case with the values of a pattern has its design values.
TEST(PatternDesignRow, IsThatOfACaseWithTheseValues) {
  for (const int coding : {Codings::SigmaRestricted, Codings::Reference, Codings::Overparameterized}) {
    Pattern pattern(coding, kEverything);
    CCoxData& data = pattern.analysis.Data();
    for (int row = 1; row <= static_cast<int>(data.ValidCaseCount); ++row) {
      const double* cells = data.CaseTable.GetRow(row);
      const int number = static_cast<int>(cells[data.CaseNumberColumn]);
      const Vector expected(cells, cells + data.CoefficientCount);
      const MemoryTable& table = pattern.analysis.Table;
      ASSERT_EQ(pattern.Evaluate(table.Value(kX, number), table.Value(kF, number), table.Value(kG, number)), 0);
      EXPECT_EQ(pattern.row, expected) << "coding " << coding << " case " << number;
    }
  }
}

TEST(PatternDesignRow, FollowsTheReferenceCode) {
  for (const int coding : {Codings::SigmaRestricted, Codings::Reference}) {
    TestAnalysis analysis(TwoWayCases(kBalanced));
    SelectTwoWay(analysis, coding, {{"g", "v5"}});
    analysis.Settings().ReferenceCodeIndex[1] = 1;
    analysis.PrepareFit();
    const double reference = coding == Codings::SigmaRestricted ? -1.0 : 0.0;
    const std::map<double, Vector> expected = {{1.0, {reference, reference}}, {2.0, {1.0, 0.0}}, {3.0, {0.0, 1.0}}};
    for (const auto& [code, values] : expected) {
      Vector row;
      EXPECT_EQ(PatternDesignRow(analysis.Data(), {{kG, code}}, row), 0);
      EXPECT_EQ(row, values) << "coding " << coding << " code " << code;
    }
  }
}

TEST(PatternDesignRow, ValueThatIsNoSelectedCodeEndsTheEvaluation) {
  for (const int coding : {Codings::SigmaRestricted, Codings::Reference, Codings::Overparameterized}) {
    Pattern pattern(coding, kEverything);
    for (const double code : {0.0, 4.0, 1.5, -1.0}) {
      EXPECT_EQ(pattern.Evaluate(2.0, 1.0, code), 6) << code;
      EXPECT_TRUE(pattern.row.empty()) << code;
    }
  }
}

TEST(PatternDesignRow, FactorOutsideTheDesignMayHaveAnyValue) {
  Pattern pattern(Codings::Reference, {{"x", "v3"}, {"f", "v4"}});
  EXPECT_EQ(pattern.Evaluate(2.5, 1.0, 17.0), 0);
  EXPECT_EQ(pattern.row, (Vector{2.5, 1.0}));
}

TEST(PatternDesignRow, NestedEffectsCountTheFactorAround) {
  Pattern pattern(Codings::Overparameterized, {{"x(f)", "v3(v4)"}});
  ASSERT_EQ(pattern.Evaluate(2.5, 2.0, 1.0), 0);
  EXPECT_EQ(pattern.row, (Vector{0.0, 2.5}));
}

}  // namespace
}  // namespace orv
