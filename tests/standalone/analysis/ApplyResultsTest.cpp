// What a person wants to see of a fit, handed to the results, and the notes on what is not there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "standalone/analysis/Definitions.h"
#include "standalone/analysis/ResultDefinition.h"

namespace orv::testing {
namespace {

using ::testing::IsEmpty;
using Texts = std::vector<std::string>;

ResultDefinition Showing(const Texts& results) {
  ResultDefinition definition;
  definition.Results = results;
  return definition;
}

// An analysis of twelve cases, run, with its results.
struct AppliedResults {
  explicit AppliedResults(const ResultDefinition& definition, const std::string& csv = Cases())
      : Of(Definition(), csv) {
    const ResolvedResults resolved = ResolveResults(definition, Of.Host, Of.Analysis);
    EXPECT_EQ(Of.Run(), 0);
    Results = std::make_unique<CCoxPHResults>(Of.Analysis);
    ApplyResults(resolved, *Results, Notes);
  }
  static AnalysisDefinition Definition() {
    AnalysisDefinition definition = LeastDefinition();
    definition.Covariates = {"age", "dose"};
    definition.Factors = {"arm"};
    definition.Coding = "reference";
    definition.Effects = "dose, arm";
    return definition;
  }
  static std::string Cases() {
    return "time,status,age,dose,arm\n5,1,60,1,drug\n8,0,51,3,placebo\n11,1,70,2,drug\n12,1,48,5,placebo\n"
           "15,0,55,2,drug\n21,1,66,5,placebo\n4,1,50,4,drug\n7,1,61,1,placebo\n9,1,44,2,drug\n";
  }
  Applied Of;
  std::unique_ptr<CCoxPHResults> Results;
  Texts Notes;
};

TEST(ApplyResults, SetsTheOptions) {
  ResultDefinition definition = Showing({"residuals", "contrast", "survivor", "phtest"});
  definition.Residuals = {"dfbeta"};
  definition.Contrasts = {"1 0", "1 1"};
  definition.SurvivorType = "kaplan-meier";
  definition.CI = "log";
  definition.Transform = "km";
  definition.Confidence = 0.99;
  const AppliedResults applied(definition);
  const CCoxPHResults& results = *applied.Results;
  EXPECT_EQ(results.ConfidenceLevel, 0.99);
  EXPECT_TRUE(results.Residuals.ComputeDfbeta);
  EXPECT_FALSE(results.Residuals.ComputeMartingale);
  EXPECT_EQ(results.m_LinearCombinations, (DenseMatrix{{1.0, 1.0}, {0.0, 1.0}}));
  EXPECT_EQ(results.Survivor, SurvivorType::KaplanMeier);
  EXPECT_EQ(results.SurvivorCI, SurvivorCIType::Log);
  EXPECT_TRUE(results.ComputeSurvivorCI);
  EXPECT_TRUE(results.ComputeCumulativeHazardCI);
  EXPECT_EQ(results.Transform, TimeTransform::KaplanMeier);
  EXPECT_THAT(applied.Notes, IsEmpty());
}

TEST(ApplyResults, NoLimitsAreNoneOfBoth) {
  ResultDefinition definition = Showing({"survivor"});
  definition.CI = "none";
  const AppliedResults applied(definition);
  EXPECT_FALSE(applied.Results->ComputeSurvivorCI);
  EXPECT_FALSE(applied.Results->ComputeCumulativeHazardCI);
}

TEST(ApplyResults, WithoutPatternsThereIsOneOfMeansAndModalCodes) {
  const AppliedResults applied(Showing({"survivor"}));
  const CovariatePatterns& patterns = applied.Results->Patterns;
  ASSERT_EQ(patterns.DesignRows.size(), 1U);
  EXPECT_NEAR(patterns.DesignRows[0][0], 25.0 / 9.0, 1e-14);
  EXPECT_EQ(patterns.DesignRows[0][1], 1.0) << "most are in the arm drug";
  EXPECT_EQ(patterns.Labels, (Texts{"dose:2.77778 arm:drug "}));
}

TEST(ApplyResults, PatternTakesDefaultsForTheRest) {
  ResultDefinition definition = Showing({"survivor"});
  definition.Patterns = {"arm=placebo", "dose=4", "dose=1,arm=placebo"};
  const AppliedResults applied(definition);
  const CovariatePatterns& patterns = applied.Results->Patterns;
  EXPECT_EQ(patterns.Labels, (Texts{"dose:2.77778 arm:placebo ", "dose:4 arm:drug ", "dose:1 arm:placebo "}));
  EXPECT_EQ(applied.Results->NumberOfCovariatePatterns, 3);
  EXPECT_EQ(patterns.DesignRows[1], (std::vector<double>{4.0, 1.0}));
  EXPECT_EQ(patterns.DesignRows[2], (std::vector<double>{1.0, 0.0}));
}

TEST(ApplyResults, PatternOutOfRangeIsTold) {
  ResultDefinition definition = Showing({"survivor"});
  definition.Patterns = {"dose=2", "dose=1e6, arm=placebo"};
  const AppliedResults applied(definition);
  EXPECT_EQ(applied.Notes, (Texts{"the pattern dose:1e+06 arm:placebo is out of range, and its tables stay empty."}));
  EXPECT_EQ(applied.Results->Patterns.DesignRows.size(), 2U);
}

// The notes on results that turn out not to be there.
Texts NotesAfter(const ResultDefinition& definition,
                 const AnalysisDefinition& analysis,
                 const std::function<void(CCoxFit&)>& change) {
  Applied of(analysis, AppliedResults::Cases());
  const ResolvedResults resolved = ResolveResults(definition, of.Host, of.Analysis);
  EXPECT_EQ(of.Run(), 0);
  change(*of.Analysis.m_pCoxFit);
  CCoxPHResults results(of.Analysis);
  Texts notes;
  ApplyResults(resolved, results, notes);
  return notes;
}

TEST(ApplyResults, MissingBaselineIsToldWhereItIsNeeded) {
  const auto spoil = [](CCoxFit& fit) { fit.m_BreslowValid = false; };
  const std::string note =
      "there is no baseline, survivor function or martingale residual: the relative risks are out of range. Take "
      "covariates from a value near their middle, such as year - 2000.";
  for (const std::string& name : ShowNames()) {
    if (name == "contrast" || name == "steps") continue;
    const bool isNeeded = name == "survivor" || name == "hazard" || name == "residuals";
    EXPECT_EQ(NotesAfter(Showing({name}), AppliedResults::Definition(), spoil), isNeeded ? Texts{note} : Texts{})
        << name;
  }
}

TEST(ApplyResults, WithoutPredictorsOnlyTheSummaryIsThere) {
  const auto leave = [](CCoxFit&) {};
  EXPECT_THAT(NotesAfter(Showing({"summary", "estimates"}), LeastDefinition(), leave), IsEmpty()) << "the defaults";
  EXPECT_EQ(NotesAfter(Showing({"summary", "survivor"}), LeastDefinition(), leave),
            (Texts{"without predictors there is a summary only."}));
}

TEST(ApplyResults, ProductLimitThatFailedIsTold) {
  ResultDefinition definition = Showing({"survivor"});
  definition.SurvivorType = "kaplan-meier";
  Applied of(AppliedResults::Definition(), AppliedResults::Cases());
  const ResolvedResults resolved = ResolveResults(definition, of.Host, of.Analysis);
  ASSERT_EQ(of.Run(), 0);
  of.Analysis.m_pCoxFit->m_KaplanMeierValid = false;
  CCoxPHResults results(of.Analysis);
  Texts notes;
  ApplyResults(resolved, results, notes);
  EXPECT_EQ(results.Survivor, SurvivorType::Breslow);
  EXPECT_EQ(notes, (Texts{"--survivor-type kaplan-meier: there is no such estimate for these data, so Breslow's is "
                          "shown."}));
}

}  // namespace
}  // namespace orv::testing
