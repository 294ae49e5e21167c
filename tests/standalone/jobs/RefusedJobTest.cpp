// What is wrong with a job is told with its line, its key and the way out.
#include <gtest/gtest.h>

#include <span>
#include <string>

#include "tests/standalone/jobs/Jobs.h"

namespace orv {
namespace {

using testing::kLeastJob;
using testing::RefusalOfJob;

struct Case {
  const char* Text;     // behind the least job, whose last line is 5
  const char* Message;  // behind the name of the file
};

void ExpectRefusals(std::span<const Case> cases) {
  for (const Case& c : cases) EXPECT_EQ(RefusalOfJob(kLeastJob + c.Text), std::string("trial.toml") + c.Message);
}

TEST(RefusedJob, KeysThatAreNone) {
  const Case cases[] = {
      {"UseEfronLikelihod = true",
       ":6: UseEfronLikelihod: no such key in [CoxPHStartup]. Closest: UseEfronLikelihood, "
       "UseBreslowLikelihood."},
      {"qqqq = true", ":6: qqqq: no such key in [CoxPHStartup]."},
      {"ConfidenceLevel = 0.9", ":6: ConfidenceLevel: no such key in [CoxPHStartup]. It belongs to [CoxPHResults]."},
      {"Covariates = [\"a\"]",
       ":6: Covariates: no such key in [CoxPHStartup]. It belongs to "
       "[CoxPHStartup.Variables]."},
      {"Table = \"t.csv\"", ":6: Table: no such key here. It stands above the first section."},
      {"[CoxPHResult]\nPHTest = true", ":6: [CoxPHResult]: no such section. Closest: [CoxPHResults]."},
      {"[q]",
       ":6: [q]: no such section. There are [CoxPHStartup], [CoxPHStartup.Variables], [CoxPHResults] and [Host]."},
      {"[[Host]]", ":6: Host is a section: write [Host] and its keys below."},
      {"EditParameterStatusValues = { Value = [1] }",
       ":6: EditParameterStatusValues: \"Value\" is no part of it: use Values and Fixed."},
  };
  ExpectRefusals(cases);
}

TEST(RefusedJob, ASectionWithinASectionIsAmongTheClosest) {
  const Case cases[] = {
      {"variables.Strata = \"site\"",
       ":6: [CoxPHStartup.variables]: no such section. Closest: [CoxPHStartup.Variables]."},
      {"[CoxPHStartup.Variable]\nStrata = \"site\"",
       ":6: [CoxPHStartup.Variable]: no such section. Closest: [CoxPHStartup.Variables]."},
      {"[CoxPHResults.Variables]\nStrata = \"site\"",
       ":6: [CoxPHResults.Variables]: no such section. Closest: [CoxPHStartup.Variables]."},
      {"[Variables]\nStrata = \"site\"", ":6: [Variables]: no such section. Closest: [CoxPHStartup.Variables]."},
      {"Varables = 5", ":6: Varables: no such key in [CoxPHStartup]. Closest: [CoxPHStartup.Variables]."},
      {"ReferenceCategry = { arm = 1 }",
       ":6: ReferenceCategry: no such key in [CoxPHStartup]. Closest: ReferenceCategory."},
  };
  ExpectRefusals(cases);
}

TEST(RefusedJob, AKeyThatIsCloseToOneOfAnotherSectionIsToldWithItsPlace) {
  const Case cases[] = {
      {"covariates = [\"age\"]",
       ":6: covariates: no such key in [CoxPHStartup]. Closest: Covariates in [CoxPHStartup.Variables]."},
      {"Variables.SubjectId = \"id\"",
       ":6: SubjectId: no such key in [CoxPHStartup.Variables]. Closest: SubjectID in [CoxPHStartup]."},
      {"Variables.Status = \"status\"",
       ":6: Status: no such key in [CoxPHStartup.Variables]. Closest: CensoringIndicator."},
      {"Weights = \"w\"", ":6: Weights: no such key in [CoxPHStartup]. Closest: CaseWeights in [Host]."},
      {"Ties = \"efron\"",
       ":6: Ties: no such key in [CoxPHStartup]. Closest: UseBreslowLikelihood, UseEfronLikelihood."},
      {"[Host]\nTabel = \"t.csv\"", ":7: Tabel: no such key in [Host]. Closest: Table above the first section."},
      {"[CoxPHResults]\nUseEfronLikelihod = true",
       ":7: UseEfronLikelihod: no such key in [CoxPHResults]. Closest: UseEfronLikelihood in [CoxPHStartup], "
       "UseBreslowLikelihood in [CoxPHStartup]."},
  };
  ExpectRefusals(cases);
  EXPECT_EQ(RefusalOfJob("Tabl = \"t.csv\"\n"),
            "trial.toml:1: Tabl: no such key above the first section. Closest: Table.");
  EXPECT_EQ(RefusalOfJob("qqqq = \"t.csv\"\n"),
            "trial.toml:1: qqqq: no such key above the first section. There is Table alone.");
}

TEST(RefusedJob, ValuesOfAnotherForm) {
  const Case cases[] = {
      {"UseEfronLikelihood = 1", ":6: UseEfronLikelihood: use true or false, not a whole number."},
      {"NumberOfIterations = 5.0", ":6: NumberOfIterations: use a whole number, not a number with a fraction."},
      {"pToEnter = \"0.1\"", ":6: pToEnter: use a number, not a text."},
      {"SubjectID = 3", ":6: SubjectID: use a text in quotes, not a whole number."},
      {"CodeForCompleteResponses = true",
       ":6: CodeForCompleteResponses: use a number, or the label of a value in quotes, not true or false."},
      {"CodeForCompleteResponses = [1]",
       ":6: CodeForCompleteResponses: use a number, or the label of a value in quotes, not such a list."},
      {"DesignEffects = [\n  \"age\",\n  5,\n]",
       ":8: DesignEffects: item 2 is a whole number. Use a list of texts, such as [\"age\", \"dose\"]."},
      {"FactorCodes = [1, 2]",
       ":6: FactorCodes: use a list of codes for each factor, such as { arm = [1, 2] }, not such a list."},
      {"ReferenceCategory = { arm = [1, 2] }",
       ":6: ReferenceCategory.arm: use a code for each factor, such as { arm = 2 }, not such a list."},
      {"FactorCodes = { ph.ecog = [1, 2] }",
       ":6: FactorCodes: a name with a dot stands in quotes, such as \"ph.ecog\" = ..."},
      {"StrataCodes = 2024-01-01", ":6: StrataCodes: use a list of numbers or labels, such as [1, 2], not a date."},
      {"[CoxPHResults]\nSpecifyLinearCombination = [[1], \"x\"]",
       ":7: SpecifyLinearCombination: item 2 is a text. Use lists with a number for each coefficient, such as [[1, 0], "
       "[0, 1]]."},
      {"[CoxPHResults]\nSpecifyLinearCombination = [[1, 2], [1, true]]",
       ":7: SpecifyLinearCombination: item 2, item 2 is true or false. Use lists with a number for each coefficient, "
       "such as [[1, 0], [0, 1]]."},
      {"[CoxPHResults]\nSpecifyCovariateValues = [\"age=5\"]",
       ":7: SpecifyCovariateValues: item 1 is a text. Use a list of patterns, such as [{ age = 60, arm = 2 }]."},
      {"SubjectID = \"\"", ":6: SubjectID: the text is empty. Write a value, or leave the key out."},
      {"StrataCodes = []", ":6: StrataCodes: the list is empty. Write its items, or leave the key out."},
      {"EditParameterStatusValues = { Values = [0.5, \"a\"] }",
       ":6: EditParameterStatusValues.Values: item 2 is a text. Use start values and numbers of held ones, such as { "
       "Values = [0.5, 0], Fixed = [1] }."},
      {"ReferenceCategory = {}",
       ":6: ReferenceCategory: use a code for each factor, such as { arm = 2 }, not an empty table."},
      {"FactorCodes = { \"ph.ecog\" = [true] }",
       ":6: FactorCodes.\"ph.ecog\": item 1 is true or false. Use a list of codes for each factor, such as { arm = [1, "
       "2] }."},
      {"FactorCodes = { arm = [] }", ":6: FactorCodes.arm: the list is empty. Write its items, or leave the key out."},
      {"FactorCodes = { \"\" = [1] }", ":6: FactorCodes: the text is empty. Write a value, or leave the key out."},
      {"pToEnter = nan", ":6: pToEnter: the number is not finite."},
      {"EditParameterStatusValues = { Values = [inf] }",
       ":6: EditParameterStatusValues.Values: the number is not finite."},
  };
  ExpectRefusals(cases);
}

TEST(RefusedJob, ValuesOutOfRange) {
  const Case cases[] = {
      {"NumberOfIterations = 1001", ":6: NumberOfIterations 1001: use a whole number from 1 to 1000."},
      {"NumberOfIterations = 0", ":6: NumberOfIterations 0: use a whole number from 1 to 1000."},
      {"ConvergenceCriterion = 13", ":6: ConvergenceCriterion 13: use a whole number from 1 to 12."},
      {"ModelBuildingForwardSelection = true\nNToForce = -1",
       ":7: NToForce -1: use a whole number from 0 to the number of effects."},
      {"[CoxPHResults]\nConfidenceLevel = 95",
       ":7: ConfidenceLevel 95: use a level from 0.0001 to 0.9999, such as "
       "0.95."},
      {"[CoxPHResults]\nNumberOfCovariatePatterns = 3",
       ":7: NumberOfCovariatePatterns: 3, but SpecifyCovariateValues has 0. The line can be left out."},
      {"EditParameterStatusValues = { Values = [1], Fixed = [1.5] }",
       ":6: EditParameterStatusValues.Fixed: \"1.5\" is not the number of a coefficient, such as 2."},
  };
  ExpectRefusals(cases);
}

TEST(RefusedJob, ChoicesThatExcludeEachOther) {
  const Case cases[] = {
      {"UseEfronLikelihood = true\nUseBreslowLikelihood = true",
       ":6: UseEfronLikelihood: UseBreslowLikelihood (line 7) is true as well, and one of them can be chosen. Take one "
       "of the lines out."},
      {"[CoxPHResults]\nPHTest = true\nPHTestLogTransform = true\nPHTestKMTransform = true",
       ":9: PHTestKMTransform: PHTestLogTransform (line 8) is true as well, and one of them can be chosen. Take one of "
       "the lines out."},
      {"[CoxPHResults]\nComputeLiklihoodDisplacement = true\nComputeLikelihoodDisplacement = false",
       ":7: ComputeLiklihoodDisplacement: ComputeLikelihoodDisplacement (line 8) is another name for it and says the "
       "opposite. Take one of the lines out."},
      {"[CoxPHResults]\nSurvivalCumulativeHazardSummary = true\nSurvivorCITypeLog = true\nComputeSurvivorCI = false",
       ":8: SurvivorCITypeLog: ComputeSurvivorCI (line 9) is false, so there are no limits. Take one of the lines "
       "out."},
      {"InputTypeCountingProcess = true",
       ":6: InputTypeCountingProcess: this form of input goes with Variables.Start and Variables.Stop."},
      {"InputTypeSurvivalTimeWithTimeCov = true",
       ":6: InputTypeSurvivalTimeWithTimeCov: this form of input goes with TimeDependentCovariateNames."},
      {"Variables.Start = \"a\"\nVariables.Stop = \"b\"",
       ":6: Variables.Start: line 4 names survival times, and a case has either these or an interval."},
      {"UseStartValues = false\nEditParameterStatusValues = { Values = [1] }",
       ":6: UseStartValues is false, but start values or held coefficients are given. Leave them out, or write true."},
      {"UseStartValues = true",
       ":6: UseStartValues: write the values as EditParameterStatusValues = { Values = [X, ...] }, or name a file in "
       "DataFileThatContainsStartvaluesForParameter."},
      {"DataFileThatContainsStartvaluesForParameter = \"s.orv\"\nEditParameterStatusValues = { Values = [1] }",
       ":7: EditParameterStatusValues: the start values come from a file (line 6). Take one of them out."},
      {"TimeDependentCovariateNames = [\"a\"]",
       ":6: TimeDependentCovariateNames and TimeDependentCovariateExpressions belong together, one by one: there are 1 "
       "and 0."},
      {"TimeDependentCovariateNames = [\"a=b\"]\nTimeDependentCovariateExpressions = [\"T_\"]",
       ":6: TimeDependentCovariateNames: \"a=b\" holds an equals sign. Give the covariate another name."},
      {"DesignEffects = [\"a, b\"]",
       ":6: DesignEffects: \"a, b\" is more than one effect. Write each as an item of the list."},
  };
  ExpectRefusals(cases);
}

TEST(RefusedJob, WhatTheCommandLineRefusesTooIsToldInKeys) {
  const Case cases[] = {
      {"pToEnter = 0.1", ":6: pToEnter belongs to ModelBuildingForwardSelection or ModelBuildingStepwiseSelection."},
      {"EditParameterStatusValues = { Fixed = [1] }",
       ":6: EditParameterStatusValues.Fixed: coefficients are held at their start values, so give these with "
       "EditParameterStatusValues.Values."},
      {"DesignEffects = [\"age*\"]",
       ":6: DesignEffects: in \"age*\", at the end: expected the name of a covariate or factor."},
      {"StrataCodes = [1]", ":6: Variables.Strata is missing: name the variable that StrataCodes belongs to."},
      {"CodeForCompleteResponses = 1", ": CodeForCensoredResponses is missing: name the code of a censored case."},
      {"[CoxPHResults]\nPHTestLogTransform = true",
       ":7: PHTestLogTransform says something about a result that is not shown: add PHTest = true."},
      {"[CoxPHResults]\nComputeCumulativeHazardFunction = true",
       ":7: ComputeCumulativeHazardFunction says something about a result that is not shown: add "
       "SurvivalCumulativeHazardSummary = true."},
      {"[CoxPHResults]\nComputeSurvivorCI = true",
       ":7: ComputeSurvivorCI says something about a result that is not shown: add "
       "SurvivalCumulativeHazardSummary = true."},
      {"[CoxPHResults]\nParameterEstimates = true\nComputeCumulativeHazardCI = false",
       ":8: ComputeCumulativeHazardCI says something about a result that is not shown: add "
       "SurvivalCumulativeHazardSummary = true."},
      {"[CoxPHResults]\nComputeScore = true",
       ":7: ComputeScore says something about a result that is not shown: add ResidualSummary = true."},
  };
  ExpectRefusals(cases);
}

TEST(RefusedJob, OutputsThatAreNotThere) {
  const Case cases[] = {
      {"[CoxPHResults]\nCodeGeneratorPMML = true", ":7: CodeGeneratorPMML: not available yet in this version."},
      {"[CoxPHResults]\nSelectedItemX = 3", ":7: SelectedItemX: not available yet in this version."},
      {"[CoxPHResults]\nResidualSummary = true\nComputeMartingale = false\nComputeDeviance = false",
       ":7: ResidualSummary: all residuals are false. Choose one, such as ComputeMartingale = true."},
      {"[CoxPHResults]\nSurvivalCumulativeHazardSummary = true\nComputeSurvivorFunction = false",
       ":7: SurvivalCumulativeHazardSummary: ComputeSurvivorFunction or ComputeCumulativeHazardFunction has to be "
       "true."},
      {"[CoxPHResults]\nGoodnessOfFit = false\nParameterEstimates = false",
       ": no output is chosen: write true for one, such as ParameterEstimates = true."},
  };
  ExpectRefusals(cases);
}

TEST(RefusedJob, AValueInThePlaceOfASection) {
  EXPECT_EQ(RefusalOfJob("CoxPHStartup.Variables = [\"time\"]\n"),
            "trial.toml:1: CoxPHStartup.Variables is a section: write [CoxPHStartup.Variables] and its keys below.");
}

TEST(RefusedJob, WhatIsMissing) {
  EXPECT_EQ(RefusalOfJob(""), "trial.toml: Table is missing: name the file with the cases.");
  EXPECT_EQ(RefusalOfJob("Table = \"t.csv\"\n"),
            "trial.toml: Variables.SurvivalTimes is missing: name the survival times, or write Variables.Start and "
            "Variables.Stop.");
  EXPECT_EQ(RefusalOfJob("Table = \"t.csv\"\nCoxPHStartup.Variables.Start = \"a\"\n"),
            "trial.toml: Variables.Stop is missing: an interval has a start and a stop.");
  EXPECT_EQ(RefusalOfJob("Table = \"t.csv\"\nCoxPHStartup.Variables.SurvivalTimes = \"t\"\n"),
            "trial.toml: Variables.CensoringIndicator is missing: name the censoring indicator.");
  EXPECT_EQ(
      RefusalOfJob("Table = \"t.csv\"\nCoxPHStartup.Variables.SurvivalTimes = [\"a\", \"b\", \"c\"]\n"),
      "trial.toml:2: Variables.SurvivalTimes: name 1 variable (the time), 2 (start and end date) or 6 (month, day, "
      "year of the start, then of the end), not 3.");
}

}  // namespace
}  // namespace orv
