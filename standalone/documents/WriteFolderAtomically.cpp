#include "standalone/documents/WriteFolderAtomically.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "standalone/documents/FolderRecord.h"
#include "standalone/documents/UnfinishedEntry.h"

namespace orv {
namespace {

namespace fs = std::filesystem;

constexpr mode_t FileMode = 0666;

struct FolderPlace {
  fs::path Named;   // as the user named it
  fs::path Target;  // without links and slashes at its end
  fs::path Parent;
  bool Exists = false;
};

FolderPlace FindPlace(const std::string& path) {
  FolderPlace place;
  place.Named = path;
  place.Target = path.substr(0, path.find_last_not_of('/') + 1);
  if (place.Target.empty()) place.Target = "/";
  std::error_code error;
  const fs::file_status status = fs::status(place.Target, error);
  place.Exists = fs::exists(status);
  if (place.Exists && !fs::is_directory(status)) OutputMessages::FailForFileInPlaceOfFolder(place.Named);
  if (place.Exists) place.Target = fs::canonical(place.Target, error);
  if (error && place.Exists) OutputMessages::FailForSystem(place.Named, place.Target, error);
  place.Parent = place.Target.has_parent_path() ? place.Target.parent_path() : fs::path(".");
  if (!fs::is_directory(place.Parent, error)) OutputMessages::FailForMissingFolder(place.Named, place.Parent);
  if (place.Exists) CheckFolderIsReplaceable(place.Target, place.Named);
  return place;
}

std::error_code WriteNewFile(const fs::path& path, std::string_view content) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, FileMode);
  if (file < 0) return LastSystemError();
  const std::error_code error = WriteAndFlush(file, content);
  if (close(file) != 0 && !error) return LastSystemError();
  return error;
}

// Both names lead to a folder before and after, at every moment.
void Exchange(const fs::path& unfinished, const FolderPlace& place) {
  if (renameat2(AT_FDCWD, unfinished.c_str(), AT_FDCWD, place.Target.c_str(), RENAME_EXCHANGE) == 0) return;
  if (errno == EINVAL || errno == ENOSYS) OutputMessages::FailForFolderThatCannotBeReplaced(place.Named);
  OutputMessages::FailForSystem(place.Named, place.Parent, LastSystemError());
}

void Replace(const UnfinishedEntry& unfinished, const FolderPlace& place) {
  std::error_code error;
  fs::permissions(unfinished.Path(), fs::status(place.Target).permissions(), error);
  if (error) OutputMessages::FailForSystem(place.Named, place.Parent, error);
  Exchange(unfinished.Path(), place);
  try {
    // Somebody may have put a file into the old folder in the meantime.
    CheckFolderIsReplaceable(unfinished.Path(), place.Named);
  } catch (const OutputError&) {
    Exchange(unfinished.Path(), place);
    throw;
  }
}

}  // namespace

void CheckFolderTarget(const std::string& path) {
  FindPlace(path);
}

void WriteFolderAtomically(const std::string& path, const std::function<void(const FileSink&)>& writeFiles) {
  const FolderPlace place = FindPlace(path);
  UnfinishedEntry unfinished(UnfinishedEntry::Kind::Folder, place.Parent, place.Named);
  const auto write = [&](const std::string& name, std::string_view content) {
    if (const std::error_code error = WriteNewFile(unfinished.Path() / name, content)) {
      OutputMessages::FailForSystem(place.Named, place.Parent, error);
    }
  };
  FolderRecord record;
  writeFiles([&](const std::string& name, std::string_view content) {
    write(name, content);
    record.Add(name, content);
  });
  write(std::string(FolderRecord::FileName), record.Text());
  if (const std::error_code error = WriteAndFlush(unfinished.Descriptor(), {})) {
    OutputMessages::FailForSystem(place.Named, place.Parent, error);
  }
  // After an exchange it is the old folder that has the temporary name, and that goes.
  if (place.Exists) return Replace(unfinished, place);
  std::error_code error;
  fs::rename(unfinished.Path(), place.Target, error);
  if (error) OutputMessages::FailForSystem(place.Named, place.Parent, error);
  unfinished.Keep();
}

}  // namespace orv
