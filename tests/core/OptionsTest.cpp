// Operations on the options that dialogs and scripts call.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "core/SettingsFields.h"
#include "support/TestAnalysis.h"

namespace orv {
namespace {

using testing::ChangedFields;
using testing::FieldTexts;
using testing::Perturb;
using testing::TestAnalysis;
using testing::VisitFields;

TEST(BackupFullModelData, CopiesWhatModelBuildingShrinksAndNothingElse) {
  CCoxPH analysis(nullptr);
  CoxSettings& s = analysis.m_Settings;
  VisitFields(s, Perturb());
  s.CovariateCount = 2;
  s.FactorCount = 3;
  const CoxSettings before = s;
  analysis.BackupFullModelData();
  EXPECT_EQ(s.BackupCovariateVariables, before.CovariateVariables);
  EXPECT_EQ(s.BackupCovariateCount, 2);
  EXPECT_EQ(s.BackupFactorVariables, before.FactorVariables);
  EXPECT_EQ(s.BackupFactorCount, 3);
  EXPECT_EQ(s.BackupReferenceCodeIndex, before.ReferenceCodeIndex);
  EXPECT_EQ(s.BackupReferenceCodes, before.ReferenceCodes);
  EXPECT_EQ(s.BackupFactorCodeCounts, before.FactorCodeCounts);
  EXPECT_EQ(s.BackupFactorCodes, before.FactorCodes);
  EXPECT_EQ(s.BackupDesignEffects, before.DesignEffects);
  EXPECT_EQ(s.BackupEffectSymbols, before.EffectSymbols);
  EXPECT_EQ(ChangedFields(before, s),
            (std::set<std::string>{"BackupCovariateVariables", "BackupCovariateCount", "BackupFactorVariables",
                                   "BackupFactorCount", "BackupReferenceCodeIndex", "BackupReferenceCodes",
                                   "BackupFactorCodeCounts", "BackupFactorCodes", "BackupDesignEffects",
                                   "BackupEffectSymbols"}));
}

TEST(BackupFullModelData, EmptiesTheSnapshotBefore) {
  CCoxPH analysis(nullptr);
  VisitFields(analysis.m_Settings, Perturb());
  analysis.BackupFullModelData();
  CoxSettings& s = analysis.m_Settings;
  s.CovariateVariables.clear();
  s.FactorCodes = {4};
  s.DesignEffects.clear();
  s.EffectSymbols = {{"a", "v1"}};
  analysis.BackupFullModelData();
  EXPECT_TRUE(s.BackupCovariateVariables.empty() && s.BackupDesignEffects.empty());
  EXPECT_EQ(s.BackupFactorCodes, std::vector<std::int32_t>{4});
  EXPECT_EQ(s.BackupEffectSymbols, (std::map<std::string, std::string>{{"a", "v1"}}));
}

TEST(ReadData, ChangesNothing) {
  TestAnalysis test({{"x", {1, 2}}, {"f", {1, 2}}, {"w", {1, 2}}});
  test.Covariates({"x"}).Factor("f", {1, 2}).Weights("w").DefaultDesign();
  const CoxSettings before = test.Settings();
  EXPECT_EQ(test.Analysis.ReadData(), 0);
  EXPECT_TRUE(ChangedFields(before, test.Settings()).empty());
  EXPECT_EQ(test.Analysis.m_pCoxData, nullptr);
  EXPECT_EQ(test.Host.CaseFetches, 0);
}

TEST(SplitStrings, SplitsAtAnyDelimiterAndDropsLeadingBlanksAndEmptyPieces) {
  struct {
    const char* Text;
    const char* Delimiters;
    std::vector<std::string> Pieces;
  } const cases[] = {
      {"a*b", "*", {"a", "b"}},
      {"a", "*", {"a"}},
      {"a*b,c", "*,", {"a", "b", "c"}},
      {"a*,b", "*,", {"a", "b"}},
      {"*a**b*", "*", {"a", "b"}},
      {"  a *  b ", "*", {"a ", "b "}},
      {"two words*b", "*", {"two words", "b"}},
      {"a* *b", "*", {"a", "b"}},
      {"a b  c", " ", {"a", "b", "c"}},
      {"***", "*", {}},
      {"   ", "*", {}},
      {"a*b", "", {"a*b"}},
      {"\ta*b", "*", {"\ta", "b"}},
  };
  for (const auto& c : cases) {
    const std::string text = c.Text;
    const std::string delimiters = c.Delimiters;
    std::vector<std::string> pieces = {"from before"};
    EXPECT_EQ(CCoxPH::SplitStrings(&pieces, &text, &delimiters), static_cast<int>(c.Pieces.size())) << c.Text;
    EXPECT_EQ(pieces, c.Pieces) << c.Text;
  }
}

TEST(SplitStrings, RefusesAnEmptyTextAndNullArguments) {
  std::vector<std::string> pieces;
  const std::string text = "a*b";
  const std::string delimiters = "*";
  const std::string empty;
  EXPECT_EQ(CCoxPH::SplitStrings(&pieces, &empty, &delimiters), -1);
  EXPECT_EQ(CCoxPH::SplitStrings(nullptr, &text, &delimiters), -1);
  EXPECT_EQ(CCoxPH::SplitStrings(&pieces, nullptr, &delimiters), -1);
  EXPECT_EQ(CCoxPH::SplitStrings(&pieces, &text, nullptr), -1);
}

}  // namespace
}  // namespace orv
