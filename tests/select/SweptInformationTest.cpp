// The score statistics of swept columns and of those that may join them.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "fit/CCoxFit.h"
#include "fit/NumericalFailure.h"
#include "inference/SweepPacked.h"
#include "select/SubsetScores.h"
#include "select/SweptInformation.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using namespace testing;
using Vector = std::vector<double>;

// A fit of as many columns, whose score and information a test writes itself.
class FitOfColumns {
 public:
  explicit FitOfColumns(int columns) : m_analysis(Cases(columns)) {
    std::vector<std::string> names;
    for (int k = 0; k < columns; ++k) names.push_back("x" + std::to_string(k));
    m_analysis.Time({"time"}).Status("status").Covariates(names).DefaultDesign();
    m_analysis.PrepareFit();
  }
  const CCoxFit& With(const Vector& score, const Vector& packed) {
    m_analysis.Fit().m_ScoreVector = score;
    m_analysis.Fit().m_PackedInformation = packed;
    return m_analysis.Fit();
  }

 private:
  static std::vector<TestColumn> Cases(int columns) {
    std::vector<TestColumn> cases;
    for (int k = 0; k < columns; ++k) cases.push_back({"x" + std::to_string(k), {1, 2.0 + k, 4, 3}});
    cases.push_back({"time", {4, 3, 2, 1}});
    cases.push_back({"status", {1, 1, 0, 1}});
    return cases;
  }
  TestAnalysis m_analysis;
};

// The columns in other units.
ScoreAndInformation InUnits(ScoreAndInformation of, const Vector& units) {
  std::size_t place = 0;
  for (std::size_t i = 0; i < units.size(); ++i) {
    of.Score[i] *= units[i];
    for (std::size_t j = 0; j <= i; ++j) of.Packed[place++] *= units[i] * units[j];
  }
  return of;
}

void ExpectClose(double value, double expected, double scale, const std::string& what) {
  EXPECT_LE(std::abs(value - expected), 1e-9 * (std::abs(expected) + scale))
      << what << ": " << value << ", " << expected;
}

// ---- One column and a few, by hand
// -----------------------------------------------------------------------------------

TEST(SweptInformation, OneColumnHasItsScoreSquaredOverItsInformation) {
  FitOfColumns fit(1);
  SweptInformation swept(fit.With({6.0}, {9.0}));
  EXPECT_EQ(swept.ChiSquare(), 0.0);
  int df = -1;
  EXPECT_EQ(swept.ChiSquareWith({0, 0}, df), 4.0);
  EXPECT_EQ(df, 1);
  EXPECT_FALSE(swept.IsSwept(0));
  EXPECT_TRUE(swept.SweepIn(0));
  EXPECT_EQ(swept.ChiSquare(), 4.0);
  EXPECT_EQ(swept.Swept(), std::vector<bool>{true});
  swept.SweepOut(0);
  EXPECT_EQ(swept.ChiSquare(), 0.0);
  EXPECT_EQ(swept.Swept(), std::vector<bool>{false});
}

// U = (2, 1, 3), I = [4 2 0; 2 5 0; 0 0 1]: columns 0 and 1 give (5*4 - 2*2*2*1 + 4*1) / 16 = 1, column 2 gives 9.
TEST(SweptInformation, AddsWhatAColumnSaysBeyondTheOthers) {
  FitOfColumns fit(3);
  SweptInformation swept(fit.With({2, 1, 3}, {4, 2, 5, 0, 0, 1}));
  int df = 0;
  EXPECT_DOUBLE_EQ(swept.ChiSquareWith({0, 1}, df), 1.0);
  EXPECT_EQ(df, 2);
  EXPECT_DOUBLE_EQ(swept.ChiSquareWith({0, 2}, df), 10.0);
  EXPECT_EQ(df, 3);
  swept.SweepIn(1);
  EXPECT_DOUBLE_EQ(swept.ChiSquare(), 0.2);
  EXPECT_DOUBLE_EQ(swept.ChiSquareWith({0, 0}, df), 1.0);
  EXPECT_EQ(df, 1);
  EXPECT_DOUBLE_EQ(swept.ChiSquareWith({2, 2}, df), 9.2);
}

TEST(SweptInformation, ColumnThatSaysNothingNewIsRefusedWithNothingChanged) {
  FitOfColumns fit(3);
  // Column 1 is twice column 0, column 2 has no information.
  SweptInformation swept(fit.With({1, 2, 0}, {1, 2, 4, 0, 0, 0}));
  EXPECT_TRUE(swept.SweepIn(1));
  const double before = swept.ChiSquare();
  int df = -1;
  EXPECT_EQ(swept.ChiSquareWith({0, 0}, df), before);
  EXPECT_EQ(df, 0);
  EXPECT_FALSE(swept.SweepIn(0));
  EXPECT_FALSE(swept.SweepIn(2));
  EXPECT_EQ(swept.ChiSquare(), before);
  EXPECT_EQ(swept.Swept(), (std::vector<bool>{false, true, false}));
}

TEST(SweptInformation, EffectWithoutColumnsAddsNothing) {
  FitOfColumns fit(2);
  SweptInformation swept(fit.With({2, 1}, {4, 2, 5}));
  swept.SweepIn(0);
  int df = -1;
  EXPECT_EQ(swept.ChiSquareWith({1, 0}, df), swept.ChiSquare());
  EXPECT_EQ(df, 0);
}

TEST(SweptInformation, NeedsAnEvaluation) {
  FitOfColumns fit(2);
  EXPECT_THROW(SweptInformation{fit.With({}, {})}, NumericalFailure);
  EXPECT_THROW(SweptInformation{fit.With({1, 2}, {1, 0})}, NumericalFailure);
  EXPECT_THROW(SweptInformation{fit.With({1}, {1, 0, 1})}, NumericalFailure);
}

// ---- Random matrices
// -------------------------------------------------------------------------------------------------

// The test of an effect as it is defined: its columns swept in one after the other on the full matrix, and the
// quadratic form of all that are swept. Every test starts from the matrix as it was, so that no rounding gathers.
class LiteralSweep {
 public:
  LiteralSweep(const ScoreAndInformation& of, const std::vector<bool>& model) : m_of(of) {
    for (std::size_t c = 0; c < model.size(); ++c) {
      if (model[c]) Sweep(static_cast<int>(c));
    }
  }
  bool Sweep(int column) {
    int singular = 0;
    SweepPacked(m_of.Packed.data(), column + 1, Order(), m_swept, singular);
    return singular == 0;
  }
  double Form() const { return CCoxFit::ScoreQuadraticForm(m_of.Score.data(), m_of.Packed.data(), m_swept, Order()); }

 private:
  int Order() const { return static_cast<int>(m_of.Score.size()); }

  ScoreAndInformation m_of;
  std::vector<bool> m_swept = std::vector<bool>(m_of.Score.size(), false);
};

// The model changes column by column, in and out in a random order; at each state every effect that is not in is
// tested. The literal sweeps run on the columns in equal units, where their bounds hold; the statistic does not depend
// on the unit.
void CompareWithLiteralSweeps(unsigned seed, bool aliases, double largestUnitExponent) {
  TestRandom random(seed);
  for (int design = 0; design < 40; ++design) {
    const int p = 2 + random.Integer(9);
    const RandomDesign of(random, p, aliases);
    const ScoreAndInformation plain(of.X, of.Y);
    Vector units;
    for (int k = 0; k < p; ++k) units.push_back(std::pow(10.0, largestUnitExponent * random.Value()));
    const ScoreAndInformation scaled = InUnits(plain, units);
    FitOfColumns fit(p);
    SweptInformation swept(fit.With(scaled.Score, scaled.Packed));
    for (int move = 0; move < 3 * p; ++move) {
      const int column = random.Integer(p);
      const std::vector<bool> before = swept.Swept();
      if (swept.IsSwept(column)) {
        swept.SweepOut(column);
      } else {
        EXPECT_EQ(swept.SweepIn(column), LiteralSweep(plain, before).Sweep(column)) << design << ", column " << column;
      }
      const double all = ScoreOfSet(plain.Score, plain.Packed, std::vector<bool>(units.size(), true)).Value;
      ExpectClose(swept.ChiSquare(), LiteralSweep(plain, swept.Swept()).Form(), all, "swept columns");
      ExpectClose(swept.ChiSquare(), ScoreOfSet(plain.Score, plain.Packed, swept.Swept()).Value, all, "elimination");
      for (int first = 0; first < p; ++first) {
        std::vector<bool> members = swept.Swept();
        const int rank = ScoreOfSet(plain.Score, plain.Packed, members).Rank;
        LiteralSweep literal(plain, members);
        int literalDf = 0;
        for (int last = first; last < p && !swept.IsSwept(last); ++last) {
          members[static_cast<std::size_t>(last)] = true;
          int df = -1;
          literalDf += literal.Sweep(last) ? 1 : 0;
          const double chiSquare = swept.ChiSquareWith({first, last}, df);
          const ScoreOfSet expected(plain.Score, plain.Packed, members);
          ExpectClose(chiSquare, literal.Form(), all, "effect");
          ExpectClose(chiSquare, expected.Value, all, "effect by elimination");
          EXPECT_EQ(df, literalDf);
          EXPECT_EQ(df, expected.Rank - rank);
        }
      }
    }
  }
}

TEST(SweptInformation, TestsEqualTheLiteralSweeps) {
  CompareWithLiteralSweeps(1, false, 0.0);
}

TEST(SweptInformation, TestsEqualTheLiteralSweepsWithAliasedColumns) {
  CompareWithLiteralSweeps(2, true, 0.0);
}

TEST(SweptInformation, TestsDoNotDependOnTheUnitsOfColumns) {
  CompareWithLiteralSweeps(3, false, 8.0);
}

TEST(SweptInformation, AliasedColumnsAreFoundWhateverTheirUnits) {
  CompareWithLiteralSweeps(4, true, 8.0);
}

// Units that are powers of two leave every bit as it is.
TEST(SweptInformation, UnitsOfPowersOfTwoChangeNoDigit) {
  TestRandom random(5);
  const RandomDesign of(random, 6, false);
  const ScoreAndInformation plain(of.X, of.Y);
  const ScoreAndInformation scaled = InUnits(plain, {0x1p-30, 0x1p20, 1.0, 0x1p-8, 0x1p13, 0x1p2});
  FitOfColumns fit(6);
  SweptInformation a(fit.With(plain.Score, plain.Packed));
  SweptInformation b(fit.With(scaled.Score, scaled.Packed));
  for (const int column : {4, 0, 2}) {
    EXPECT_TRUE(a.SweepIn(column));
    EXPECT_TRUE(b.SweepIn(column));
    EXPECT_EQ(a.ChiSquare(), b.ChiSquare());
    int df = 0;
    EXPECT_EQ(a.ChiSquareWith({5, 5}, df), b.ChiSquareWith({5, 5}, df));
  }
}

TEST(SweptInformation, SweepsAnEffectPastColumnsThatAreInAlready) {
  TestRandom random(6);
  const RandomDesign of(random, 4, false);
  const ScoreAndInformation plain(of.X, of.Y);
  FitOfColumns fit(4);
  SweptInformation swept(fit.With(plain.Score, plain.Packed));
  swept.SweepIn(2);
  swept.SweepIn(EffectColumns{1, 3});
  EXPECT_EQ(swept.Swept(), (std::vector<bool>{false, true, true, true}));
  ExpectClose(swept.ChiSquare(), ScoreOfSet(plain.Score, plain.Packed, {false, true, true, true}).Value, 0.0, "effect");
}

}  // namespace
}  // namespace orv
