// What a person wants to see of a fit: checked alone and against the analysis.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "standalone/analysis/Definitions.h"
#include "standalone/analysis/ResultDefinition.h"

namespace orv::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Texts = std::vector<std::string>;

constexpr const char* kIntervals =
    "start,stop,status,age,arm,w\n"
    "0,5,1,63,drug,1\n"
    "0,8,0,51,placebo,2\n"
    "2,11,1,70,drug,1\n"
    "3,12,1,48,placebo,1\n"
    "0,15,0,55,drug,2\n"
    "1,21,1,66,placebo,1\n";

std::string RefusalOf(const ResultDefinition& definition) {
  try {
    CheckResultDefinition(definition);
  } catch (const DefinitionError& error) {
    return error.what();
  }
  return "(accepted)";
}

AnalysisDefinition Trial() {
  AnalysisDefinition definition = LeastDefinition();
  definition.Covariates = {"age"};
  definition.Factors = {"arm", "site"};
  definition.Coding = "reference";
  return definition;
}

AnalysisDefinition Intervals() {
  AnalysisDefinition definition;
  definition.Interval = {"start", "stop"};
  definition.Status = "status";
  definition.Covariates = {"age"};
  definition.Factors = {"arm"};
  return definition;
}

AnalysisDefinition TimeCovariates() {
  AnalysisDefinition definition = LeastDefinition();
  definition.Covariates = {"age"};
  definition.TimeCovariates = {"late=age*T_"};
  return definition;
}

// What the results are for an analysis, or the message of its refusal.
struct Resolution {
  Resolution(const ResultDefinition& results, const AnalysisDefinition& analysis, const std::string& csv = kTrial)
      : Of(analysis, csv) {
    try {
      Resolved = ResolveResults(results, Of.Host, Of.Analysis);
    } catch (const DefinitionError& error) {
      Refusal = error.what();
    }
  }
  Applied Of;
  ResolvedResults Resolved;
  std::string Refusal;
};

ResultDefinition Showing(const Texts& results) {
  ResultDefinition definition;
  definition.Results = results;
  return definition;
}

ResultDefinition ShowingAll() {
  ResultDefinition definition = Showing(ShowNames());
  definition.ShowsAll = true;
  return definition;
}

// ---- Names
// ------------------------------------------------------------------------------------------------------------

TEST(ResultDefinition, NamesStandInTheOrderOfWriting) {
  EXPECT_THAT(ShowNames(),
              ElementsAre("summary", "estimates", "type3", "history", "design", "covariance", "correlation", "contrast",
                          "steps", "residuals", "survivor", "hazard", "phtest"));
  EXPECT_THAT(ResidualNames(), ElementsAre("martingale", "deviance", "score", "schoenfeld", "scaledschoenfeld",
                                           "dfbeta", "xbeta", "stdxbeta", "displacement", "lmax"));
}

TEST(ResultDefinition, ShowsWhatItNames) {
  const ResultDefinition definition = Showing({"summary", "hazard"});
  EXPECT_TRUE(definition.Shows("hazard"));
  EXPECT_FALSE(definition.Shows("survivor"));
}

// ---- Checked without a table ----------------------------------------------------------------------------------------

TEST(CheckResultDefinition, AcceptsTheDefaults) {
  EXPECT_EQ(RefusalOf(Showing({"summary", "estimates"})), "(accepted)");
  EXPECT_EQ(RefusalOf(ShowingAll()), "(accepted)");
}

TEST(CheckResultDefinition, RefusesWordsThatAreNone) {
  struct {
    std::function<void(ResultDefinition&)> change;
    const char* message;
  } const cases[] = {
      {[](auto& d) {
         d.Residuals = {"martingale", "schonfeld"};
       },
       "--residuals schonfeld: use martingale, deviance, score, schoenfeld, scaledschoenfeld, dfbeta, xbeta, "
       "stdxbeta, displacement, lmax."},
      {[](auto& d) { d.Residuals = {"Martingale"}; },
       "--residuals Martingale: use martingale, deviance, score, schoenfeld, scaledschoenfeld, dfbeta, xbeta, "
       "stdxbeta, displacement, lmax."},
      {[](auto& d) { d.SurvivorType = "km"; }, "--survivor-type km: use breslow or kaplan-meier."},
      {[](auto& d) { d.CI = "log-log"; }, "--ci log-log: use none, normal, log or loglog."},
      {[](auto& d) { d.Transform = "sqrt"; }, "--ph-transform sqrt: use identity, log, km or rank."},
      {[](auto& d) { d.Contrasts = {"1 x 0"}; }, "--contrast \"1 x 0\": \"x\" is not a number."},
      {[](auto& d) {
         d.Contrasts = {"1 0", "1 1e999"};
       },
       "--contrast \"1 1e999\": \"1e999\" is not a number."},
      {[](auto& d) { d.Contrasts = {"nan"}; }, "--contrast \"nan\": \"nan\" is not a number."},
      {[](auto& d) { d.Contrasts = {" , "}; }, "--contrast \" , \": write a number for each coefficient."},
      {[](auto& d) { d.Patterns.assign(26, "age=1"); }, "--pattern: 26 are given; at most 25 are possible."},
  };
  for (const auto& c : cases) {
    ResultDefinition definition = ShowingAll();
    c.change(definition);
    EXPECT_EQ(RefusalOf(definition), c.message);
  }
}

TEST(CheckResultDefinition, AcceptsEveryWord) {
  ResultDefinition definition = ShowingAll();
  definition.Residuals = ResidualNames();
  definition.Contrasts = {"1 -0.5,2e-3\t+4"};
  definition.Patterns.assign(25, "age=1");
  for (const std::string type : {"breslow", "kaplan-meier"}) {
    for (const std::string ci : {"none", "normal", "log", "loglog"}) {
      for (const std::string transform : {"identity", "log", "km", "rank"}) {
        definition.SurvivorType = type;
        definition.CI = ci;
        definition.Transform = transform;
        EXPECT_EQ(RefusalOf(definition), "(accepted)") << type << ' ' << ci << ' ' << transform;
      }
    }
  }
}

// An option about a result that is not shown is a slip; with all results it is none.
TEST(CheckResultDefinition, RefusesOptionsOfResultsThatAreNotShown) {
  struct {
    std::function<void(ResultDefinition&)> change;
    const char* option;
    Texts results;  // each of them makes the option fit
  } const cases[] = {
      {[](auto& d) { d.Residuals = {"score"}; }, "--residuals", {"residuals"}},
      {[](auto& d) { d.Contrasts = {"1"}; }, "--contrast", {"contrast"}},
      {[](auto& d) { d.Patterns = {"age=1"}; }, "--pattern", {"survivor", "hazard"}},
      {[](auto& d) { d.SurvivorType = "breslow"; }, "--survivor-type", {"survivor"}},
      {[](auto& d) { d.CI = "log"; }, "--ci", {"survivor", "hazard"}},
      {[](auto& d) { d.Transform = "log"; }, "--ph-transform", {"phtest"}},
  };
  for (const auto& c : cases) {
    const std::string named = c.results.size() == 2 ? c.results[0] + " or " + c.results[1] : c.results[0];
    for (const std::string& result : ShowNames()) {
      ResultDefinition definition = Showing({result});
      c.change(definition);
      const bool fits = std::find(c.results.begin(), c.results.end(), result) != c.results.end();
      EXPECT_EQ(RefusalOf(definition), fits ? std::string("(accepted)")
                                            : std::string(c.option) + " says something about a result that is not " +
                                                  "shown: add --show " + named + ".")
          << c.option << " with " << result;
    }
    ResultDefinition definition = ShowingAll();
    c.change(definition);
    EXPECT_EQ(RefusalOf(definition), "(accepted)") << c.option;
  }
}

// ---- Against the analysis -------------------------------------------------------------------------------------------

TEST(ResolveResults, DefaultsAreThoseOfTheDialog) {
  const Resolution r(Showing({"residuals", "survivor", "phtest"}), Trial());
  EXPECT_EQ(r.Refusal, "");
  EXPECT_THAT(r.Resolved.Results, ElementsAre("residuals", "survivor", "phtest"));
  EXPECT_TRUE(r.Resolved.Residuals.ComputeMartingale);
  EXPECT_TRUE(r.Resolved.Residuals.ComputeDeviance);
  EXPECT_FALSE(r.Resolved.Residuals.ComputeScore);
  EXPECT_FALSE(r.Resolved.Residuals.ComputeLMAX);
  EXPECT_TRUE(r.Resolved.LinearCombinations.empty());
  EXPECT_THAT(r.Resolved.Patterns, IsEmpty());
  EXPECT_EQ(r.Resolved.Survivor, SurvivorType::Breslow);
  EXPECT_TRUE(r.Resolved.HasSurvivorLimits);
  EXPECT_TRUE(r.Resolved.HasHazardLimits);
  EXPECT_EQ(r.Resolved.SurvivorCI, SurvivorCIType::Normal);
  EXPECT_EQ(r.Resolved.Transform, TimeTransform::Identity);
  EXPECT_EQ(r.Resolved.Confidence, 0.95);
}

TEST(ResolveResults, TakesTheWordsAsSettings) {
  ResultDefinition definition = Showing({"survivor", "phtest"});
  definition.SurvivorType = "kaplan-meier";
  definition.CI = "loglog";
  definition.Transform = "rank";
  definition.Confidence = 0.9;
  const Resolution r(definition, Trial());
  EXPECT_EQ(r.Refusal, "");
  EXPECT_EQ(r.Resolved.Survivor, SurvivorType::KaplanMeier);
  EXPECT_TRUE(r.Resolved.HasSurvivorLimits);
  EXPECT_TRUE(r.Resolved.HasHazardLimits);
  EXPECT_EQ(r.Resolved.SurvivorCI, SurvivorCIType::LogLog);
  EXPECT_EQ(r.Resolved.Transform, TimeTransform::Rank);
  EXPECT_EQ(r.Resolved.Confidence, 0.9);
  definition.CI = "none";
  EXPECT_FALSE(Resolution(definition, Trial()).Resolved.HasSurvivorLimits);
  EXPECT_FALSE(Resolution(definition, Trial()).Resolved.HasHazardLimits);
}

TEST(ResolveResults, TimeCovariatesHaveNoResultsOfCurvesAndCases) {
  for (const std::string name : {"residuals", "survivor", "hazard", "phtest"}) {
    EXPECT_EQ(Resolution(Showing({"summary", name}), TimeCovariates()).Refusal,
              "--show " + name + ": not offered with --time-covariate.");
  }
  const Resolution r(Showing({"summary", "estimates", "type3", "history", "design", "covariance", "correlation"}),
                     TimeCovariates());
  EXPECT_EQ(r.Refusal, "");
  EXPECT_EQ(r.Resolved.Results.size(), 7U);
}

TEST(ResolveResults, AllLeavesOutWhatTheAnalysisDoesNotHave) {
  EXPECT_THAT(Resolution(ShowingAll(), TimeCovariates()).Resolved.Results,
              ElementsAre("summary", "estimates", "type3", "history", "design", "covariance", "correlation"));
  EXPECT_THAT(Resolution(ShowingAll(), Trial()).Resolved.Results,
              ElementsAre("summary", "estimates", "type3", "history", "design", "covariance", "correlation",
                          "residuals", "survivor", "hazard", "phtest"))
      << "no contrast without coefficients for it";
  ResultDefinition definition = ShowingAll();
  definition.Contrasts = {"1 0 0 0 0"};
  AnalysisDefinition selecting = Trial();
  selecting.Select = "forward";
  EXPECT_EQ(Resolution(definition, selecting).Resolved.Results, ShowNames());
}

TEST(ResolveResults, StepsNeedASelection) {
  for (const std::string kind : {"", "all"}) {
    AnalysisDefinition definition = Trial();
    definition.Select = kind;
    EXPECT_EQ(Resolution(Showing({"summary", "steps"}), definition).Refusal,
              "--show steps: there are steps only with --select forward, backward, stepwise or best.");
  }
  for (const std::string kind : {"forward", "backward", "stepwise", "best"}) {
    AnalysisDefinition definition = Trial();
    definition.Select = kind;
    if (kind == "best") definition.Factors.clear();
    const Resolution r(Showing({"summary", "steps"}), definition);
    EXPECT_EQ(r.Refusal, "") << kind;
    EXPECT_THAT(r.Resolved.Results, ElementsAre("summary", "steps")) << kind;
  }
}

TEST(ResolveResults, ContrastNeedsItsNumbers) {
  EXPECT_EQ(Resolution(Showing({"contrast"}), Trial()).Refusal,
            "--show contrast: say what to estimate with --contrast \"X X X\", a number for each coefficient.");
}

TEST(ResolveResults, ChosenResidualsStandAlone) {
  ResultDefinition definition = Showing({"residuals"});
  definition.Residuals = {"lmax", "schoenfeld"};
  const Resolution r(definition, Trial());
  EXPECT_TRUE(r.Resolved.Residuals.ComputeLMAX);
  EXPECT_TRUE(r.Resolved.Residuals.ComputeSchoenfeld);
  EXPECT_FALSE(r.Resolved.Residuals.ComputeScaledSchoenfeld);
  EXPECT_FALSE(r.Resolved.Residuals.ComputeMartingale);
  EXPECT_FALSE(r.Resolved.Residuals.ComputeDeviance);
}

TEST(ResolveResults, IntervalsLackThreeResiduals) {
  const std::map<std::string, bool> expected = {
      {"martingale", true},       {"deviance", false}, {"score", true}, {"schoenfeld", true},
      {"scaledschoenfeld", true}, {"dfbeta", true},    {"xbeta", true}, {"stdxbeta", true},
      {"displacement", false},    {"lmax", false}};
  ASSERT_EQ(expected.size(), ResidualNames().size());
  for (const auto& [name, isOffered] : expected) {
    ResultDefinition definition = Showing({"residuals"});
    definition.Residuals = {name};
    EXPECT_EQ(Resolution(definition, Intervals(), kIntervals).Refusal,
              isOffered ? "" : "--residuals " + name + ": not offered with --interval.");
    EXPECT_EQ(Resolution(definition, Trial()).Refusal, "");
  }
}

TEST(ResolveResults, IntervalsHaveMartingaleByDefault) {
  const Resolution r(Showing({"residuals"}), Intervals(), kIntervals);
  EXPECT_EQ(r.Refusal, "");
  EXPECT_TRUE(r.Resolved.Residuals.ComputeMartingale);
  EXPECT_FALSE(r.Resolved.Residuals.ComputeDeviance);
}

TEST(ResolveResults, ProductLimitNeedsSurvivalTimesWithoutWeights) {
  ResultDefinition definition = Showing({"survivor"});
  definition.SurvivorType = "kaplan-meier";
  EXPECT_EQ(Resolution(definition, Intervals(), kIntervals).Refusal,
            "--survivor-type kaplan-meier: not offered with --interval.");
  AnalysisDefinition weighted = Intervals();
  weighted.Interval.clear();
  weighted.Time = "stop";
  weighted.Weights = "w";
  EXPECT_EQ(Resolution(definition, weighted, kIntervals).Refusal,
            "--survivor-type kaplan-meier: not offered with --weights.");
  weighted.Weights.clear();
  EXPECT_EQ(Resolution(definition, weighted, kIntervals).Refusal, "");
}

TEST(ResolveResults, ContrastsAreTheColumnsOfL) {
  ResultDefinition definition = Showing({"contrast"});
  definition.Contrasts = {"1 0 0 -0.5 0", "0,2,0,0,1e1"};
  const Resolution r(definition, Trial());
  EXPECT_EQ(r.Refusal, "");
  EXPECT_EQ(r.Resolved.LinearCombinations, (DenseMatrix{{1.0, 0.0}, {0.0, 2.0}, {0.0, 0.0}, {-0.5, 0.0}, {0.0, 10.0}}));
}

TEST(ResolveResults, ContrastOfAnotherLengthIsToldTheCoefficients) {
  ResultDefinition definition = Showing({"contrast"});
  definition.Contrasts = {"1"};
  EXPECT_EQ(Resolution(definition, Trial()).Refusal,
            "--contrast \"1\": 1 number given, but the model has 5 coefficients: age, arm_control, arm_drug, site_1, "
            "site_2.");
  definition.Contrasts = {"1 0 0 0 0", "1 2 3 4 5 6"};
  EXPECT_THAT(Resolution(definition, Trial()).Refusal,
              HasSubstr("--contrast \"1 2 3 4 5 6\": 6 numbers given, but the model has 5 coefficients: age,"));
}

TEST(ResolveResults, ContrastOfZerosHasNothingToTest) {
  ResultDefinition definition = Showing({"contrast"});
  definition.Contrasts = {"1 0 0 0 0", "0 0 -0 0 0"};
  EXPECT_EQ(Resolution(definition, Trial()).Refusal,
            "--contrast \"0 0 -0 0 0\": all its numbers are 0, so there is nothing to test.");
}

TEST(ResolveResults, ContrastOfOneCoefficientIsToldInTheSingular) {
  AnalysisDefinition analysis = LeastDefinition();
  analysis.Covariates = {"age"};
  ResultDefinition definition = Showing({"contrast"});
  definition.Contrasts = {"1 2"};
  EXPECT_EQ(Resolution(definition, analysis).Refusal,
            "--contrast \"1 2\": 2 numbers given, but the model has 1 coefficient: age.");
}

TEST(ResolveResults, PatternsGoByVariable) {
  ResultDefinition definition = Showing({"survivor"});
  definition.Patterns = {"age=50, arm=drug", "#5=2", " arm = placebo "};
  const Resolution r(definition, Trial());
  EXPECT_EQ(r.Refusal, "");
  EXPECT_THAT(r.Resolved.Patterns,
              ElementsAre(std::map<int, std::string>{{3, "50"}, {4, "drug"}}, std::map<int, std::string>{{5, "2"}},
                          std::map<int, std::string>{{4, "placebo"}}));
}

// However a code is written, the pattern shows it as the tables do.
TEST(ResolveResults, CodesOfPatternsAreTheirTexts) {
  for (const char* code : {"2", "+2", "2.0", "2e0"}) {
    ResultDefinition definition = Showing({"survivor"});
    definition.Patterns = {std::string("site=") + code};
    const Resolution r(definition, Trial());
    EXPECT_EQ(r.Refusal, "") << code;
    EXPECT_THAT(r.Resolved.Patterns, ElementsAre(std::map<int, std::string>{{5, "2"}})) << code;
  }
}

TEST(ResolveResults, PatternOfAVariableOutsideTheModelIsRefused) {
  AnalysisDefinition analysis = Trial();
  analysis.Effects = "age, arm";
  ResultDefinition definition = Showing({"survivor"});
  definition.Patterns = {"site=2"};
  EXPECT_EQ(Resolution(definition, analysis).Refusal, "--pattern: \"site\" is no covariate or factor of the model.");
}

TEST(ResolveResults, RefusesPatternsThatDoNotFit) {
  struct {
    const char* pattern;
    const char* message;
  } const cases[] = {
      {"status=1", "--pattern: \"status\" is no covariate or factor of the model."},
      {"sit=1", "--pattern: \"sit\" is no covariate or factor of the model. Closest: \"site\"."},
      {"age=50, age=60", "--pattern: \"age\" is named twice."},
      {"age=50, #3=60", "--pattern: \"age\" is named twice."},
      {"age", "--pattern: \"age\" is not of the form V=X, V=X."},
      {"age=", "--pattern: \"age=\" is not of the form V=X, V=X."},
      {"age=old", "--pattern: \"old\" is no number, as the covariate \"age\" needs."},
      {"age=inf", "--pattern: \"inf\" is no number, as the covariate \"age\" needs."},
      {"arm=Drug", "--pattern: \"Drug\" is not a selected code of \"arm\": control, drug, placebo."},
      {"site=4", "--pattern: \"4\" is not a selected code of \"site\": 1, 2, 3."},
      {"site=1.5", "--pattern: \"1.5\" is not a selected code of \"site\": 1, 2, 3."},
  };
  for (const auto& c : cases) {
    ResultDefinition definition = Showing({"hazard"});
    definition.Patterns = {"age=50", c.pattern};
    EXPECT_EQ(Resolution(definition, Trial()).Refusal, c.message) << c.pattern;
  }
}

TEST(ResolveResults, PatternTakesSelectedCodesOnly) {
  ResultDefinition definition = Showing({"hazard"});
  definition.Patterns = {"arm=control"};
  AnalysisDefinition twoArms = Trial();
  twoArms.FactorCodes = {"arm=drug,placebo"};
  EXPECT_EQ(Resolution(definition, twoArms).Refusal,
            "--pattern: \"control\" is not a selected code of \"arm\": drug, placebo.");
}

}  // namespace
}  // namespace orv::testing
