#include "apps/orvcox/CommandLine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <new>
#include <ostream>
#include <string_view>

#include "apps/orvcox/DescribeCommand.h"
#include "apps/orvcox/ExitCodes.h"
#include "apps/orvcox/FitCommand.h"
#include "apps/orvcox/FitOptions.h"
#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/documents/WriteFileAtomically.h"
#include "standalone/host/Interrupt.h"
#include "standalone/tables/NearestNames.h"
#include "standalone/tables/TableError.h"

namespace orv {

namespace {

// Announced options and commands whose results do not exist in this version.
constexpr std::array<std::string_view, 15> kNotYetOptions = {
    "--interval", "--time-covariate", "--subject", "--robust",   "--where",   "--select",  "--p-enter",       "--p-remove",
    "--force",    "--residuals",      "--contrast", "--pattern", "--ci",      "--survivor-type", "--ph-transform"};
constexpr std::array<std::string_view, 2> kNotYetCommands = {"run", "convert"};

template <typename Names>
bool Contains(const Names& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

int Refuse(std::ostream& err, const std::string& message, std::string_view help) {
  err << "orvcox: " << message << "\nSee " << help << ".\n";
  return ExitCodes::BadUsage;
}

// The option names of a command, for the nearest one to a misspelt one.
std::vector<std::string> OptionNames(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

std::string UnknownOption(const CLI::App& command, const std::vector<std::string>& arguments) {
  const std::vector<std::string> names = OptionNames(command);
  for (const std::string& argument : arguments) {
    const std::string option = argument.substr(0, argument.find('='));
    if (!option.starts_with("--") || Contains(names, option)) continue;
    const std::vector<std::string_view> candidates(names.begin(), names.end());
    return fmt::format("{}: no such option. Closest: {}.", option, NearestNames(option, candidates, 1).front());
  }
  return {};
}

std::string NotYetAvailable(const std::vector<std::string>& arguments) {
  for (const std::string& argument : arguments) {
    const std::string option = argument.substr(0, argument.find('='));
    if (Contains(kNotYetOptions, option)) return fmt::format("{}: not available yet in this version.", option);
  }
  if (!arguments.empty() && Contains(kNotYetCommands, arguments[0])) {
    return fmt::format("{}: not available yet in this version.", arguments[0]);
  }
  return {};
}

int ParseAndRun(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  CLI::App program("Cox proportional hazards regression for survival data.", "orvcox");
  program.footer(
      "Examples:\n"
      "  orvcox describe trial.csv\n"
      "  orvcox fit trial.csv --time days --status died --covariates age,dose --factors arm --ties efron\n"
      "\nExit codes: 0 done; 1 the analysis was refused or failed; 2 bad usage; 3 a file cannot be read or written;\n"
      "130 cancelled.");
  program.set_version_flag("--version", std::string("orvcox ") + ORV_VERSION);
  program.require_subcommand(1);
  FitOptions fitOptions;
  CLI::App* fit = AddFitCommand(program, fitOptions);
  DescribeOptions describeOptions;
  CLI::App* describe = AddDescribeCommand(program, describeOptions);

  const bool isFit = !arguments.empty() && arguments[0] == "fit";
  const bool isDescribe = !arguments.empty() && arguments[0] == "describe";
  const std::string_view help = isFit        ? "orvcox fit --help"
                                : isDescribe ? "orvcox describe --help"
                                             : "orvcox --help";
  const std::string notYet = NotYetAvailable(arguments);
  if (!notYet.empty()) return Refuse(err, notYet, help);
  try {
    // CLI11 takes the arguments last first.
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    program.parse(reversed);
  } catch (const DefinitionError& error) {
    return Refuse(err, error.what(), help);
  } catch (const CLI::CallForHelp&) {
    const CLI::App* shown = isFit ? fit : isDescribe ? describe : &program;
    out << shown->help(shown == &program ? "" : "orvcox");
    return ExitCodes::Done;
  } catch (const CLI::CallForVersion& version) {
    out << version.what() << '\n';
    return ExitCodes::Done;
  } catch (const CLI::ParseError& error) {
    const CLI::App& shown = isFit ? *fit : isDescribe ? *describe : program;
    const std::string unknown = UnknownOption(shown, arguments);
    return Refuse(err, unknown.empty() ? std::string(error.what()) + "." : unknown, help);
  }
  if (describe->parsed()) return RunDescribe(describeOptions, out, err);
  try {
    return RunFit(fitOptions, out, err);
  } catch (const DefinitionError& error) {
    return Refuse(err, error.what(), help);
  }
}

}  // namespace

int RunCommandLine(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  CatchInterrupts();
  try {
    return ParseAndRun(arguments, out, err);
  } catch (const TableReadCancelled&) {
    err << "orvcox: cancelled.\n";
    return ExitCodes::Cancelled;
  } catch (const TableError& error) {
    err << "orvcox: " << error.what() << '\n';
    return ExitCodes::FileError;
  } catch (const OutputError& error) {
    err << "orvcox: " << error.what() << '\n';
    return ExitCodes::FileError;
  } catch (const std::bad_alloc&) {
    err << "orvcox: not enough memory for this table.\n";
    return ExitCodes::AnalysisFailed;
  }
}

}  // namespace orv
