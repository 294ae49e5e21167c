// Survivor and cumulative hazard functions in the results dialog.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <optional>

#include "data/CCoxData.h"
#include "data/FactorLevels.h"
#include "data/PatternRow.h"
#include "data/RoundHalfAway.h"
#include "data/VariableNames.h"
#include "host/FormatText.h"
#include "inference/BreslowBaseline.h"
#include "output/CResultSpreadsheet.h"
#include "output/SurvivorTables.h"
#include "ui/CCoxPHResults.h"

namespace orv {

namespace {

constexpr int kMostPatterns = 25;
constexpr const char* kTooFewPatterns = "Number of covariates patterns must be greater than or equal to 1.";
constexpr const char* kCellNotUnderstood = "Please review input for correctness.";

std::optional<double> ParseNumber(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return std::nullopt;
  double value = 0.0;
  const char* const last = text.data() + text.find_last_not_of(' ') + 1;
  const auto [end, error] = std::from_chars(text.data() + first, last, value);
  if (error != std::errc() || end != last || !std::isfinite(value)) return std::nullopt;
  return value;
}

bool IsInDesign(const CoxSettings& settings, int variable) {
  return settings.DesignFactorSet.count(variable) != 0;
}

// The code that a text means for a factor: one of its labels, or a number.
std::optional<double> CodeOf(const CCoxPH& analysis, int variable, const std::string& text) {
  const CoxSettings& settings = analysis.m_Settings;
  const int place = FactorPlace(settings, variable);
  const int first = FirstCodeIndex(settings, place);
  for (int k = 0; k < settings.FactorCodeCounts[static_cast<std::size_t>(place)]; ++k) {
    const std::int32_t code = settings.FactorCodes[static_cast<std::size_t>(first) + static_cast<std::size_t>(k)];
    if (CodeText(analysis, variable, code) == text) return code;
  }
  return ParseNumber(text);
}

// A variable of the patterns: its number, and its place among the covariates or factors of the design.
struct PatternVariable {
  int Number = 0;
  bool IsFactor = false;
  std::size_t Place = 0;
};

// In the order of their numbers.
std::vector<PatternVariable> VariablesOf(const CCoxPHResults& results) {
  std::vector<PatternVariable> variables;
  const auto add = [&](const std::vector<int>& numbers, bool areFactors) {
    for (std::size_t k = 0; k < numbers.size(); ++k) variables.push_back({numbers[k], areFactors, k});
  };
  add(results.PatternCovariates(), false);
  add(results.PatternFactors(), true);
  std::sort(variables.begin(), variables.end(), [](const auto& a, const auto& b) { return a.Number < b.Number; });
  return variables;
}

CResultSpreadsheet PatternForm(const CCoxPH& analysis,
                               const std::vector<PatternVariable>& variables,
                               const std::vector<std::vector<double>>& covariates,
                               const std::vector<std::vector<std::string>>& factors) {
  Host& host = analysis.GetHost();
  CResultSpreadsheet form(host, static_cast<int>(covariates.size()), static_cast<int>(variables.size()));
  form.SetTitle1("Specify covariate values");
  for (std::size_t c = 0; c < variables.size(); ++c) {
    const int column = static_cast<int>(c);
    form.SetColumnName(column, VariableName(host, variables[c].Number));
    for (std::size_t pattern = 0; pattern < covariates.size(); ++pattern) {
      const int row = static_cast<int>(pattern);
      if (variables[c].IsFactor) {
        form.SetText(row, column, factors[pattern][variables[c].Place]);
      } else {
        form.SetNumber(row, column, covariates[pattern][variables[c].Place]);
      }
    }
  }
  for (std::size_t pattern = 0; pattern < covariates.size(); ++pattern) {
    form.SetRowName(static_cast<int>(pattern), FormatText("Case %d", {FormatInteger(static_cast<int>(pattern) + 1)}));
  }
  return form;
}

}  // namespace

std::vector<int> CCoxPHResults::PatternCovariates() const {
  std::vector<int> variables;
  for (const int variable : Settings().CovariateVariables) {
    if (IsInDesign(Settings(), variable)) variables.push_back(variable);
  }
  return variables;
}

std::vector<int> CCoxPHResults::PatternFactors() const {
  std::vector<int> variables;
  for (const int variable : Settings().FactorVariables) {
    if (IsInDesign(Settings(), variable)) variables.push_back(variable);
  }
  return variables;
}

std::vector<double> CCoxPHResults::DefaultCovariates() const {
  const CCoxData& data = *m_analysis.m_pCoxFit->m_pData;
  std::vector<double> means;
  for (std::size_t k = 0; k < Settings().CovariateVariables.size(); ++k) {
    if (IsInDesign(Settings(), Settings().CovariateVariables[k])) means.push_back(data.CovariateMeans[k]);
  }
  return means;
}

std::vector<std::string> CCoxPHResults::DefaultFactors() const {
  const CCoxData& data = *m_analysis.m_pCoxFit->m_pData;
  std::vector<std::string> texts;
  for (std::size_t k = 0; k < Settings().FactorVariables.size(); ++k) {
    const int variable = Settings().FactorVariables[k];
    if (!IsInDesign(Settings(), variable)) continue;
    texts.push_back(CodeText(m_analysis, variable, RoundToInteger(data.FactorModalCodes[k])));
  }
  return texts;
}

int CCoxPHResults::SetPatterns(const std::vector<std::vector<double>>& covariates,
                               const std::vector<std::vector<std::string>>& factors) {
  Host& host = m_analysis.GetHost();
  CovariatePatterns patterns{covariates, factors, {}, {}};
  const std::vector<PatternVariable> variables = VariablesOf(*this);
  for (std::size_t pattern = 0; pattern < covariates.size(); ++pattern) {
    std::map<int, double> values;
    std::string label;
    for (const PatternVariable& variable : variables) {
      const std::string text =
          variable.IsFactor ? factors[pattern][variable.Place] : FormatGeneral(covariates[pattern][variable.Place]);
      const std::optional<double> value =
          variable.IsFactor ? CodeOf(m_analysis, variable.Number, text) : covariates[pattern][variable.Place];
      if (!value) {
        m_analysis.dsplst(0, kCellNotUnderstood);
        return 1;
      }
      values[variable.Number] = *value;
      label += VariableName(host, variable.Number) + ":" + text + " ";
    }
    std::vector<double> row;
    if (PatternDesignRow(Data(), values, row) != 0) {
      m_analysis.dsplst(0, kCellNotUnderstood);
      return 1;
    }
    patterns.DesignRows.push_back(std::move(row));
    patterns.Labels.push_back(label);
  }
  Patterns = std::move(patterns);
  NumberOfCovariatePatterns = static_cast<int>(covariates.size());
  return 0;
}

int CCoxPHResults::SpecifyCovariateValues() {
  if (NumberOfCovariatePatterns < 1) {
    m_analysis.dsplst(0, kTooFewPatterns);
    return 1;
  }
  const auto count = static_cast<std::size_t>(std::min(NumberOfCovariatePatterns, kMostPatterns));
  std::vector<std::vector<double>> covariates = Patterns.Covariates;
  std::vector<std::vector<std::string>> factors = Patterns.Factors;
  if (covariates.size() != count) {
    covariates.assign(count, DefaultCovariates());
    factors.assign(count, DefaultFactors());
  }
  const std::vector<PatternVariable> variables = VariablesOf(*this);
  CResultSpreadsheet form = PatternForm(m_analysis, variables, covariates, factors);
  const HostDocument* edited = form.ShowInDialog(Parent);
  if (edited == nullptr) return 1;
  for (std::size_t pattern = 0; pattern < count; ++pattern) {
    for (std::size_t c = 0; c < variables.size(); ++c) {
      const int row = static_cast<int>(pattern);
      const std::optional<double> number = edited->NumberAt(row, static_cast<int>(c));
      const std::string text =
          edited->TextAt(row, static_cast<int>(c)).value_or(number ? FormatGeneral(*number) : std::string{});
      if (variables[c].IsFactor) {
        factors[pattern][variables[c].Place] = text;
        continue;
      }
      const std::optional<double> value = number ? number : ParseNumber(text);
      if (!value) {
        m_analysis.dsplst(0, kCellNotUnderstood);
        return 1;
      }
      covariates[pattern][variables[c].Place] = *value;
    }
  }
  return SetPatterns(covariates, factors);
}

void CCoxPHResults::CreateSurvivorSummary() {
  FillEventRiskMoments(Fit());
  const CCoxFit& fit = Fit();
  const SurvivorType type = fit.m_KaplanMeierValid && m_analysis.m_Settings.InputType == InputTypes::SurvivalTime
                                ? Survivor
                                : SurvivorType::Breslow;
  const auto& curves = type == SurvivorType::Breslow ? fit.m_BreslowCurves : fit.m_KaplanMeierCurves;
  const CurveTableForm form{"Survivor function", "Survival", 1.0, ComputeSurvivorCI, ConfidenceLevel};
  for (std::size_t stratum = 0; stratum < curves.size(); ++stratum) {
    for (std::size_t pattern = 0; pattern < Patterns.DesignRows.size(); ++pattern) {
      const auto points = SurvivorFunction(fit, stratum, Patterns.DesignRows[pattern], type, SurvivorCI,
                                           ConfidenceLevel, SmallRiskSums::Multiplied);
      ShowCurve(fit, stratum, points, curves[stratum].Times.size() - 1, Patterns.Labels[pattern], form);
    }
  }
}

void CCoxPHResults::CreateCumulativeHazardSummary() {
  FillEventRiskMoments(Fit());
  const CCoxFit& fit = Fit();
  const CurveTableForm form{"Cumulative hazard", "Empirical Cumulative Hazard", 0.0, ComputeCumulativeHazardCI,
                            ConfidenceLevel};
  for (std::size_t stratum = 0; stratum < fit.m_BreslowCurves.size(); ++stratum) {
    for (std::size_t pattern = 0; pattern < Patterns.DesignRows.size(); ++pattern) {
      const auto points = CumulativeHazard(fit, stratum, Patterns.DesignRows[pattern], ConfidenceLevel, true);
      ShowCurve(fit, stratum, points, fit.m_BreslowCurves[stratum].Times.size() - 1, Patterns.Labels[pattern], form);
    }
  }
}

}  // namespace orv
