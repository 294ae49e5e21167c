#include "apps/orvcox/FitOptions.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>

#include "core/CCoxPH.h"
#include "standalone/analysis/Choices.h"
#include "standalone/analysis/TableCodes.h"

namespace orv {

namespace {

constexpr int kMostIterations = 1000;
constexpr int kLargestExponent = 12;
constexpr double kLowestConfidence = 0.0001;
constexpr double kHighestConfidence = 0.9999;

const std::vector<std::string> kNotYetResults = {
    "type3", "contrast", "steps", "residuals", "survivor", "hazard", "phtest", "c", "pmml", "plots"};

bool Holds(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// A list with commas; the option may also be repeated.
CLI::Option* AddList(CLI::App& command, const std::string& name, std::vector<std::string>& list, const std::string& help) {
  const auto append = [&list](const std::vector<std::string>& texts) {
    static const std::string kComma = ",";
    for (const std::string& text : texts) {
      std::vector<std::string> pieces;
      CCoxPH::SplitStrings(&pieces, &text, &kComma);
      list.insert(list.end(), pieces.begin(), pieces.end());
    }
  };
  return command.add_option_function<std::vector<std::string>>(name, append, help)
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->type_name("V,...");
}

CLI::Option* AddRepeatable(CLI::App& command,
                           const std::string& name,
                           std::vector<std::string>& list,
                           const std::string& help) {
  return command.add_option(name, list, help)->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

// The help line tells the range itself.
template <typename Number>
CLI::Validator Within(Number lowest, Number highest) {
  return CLI::Validator(CLI::Range(lowest, highest)).description("");
}

void AddVariables(CLI::App& command, AnalysisDefinition& d) {
  command.add_option("--time", d.Time, "Survival time")->type_name("V");
  command.add_option("--dates", d.Dates, "Start and end date; the time is their difference in days")
      ->type_size(2)
      ->expected(1)
      ->type_name("V V");
  command.add_option("--date-parts", d.DateParts, "Month, day, year of the start, then of the end")
      ->type_size(6)
      ->expected(1)
      ->type_name("V V V V V V");
  command.add_option("--status", d.Status, "Censoring indicator")->type_name("V");
  command.add_option("--event", d.EventCode, "Its code for an event (a number or a label)")->type_name("CODE");
  command.add_option("--censored", d.CensoredCode, "Its code for a censored case")->type_name("CODE");
  AddList(command, "--covariates", d.Covariates, "Continuous predictors");
  AddList(command, "--factors", d.Factors, "Categorical predictors");
  command.add_option("--strata", d.Strata, "Variable whose values have baselines of their own")->type_name("V");
  AddList(command, "--strata-codes", d.StrataCodes, "Selected strata; default: all found")->type_name("C,...");
  command.add_option("--weights", d.Weights, "Case weights")->type_name("V");
  command.add_option("--entry", d.Entry, "Entry time (kept with the cases; no effect on the risk sets)")->type_name("V");
}

void AddDesign(CLI::App& command, AnalysisDefinition& d) {
  AddRepeatable(command, "--codes", d.FactorCodes, "Selected codes of factor F (repeatable); default: all found")
      ->type_name("F=C,...");
  AddRepeatable(command, "--reference", d.ReferenceCodes, "Reference code of factor F (repeatable); default: the largest")
      ->type_name("F=C");
  command
      .add_option("--effects", d.Effects, "The design, such as \"age, age*sex, clinic(region)\"; default: every predictor")
      ->type_name("\"E, E\"");
  command.add_option("--coding", d.Coding, "Coding of factors: " + ChoiceList(CodingChoices()) + "; default sigma")
      ->type_name("NAME");
}

void AddMethod(CLI::App& command, FitOptions& options) {
  AnalysisDefinition& d = options.Definition;
  command.add_option("--ties", d.Ties, "Rule for ties: breslow or efron; default breslow")->type_name("NAME");
  command.add_option("--max-iterations", d.MaxIterations, "Newton steps at most, 1 to 1000; default 50")
      ->check(Within(1, kMostIterations))
      ->type_name("N");
  command.add_option("--converge", d.Converge, "Convergence test: " + ChoiceList(ConvergenceChoices()) + "; default gradient")
      ->type_name("NAME");
  command.add_option("--tolerance-exponent", d.ToleranceExponent, "N for a tolerance of 1e-N, 1 to 12; default 8")
      ->check(Within(1, kLargestExponent))
      ->type_name("N");
  AddList(command, "--start-values", options.StartValues, "One start value per coefficient")->type_name("X,...");
  AddList(command, "--fix", options.Fix, "Coefficients held at their start values, numbered from 1")->type_name("N,...");
  command.add_option("--confidence", options.Confidence, "Level of confidence limits; default 0.95")
      ->check(Within(kLowestConfidence, kHighestConfidence))
      ->type_name("LEVEL");
}

void AddOutput(CLI::App& command, FitOptions& options) {
  AddList(command,
          "--show",
          options.Show,
          fmt::format("What to write: {}, or all; default summary,estimates", fmt::join(ShowNames(), ", ")))
      ->type_name("NAME,...");
  AddRepeatable(command, "--output", options.Outputs, "Write to a file (.txt or .json) instead of standard output (repeatable)")
      ->type_name("FILE");
  command.add_option("--format", options.Format, "Form of standard output: text or json; default text")->type_name("NAME");
  command.add_flag("--quiet", options.Quiet, "No progress, no notes");
}

std::vector<double> ParseStartValues(const std::vector<std::string>& texts) {
  std::vector<double> values;
  for (const std::string& text : texts) {
    const std::optional<double> value = ParseNumber(text);
    if (value) {
      values.push_back(*value);
      continue;
    }
    if (text.ends_with(".orv")) {
      throw DefinitionError("--start-values: start values from a file are not available yet in this version.");
    }
    throw DefinitionError(fmt::format("--start-values: \"{}\" is not a number.", text));
  }
  return values;
}

std::vector<int> ParseCoefficients(const std::vector<std::string>& texts) {
  std::vector<int> coefficients;
  for (const std::string& text : texts) {
    int coefficient = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), coefficient);
    if (error != std::errc() || end != text.data() + text.size()) {
      throw DefinitionError(fmt::format("--fix: \"{}\" is not the number of a coefficient.", text));
    }
    coefficients.push_back(coefficient);
  }
  return coefficients;
}

}  // namespace

const std::vector<std::string>& ShowNames() {
  static const std::vector<std::string> names = {
      "summary", "estimates", "history", "design", "covariance", "correlation"};
  return names;
}

std::vector<std::string> ChosenResults(const FitOptions& options) {
  if (options.Show.empty()) return {"summary", "estimates"};
  for (const std::string& name : options.Show) {
    if (name == "all" || Holds(ShowNames(), name)) continue;
    if (Holds(kNotYetResults, name)) {
      throw DefinitionError(fmt::format("--show {}: not available yet in this version.", name));
    }
    throw DefinitionError(fmt::format("--show {}: use {} or all.", name, fmt::join(ShowNames(), ", ")));
  }
  if (Holds(options.Show, "all")) return ShowNames();
  std::vector<std::string> chosen;
  for (const std::string& name : ShowNames()) {
    if (Holds(options.Show, name)) chosen.push_back(name);
  }
  return chosen;
}

CLI::App* AddFitCommand(CLI::App& program, FitOptions& options) {
  CLI::App* fit = program.add_subcommand("fit", "Fit a Cox model to the cases of a table.");
  fit->add_option("TABLE", options.Table, "A .csv, .tsv or .txt file, or - for CSV from standard input")->required();
  AddVariables(*fit, options.Definition);
  AddDesign(*fit, options.Definition);
  AddMethod(*fit, options);
  AddOutput(*fit, options);
  fit->footer(
      "Variables are named by name, or by #3 for the third.\n"
      "\nExamples:\n"
      "  orvcox fit veteran.csv --time time --status status --covariates karno,age --factors celltype,trt --ties efron\n"
      "  orvcox fit lung.csv --time time --status status --event 2 --censored 1 --covariates age --strata sex\n"
      "  orvcox fit veteran.csv --time time --status status --covariates karno --factors trt \\\n"
      "      --effects \"karno, trt, karno*trt\" --coding reference --reference trt=1 --show all --format json");
  fit->final_callback([&options] {
    if (options.Definition.Ties == "discrete") {
      throw DefinitionError("--ties discrete: not available yet in this version.");
    }
    options.Definition.StartValues = ParseStartValues(options.StartValues);
    options.Definition.FixedCoefficients = ParseCoefficients(options.Fix);
  });
  return fit;
}

}  // namespace orv
