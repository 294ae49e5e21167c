// Jobs as texts, for the tests.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "standalone/jobs/ReadJob.h"

namespace orv::testing {

// The least that a job says, in five lines; what a test is about goes behind it, under [CoxPHStartup].
inline const std::string kLeastJob =
    "# A trial.\n"
    "Table = \"trial.csv\"\n"
    "[CoxPHStartup]\n"
    "Variables.SurvivalTimes = \"time\"\n"
    "Variables.CensoringIndicator = \"status\"\n";

inline Job JobOf(const std::string& text) {
  return ReadJob(text, "trial.toml").Read;
}

// The message with which a job is refused; empty, with a failure, when it is not.
inline std::string RefusalOfJob(const std::string& text) {
  try {
    JobOf(text);
  } catch (const JobError& error) {
    return error.what();
  }
  ADD_FAILURE() << "the job was accepted:\n" << text;
  return {};
}

}  // namespace orv::testing
