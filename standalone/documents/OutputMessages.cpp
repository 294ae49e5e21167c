#include "standalone/documents/OutputMessages.h"

#include <fmt/format.h>

#include <cerrno>
#include <string_view>

namespace orv {
namespace {

std::string InQuotes(const std::filesystem::path& path) {
  return fmt::format("\"{}\"", path.string());
}

[[noreturn]] void Fail(const std::filesystem::path& target, std::string_view reason) {
  throw OutputError(fmt::format("{}: cannot be written: {}", target.string(), reason));
}

}  // namespace

namespace OutputMessages {

void FailForSystem(const std::filesystem::path& target, const std::filesystem::path& folder, std::error_code error) {
  if (error == std::errc::permission_denied || error == std::errc::read_only_file_system ||
      error == std::errc::operation_not_permitted) {
    Fail(target, fmt::format("no permission to write in the folder {}. Choose another folder.", InQuotes(folder)));
  }
  if (error == std::errc::no_space_on_device) {
    Fail(target, "the disk is full. Free some space or choose another disk.");
  }
  if (error == std::errc::file_too_large) Fail(target, "it would exceed the largest size that a file may have here.");
  Fail(target, error.message() + ".");
}

void FailForMissingFolder(const std::filesystem::path& target, const std::filesystem::path& folder) {
  Fail(target, fmt::format("there is no folder {}. Create it first.", InQuotes(folder)));
}

void FailForFolderInPlaceOfFile(const std::filesystem::path& target) {
  Fail(target, "this is a folder. Name a file in it.");
}

void FailForFileInPlaceOfFolder(const std::filesystem::path& target) {
  Fail(target, "this is a file. Name a folder.");
}

void FailForForm(const std::filesystem::path& target, const std::string& reason) {
  Fail(target, reason);
}

void FailForTemporaryNames(const std::filesystem::path& target,
                           const std::filesystem::path& first,
                           const std::filesystem::path& last) {
  Fail(target, fmt::format("remove the files {} to {} of broken runs.", InQuotes(first), InQuotes(last)));
}

void FailForForeignEntry(const std::filesystem::path& target, const std::string& entry) {
  Fail(target, fmt::format("the folder holds {}, which this program did not write, and would be replaced as a whole. "
                           "Name another folder, or move that away.",
                           InQuotes(entry)));
}

void FailForChangedEntry(const std::filesystem::path& target, const std::string& entry) {
  Fail(target, fmt::format("{} in this folder was changed since this program wrote it, and would be lost. Name another "
                           "folder, or move that file away.",
                           InQuotes(entry)));
}

void FailForFolderThatCannotBeReplaced(const std::filesystem::path& target) {
  Fail(target,
       "there is a folder already, and this file system cannot replace it in one step. Name a new folder, or remove "
       "the old one first.");
}

}  // namespace OutputMessages

std::error_code LastSystemError() {
  return {errno, std::generic_category()};
}

}  // namespace orv
