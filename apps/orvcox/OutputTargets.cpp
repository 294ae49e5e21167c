#include "apps/orvcox/OutputTargets.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <filesystem>

#include "apps/orvcox/SameFile.h"
#include "standalone/analysis/AnalysisDefinition.h"
#include "standalone/tables/TableReaders.h"

namespace orv {

namespace {

// "text, markdown or json".
std::string Alternatives(const std::vector<std::string>& texts) {
  return fmt::format("{} or {}", fmt::join(texts.begin(), texts.end() - 1, ", "), texts.back());
}

}  // namespace

std::string FileEndings() {
  std::vector<std::string> endings;
  for (const DocumentFormat& format : DocumentFormats()) {
    if (format.WriteFiles == nullptr) endings.emplace_back(format.FileEnding);
  }
  return Alternatives(endings);
}

std::vector<std::string> FormatsForStandardOutput() {
  std::vector<std::string> names;
  for (const DocumentFormat& format : DocumentFormats()) {
    if (format.IsForStandardOutput) names.emplace_back(format.Name);
  }
  return names;
}

std::string NamesForStandardOutput() {
  return Alternatives(FormatsForStandardOutput());
}

// Files are looked at before anything is read, so that a misspelt one does not cost a run.
std::vector<OutputTarget> ChooseTargets(const std::vector<std::string>& files, const std::string& table) {
  std::vector<OutputTarget> targets;
  for (const std::string& file : files) {
    const DocumentFormat* format = FindFormatByFileName(file);
    if (format == nullptr) {
      throw DefinitionError(fmt::format(
          "--output {}: the ending decides the form: use {}, or a folder name that ends in /.", file, FileEndings()));
    }
    for (const OutputTarget& target : targets) {
      if (target.File == file) throw DefinitionError(fmt::format("--output {} is given twice.", file));
      if (IsSameFile(target.File, file)) {
        throw DefinitionError(fmt::format("--output {}: {} is the same file. Name it once.", file, target.File));
      }
    }
    std::error_code ignored;  // a file that is not there is not the table
    if (std::filesystem::equivalent(file, FileOfTable(table), ignored)) {
      throw DefinitionError(fmt::format("--output {}: this is the table itself, which would be lost.", file));
    }
    targets.push_back({file, format});
  }
  return targets;
}

const DocumentFormat* ChooseStandardFormat(const std::string& name) {
  const DocumentFormat* format = FindFormatByName(name.empty() ? kDefaultFormat : name);
  if (format == nullptr || !format->IsForStandardOutput) {
    throw DefinitionError(fmt::format("--format {}: use {}.", name, NamesForStandardOutput()));
  }
  return format;
}

}  // namespace orv
