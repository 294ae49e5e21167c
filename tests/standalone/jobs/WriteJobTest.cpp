#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "standalone/jobs/WriteJob.h"
#include "tests/standalone/jobs/Jobs.h"

namespace orv {
namespace {

using testing::JobOf;
using testing::kLeastJob;

TEST(WriteJob, KeysStandInSlotOrderWithTheirHelp) {
  Job job;
  job.Table = "trial.csv";
  job.Definition.Time = "time";
  job.Definition.Status = "status";
  job.Definition.Factors = {"arm"};
  job.Definition.ReferenceCodes = {"arm=\"a, b\""};
  job.Results.Results = DefaultShowNames();
  EXPECT_EQ(WriteJob(job),
            "# An analysis for \"orvcox run\". File names are relative to the folder of this file.\n"
            "\n"
            "# The table: a file, an address such as sqlite:FILE?table=NAME, or - for standard input\n"
            "Table = \"trial.csv\"\n"
            "\n"
            "[CoxPHStartup.Variables]\n"
            "# The survival time; or start and end date; or month, day, year of the start, then of the end\n"
            "SurvivalTimes = \"time\"\n"
            "\n"
            "# The censoring indicator\n"
            "CensoringIndicator = \"status\"\n"
            "\n"
            "# Categorical predictors\n"
            "Factors = [\"arm\"]\n"
            "\n"
            "[CoxPHStartup]\n"
            "# Survival time, covariates, factors, censor\n"
            "InputTypeSurvivalTime = true\n"
            "\n"
            "# Breslow likelihood\n"
            "UseBreslowLikelihood = true\n"
            "\n"
            "# Sigma restricted coding of factors\n"
            "UseSigmaCoding = true\n"
            "\n"
            "# Reference category\n"
            "ReferenceCategory.arm = \"a, b\"\n"
            "\n"
            "# Select all effects\n"
            "ModelBuildingAllEffects = true\n"
            "\n"
            "# Number of iterations\n"
            "NumberOfIterations = 50\n"
            "\n"
            "# Relative gradient convergence\n"
            "UseRelativeGradientConvergence = true\n"
            "\n"
            "# Convergence criterion\n"
            "ConvergenceCriterion = 8\n"
            "\n"
            "[CoxPHResults]\n"
            "# Confidence level\n"
            "ConfidenceLevel = 0.95\n"
            "\n"
            "# Goodness of fit\n"
            "GoodnessOfFit = true\n"
            "\n"
            "# Parameter estimates\n"
            "ParameterEstimates = true\n");
}

TEST(WriteJob, AJobThatWasReadComesBackAsItWas) {
  const char* const cases[] = {
      "",
      "UseEfronLikelihood = true\nModelBuildingStepwiseSelection = true\npToEnter = 0.1\nNToForce = 0\n",
      "FactorCodes = { \"a=b\" = [1, \"x,y\"], \"Gr\xC3\xBC\xC3\x9F"
      "e\" = [\" lead\", \"say \\\"so\\\"\"] }\n"
      "ReferenceCategory = { \"a=b\" = \"x,y\", c = -0.0, d = 1e300, e = 0.1 }\n",
      "DesignEffects = [\"age\", \"\\\"a, b\\\" * arm\", \"c (d*e)\"]\n",
      "TimeDependentCovariateNames = [\" late\"]\nTimeDependentCovariateExpressions = [\"age * (T_ = 3) \"]\n",
      "UseStartValues = true\nEditParameterStatusValues = { Values = [0.1, -0.0, 1e25, 3], Fixed = [1, 3] }\n",
      "DataFileThatContainsStartvaluesForParameter = \"s.orv\"\nEditParameterStatusValues = { Fixed = [2] }\n",
      "[CoxPHResults]\nEstimateLinearCombination = true\nSpecifyLinearCombination = [[1, 1e20], [-0.5, 0]]\n",
      "[CoxPHResults]\nSurvivalCumulativeHazardSummary = true\nComputeCumulativeHazardCI = false\n"
      "SurvivorCITypeLog = true\nSpecifyCovariateValues = [{ age = 1.5, \"a=b\" = \"x, y\" }, { arm = 1 }]\n",
      "[CoxPHResults]\nResidualSummary = true\nComputeDeviance = false\nComputeLMAX = true\n",
      "[CoxPHResults]\nPHTest = false\nComputeSurvivorFunction = false\n[Host]\nAllResults = true\n",
      "[CoxPHResults]\nSurvivalCumulativeHazardSummary = false\n[Host]\nAllResults = true\n",
      "[CoxPHResults]\nGoodnessOfFit = false\nConfidenceLevel = 0.123456789012345678\n",
      "[Host]\nCaseWeights = \"w\"\nCaseSelection = \"a = 'x\\\\y'\"\nEntryTime = \"e\"\nOutputFiles = [\"a/\"]\n"
      "Format = \"json\"\nQuiet = true\n",
  };
  for (const char* text : cases) {
    const Job job = JobOf(kLeastJob + text);
    const std::string written = WriteJob(job);
    EXPECT_EQ(JobOf(written), job) << text << "came back from\n" << written;
    EXPECT_EQ(WriteJob(JobOf(written)), written) << text;
  }
}

}  // namespace
}  // namespace orv
