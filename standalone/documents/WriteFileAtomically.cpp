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
void WriteContent(const std::string& path, std::string_view content) {
  const auto check = [](bool done) {
    if (!done) throw std::system_error(LastSystemError());
  };
  File file(std::fopen(path.c_str(), "wb"));
  check(file != nullptr);
  check(content.empty() || std::fwrite(content.data(), 1, content.size(), file.get()) == content.size());
  check(std::fclose(file.release()) == 0);
}

}  // namespace

void WriteFileAtomically(const std::string& path, std::string_view content) {
  WriteFileAtomically(path, [content](const std::string& file) { WriteContent(file, content); });
}

void WriteFileAtomically(const std::string& path, const std::function<void(const std::string&)>& write) {
  const fs::path named(path);
  std::error_code error;
  const fs::file_status status = fs::status(named, error);
  if (fs::is_directory(status)) OutputMessages::FailForFolderInPlaceOfFile(named);
  const bool exists = fs::exists(status);
  const bool inPlace = exists && !fs::is_regular_file(status);

  fs::path target = named;
  if (exists && !inPlace) target = fs::canonical(named, error);
  if (error && exists) OutputMessages::FailForSystem(named, named.parent_path(), error);
  const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
  if (!fs::is_directory(folder, error)) OutputMessages::FailForMissingFolder(named, folder);
  try {
    if (inPlace) return write(path);
    UnfinishedEntry unfinished(UnfinishedEntry::Kind::File, folder, named);
    write(unfinished.Path().string());
    if (const std::error_code failure = Flush(unfinished.Descriptor())) throw std::system_error(failure);
    if (exists) fs::permissions(unfinished.Path(), status.permissions());
    fs::rename(unfinished.Path(), target);
    unfinished.Keep();
  } catch (const std::system_error& failure) {
    OutputMessages::FailForSystem(named, folder, failure.code());
  }
}

}  // namespace orv
