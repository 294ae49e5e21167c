#include "apps/orvcox/ConvertCommand.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <ostream>
#include <system_error>

#include "apps/orvcox/ExitCodes.h"
#include "apps/orvcox/ReadWithProgress.h"
#include "apps/orvcox/TableArgument.h"
#include "apps/orvcox/Terminal.h"
#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/host/Interrupt.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableReaders.h"
#include "standalone/tables/TableWriters.h"

namespace orv {

namespace {

void CheckTarget(const ConvertOptions& options) {
  const std::string ending = LowerCaseEnding(options.File);
  if (!IsWritableEnding(ending)) {
    throw DefinitionError(fmt::format("FILE {}: {} cannot be written. Writable are {}.", options.File,
                                      ending.empty() ? "a file without an ending" : ending + " files",
                                      fmt::join(WritableEndings(), " and ")));
  }
  std::error_code ignored;  // a file that is not there is not the table
  if (std::filesystem::equivalent(options.File, FileOfTable(options.Table), ignored)) {
    throw DefinitionError(fmt::format("FILE {}: this is the table itself, which would be lost.", options.File));
  }
}

}  // namespace

CLI::App* AddConvertCommand(CLI::App& program, ConvertOptions& options) {
  CLI::App* convert =
      program.add_subcommand("convert", "Write a table in another form: .orv keeps all of it, or .csv.");
  convert->add_option("TABLE", options.Table, kTableHelp)->required()->type_name("");
  convert->add_option("FILE", options.File, "The file to write, .orv or .csv")->required()->type_name("");
  convert->footer(
      "Examples:\n"
      "  orvcox convert trial.sas7bdat trial.orv\n"
      "  orvcox convert trial.sav trial.csv\n"
      "  orvcox convert \"sqlite:clinic.db?query=SELECT days, died, arm FROM visits WHERE days > 0\" trial.orv");
  return convert;
}

std::vector<FileArgument> ConvertFiles() {
  return {{"TABLE", "the file with the cases"}, {"FILE", "the file to write, .orv or .csv"}};
}

int RunConvert(const ConvertOptions& options, std::ostream& err) {
  CheckTarget(options);
  const Terminal messages = DescribeTerminal(err);
  const MemoryTable table = ReadWithProgress(options.Table, messages.IsTerminal ? &err : nullptr);
  const std::vector<std::string> notes = WriteTable(table, options.File, [] {
    if (WasInterrupted()) throw TableReadCancelled();
  });
  for (const std::string& note : notes) err << "note: " << note << '\n';
  return ExitCodes::Done;
}

}  // namespace orv
