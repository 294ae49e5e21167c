// OutputMessages: what is said when results cannot be written.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace orv {

// A file or folder cannot be written. The text names it, tells the reason and says what to do about it.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Each function throws OutputError. `target` is the file or folder as the user named it.
namespace OutputMessages {

// The system refused. `folder` is where the file was to be made.
[[noreturn]] void FailForSystem(const std::filesystem::path& target,
                                const std::filesystem::path& folder,
                                std::error_code error);
[[noreturn]] void FailForMissingFolder(const std::filesystem::path& target, const std::filesystem::path& folder);
[[noreturn]] void FailForFolderInPlaceOfFile(const std::filesystem::path& target);
[[noreturn]] void FailForFileInPlaceOfFolder(const std::filesystem::path& target);
// The form of output has no room for the results; `reason` says why and what to do.
[[noreturn]] void FailForForm(const std::filesystem::path& target, const std::string& reason);
// All temporary names from `first` to `last` are taken.
[[noreturn]] void FailForTemporaryNames(const std::filesystem::path& target,
                                        const std::filesystem::path& first,
                                        const std::filesystem::path& last);

// The folder to be replaced holds something that this program did not write, or that was changed since.
[[noreturn]] void FailForForeignEntry(const std::filesystem::path& target, const std::string& entry);
[[noreturn]] void FailForChangedEntry(const std::filesystem::path& target, const std::string& entry);
// The file system cannot exchange two folders in one step.
[[noreturn]] void FailForFolderThatCannotBeReplaced(const std::filesystem::path& target);

}  // namespace OutputMessages

// The error of the system call that failed last.
std::error_code LastSystemError();

}  // namespace orv
