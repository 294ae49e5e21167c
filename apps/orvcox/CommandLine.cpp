#include "apps/orvcox/CommandLine.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <new>
#include <ostream>
#include <string_view>

#include "apps/orvcox/Arguments.h"
#include "apps/orvcox/ConvertCommand.h"
#include "apps/orvcox/DescribeCommand.h"
#include "apps/orvcox/ExitCodes.h"
#include "apps/orvcox/FitCommand.h"
#include "apps/orvcox/FitOptions.h"
#include "apps/orvcox/RunCommand.h"
#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/documents/OutputMessages.h"
#include "standalone/host/Interrupt.h"
#include "standalone/tables/TableError.h"

namespace orv {

namespace {

// CLI11 puts two blank lines between groups of options.
std::string WithSingleBlankLines(std::string text) {
  constexpr std::string_view kTwoBlankLines = "\n\n\n";
  for (std::size_t at = text.find(kTwoBlankLines); at != std::string::npos; at = text.find(kTwoBlankLines, at)) {
    text.erase(at, 1);
  }
  return text;
}

class Program {
 public:
  Program()
      : m_program("Cox proportional hazards regression for survival data.", kName),
        m_fit(AddFitCommand(m_program, m_fitOptions)),
        m_run(AddRunCommand(m_program, m_runOptions)),
        m_describe(AddDescribeCommand(m_program, m_describeOptions)),
        m_convert(AddConvertCommand(m_program, m_convertOptions)) {
    m_program.footer(
        "Examples:\n"
        "  orvcox describe trial.csv\n"
        "  orvcox convert trial.sav trial.orv\n"
        "  orvcox fit trial.csv --time days --status died --covariates age,dose --factors arm --ties efron\n"
        "  orvcox run trial.toml\n"
        "\nExit codes: 0 done; 1 the analysis was refused or failed; 2 bad usage; 3 a file cannot be read or written;\n"
        "130 cancelled.");
    m_program.set_version_flag("--version", std::string(kName) + " " + ORV_VERSION, "Print the version and exit");
    m_program.require_subcommand(1);
    m_program.get_formatter()->label("SUBCOMMAND", "COMMAND");
    m_program.get_formatter()->label("REQUIRED", "");
    for (CLI::App* command : {m_fit, m_run, m_describe, m_convert}) {
      command->group("Commands");
      command->formatter(m_program.get_formatter());
    }
  }

  const CLI::App& Declared() const { return m_program; }
  WordsOfOptions Words() const {
    WordsOfOptions words = m_fitOptions.Words;
    words.insert(m_runOptions.Words.begin(), m_runOptions.Words.end());
    return words;
  }

  int Run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
    const CLI::App* command = FindCommand(arguments);
    try {
      Parse(command, arguments);
    } catch (const CLI::CallForHelp&) {
      out << WithSingleBlankLines(command == nullptr ? m_program.help() : command->help(kName));
      return ExitCodes::Done;
    } catch (const CLI::CallForVersion& version) {
      out << version.what() << '\n';
      return ExitCodes::Done;
    } catch (const DefinitionError& error) {
      return Refuse(err, command, error.what());
    } catch (const CLI::ParseError& error) {
      return Refuse(err, command, std::string(error.what()) + ".");
    }
    if (command == m_fit) return RunFit(m_fitOptions, out, err);
    if (command == m_run) return RunJob(m_runOptions, out, err);
    if (command == m_describe) return RunDescribe(m_describeOptions, out, err);
    return RunConvert(m_convertOptions, err);
  }

 private:
  static constexpr const char* kName = "orvcox";

  // Null when the first argument names no command.
  const CLI::App* FindCommand(const std::vector<std::string>& arguments) const {
    if (arguments.empty()) return nullptr;
    for (const CLI::App* command : {m_fit, m_run, m_describe, m_convert}) {
      if (command->get_name() == arguments[0]) return command;
    }
    return nullptr;
  }

  void Parse(const CLI::App* command, const std::vector<std::string>& arguments) {
    std::vector<std::string> checked = arguments;
    if (command == nullptr) {
      CheckProgramArguments(arguments);
    } else {
      const std::vector<std::string> own(arguments.begin() + 1, arguments.end());
      checked = CheckArguments(*command, own, FilesOf(command));
      checked.insert(checked.begin(), arguments[0]);
    }
    // CLI11 takes the arguments last first.
    std::reverse(checked.begin(), checked.end());
    m_program.parse(checked);
  }

  // For arguments that do not begin with a command.
  void CheckProgramArguments(const std::vector<std::string>& arguments) const {
    if (arguments.empty()) throw DefinitionError("a command is missing: use fit, run, describe or convert.");
    const std::string& first = arguments[0];
    if (!first.starts_with("-")) {
      throw DefinitionError(fmt::format("\"{}\": no such command. Use fit, run, describe or convert.", first));
    }
    if (first != "-h" && first != "--help" && first != "--version") {
      throw DefinitionError(fmt::format("{}: the first argument is a command: fit, run, describe or convert.", first));
    }
  }

  std::vector<FileArgument> FilesOf(const CLI::App* command) const {
    if (command == m_convert) return ConvertFiles();
    if (command == m_run) return {{"JOB", "the file that defines the analysis"}};
    return {{"TABLE", "the file with the cases"}};
  }

  static int Refuse(std::ostream& err, const CLI::App* command, const std::string& message) {
    const std::string which = command == nullptr ? "" : " " + command->get_name();
    err << "orvcox: " << message << "\nSee orvcox" << which << " --help.\n";
    return ExitCodes::BadUsage;
  }

  FitOptions m_fitOptions;
  RunOptions m_runOptions;
  DescribeOptions m_describeOptions;
  ConvertOptions m_convertOptions;
  CLI::App m_program;
  CLI::App* m_fit;
  CLI::App* m_run;
  CLI::App* m_describe;
  CLI::App* m_convert;
};

int Report(std::ostream& err, std::string_view message, int exitCode) {
  err << "orvcox: " << message << '\n';
  return exitCode;
}

int ReportCancelled(std::ostream& err) {
  return Report(err, "cancelled.", ExitCodes::Cancelled);
}

// Ctrl-C may break off the opening of a pipe, which looks like a file that cannot be read.
int ReportFileError(std::ostream& err, std::string_view message) {
  return WasInterrupted() ? ReportCancelled(err) : Report(err, message, ExitCodes::FileError);
}

int RunAndReport(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  try {
    return Program().Run(arguments, out, err);
  } catch (const DefinitionError& error) {
    return Report(err, error.what(), ExitCodes::BadUsage);
  } catch (const TableReadCancelled&) {
    return ReportCancelled(err);
  } catch (const TableError& error) {
    return ReportFileError(err, error.what());
  } catch (const OutputError& error) {
    return ReportFileError(err, error.what());
  } catch (const std::bad_alloc&) {
    return Report(err, "not enough memory for this table.", ExitCodes::AnalysisFailed);
  }
}

}  // namespace

int RunCommandLine(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  CatchInterrupts();
  const int exitCode = RunAndReport(arguments, out, err);
  if (out.flush()) return exitCode;
  return ReportFileError(err, "standard output: not all of it could be written. Is the disk full?");
}

void UseDeclaredProgram(const std::function<void(const CLI::App& program, const WordsOfOptions& words)>& use) {
  const Program program;
  use(program.Declared(), program.Words());
}

}  // namespace orv
