#include "reference/ReferenceCase.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "core/VariableSelection.h"
#include "standalone/analysis/ApplyDefinition.h"
#include "standalone/tables/TableReaders.h"

namespace orv::testing {

namespace {

const std::filesystem::path kFolder = std::filesystem::path(ORV_SOURCE_DIR) / "tests" / "reference";

std::string CodeText(const nlohmann::json& code) {
  return fmt::format("{}", code.get<double>());
}

AnalysisDefinition DefinitionOf(const nlohmann::json& setup, const StoppingRule& rule) {
  AnalysisDefinition definition;
  if (setup.at("input_type") == "counting_process") {
    definition.Interval = {setup.at("start"), setup.at("stop")};
  } else {
    definition.Time = setup.at("time");
  }
  definition.Status = setup.at("status").at("variable");
  definition.EventCode = CodeText(setup.at("status").at("complete"));
  definition.CensoredCode = CodeText(setup.at("status").at("censored"));
  definition.Covariates = setup.at("covariates").get<std::vector<std::string>>();
  for (const auto& factor : setup.at("factors")) {
    const std::string name = factor.at("variable");
    std::vector<std::string> codes;
    for (const auto& code : factor.at("codes")) codes.push_back(CodeText(code));
    definition.Factors.push_back(name);
    definition.FactorCodes.push_back(fmt::format("{}={}", name, fmt::join(codes, ",")));
    definition.ReferenceCodes.push_back(fmt::format("{}={}", name, CodeText(factor.at("reference"))));
  }
  if (setup.contains("time_covariates")) {
    for (const auto& covariate : setup.at("time_covariates")) {
      definition.TimeCovariates.push_back(
          fmt::format("{}={}", covariate.at("name").get<std::string>(), covariate.at("expression").get<std::string>()));
    }
  }
  definition.Effects = fmt::format("{}", fmt::join(setup.at("effects").get<std::vector<std::string>>(), ", "));
  definition.Coding = setup.at("coding");
  definition.Ties = setup.at("ties");
  if (setup.contains("strata") && !setup.at("strata").is_null()) {
    definition.Strata = setup.at("strata").at("variable");
    for (const auto& code : setup.at("strata").at("codes")) definition.StrataCodes.push_back(CodeText(code));
  }
  if (setup.contains("weight") && !setup.at("weight").is_null()) definition.Weights = setup.at("weight");
  definition.Converge = rule.Converge;
  definition.ToleranceExponent = rule.Exponent;
  definition.MaxIterations = rule.MaxIterations;
  definition.StartValues = rule.StartValues;
  definition.FixedCoefficients = rule.Fixed;
  return definition;
}

}  // namespace

std::vector<ReferenceCase> LoadReferenceCases() {
  std::vector<ReferenceCase> cases;
  for (const auto& entry : std::filesystem::directory_iterator(kFolder)) {
    if (entry.path().extension() != ".json") continue;
    std::ifstream file(entry.path());
    cases.push_back({entry.path().stem().string(), nlohmann::json::parse(file)});
  }
  std::sort(cases.begin(), cases.end(), [](const auto& a, const auto& b) { return a.Name < b.Name; });
  return cases;
}

std::vector<ReferenceCase> CasesWith(const char* block) {
  std::vector<ReferenceCase> cases = LoadReferenceCases();
  std::erase_if(cases, [block](const ReferenceCase& reference) {
    return !reference.Content.contains(block) || reference.Content.at(block).is_null();
  });
  return cases;
}

std::string CaseName(const ::testing::TestParamInfo<ReferenceCase>& test) {
  return test.param.Name;
}

ReferenceRun RunReferenceCase(const ReferenceCase& reference, const StoppingRule& rule, Variance variance) {
  ReferenceRun run;
  const std::string file = kFolder / reference.Content.at("data_file").get<std::string>();
  run.Table = std::make_unique<MemoryTable>(ReadTable(file));
  run.Host = std::make_unique<StandaloneHost>(*run.Table);
  run.Analysis = std::make_unique<CCoxPH>(nullptr);
  run.Analysis->AttachHost(*run.Host);
  run.Analysis->Init();
  AppliedDefinition applied =
      ApplyDefinition(DefinitionOf(reference.Content.at("setup"), rule), *run.Host, *run.Analysis);
  EXPECT_FALSE(applied.Refused);
  const auto& setup = reference.Content.at("setup");
  if (setup.contains("subject") && !setup.at("subject").is_null()) {
    EXPECT_EQ(SelectSubjectVariable(*run.Analysis, run.Table->FindVariable(setup.at("subject").get<std::string>())), 0);
  }
  run.Analysis->m_Settings.UseRobustVariance = variance == Variance::Robust;
  EXPECT_EQ(run.Analysis->RunFromStartup(applied.Fields, nullptr), 0);
  return run;
}

}  // namespace orv::testing
