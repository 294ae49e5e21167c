#include "apps/orvcox/SaveJob.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "apps/orvcox/SameFile.h"
#include "standalone/documents/Utf8.h"
#include "standalone/documents/WriteFileAtomically.h"
#include "standalone/jobs/JobPaths.h"
#include "standalone/jobs/WriteJob.h"
#include "standalone/tables/TableReaders.h"

namespace orv {

namespace {

namespace fs = std::filesystem;

std::string TextOfJob(const FitOptions& options) {
  Job job;
  job.Table = options.Table;
  job.Definition = options.Definition;
  job.Results = options.Results;
  for (const OutputTarget& target : options.Targets) job.Outputs.push_back(target.File);
  job.Format = options.StandardFormat->Name == kDefaultFormat ? "" : options.StandardFormat->Name;
  job.Quiet = options.Quiet;
  return WriteJob(ToFolderOf(options.SaveJob, std::move(job)));
}

bool IsWithin(const std::string& file, const std::string& folder) {
  std::error_code ignored;
  const fs::path inner = fs::weakly_canonical(file, ignored);
  const fs::path outer = fs::weakly_canonical(fs::path(folder).parent_path(), ignored);
  return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
}

bool IsUtf8(const std::string& text) {
  for (std::size_t at = 0; at < text.size();) {
    const Utf8Character character = DecodeUtf8(text, at);
    if (character.CodePoint == ReplacementCharacter && character.Length == 1) return false;
    at += character.Length;
  }
  return true;
}

[[noreturn]] void Fail(const FitOptions& options, const std::string& problem) {
  throw DefinitionError(fmt::format("--save-job {}: {}", options.SaveJob, problem));
}

}  // namespace

void CheckJobPlace(const FitOptions& options) {
  if (LowerCaseEnding(options.SaveJob) != ".toml") Fail(options, "the name of a job file ends in .toml.");
  const std::string table = FileOfTable(options.Table);
  if (!table.empty() && IsSameFile(options.SaveJob, table))
    Fail(options, "this is the table itself, which would be lost.");
  const std::string& startValues = options.Definition.StartValuesFile;
  if (!startValues.empty() && IsSameFile(options.SaveJob, startValues)) {
    Fail(options, "this is the file with the start values, which would be lost.");
  }
  for (const OutputTarget& target : options.Targets) {
    const bool isFolder = target.Format->WriteFiles != nullptr;
    if (isFolder && IsWithin(options.SaveJob, target.File)) {
      Fail(options, fmt::format("the folder of --output {} holds results alone. Choose another.", target.File));
    }
    if (IsSameFile(options.SaveJob, target.File))
      Fail(options, fmt::format("--output {} is the same file.", target.File));
  }
  if (!IsUtf8(TextOfJob(options))) {
    Fail(options, "a job is text in UTF-8, and a name or a text of this analysis is not.");
  }
  const fs::path folder = fs::path(options.SaveJob).parent_path();
  std::error_code ignored;
  if (!folder.empty() && !fs::is_directory(folder, ignored)) {
    OutputMessages::FailForMissingFolder(options.SaveJob, folder);
  }
}

void SaveJob(const FitOptions& options) {
  WriteFileAtomically(options.SaveJob, TextOfJob(options));
}

}  // namespace orv
