#include "standalone/documents/WriteFileAtomically.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

#include "standalone/documents/UnfinishedEntry.h"

namespace orv {
namespace {

namespace fs = std::filesystem;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// Writes everything and closes the file; the last bytes may only fail on closing.
std::error_code WriteAndClose(File& file, std::string_view content) {
  if (!content.empty() && std::fwrite(content.data(), 1, content.size(), file.get()) != content.size()) {
    return LastSystemError();
  }
  return std::fclose(file.release()) == 0 ? std::error_code{} : LastSystemError();
}

void WriteInPlace(const fs::path& path, std::string_view content) {
  const auto fail = [&](std::error_code error) { OutputMessages::FailForSystem(path, path.parent_path(), error); };
  File file(std::fopen(path.c_str(), "wb"));
  if (!file) fail(LastSystemError());
  if (const std::error_code error = WriteAndClose(file, content)) fail(error);
}

}  // namespace

void WriteFileAtomically(const std::string& path, std::string_view content) {
  const fs::path named(path);
  std::error_code error;
  const fs::file_status status = fs::status(named, error);
  if (fs::is_directory(status)) OutputMessages::FailForFolderInPlaceOfFile(named);
  const bool exists = fs::exists(status);
  if (exists && !fs::is_regular_file(status)) return WriteInPlace(named, content);

  fs::path target = named;
  if (exists) target = fs::canonical(named, error);
  if (error && exists) OutputMessages::FailForSystem(named, named.parent_path(), error);
  const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
  if (!fs::is_directory(folder, error)) OutputMessages::FailForMissingFolder(named, folder);

  UnfinishedEntry unfinished(UnfinishedEntry::Kind::File, folder, named);
  if (const std::error_code failure = WriteAndFlush(unfinished.Descriptor(), content)) {
    OutputMessages::FailForSystem(named, folder, failure);
  }
  if (exists) {
    fs::permissions(unfinished.Path(), status.permissions(), error);
    if (error) OutputMessages::FailForSystem(named, folder, error);
  }
  fs::rename(unfinished.Path(), target, error);
  if (error) OutputMessages::FailForSystem(named, folder, error);
  unfinished.Keep();
}

}  // namespace orv
