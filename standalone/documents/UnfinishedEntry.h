// UnfinishedEntry: a file or folder beside its target that has not got its final name yet.
//
// It is called ".orvcox-unfinished-N", with the smallest N from 1 that is free, and locked (flock) as long as its owner
// lives. So a run can tell what a broken run left from what another run is writing: what it can lock has no owner.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string_view>

namespace orv {

class UnfinishedEntry {
 public:
  enum class Kind { File, Folder };

  // Makes an empty file or folder in `folder`, and removes what broken runs left there under the first names.
  // Throws OutputError about `target` when that fails.
  UnfinishedEntry(Kind kind, std::filesystem::path folder, std::filesystem::path target);
  // Removes what has not got its final name, a folder with the files in it.
  ~UnfinishedEntry();
  UnfinishedEntry(const UnfinishedEntry&) = delete;
  UnfinishedEntry& operator=(const UnfinishedEntry&) = delete;

  const std::filesystem::path& Path() const { return m_path; }
  // Of the file or folder, open as long as this object lives.
  int Descriptor() const { return m_descriptor; }
  // It has got its final name, and stays.
  void Keep() { m_isKept = true; }

 private:
  bool Make(Kind kind);

  std::filesystem::path m_target;
  std::filesystem::path m_folder;
  std::filesystem::path m_path;
  int m_descriptor = -1;
  bool m_isKept = false;
};

// Writes the bytes and has them reach the disk, so that a name given afterwards never leads to half a file, not even
// after a loss of power. Returns the error, none when all went well.
std::error_code WriteAndFlush(int descriptor, std::string_view content);

// The same for what has been written already, by whichever way to the file.
std::error_code Flush(int descriptor);

}  // namespace orv
