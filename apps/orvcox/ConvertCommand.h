// `orvcox convert`: a table in another form.
#pragma once

#include <CLI/App.hpp>
#include <iosfwd>
#include <string>
#include <vector>

#include "apps/orvcox/Arguments.h"

namespace orv {

struct ConvertOptions {
  std::string Table;
  std::string File;
};

// Declares the command. `options` must outlive `program`.
CLI::App* AddConvertCommand(CLI::App& program, ConvertOptions& options);

// The arguments of the command.
std::vector<FileArgument> ConvertFiles();

// Reads the table and writes the file; what the file cannot hold is told on `err`. Returns the exit code. Throws
// DefinitionError, before anything is read, when the file's ending is not writable or the file is the table;
// TableError, TableReadCancelled and OutputError.
int RunConvert(const ConvertOptions& options, std::ostream& err);

}  // namespace orv
