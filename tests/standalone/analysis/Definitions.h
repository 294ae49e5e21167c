// A definition that is applied to a table written as CSV, and what came of it.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "standalone/analysis/ApplyDefinition.h"
#include "standalone/host/StandaloneHost.h"
#include "standalone/tables/TableReaders.h"

namespace orv::testing {

// Reads a table as the program does, from a file "trial.csv" as far as messages tell.
inline MemoryTable TableOf(const std::string& csv) {
  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / ("orvcox-definition-test-" + std::to_string(getpid()));
  std::filesystem::create_directory(folder);
  std::ofstream(folder / "trial.csv", std::ios::binary) << csv;
  const MemoryTable read = ReadTable(folder / "trial.csv");
  std::filesystem::remove_all(folder);
  MemoryTable table("trial.csv");
  for (int variable = 1; variable <= read.VariableCount(); ++variable) table.AddVariable(read.Variable(variable));
  return table;
}

// A time, a status of 0 and 1, a covariate and two factors: one with texts, one with numbers.
inline constexpr const char* kTrial =
    "time,status,age,arm,site\n"
    "5,1,63,drug,1\n"
    "8,0,51,placebo,2\n"
    "11,1,70,drug,3\n"
    "12,1,48,placebo,1\n"
    "15,0,55,control,2\n"
    "21,1,66,control,3\n";

// The least that a definition has to say of that table.
inline AnalysisDefinition LeastDefinition() {
  AnalysisDefinition definition;
  definition.Time = "time";
  definition.Status = "status";
  return definition;
}

class Applied {
 public:
  explicit Applied(const AnalysisDefinition& definition, const std::string& csv = kTrial)
      : Table(TableOf(csv)), Host(Table), Analysis(nullptr) {
    Analysis.AttachHost(Host);
    Analysis.Init();
    Result = ApplyDefinition(definition, Host, Analysis);
  }

  const CoxSettings& Settings() const { return Analysis.m_Settings; }
  // Runs the analysis; 0 when there are results.
  int Run() { return Analysis.RunFromStartup(Result.Fields, nullptr); }

  MemoryTable Table;
  StandaloneHost Host;
  CCoxPH Analysis;
  AppliedDefinition Result;
};

// The message with which a definition is refused; empty, with a failure, when it is not.
inline std::string RefusalOf(const AnalysisDefinition& definition, const std::string& csv = kTrial) {
  try {
    const Applied applied(definition, csv);
  } catch (const DefinitionError& error) {
    return error.what();
  }
  ADD_FAILURE() << "the definition was accepted";
  return {};
}

}  // namespace orv::testing
