// Where the results of a run go.
#pragma once

#include <string>
#include <vector>

#include "standalone/documents/DocumentFormats.h"

namespace orv {

// A file or folder that results go to instead of standard output.
struct OutputTarget {
  std::string File;
  const DocumentFormat* Format = nullptr;
};

// The targets of --output. Throws DefinitionError for an ending that no form has, for a file named twice, by one
// name or by two, and for the table itself.
std::vector<OutputTarget> ChooseTargets(const std::vector<std::string>& files, const std::string& table);

// The form of standard output by its name, "text" for an empty one. Throws DefinitionError for another word.
const DocumentFormat* ChooseStandardFormat(const std::string& name);

// The endings and names for the help: ".txt, .md or .json", "text, markdown or json".
std::string FileEndings();
std::string NamesForStandardOutput();

// The names that --format takes.
std::vector<std::string> FormatsForStandardOutput();

inline constexpr const char* kDefaultFormat = "text";

}  // namespace orv
