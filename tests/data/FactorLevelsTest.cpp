#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "data/FactorLevels.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::TestAnalysis;
using testing::TestColumn;

// Two factors, "arm" with codes 1 2 3 4 (one of them labelled) and "site" with codes 7 3.
std::vector<TestColumn> TwoFactors() {
  return {{"arm", {1, 2, 3, 4}, {{2.0, "drug"}}}, {"site", {7, 3, 7, 3}}, {"time", {1, 2, 3, 4}}};
}

void SetReference(CoxSettings& settings, std::size_t place, std::int16_t position) {
  settings.ReferenceCodeIndex[place] = position;
  settings.ReferenceCodes[place] =
      settings.FactorCodes[static_cast<std::size_t>(FirstCodeIndex(settings, static_cast<int>(place)) + position - 1)];
}

class FactorLevels : public ::testing::Test {
 protected:
  FactorLevels() : m_test(TwoFactors()) { m_test.Factor("arm", {1, 2, 3, 4}).Factor("site", {7, 3}); }
  CoxSettings& Settings() { return m_test.Settings(); }
  TestAnalysis m_test;
};

TEST_F(FactorLevels, AFactorIsFoundByItsVariable) {
  EXPECT_EQ(FactorPlace(Settings(), m_test.Number("arm")), 0);
  EXPECT_EQ(FactorPlace(Settings(), m_test.Number("site")), 1);
  EXPECT_EQ(FactorPlace(Settings(), m_test.Number("time")), 2);
  EXPECT_EQ(FirstCodeIndex(Settings(), 0), 0);
  EXPECT_EQ(FirstCodeIndex(Settings(), 1), 4);
}

TEST_F(FactorLevels, TheReferenceIsTheLastLevelAndTheOthersKeepTheirOrder) {
  struct {
    std::int16_t Coding, Reference;
    std::vector<int> Levels;  // of positions 1 to 4
  } const cases[] = {
      {Codings::SigmaRestricted, 1, {4, 1, 2, 3}},   {Codings::SigmaRestricted, 2, {1, 4, 2, 3}},
      {Codings::Reference, 2, {1, 4, 2, 3}},         {Codings::Reference, 3, {1, 2, 4, 3}},
      {Codings::Reference, 4, {1, 2, 3, 4}},         {Codings::Overparameterized, 2, {1, 2, 3, 4}},
      {Codings::Overparameterized, 4, {1, 2, 3, 4}},
  };
  for (const auto& c : cases) {
    Settings().Coding = c.Coding;
    SetReference(Settings(), 0, c.Reference);
    for (int position = 1; position <= 4; ++position) {
      const int level = LevelOfPosition(Settings(), 0, position);
      EXPECT_EQ(level, c.Levels[static_cast<std::size_t>(position) - 1])
          << "coding " << c.Coding << ", reference " << c.Reference << ", position " << position;
    }
  }
}

// The inverse for labels; the reference level itself is not asked for under a restricted coding.
TEST_F(FactorLevels, TheTextOfALevelIsThatOfItsCode) {
  struct {
    std::int16_t Coding, Reference;
    std::vector<std::string> Texts;  // of levels 1, 2, 3, and 4 where it is asked for
  } const cases[] = {
      {Codings::SigmaRestricted, 4, {"1", "drug", "3"}},
      {Codings::SigmaRestricted, 2, {"1", "3", "4"}},
      {Codings::Reference, 1, {"drug", "3", "4"}},
      {Codings::Reference, 3, {"1", "drug", "4"}},
      {Codings::Overparameterized, 2, {"1", "drug", "3", "4"}},
  };
  const int arm = m_test.Number("arm");
  for (const auto& c : cases) {
    Settings().Coding = c.Coding;
    SetReference(Settings(), 0, c.Reference);
    for (std::size_t k = 0; k < c.Texts.size(); ++k) {
      const int level = static_cast<int>(k) + 1;
      EXPECT_EQ(FactorLevelText(m_test.Analysis, arm, level), c.Texts[k])
          << "coding " << c.Coding << ", reference " << c.Reference << ", level " << level;
      EXPECT_EQ(m_test.Analysis.GetFactorLevel(arm, level), c.Texts[k]);
    }
  }
}

TEST_F(FactorLevels, ASecondFactorHasItsOwnSliceOfTheCodes) {
  const int site = m_test.Number("site");
  Settings().Coding = Codings::Overparameterized;
  EXPECT_EQ(m_test.Analysis.GetFactorLevel(site, 1), "7");
  EXPECT_EQ(m_test.Analysis.GetFactorLevel(site, 2), "3");
  Settings().Coding = Codings::Reference;
  SetReference(Settings(), 1, 1);
  EXPECT_EQ(m_test.Analysis.GetFactorLevel(site, 1), "3");
  EXPECT_EQ(ReferenceLevelText(m_test.Analysis, site), "7");
}

TEST_F(FactorLevels, WhatDoesNotExistHasNoText) {
  EXPECT_EQ(FactorLevelText(m_test.Analysis, m_test.Number("time"), 1), "");
  EXPECT_EQ(ReferenceLevelText(m_test.Analysis, m_test.Number("time")), "");
  Settings().Coding = Codings::Overparameterized;
  EXPECT_EQ(FactorLevelText(m_test.Analysis, m_test.Number("arm"), 5), "");
  EXPECT_EQ(FactorLevelText(m_test.Analysis, m_test.Number("arm"), 0), "");
}

TEST_F(FactorLevels, TheReferenceIsNamedByItsLabel) {
  SetReference(Settings(), 0, 2);
  EXPECT_EQ(ReferenceLevelText(m_test.Analysis, m_test.Number("arm")), "drug");
  SetReference(Settings(), 0, 3);
  EXPECT_EQ(ReferenceLevelText(m_test.Analysis, m_test.Number("arm")), "3");
}

double Steps(double value, int steps) {
  for (; steps > 0; --steps) value = std::nextafter(value, std::numeric_limits<double>::infinity());
  return value;
}

TEST_F(FactorLevels, AValueMatchesACodeWithinFifteenUnitsInTheLastPlace) {
  struct {
    const char* What;
    double Value;
    int Position;
  } const cases[] = {
      {"the first code", 1.0, 1},
      {"the last code", 4.0, 4},
      {"15 units above a code", Steps(3.0, 15), 3},
      {"16 units above a code", Steps(3.0, 16), 0},
      {"a value between", 1.5, 0},
      {"a value that would round to a code", 2.4, 0},
      {"a value that is no code", 5.0, 0},
      {"infinity", std::numeric_limits<double>::infinity(), 0},
      {"no number", std::numeric_limits<double>::quiet_NaN(), 0},
      {"the missing code", kMissingCode, 0},
  };
  for (const auto& c : cases) EXPECT_EQ(PositionOfValue(Settings(), 0, c.Value), c.Position) << c.What;
}

TEST_F(FactorLevels, TheFirstOfEqualCodesMatches) {
  Settings().FactorCodes = {1, 3, 3, 4, 7, 3};
  EXPECT_EQ(PositionOfValue(Settings(), 0, 3.0), 2);
  EXPECT_EQ(PositionOfValue(Settings(), 1, 3.0), 2);
  EXPECT_EQ(PositionOfValue(Settings(), 1, 1.0), 0) << "codes of another factor do not count";
}

TEST_F(FactorLevels, ACodeIsWrittenAsItsLabelOrItsNumber) {
  EXPECT_EQ(CodeText(m_test.Analysis, m_test.Number("arm"), 2), "drug");
  EXPECT_EQ(CodeText(m_test.Analysis, m_test.Number("arm"), 3), "3");
  EXPECT_EQ(CodeText(m_test.Analysis, m_test.Number("site"), -7), "-7");
}

}  // namespace
}  // namespace orv
