// An analysis of a small table that a test writes down: table, host and analysis object together.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/CCoxPH.h"
#include "core/StartupFields.h"
#include "core/VariableSelection.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "standalone/tables/MemoryTable.h"
#include "support/TestHost.h"

namespace orv::testing {

struct TestColumn {
  std::string Name;
  std::vector<double> Values;
  std::vector<ValueLabel> Labels = {};
};

inline MemoryTable MakeTable(const std::vector<TestColumn>& columns) {
  MemoryTable table("test.csv");
  for (const TestColumn& column : columns) {
    TableVariable variable;
    variable.Name = column.Name;
    variable.Values = column.Values;
    variable.Labels = column.Labels;
    table.AddVariable(variable);
  }
  return table;
}

// The options are set by variable name. Codes of factors and strata are given as a test needs them. The status codes
// are 1 complete and 0 censored unless changed in `Fields`.
class TestAnalysis {
 public:
  explicit TestAnalysis(const std::vector<TestColumn>& columns)
      : Table(MakeTable(columns)), Host(Table), Analysis(nullptr) {
    Analysis.AttachHost(Host);
    Analysis.Init();
    Fields.CodeForCompleteResponses = 1.0;
    Fields.CodeForCensoredResponses = 0.0;
    Settings().CodeForCompleteResponses = 1.0;
  }

  CoxSettings& Settings() { return Analysis.m_Settings; }
  CCoxData& Data() { return *Analysis.m_pCoxData; }
  CCoxFit& Fit() { return *Analysis.m_pCoxFit; }
  std::int16_t Number(const std::string& name) const { return static_cast<std::int16_t>(Table.FindVariable(name)); }

  TestAnalysis& Time(const std::vector<std::string>& names) {
    Settings().SurvivalVariableCount = static_cast<std::int16_t>(names.size());
    for (std::size_t k = 0; k < names.size(); ++k) Settings().SurvivalVariables[k] = Number(names[k]);
    return *this;
  }
  TestAnalysis& Interval(const std::string& start, const std::string& stop) {
    Settings().InputType = InputTypes::CountingProcess;
    Settings().StartVariable = Number(start);
    Settings().StartVariableCount = 1;
    Settings().StopVariable = Number(stop);
    Settings().StopVariableCount = 1;
    return *this;
  }
  TestAnalysis& Status(const std::string& name) {
    Settings().CensorVariable = Number(name);
    Settings().CensorVariableCount = 1;
    return *this;
  }
  TestAnalysis& Covariates(const std::vector<std::string>& names) {
    for (const std::string& name : names) Settings().CovariateVariables.push_back(Number(name));
    Settings().CovariateCount = static_cast<std::int16_t>(Settings().CovariateVariables.size());
    return *this;
  }
  TestAnalysis& Factor(const std::string& name, const std::vector<std::int32_t>& codes) {
    CoxSettings& s = Settings();
    s.FactorVariables.push_back(Number(name));
    s.FactorCount = static_cast<std::int16_t>(s.FactorVariables.size());
    s.FactorCodes.insert(s.FactorCodes.end(), codes.begin(), codes.end());
    s.FactorCodeCounts.push_back(static_cast<std::int16_t>(codes.size()));
    SetDefaultReferenceCodes(Analysis);
    return *this;
  }
  TestAnalysis& Strata(const std::string& name, const std::vector<std::int32_t>& codes) {
    Settings().StrataVariable = Number(name);
    Settings().StrataVariableCount = 1;
    Settings().StrataCodes = codes;
    Settings().StrataCodeCount = {static_cast<std::int16_t>(codes.size())};
    return *this;
  }
  TestAnalysis& Weights(const std::string& name) {
    Host.SetWeightVariable(Number(name));
    return *this;
  }
  // Every predictor as an effect.
  TestAnalysis& DefaultDesign() {
    BuildDefaultDesign(Analysis);
    return *this;
  }
  // Effects with their terms, such as {"a*b", "v1*v2"}.
  TestAnalysis& Design(const std::vector<std::pair<std::string, std::string>>& effects) {
    Settings().DesignEffects.clear();
    Settings().EffectSymbols.clear();
    for (const auto& [name, term] : effects) {
      Settings().DesignEffects.push_back(name);
      Settings().EffectSymbols[name] = term;
    }
    return *this;
  }

  // Start values in design order. They count on the standardised scale unless parameters are fixed too.
  TestAnalysis& StartAt(const std::vector<double>& values) {
    Settings().UseStartValues = true;
    Settings().StartValues = values;
    return *this;
  }
  // Holds effects at their start values; one flag per effect.
  TestAnalysis& Fix(const std::vector<bool>& flags) {
    Settings().HasFixedParameters = true;
    Settings().FixedParameterFlags = flags;
    return *this;
  }

  // The case data and an empty fit of the model, ready for FitCurrentModel or for a part of it.
  CCoxFit& PrepareFit() {
    Analysis.ReplaceData(std::make_unique<CCoxData>(&Analysis));
    Data().BuildDesign(Settings().InputType);
    EXPECT_EQ(Data().ReadCases(nullptr), 0) << "the cases of the test cannot be read";
    Analysis.ReplaceFit(std::make_unique<CCoxFit>(&Data(), Settings().Likelihood, Settings().InputType));
    Fit().ResetResults();
    Fit().ActiveParameterCount();
    Host.Bars.clear();
    return Fit();
  }

  // What OK in the startup dialog does. 0 when there are results.
  int Run() { return Analysis.RunFromStartup(Fields, nullptr); }
  // The run driver alone, without the checks before it.
  int RunUnchecked() { return Analysis.RunCoxRegression(nullptr); }

  MemoryTable Table;
  TestHost Host;
  CCoxPH Analysis;
  StartupFields Fields;
};

}  // namespace orv::testing
