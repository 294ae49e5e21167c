#include "standalone/documents/WriteFileAtomically.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

namespace orv {
namespace {

namespace fs = std::filesystem;

// Other runs may write to the same folder at the same time, and an interrupted one may have left its file.
constexpr int MaxTemporaryNames = 1000;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

std::string InQuotes(const fs::path& path) {
  return fmt::format("\"{}\"", path.string());
}

[[noreturn]] void Fail(const fs::path& path, std::string_view reason) {
  throw OutputError(fmt::format("{}: cannot be written: {}", path.string(), reason));
}

[[noreturn]] void FailFor(const fs::path& path, const fs::path& folder, std::error_code error) {
  if (error == std::errc::permission_denied || error == std::errc::read_only_file_system ||
      error == std::errc::operation_not_permitted) {
    Fail(path, fmt::format("no permission to write in the folder {}. Choose another folder.", InQuotes(folder)));
  }
  if (error == std::errc::no_space_on_device) {
    Fail(path, "the disk is full. Free some space or choose another disk.");
  }
  if (error == std::errc::file_too_large) Fail(path, "it would exceed the largest size that a file may have here.");
  Fail(path, error.message() + ".");
}

std::error_code LastError() {
  return {errno, std::generic_category()};
}

// An empty file of its own, removed again unless it has got its final name.
class TemporaryFile {
 public:
  // Throws OutputError about `target` when no file can be made in the folder.
  TemporaryFile(const fs::path& folder, const fs::path& target) {
    for (int number = 1; number <= MaxTemporaryNames; ++number) {
      m_path = folder / fmt::format(".orvcox-unfinished-{}", number);
      if (File(std::fopen(m_path.c_str(), "wbx"))) return;
      if (errno != EEXIST) FailFor(target, folder, LastError());
    }
    Fail(target, fmt::format("remove the files {} to {} of broken runs.", InQuotes(folder / ".orvcox-unfinished-1"),
                             InQuotes(m_path)));
  }
  ~TemporaryFile() {
    if (m_path.empty()) return;
    std::error_code ignored;  // nothing better can be done, and the first error is on its way
    fs::remove(m_path, ignored);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const fs::path& Path() const { return m_path; }
  void Keep() { m_path.clear(); }

 private:
  fs::path m_path;
};

// Writes everything and closes the file; the last bytes may only fail on closing.
void WriteContent(const std::string& path, std::string_view content) {
  const auto check = [](bool done) {
    if (!done) throw std::system_error(LastError());
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
  if (fs::is_directory(status)) Fail(named, "this is a folder. Name a file in it.");
  const bool exists = fs::exists(status);
  const bool inPlace = exists && !fs::is_regular_file(status);

  fs::path target = named;
  if (exists && !inPlace) target = fs::canonical(named, error);
  if (error && exists) FailFor(named, named.parent_path(), error);
  const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
  if (!fs::is_directory(folder, error)) {
    Fail(named, fmt::format("there is no folder {}. Create it first.", InQuotes(folder)));
  }
  try {
    if (inPlace) return write(path);
    TemporaryFile temporary(folder, named);
    write(temporary.Path().string());
    if (exists) fs::permissions(temporary.Path(), status.permissions());
    fs::rename(temporary.Path(), target);
    temporary.Keep();
  } catch (const std::system_error& failure) {
    FailFor(named, folder, failure.code());
  }
}

}  // namespace orv
