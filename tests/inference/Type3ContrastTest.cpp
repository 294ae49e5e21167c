// Type 3 functions against what they must be: estimable, 0 on the other effects, orthogonal to what the higher-order
// effects alone can tell, and as many as the effect has degrees of freedom.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "inference/LinearHypothesis.h"
#include "inference/Type3Contrast.h"
#include "support/TwoWayCases.h"

namespace orv {
namespace {

using namespace testing;
using Vector = std::vector<double>;
using Effects = std::vector<std::pair<std::string, std::string>>;

const Effects kMainEffects = {{"x", "v3"}, {"f", "v4"}, {"g", "v5"}};
const Effects kInteraction = {{"x", "v3"}, {"f", "v4"}, {"g", "v5"}, {"f*g", "v4*v5"}};
const Effects kReversed = {{"f*g", "v4*v5"}, {"g", "v5"}, {"x", "v3"}, {"f", "v4"}};
const Effects kSlopes = {{"x", "v3"}, {"f", "v4"}, {"x*f", "v3*v4"}};
const Effects kNested = {{"f", "v4"}, {"g(f)", "v5*v4"}};

double Dot(const Vector& a, const Vector& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
  return sum;
}

double Largest(const Vector& a) {
  double largest = 0.0;
  for (const double value : a) largest = std::max(largest, std::abs(value));
  return largest;
}

// The columns of L as vectors.
std::vector<Vector> FunctionsOf(const DenseMatrix& L) {
  std::vector<Vector> functions;
  for (std::size_t m = 0; !L.empty() && m < L.front().size(); ++m) {
    functions.emplace_back();
    for (const Vector& row : L) functions.back().push_back(row[m]);
  }
  return functions;
}

// Makes the vectors orthonormal; those that depend on others are left out.
std::vector<Vector> Orthonormal(const std::vector<Vector>& vectors) {
  std::vector<Vector> result;
  for (Vector v : vectors) {
    const double before = std::sqrt(Dot(v, v));
    for (int pass = 0; pass < 2; ++pass) {
      for (const Vector& q : result) {
        const double share = Dot(v, q);
        for (std::size_t i = 0; i < v.size(); ++i) v[i] -= share * q[i];
      }
    }
    const double length = std::sqrt(Dot(v, v));
    if (!(length > 1e-9 * before)) continue;
    for (double& value : v) value /= length;
    result.push_back(v);
  }
  return result;
}

// How far a vector reaches out of a space, relative to its length.
double Outside(Vector v, const std::vector<Vector>& orthonormalBasis) {
  const double before = std::sqrt(Dot(v, v));
  for (const Vector& q : orthonormalBasis) {
    const double share = Dot(v, q);
    for (std::size_t i = 0; i < v.size(); ++i) v[i] -= share * q[i];
  }
  return std::sqrt(Dot(v, v)) / before;
}

class Type3ContrastTest : public ::testing::Test {
 protected:
  // Reads the cases and evaluates the information.
  CCoxFit& Prepare(const std::vector<int>& counts, const Effects& effects, double scaleOfX = 1.0) {
    analysis = std::make_unique<TestAnalysis>(TwoWayCases(counts, scaleOfX));
    SelectTwoWay(*analysis, Codings::Overparameterized, effects);
    CCoxFit& fit = analysis->PrepareFit();
    fit.EvaluateScoreAtStart();
    return fit;
  }
  std::vector<Vector> Functions(int effect) {
    DenseMatrix L;
    EXPECT_TRUE(BuildType3Contrast(analysis->Fit(), L, effect));
    EXPECT_EQ(L.size(), analysis->Data().CoefficientCount);
    return FunctionsOf(L);
  }
  int First(int effect) { return analysis->Data().EffectFirstColumn[static_cast<std::size_t>(effect)] - 1; }
  int End(int effect) { return analysis->Data().EffectLastColumn[static_cast<std::size_t>(effect)]; }

  // The differences of the cases' design rows from the first: they span the estimable functions.
  std::vector<Vector> RowDifferences() {
    std::vector<Vector> rows;
    const std::size_t p = analysis->Data().CoefficientCount;
    const double* first = analysis->Data().CaseTable.GetRow(1);
    for (int row = 2; row <= static_cast<int>(analysis->Data().ValidCaseCount); ++row) {
      const double* x = analysis->Data().CaseTable.GetRow(row);
      rows.emplace_back();
      for (std::size_t j = 0; j < p; ++j) rows.back().push_back(x[j] - first[j]);
    }
    return rows;
  }
  // The plain construction, from the design rows alone: reduce them to echelon form over the columns of the other
  // effects, then those of the effect, then the rest. Rows whose pivot is in the effect have no part in the others; the
  // rows after them span what the higher-order effects alone can tell.
  std::vector<Vector> PlainType3(int effect, const std::vector<int>& higher) {
    std::vector<int> order;
    std::vector<int> partOf(analysis->Data().CoefficientCount, 0);
    for (int j = First(effect); j < End(effect); ++j) partOf[static_cast<std::size_t>(j)] = 1;
    for (const int h : higher) {
      for (int j = First(h); j < End(h); ++j) partOf[static_cast<std::size_t>(j)] = 2;
    }
    for (int part = 0; part < 3; ++part) {
      for (std::size_t j = 0; j < partOf.size(); ++j) {
        if (partOf[j] == part) order.push_back(static_cast<int>(j));
      }
    }
    std::vector<Vector> rows = RowDifferences();
    std::vector<Vector> ofEffect;
    std::vector<Vector> ofHigher;
    std::size_t used = 0;
    for (const int column : order) {
      const auto c = static_cast<std::size_t>(column);
      std::size_t best = used;
      for (std::size_t r = used; r < rows.size(); ++r) {
        if (std::abs(rows[r][c]) > std::abs(rows[best][c])) best = r;
      }
      if (used == rows.size() || std::abs(rows[best][c]) < 1e-9) continue;
      std::swap(rows[used], rows[best]);
      for (std::size_t r = used + 1; r < rows.size(); ++r) {
        const double factor = rows[r][c] / rows[used][c];
        for (std::size_t j = 0; j < rows[r].size(); ++j) rows[r][j] -= factor * rows[used][j];
        rows[r][c] = 0.0;
      }
      if (partOf[c] == 1) ofEffect.push_back(rows[used]);
      if (partOf[c] == 2) ofHigher.push_back(rows[used]);
      ++used;
    }
    std::vector<Vector> all = Orthonormal(ofHigher);
    const auto higherCount = static_cast<std::ptrdiff_t>(all.size());
    all.insert(all.end(), ofEffect.begin(), ofEffect.end());
    all = Orthonormal(all);
    return {all.begin() + higherCount, all.end()};
  }

  std::unique_ptr<TestAnalysis> analysis;
};

TEST_F(Type3ContrastTest, CovariateIsTestedByItsOwnParameter) {
  Prepare(kUnbalanced, kMainEffects);
  const std::vector<Vector> functions = Functions(0);
  ASSERT_EQ(functions.size(), 1U);
  EXPECT_EQ(functions[0], (Vector{1, 0, 0, 0, 0, 0}));
}

TEST_F(Type3ContrastTest, FactorWithoutAnInteractionHasItsContrasts) {
  Prepare(kUnbalanced, kMainEffects);
  const std::vector<Vector> functions = Functions(2);
  ASSERT_EQ(functions.size(), 2U);
  for (const Vector& l : functions) {
    EXPECT_NEAR(l[3] + l[4] + l[5], 0.0, 1e-12) << "a contrast of levels";
    EXPECT_EQ(l[0], 0.0);
    EXPECT_EQ(l[1], 0.0);
    EXPECT_EQ(l[2], 0.0);
  }
}

// The two levels of f are compared by the averages of their three cells, whatever the cells hold.
TEST_F(Type3ContrastTest, MainEffectHasEntriesOnItsInteraction) {
  for (const auto& counts : {kBalanced, kUnbalanced}) {
    Prepare(counts, kInteraction);
    const std::vector<Vector> functions = Functions(1);
    ASSERT_EQ(functions.size(), 1U);
    const Vector& l = functions[0];
    const Vector expected = {0, 1, -1, 0, 0, 0, 1.0 / 3, 1.0 / 3, 1.0 / 3, -1.0 / 3, -1.0 / 3, -1.0 / 3};
    for (std::size_t j = 0; j < expected.size(); ++j) EXPECT_NEAR(l[j], expected[j], 1e-11) << j;
  }
}

TEST_F(Type3ContrastTest, InteractionHasNoEntriesOnItsMainEffects) {
  Prepare(kUnbalanced, kInteraction);
  const std::vector<Vector> functions = Functions(3);
  ASSERT_EQ(functions.size(), 2U);
  for (const Vector& l : functions) {
    for (std::size_t j = 0; j < 6; ++j) EXPECT_EQ(l[j], 0.0) << j;
    EXPECT_GT(Largest(l), 0.5);
  }
}

// l is estimable when it is a combination of differences of design rows.
TEST_F(Type3ContrastTest, FunctionsAreEstimable) {
  for (const Effects& effects : {kMainEffects, kInteraction, kReversed, kSlopes, kNested}) {
    for (const auto& counts : {kBalanced, kUnbalanced, kEmptyCell}) {
      Prepare(counts, effects);
      const std::vector<Vector> space = Orthonormal(RowDifferences());
      for (int effect = 0; effect < static_cast<int>(effects.size()); ++effect) {
        for (const Vector& l : Functions(effect)) {
          EXPECT_LT(Outside(l, space), 1e-9) << effects[static_cast<std::size_t>(effect)].first;
        }
      }
    }
  }
}

TEST_F(Type3ContrastTest, FunctionsSpanThoseOfThePlainConstruction) {
  struct {
    const char* what;
    Effects effects;
    std::map<int, std::vector<int>> higher;  // by effect
    std::vector<std::size_t> df;
    std::vector<std::size_t> dfWithAnEmptyCell;
  } const models[] = {
      {"main effects", kMainEffects, {}, {1, 1, 2}, {1, 1, 2}},
      {"interaction", kInteraction, {{1, {3}}, {2, {3}}}, {1, 1, 2, 2}, {1, 1, 2, 1}},
      {"interaction first", kReversed, {{1, {0}}, {3, {0}}}, {2, 2, 1, 1}, {1, 2, 1, 1}},
      {"slopes", kSlopes, {{0, {2}}}, {1, 1, 1}, {1, 1, 1}},
      {"nested", kNested, {{0, {1}}}, {1, 4}, {1, 3}},
  };
  for (const auto& model : models) {
    for (const auto& counts : {kBalanced, kUnbalanced, kEmptyCell}) {
      Prepare(counts, model.effects);
      for (int effect = 0; effect < static_cast<int>(model.effects.size()); ++effect) {
        const auto e = static_cast<std::size_t>(effect);
        SCOPED_TRACE(std::string(model.what) + ", " + model.effects[e].first);
        const auto higher = model.higher.find(effect);
        const std::vector<Vector> plain =
            PlainType3(effect, higher == model.higher.end() ? std::vector<int>{} : higher->second);
        const std::vector<Vector> functions = Functions(effect);
        EXPECT_EQ(functions.size(), (counts == kEmptyCell ? model.dfWithAnEmptyCell : model.df)[e]);
        EXPECT_EQ(functions.size(), plain.size());
        EXPECT_EQ(Orthonormal(functions).size(), functions.size()) << "they are independent";
        for (const Vector& l : functions) EXPECT_LT(Outside(l, plain), 1e-9);
      }
    }
  }
}

// With every cell filled, the tests of all effects are those of the sigma-restricted model.
TEST_F(Type3ContrastTest, TestsEqualThoseOfTheSigmaRestrictedModel) {
  const auto chiSquare = [](const CCoxFit& fit, const DenseMatrix& L, int& df) {
    double estimate = 0.0;
    double standardError = 0.0;
    int failed = 0;
    return TestLinearHypothesis(fit, L, estimate, standardError, df, failed);
  };
  for (const auto& counts : {kBalanced, kUnbalanced}) {
    TestAnalysis sigma(TwoWayCases(counts));
    SelectTwoWay(sigma, Codings::SigmaRestricted, kInteraction);
    ASSERT_EQ(sigma.Run(), 0);
    TestAnalysis full(TwoWayCases(counts));
    SelectTwoWay(full, Codings::Overparameterized, kInteraction);
    ASSERT_EQ(full.Run(), 0);
    full.Fit().EvaluateScoreAtStart();
    for (int effect = 0; effect < 4; ++effect) {
      const auto e = static_cast<std::size_t>(effect);
      const auto first = static_cast<std::size_t>(sigma.Data().EffectFirstColumn[e] - 1);
      const auto end = static_cast<std::size_t>(sigma.Data().EffectLastColumn[e]);
      DenseMatrix units(sigma.Data().CoefficientCount, Vector(end - first, 0.0));
      for (std::size_t j = first; j < end; ++j) units[j][j - first] = 1.0;
      DenseMatrix L;
      ASSERT_TRUE(BuildType3Contrast(full.Fit(), L, effect));
      int df = 0;
      int expectedDf = 0;
      const double value = chiSquare(full.Fit(), L, df);
      const double expected = chiSquare(sigma.Fit(), units, expectedDf);
      EXPECT_GT(expected, 1e-3) << "the effect must make a difference";
      EXPECT_EQ(df, expectedDf) << effect;
      EXPECT_NEAR(value, expected, 1e-8 * expected) << effect;
    }
  }
}

TEST_F(Type3ContrastTest, OfAliasedEffectsTheFirstHasTheFunction) {
  std::vector<TestColumn> columns = TwoWayCases(kUnbalanced);
  columns.push_back({"copy", columns[2].Values});
  columns.push_back({"one", Vector(columns[2].Values.size(), 1.0)});
  analysis = std::make_unique<TestAnalysis>(columns);
  SelectTwoWay(*analysis, Codings::Overparameterized, kMainEffects);
  analysis->Covariates({"copy", "one"}).Design({{"x", "v3"}, {"copy", "v6"}, {"f", "v4"}, {"one", "v7"}});
  analysis->PrepareFit().EvaluateScoreAtStart();
  EXPECT_EQ(Functions(0).size(), 1U) << "the first of two copies stands for both, as in the fit";
  EXPECT_TRUE(Functions(1).empty());
  EXPECT_EQ(Functions(2).size(), 1U);
  EXPECT_TRUE(Functions(3).empty()) << "a constant";
}

TEST_F(Type3ContrastTest, FixedEffectHasNoFunction) {
  analysis = std::make_unique<TestAnalysis>(TwoWayCases(kUnbalanced));
  SelectTwoWay(*analysis, Codings::Overparameterized, {{"x", "v3"}, {"f", "v4"}});
  analysis->StartAt({0.25, 0.0, 0.0}).Fix({true, false});
  analysis->PrepareFit().EvaluateScoreAtStart();
  EXPECT_TRUE(Functions(0).empty());
  EXPECT_EQ(Functions(1).size(), 1U);
}

// The tolerance is that of the information as it is, so a covariate in very large units has no test.
TEST_F(Type3ContrastTest, PivotBelowTheToleranceIsLeftOut) {
  const double events = 20.0;
  Prepare(kUnbalanced, {{"x", "v3"}}, 1e-6);
  ASSERT_LT(analysis->Fit().m_PackedInformation[0], events * 1e-12);
  EXPECT_TRUE(Functions(0).empty());
  analysis->Fit().m_PackedInformation[0] = kType3PivotTolerance;
  EXPECT_EQ(Functions(0).size(), 1U);
  analysis->Fit().m_PackedInformation[0] = 0.999 * kType3PivotTolerance;
  EXPECT_TRUE(Functions(0).empty());
}

// Small units make the information large, and what rounding leaves of an aliased column is then above the tolerance.
TEST_F(Type3ContrastTest, RoundingOfLargeValuesMakesNoFunction) {
  for (const double scale : {1.0, 1e3, 1e6, 1e9}) {
    Prepare(kUnbalanced, kSlopes, scale);
    const std::vector<Vector> slope = Functions(0);
    ASSERT_EQ(slope.size(), 1U) << scale;
    EXPECT_NEAR(slope[0][3], 0.5, 1e-9) << "the average slope at " << scale;
    EXPECT_NEAR(slope[0][4], 0.5, 1e-9);
    EXPECT_EQ(Functions(1).size(), 1U) << scale;
    EXPECT_EQ(Functions(2).size(), 1U) << "two slopes, one difference, at " << scale;
  }
}

// ---- Part of the design ---------------------------------------------------------------------------------------------

TEST_F(Type3ContrastTest, CurrentModelTakesNoPartOfOtherColumns) {
  Prepare(kUnbalanced, kInteraction);
  // Without the interaction and the covariate: f in rows 0 and 1, g in rows 2 to 4.
  analysis->Fit().m_ActiveColumns = {1, 2, 3, 4, 5};
  DenseMatrix L;
  ASSERT_TRUE(
      BuildType3Contrast(analysis->Fit(), analysis->Fit().m_PackedInformation, analysis->Fit().m_ActiveColumns, L, 1));
  ASSERT_EQ(L.size(), 5U);
  const std::vector<Vector> functions = FunctionsOf(L);
  ASSERT_EQ(functions.size(), 1U);
  const Vector expected = {1, -1, 0, 0, 0};
  for (std::size_t j = 0; j < 5; ++j) EXPECT_NEAR(functions[0][j], expected[j], 1e-12) << j;
}

TEST_F(Type3ContrastTest, CurrentModelEqualsTheModelOfItsEffectsAlone) {
  Prepare(kUnbalanced, kMainEffects);
  std::vector<std::vector<Vector>> alone;
  for (int effect = 0; effect < 3; ++effect) alone.push_back(Functions(effect));
  Prepare(kUnbalanced, kInteraction);
  for (int effect = 0; effect < 3; ++effect) {
    DenseMatrix L;
    ASSERT_TRUE(
        BuildType3Contrast(analysis->Fit(), analysis->Fit().m_PackedInformation, {0, 1, 2, 3, 4, 5}, L, effect));
    EXPECT_EQ(FunctionsOf(L), alone[static_cast<std::size_t>(effect)]) << effect;
  }
}

TEST_F(Type3ContrastTest, EffectOutsideTheModelHasNoFunction) {
  Prepare(kUnbalanced, kInteraction);
  DenseMatrix L;
  ASSERT_TRUE(BuildType3Contrast(analysis->Fit(), analysis->Fit().m_PackedInformation, {0, 3, 4, 5}, L, 1));
  EXPECT_EQ(L, DenseMatrix(4));
}

TEST_F(Type3ContrastTest, InformationIsLeftAsItWas) {
  const CCoxFit& fit = Prepare(kUnbalanced, kInteraction);
  const Vector before = fit.m_PackedInformation;
  const std::vector<Vector> first = Functions(1);
  EXPECT_EQ(fit.m_PackedInformation, before);
  EXPECT_EQ(Functions(1), first);
}

TEST_F(Type3ContrastTest, FailsWithoutInformation) {
  CCoxFit& fit = Prepare(kUnbalanced, kInteraction);
  fit.m_PackedInformation.pop_back();
  DenseMatrix L = {{1.0}};
  EXPECT_FALSE(BuildType3Contrast(fit, L, 1));
  EXPECT_TRUE(L.empty());
}

TEST_F(Type3ContrastTest, FailsWhenTheFunctionsAreNotFinite) {
  CCoxFit& fit = Prepare(kUnbalanced, kInteraction);
  fit.m_PackedInformation.back() = 1.0;
  fit.m_PackedInformation[fit.m_PackedInformation.size() - 2] = 1e300;
  fit.m_PackedInformation[fit.m_PackedInformation.size() - 3] = 1e300;
  DenseMatrix L;
  EXPECT_FALSE(BuildType3Contrast(fit, L, 1));
  EXPECT_TRUE(L.empty());
}

}  // namespace
}  // namespace orv
