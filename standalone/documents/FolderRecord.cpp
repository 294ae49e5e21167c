#include "standalone/documents/FolderRecord.h"

#include <fmt/format.h>

#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "standalone/documents/Fnv1a.h"
#include "standalone/documents/OutputMessages.h"

namespace orv {
namespace {

namespace fs = std::filesystem;

std::string LineOf(const std::string& name, std::string_view content) {
  return fmt::format("{:016x} {} {}", Fnv1a(content), content.size(), name);
}

std::string ContentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::set<std::string> RecordedLines(const fs::path& folder) {
  std::istringstream text(ContentOf(folder / FolderRecord::FileName));
  std::set<std::string> lines;
  for (std::string line; std::getline(text, line);) lines.insert(line);
  return lines;
}

bool IsNamed(const std::set<std::string>& lines, const std::string& name) {
  for (const std::string& line : lines) {
    const std::size_t nameAt = line.find(' ', line.find(' ') + 1) + 1;
    if (line.compare(nameAt, std::string::npos, name) == 0) return true;
  }
  return false;
}

}  // namespace

void FolderRecord::Add(const std::string& name, std::string_view content) {
  m_lines[name] = LineOf(name, content);
}

std::string FolderRecord::Text() const {
  std::string text;
  for (const auto& [name, line] : m_lines) text += line + "\n";
  return text;
}

void CheckFolderIsReplaceable(const fs::path& folder, const fs::path& target) {
  const std::set<std::string> lines = RecordedLines(folder);
  // In the order of the names, so that the same folder gives the same message.
  std::set<std::string> names;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) names.insert(entry.path().filename().string());
  if (error) OutputMessages::FailForSystem(target, folder, error);
  for (const std::string& name : names) {
    if (name == FolderRecord::FileName) continue;
    const bool isFile = fs::is_regular_file(fs::symlink_status(folder / name, error));
    if (!isFile || !IsNamed(lines, name)) OutputMessages::FailForForeignEntry(target, name);
    if (!lines.contains(LineOf(name, ContentOf(folder / name)))) OutputMessages::FailForChangedEntry(target, name);
  }
}

}  // namespace orv
