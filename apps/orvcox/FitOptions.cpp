#include "apps/orvcox/FitOptions.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "apps/orvcox/SaveJob.h"
#include "apps/orvcox/TableArgument.h"
#include "core/CoxSettings.h"
#include "standalone/analysis/CheckDefinition.h"
#include "standalone/analysis/Choices.h"
#include "standalone/analysis/ListSyntax.h"
#include "standalone/analysis/OptionValues.h"
#include "standalone/analysis/TableCodes.h"
#include "standalone/tables/TableReaders.h"

namespace orv {

namespace {

const std::vector<std::string> kNotYetResults = {"c", "pmml", "plots"};

const std::string kAllResults = "all";

bool Holds(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// A list with commas; the option may also be repeated.
CLI::Option* AddList(CLI::App& command,
                     const std::string& name,
                     std::vector<std::string>& list,
                     const std::string& help) {
  const auto append = [&list, name](const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
      const std::vector<std::string> items = SplitList(name, text);
      list.insert(list.end(), items.begin(), items.end());
    }
  };
  return command.add_option_function<std::vector<std::string>>(name, append, help)
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->type_name("V,...");
}

// An option whose value is one of some words, which stand in its help between `head` and `tail`.
void AddChoice(CLI::App& command,
               WordsOfOptions& words,
               const std::string& name,
               std::string& word,
               std::span<const Choice> choices,
               const std::string& head,
               const std::string& tail) {
  CLI::Option* option = command.add_option(name, word, head + ChoiceList(choices) + tail)->type_name("NAME");
  for (const Choice& choice : choices) words[option].Words.emplace_back(choice.Word);
}

// Names with commas, with a line break where a line of the help would become too long.
std::string WrappedList(const std::string& head, const std::vector<std::string>& names, const std::string& tail) {
  constexpr std::size_t kWidest = 80;
  std::string text = head;
  std::size_t lineStart = 0;
  for (std::size_t k = 0; k < names.size(); ++k) {
    if (k > 0) text += ", ";
    if (text.size() - lineStart + names[k].size() > kWidest) {
      text.back() = '\n';
      lineStart = text.size();
    }
    text += names[k];
  }
  return text + tail;
}

CLI::Option* AddRepeatable(CLI::App& command,
                           const std::string& name,
                           std::vector<std::string>& list,
                           const std::string& help) {
  return command.add_option(name, list, help)->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
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
  command.add_option("--interval", d.Interval, "Interval (START, STOP] in which a case is at risk")
      ->type_size(2)
      ->expected(1)
      ->type_name("START STOP");
  command.add_option("--status", d.Status, "Censoring indicator")->type_name("V");
  command.add_option("--event", d.EventCode, "Its code for an event (a number or a label)")->type_name("CODE");
  command.add_option("--censored", d.CensoredCode, "Its code for a censored case")->type_name("CODE");
  AddList(command, "--covariates", d.Covariates, "Continuous predictors");
  AddList(command, "--factors", d.Factors, "Categorical predictors");
  AddRepeatable(command, "--time-covariate", d.TimeCovariates,
                "Predictor that changes with the time T_ (repeatable), such as late=age*(T_>30)")
      ->type_name("NAME=FORMULA");
  command.add_option("--strata", d.Strata, "Variable whose values have baselines of their own")->type_name("V");
  AddList(command, "--strata-codes", d.StrataCodes, "Selected strata; default: all found")->type_name("C,...");
  command.add_option("--subject", d.Subject, "Variable whose values are the clusters of the robust variance")
      ->type_name("V");
  command.add_option("--weights", d.Weights, "Case weights")->type_name("V");
  command.add_option("--where", d.Where, "Condition for the cases, such as \"age >= 18 and arm = 'test'\"")
      ->type_name("FORMULA");
  command.add_option("--entry", d.Entry, "Entry time, without effect on risk sets; for late entry use --interval")
      ->type_name("V");
}

void AddDesign(CLI::App& command, FitOptions& options) {
  AnalysisDefinition& d = options.Definition;
  AddRepeatable(command, "--codes", d.FactorCodes, "Selected codes of factor F (repeatable); default: all found")
      ->type_name("F=C,...");
  AddRepeatable(command, "--reference", d.ReferenceCodes,
                "Reference code of factor F (repeatable); default: the largest")
      ->type_name("F=C");
  command
      .add_option("--effects", d.Effects,
                  "The design, such as \"age, age*sex, clinic(region)\"; default: every predictor")
      ->type_name("\"E, E\"");
  AddChoice(command, options.Words, "--coding", d.Coding, CodingChoices(), "Coding of factors: ", "; default sigma");
}

void AddMethod(CLI::App& command, FitOptions& options) {
  AnalysisDefinition& d = options.Definition;
  auto& typed = options.AsTyped;
  AddChoice(command, options.Words, "--ties", d.Ties, TieChoices(), "Rule for ties: ", "; default breslow");
  command
      .add_option("--max-iterations", typed.MaxIterations,
                  fmt::format("Newton steps at most, 1 to {}; default {}", kMostNewtonSteps, d.MaxIterations))
      ->type_name("N");
  AddChoice(command, options.Words, "--converge", d.Converge, ConvergenceChoices(),
            "Convergence test: ", "; default gradient");
  command
      .add_option(
          "--tolerance-exponent", typed.ToleranceExponent,
          fmt::format("N for a tolerance of 1e-N, 1 to {}; default {}", kLargestToleranceExponent, d.ToleranceExponent))
      ->type_name("N");
  AddList(command, "--start-values", typed.StartValues,
          "One start value per coefficient, or an .orv file with a column of them")
      ->type_name("X,... | FILE.orv");
  AddList(command, "--fix", typed.Fix, "Coefficients held at their start values, numbered from 1")->type_name("N,...");
  command.add_flag("--robust", d.Robust, "Robust (sandwich) covariance of the estimates");
  command.add_option("--confidence", typed.Confidence, "Level of confidence limits; default 0.95")->type_name("LEVEL");
}

void AddModelBuilding(CLI::App& command, FitOptions& options) {
  auto& typed = options.AsTyped;
  const CoxSettings defaults;
  AddChoice(
      command, options.Words, "--select", options.Definition.Select, SelectionChoices(),
      "Which effects the model keeps: ", ".\nbest compares models of all sizes and fits all effects; default all");
  command
      .add_option("--p-enter", typed.PEnter,
                  fmt::format("Forward and stepwise: the largest p value with which an effect enters; default {}",
                              defaults.PToEnter))
      ->type_name("P");
  command
      .add_option("--p-remove", typed.PRemove,
                  fmt::format("Backward and stepwise: the largest p value with which an effect stays; default {}",
                              defaults.PToRemove))
      ->type_name("P");
  command
      .add_option(
          "--force", typed.Force,
          fmt::format("The first N effects of the design are in every model; default {}", defaults.EffectsToForce))
      ->type_name("N");
}

void AddOutput(CLI::App& command, FitOptions& options) {
  auto& typed = options.AsTyped;
  ResultDefinition& results = options.Results;
  const CLI::Option* show =
      AddList(command, "--show", typed.Show,
              WrappedList("What to write: ", ShowNames(),
                          fmt::format(",\nor all; default {}", fmt::join(DefaultShowNames(), ","))))
          ->type_name("NAME,...");
  options.Words[show] = {ShowNames(), true};
  options.Words[show].Words.push_back(kAllResults);
  const CLI::Option* residuals =
      AddList(command, "--residuals", results.Residuals,
              WrappedList("Residuals: ", ResidualNames(),
                          ";\ndefault martingale,deviance. With --interval not deviance, displacement and lmax"))
          ->type_name("NAME,...");
  options.Words[residuals] = {ResidualNames(), true};
  AddRepeatable(command, "--contrast", results.Contrasts,
                "Linear function of the coefficients, a number for each (repeatable: tested together)")
      ->type_name("\"X X X\"");
  AddRepeatable(command, "--pattern", results.Patterns,
                "Covariate pattern of survivor and hazard (repeatable); default: means and modal codes")
      ->type_name("\"V=X, V=X\"");
  AddChoice(command, options.Words, "--survivor-type", results.SurvivorType, SurvivorTypeChoices(),
            "Baseline estimator: ", "; default breslow");
  AddChoice(command, options.Words, "--ci", results.CI, CIChoices(), "Limits of the survivor function: ",
            "; default normal.\nThose of the hazard are taken on the log scale, and left out with none");
  AddChoice(command, options.Words, "--ph-transform", results.Transform, TransformChoices(),
            "Time in the test of proportional hazards: ", "; default identity");
  AddRepeatable(
      command, "--output", typed.Outputs,
      fmt::format("Write to a file ({}), or to a folder\nwhose name ends in /, one CSV file a table, instead of "
                  "standard output (repeatable)",
                  FileEndings()))
      ->type_name("FILE");
  const CLI::Option* form =
      command
          .add_option("--format", typed.Format,
                      fmt::format("Form of standard output: {}; default {}", NamesForStandardOutput(), kDefaultFormat))
          ->type_name("NAME");
  options.Words[form].Words = FormatsForStandardOutput();
  command.add_flag("--quiet", options.Quiet, "No progress, no notes");
  command
      .add_option("--save-job", options.SaveJob,
                  "Write the analysis to a job file for orvcox run. A run that is refused or\nfails writes none")
      ->type_name("FILE.toml");
}

std::vector<std::string> CompleteResults(const std::vector<std::string>& typed) {
  if (typed.empty()) return DefaultShowNames();
  for (const std::string& name : typed) {
    if (name == kAllResults || Holds(ShowNames(), name)) continue;
    if (Holds(kNotYetResults, name)) {
      throw DefinitionError(fmt::format("--show {}: not available yet in this version.", name));
    }
    throw DefinitionError(fmt::format("--show {}: use {} or {}.", name, fmt::join(ShowNames(), ", "), kAllResults));
  }
  if (Holds(typed, kAllResults)) return ShowNames();
  std::vector<std::string> chosen;
  for (const std::string& name : ShowNames()) {
    if (Holds(typed, name)) chosen.push_back(name);
  }
  return chosen;
}

void CompleteOptions(FitOptions& options) {
  const auto& typed = options.AsTyped;
  AnalysisDefinition& d = options.Definition;
  if (!typed.MaxIterations.empty()) d.MaxIterations = IterationsValue(typed.MaxIterations);
  if (!typed.ToleranceExponent.empty()) d.ToleranceExponent = ToleranceExponentValue(typed.ToleranceExponent);
  if (!typed.Confidence.empty()) options.Results.Confidence = ConfidenceValue(typed.Confidence);
  if (!typed.PEnter.empty()) d.PEnter = ProbabilityValue("--p-enter", typed.PEnter);
  if (!typed.PRemove.empty()) d.PRemove = ProbabilityValue("--p-remove", typed.PRemove);
  if (!typed.Force.empty()) d.Force = ForcedValue(typed.Force);
  const bool isFile = typed.StartValues.size() == 1 && !ParseNumber(typed.StartValues[0]) &&
                      LowerCaseEnding(typed.StartValues[0]) == ".orv";
  if (isFile) d.StartValuesFile = typed.StartValues[0];
  if (!isFile) d.StartValues = StartValuesOf(typed.StartValues);
  d.FixedCoefficients = CoefficientNumbersOf(typed.Fix);
  options.Results.Results = CompleteResults(typed.Show);
  options.Results.ShowsAll = Holds(typed.Show, kAllResults);
  options.Targets = ChooseTargets(typed.Outputs, options.Table);
  options.StandardFormat = ChooseStandardFormat(typed.Format);
  CheckDefinition(d);
  CheckResultDefinition(options.Results);
  if (!options.SaveJob.empty()) CheckJobPlace(options);
}

}  // namespace

CLI::App* AddFitCommand(CLI::App& program, FitOptions& options) {
  CLI::App* fit = program.add_subcommand("fit", "Fit a Cox model to the cases of a table.");
  fit->add_option("TABLE", options.Table, kTableHelp)->required()->type_name("");
  const auto beginGroup = [fit](const char* name) { fit->option_defaults()->group(name); };
  beginGroup("Variables");
  AddVariables(*fit, options.Definition);
  beginGroup("Design");
  AddDesign(*fit, options);
  beginGroup("Method");
  AddMethod(*fit, options);
  beginGroup("Model building");
  AddModelBuilding(*fit, options);
  beginGroup("Results");
  AddOutput(*fit, options);
  fit->footer(
      "Variables are named by name, or by #3 for the third. A name or label with a comma stands in double quotes in a\n"
      "list: --codes 'site=\"Bonn, Beuel\",Ulm'.\n"
      "\nExamples:\n"
      "  orvcox fit veteran.csv --time time --status status --covariates karno,age --factors celltype,trt --ties "
      "efron\n"
      "  orvcox fit lung.csv --time time --status status --event 2 --censored 1 --covariates age --strata sex\n"
      "  orvcox fit heart.csv --interval start stop --status event --covariates age --ties discrete --where \"year > "
      "1\"\n"
      "  orvcox fit veteran.csv --time time --status status --covariates karno,diagtime,age --factors celltype \\\n"
      "      --select stepwise --p-enter 0.1 --show steps,estimates\n"
      "  orvcox fit veteran.csv --time time --status status --covariates karno --time-covariate "
      "\"kt=karno*log(T_+1)\"\n"
      "  orvcox fit veteran.csv --time time --status status --covariates karno --factors trt \\\n"
      "      --effects \"karno, trt, karno*trt\" --coding reference --reference trt=1 --show all --format json");
  fit->final_callback([&options] { CompleteOptions(options); });
  return fit;
}

}  // namespace orv
