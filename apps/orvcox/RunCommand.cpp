#include "apps/orvcox/RunCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>
#include <utility>

#include "apps/orvcox/FitCommand.h"
#include "apps/orvcox/FitOptions.h"
#include "standalone/documents/OutputMessages.h"
#include "standalone/jobs/JobPaths.h"
#include "standalone/jobs/ReadJob.h"
#include "standalone/jobs/RefusedKeys.h"
#include "standalone/tables/TableError.h"

namespace orv {

namespace {

FitOptions OptionsOf(const Job& job, const RunOptions& run, const JobWording& wording) {
  FitOptions options;
  options.Table = job.Table;
  options.Definition = job.Definition;
  options.Results = job.Results;
  options.Quiet = job.Quiet || run.Quiet;
  options.Wording = [&wording](const std::string& text) { return wording.Sentence(text); };
  options.NoteOnRefusal = [&wording](int textId) { return NoteOnRefusedKeys(wording, textId); };
  const bool goesElsewhere = !run.Outputs.empty() || !run.Format.empty();
  if (goesElsewhere) {
    // What is wrong with these is told in the words of the command line.
    try {
      options.Targets = ChooseTargets(run.Outputs, job.Table);
      options.StandardFormat = ChooseStandardFormat(run.Format);
    } catch (const DefinitionError& error) {
      throw JobError(error.what());
    }
  } else {
    options.Targets = ChooseTargets(job.Outputs, job.Table);
    options.StandardFormat = ChooseStandardFormat(job.Format);
  }
  return options;
}

// Messages about a file begin with its name: "trial.csv: no such file", "trial.csv, line 3: ...".
bool IsAbout(const std::string& file, std::string_view message) {
  return !file.empty() && (message.starts_with(file + ':') || message.starts_with(file + ','));
}

// Of the two files that a run reads, the one that could not be.
std::string_view KeyOfReadFile(const Job& job, std::string_view message) {
  const std::string& startValues = job.Definition.StartValuesFile;
  const bool isOther = startValues != job.Table && IsAbout(startValues, message);
  return isOther ? "DataFileThatContainsStartvaluesForParameter" : "Table";
}

}  // namespace

CLI::App* AddRunCommand(CLI::App& program, RunOptions& options) {
  CLI::App* run = program.add_subcommand("run", "Fit the model of a job file.");
  run->add_option("JOB", options.JobFile, "A job file, such as fit --save-job writes")->required()->type_name("");
  run->option_defaults()->group("Results");
  run->add_option("--output", options.Outputs,
                  "Write to a file or folder as fit does, instead of where the job says (repeatable)")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->type_name("FILE");
  const CLI::Option* form =
      run->add_option("--format", options.Format,
                      fmt::format("Form of standard output: {}. Without --output,\nresults go there even when the job "
                                  "names files",
                                  NamesForStandardOutput()))
          ->type_name("NAME");
  options.Words[form].Words = FormatsForStandardOutput();
  run->add_flag("--quiet", options.Quiet, "No progress, no notes");
  run->footer(
      "A job is text in TOML whose keys are those of the automation interfaces:\n"
      "  Table = \"veteran.csv\"\n"
      "  [CoxPHStartup.Variables]\n"
      "  SurvivalTimes = \"time\"\n"
      "  CensoringIndicator = \"status\"\n"
      "  Covariates = [\"karno\", \"age\"]\n"
      "  Factors = [\"celltype\", \"trt\"]\n"
      "  [CoxPHStartup]\n"
      "  UseEfronLikelihood = true\n"
      "  ReferenceCategory = { trt = 1 }\n"
      "  [CoxPHResults]\n"
      "  ParameterEstimates = true\n"
      "  PHTest = true\n"
      "Names of files are relative to the folder of the job. docs/jobs.md lists all keys.\n"
      "\nExamples:\n"
      "  orvcox run veteran.toml\n"
      "  orvcox run veteran.toml --output report.html --output tables/\n"
      "  orvcox fit veteran.csv --time time --status status --covariates karno --save-job veteran.toml");
  return run;
}

int RunJob(const RunOptions& options, std::ostream& out, std::ostream& err) {
  const ReadJobResult read = ReadJobFile(options.JobFile);
  const Job job = FromFolderOf(options.JobFile, read.Read);
  try {
    return RunFit(OptionsOf(job, options, read.Wording), out, err);
  } catch (const JobError&) {
    throw;
  } catch (const DefinitionError& error) {
    throw JobError(read.Wording.Refusal(error.what()));
  } catch (const TableError& error) {
    throw TableError(read.Wording.FileFailure(KeyOfReadFile(job, error.what()), error.what()));
  } catch (const OutputError& error) {
    // Files of the command line are told as it names them.
    if (!options.Outputs.empty()) throw;
    throw OutputError(read.Wording.FileFailure("OutputFiles", error.what()));
  }
}

}  // namespace orv
