// CaseFile: a session on the command line as a text file: commands, input files, expected outputs. The form is told in
// README.md.
#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orv::testing {

// A case that is not written as README.md says. what() names the file and the line.
class CaseFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Bytes that a case puts into a file or feeds to a program.
struct CaseInput {
  std::string Name;     // of the file in the case's folder; empty for standard input
  std::string Content;  // the bytes themselves
  std::string From;     // the file of the repository that they come from, empty when they stand in the case
  bool WasEscaped = false;
};

struct CaseFolder {
  std::string Name;
  bool ReadOnly = false;
};

// Bytes that a case expects.
struct ExpectedText {
  enum class Rule { Exact, Any, AsBefore };
  Rule HowToCompare = Rule::Exact;
  std::string Content;
};

struct ExpectedFile {
  std::string Name;
  ExpectedText Text;
  bool IsUnpacked = false;  // the text lists what a ZIP file holds (support/ZipListing.h)
};

struct CaseCommand {
  int Line = 0;                        // of the case file
  std::string Text;                    // as written, without "$ "
  std::vector<std::string> Arguments;  // without the program's name
  std::string StandardOutputTo;        // the file behind ">", empty when the output is looked at
  std::optional<CaseInput> StandardInput;
  int ExitCode = 0;
  ExpectedText StandardOutput;
  ExpectedText StandardError;
  std::vector<ExpectedFile> Written;
  std::vector<std::string> Absent;
};

struct CaseFile {
  std::vector<std::string> Remarks;  // the lines above the first section
  int Digits = 0;                    // numbers agree to so many digits; 0 when they have to be the same to the letter
  std::vector<CaseInput> Files;
  std::vector<CaseFolder> Folders;
  std::vector<CaseCommand> Commands;
};

// Parses a case. `root` is the folder that "from" starts at, `name` the case's name in messages. Throws CaseFileError.
CaseFile ParseCase(std::string_view text, const std::filesystem::path& root, const std::string& name);

// The case as text again: ParseCase gives the same back.
std::string FormatCase(const CaseFile& file);

// The words of a command: separated by blanks; '...' and "..." keep them together, within "..." a backslash before " or
// \ stands for that character. Throws CaseFileError for a quote that is not closed.
std::vector<std::string> SplitCommand(std::string_view command);

// Text with \n \r \t \0 \\ \xHH and a backslash at the end of a line, which takes the line break away. Throws
// CaseFileError for any other backslash.
std::string Unescape(std::string_view text);

// The inverse, in lines; only what cannot stand as it is gets escaped.
std::string Escape(std::string_view bytes);

// True for whole lines of printable characters.
bool IsPlainText(std::string_view bytes);

}  // namespace orv::testing
