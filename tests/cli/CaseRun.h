// CaseRun: a case played in a folder of its own, with the real program.
#pragma once

#include <filesystem>
#include <string>

#include "cli/CaseFile.h"

namespace orv::testing {

struct CaseOutcome {
  std::string Problems;  // empty when all was as expected
  CaseFile Actual;       // the case with what was found in the place of what was expected
};

// Plays the commands one after the other. Each may take a minute. The folder is removed afterwards.
CaseOutcome RunCase(const CaseFile& file, const std::filesystem::path& program);

}  // namespace orv::testing
