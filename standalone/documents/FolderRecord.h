// FolderRecord: what this program wrote into a folder, so that a later run replaces nothing else.
//
// The record is a file in the folder with one line a file: its FNV-1a hash in 16 hexadecimal digits, its size in bytes,
// and its name.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace orv {

class FolderRecord {
 public:
  static constexpr std::string_view FileName = ".orvcox-files";

  void Add(const std::string& name, std::string_view content);
  // The content of the record's own file.
  std::string Text() const;

 private:
  std::map<std::string, std::string> m_lines;  // by name
};

// Returns when the folder holds nothing but files as a record in it lists them, or nothing at all. Otherwise throws
// OutputError about `target`, which names the first thing that is not listed or was changed since.
void CheckFolderIsReplaceable(const std::filesystem::path& folder, const std::filesystem::path& target);

}  // namespace orv
