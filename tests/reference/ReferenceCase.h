// A reference case: an analysis with the numbers that an independent implementation computed for it.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "core/CCoxPH.h"
#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/host/StandaloneHost.h"
#include "standalone/tables/MemoryTable.h"

namespace orv::testing {

struct ReferenceCase {
  std::string Name;
  nlohmann::json Content;
};

// How a test names its case.
inline void PrintTo(const ReferenceCase& reference, std::ostream* out) {
  *out << reference.Name;
}

// All cases in the folder, by name.
std::vector<ReferenceCase> LoadReferenceCases();

// Those that have a block of quantities.
std::vector<ReferenceCase> CasesWith(const char* block);

// The name of a case as that of its test.
std::string CaseName(const ::testing::TestParamInfo<ReferenceCase>& test);

// How a fit is to be stopped.
struct StoppingRule {
  std::string Converge = "parameter";
  int Exponent = 10;
  int MaxIterations = 50;
  std::vector<double> StartValues = {};
  std::vector<int> Fixed = {};  // coefficients, from 1
};

// A case after its run.
struct ReferenceRun {
  std::unique_ptr<MemoryTable> Table;
  std::unique_ptr<StandaloneHost> Host;
  std::unique_ptr<CCoxPH> Analysis;
};

// The reference compares estimates with their usual covariance, also where a case has robust quantities.
enum class Variance { Model, Robust };

// Runs the analysis of a case as the command line would. Fails the test when the run fails.
ReferenceRun RunReferenceCase(const ReferenceCase& reference,
                              const StoppingRule& rule,
                              Variance variance = Variance::Model);

}  // namespace orv::testing
