#include "standalone/jobs/JobPaths.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string_view>
#include <system_error>
#include <utility>

#include "standalone/tables/SqliteAddress.h"

namespace orv {

namespace {

namespace fs = std::filesystem;

using Move = std::function<std::string(const std::string&)>;

fs::path FolderOf(const std::string& file) {
  const fs::path folder = fs::path(file).parent_path();
  return folder.empty() ? fs::path(".") : folder;
}

// With links resolved, as far as the folders exist: "x/.." is not always where x is.
fs::path Resolved(const fs::path& folder) {
  std::error_code error;
  const fs::path resolved = fs::weakly_canonical(fs::absolute(folder), error);
  return error ? fs::absolute(folder).lexically_normal() : resolved;
}

std::string FromFolder(const fs::path& folder, const std::string& name) {
  const bool stays = fs::path(name).is_absolute() || folder == ".";
  return stays ? name : (folder / name).string();
}

// The file itself may be a link to another, so only its folder is resolved. A folder keeps its slash.
std::string ToFolder(const fs::path& folder, const std::string& name) {
  const fs::path path(name);
  if (path.is_absolute()) return name;
  const bool isFolder = !path.has_filename();
  const fs::path entry = isFolder ? path.parent_path() : path;
  const bool isPlain = entry.filename() != "." && entry.filename() != "..";
  const fs::path place = isPlain ? Resolved(FolderOf(entry.string())) / entry.filename() : Resolved(entry);
  return place.lexically_relative(Resolved(folder)).string() + (isFolder ? "/" : "");
}

// What stands for a byte in an address of a database.
std::string Encoded(const std::string& name) {
  std::string encoded;
  for (const char c : name) {
    encoded += c == '%' ? "%25" : c == '?' ? "%3F" : std::string(1, c);
  }
  return encoded;
}

std::string MovedTable(const std::string& table, const Move& move) {
  if (table == "-" || table.empty()) return table;
  if (!IsSqliteAddress(table)) return move(table);
  const std::size_t colon = table.find(':');
  const std::size_t mark = std::min(table.find('?'), table.size());
  return table.substr(0, colon + 1) + Encoded(move(ParseSqliteAddress(table).File)) + table.substr(mark);
}

Job Moved(Job job, const Move& move) {
  job.Table = MovedTable(job.Table, move);
  for (std::string& output : job.Outputs) output = move(output);
  std::string& startValues = job.Definition.StartValuesFile;
  if (!startValues.empty()) startValues = move(startValues);
  return job;
}

}  // namespace

Job FromFolderOf(const std::string& file, Job job) {
  return Moved(std::move(job), [&](const std::string& name) { return FromFolder(FolderOf(file), name); });
}

Job ToFolderOf(const std::string& file, Job job) {
  return Moved(std::move(job), [&](const std::string& name) { return ToFolder(FolderOf(file), name); });
}

}  // namespace orv
