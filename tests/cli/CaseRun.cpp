#include "cli/CaseRun.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "cli/CompareOutput.h"
#include "cli/RunningProgram.h"
#include "cli/TemporaryFolder.h"
#include "support/ZipListing.h"

namespace orv::testing {

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::minutes kLongestCommand{1};
constexpr std::string_view kUnfinishedFile = ".orvcox-unfinished";

class Descriptor {
 public:
  Descriptor(const fs::path& path, int flags) : m_number(open(path.c_str(), flags | O_CLOEXEC, 0600)) {
    if (m_number < 0) throw std::system_error(errno, std::generic_category(), path);
  }
  ~Descriptor() { close(m_number); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Number() const { return m_number; }

 private:
  int m_number;
};

void WriteBytes(const fs::path& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary);
  file << content;
  if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

std::string ReadBytes(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class CasePlay {
 public:
  CasePlay(const CaseFile& file, fs::path program)
      : m_case(file), m_program(std::move(program)), m_folder(m_place.Path() / "run") {
    fs::create_directory(m_folder);
    for (const CaseFolder& folder : m_case.Folders) fs::create_directories(m_folder / folder.Name);
    for (const CaseInput& input : m_case.Files) WriteBytes(m_folder / input.Name, input.Content);
    for (const CaseFolder& folder : m_case.Folders) {
      if (folder.ReadOnly) fs::permissions(m_folder / folder.Name, fs::perms::owner_read | fs::perms::owner_exec);
    }
  }

  CaseOutcome Play() {
    m_outcome.Actual = m_case;
    for (CaseCommand& command : m_outcome.Actual.Commands) Play(command);
    return m_outcome;
  }

 private:
  // `command` is compared and then filled with what was found.
  void Play(CaseCommand& command) {
    const fs::path input = m_place.Path() / "stdin";
    const fs::path output = m_place.Path() / "stdout";
    const fs::path errors = m_place.Path() / "stderr";
    WriteBytes(input, command.StandardInput ? command.StandardInput->Content : "");
    const fs::path outputTo = command.StandardOutputTo.empty() ? output : m_folder / command.StandardOutputTo;
    WriteBytes(output, "");
    {
      const int create = O_WRONLY | O_CREAT | O_TRUNC;
      const Descriptor in(input, O_RDONLY);
      const Descriptor out(outputTo, create);
      const Descriptor err(errors, create);
      RunningProgram run({m_program, command.Arguments, m_folder, in.Number(), out.Number(), err.Number()});
      if (!run.WaitFor(kLongestCommand)) {
        Problem(command, "it had not ended after a minute\n");
        return;
      }
      if (run.ExitCode() != command.ExitCode) {
        Problem(command, "expected exit code " + std::to_string(command.ExitCode) + ", but got " +
                             std::to_string(run.ExitCode()) + "\n");
      }
      command.ExitCode = run.ExitCode();
    }
    Compare(command, "stdout", command.StandardOutput, ReadBytes(output), &m_standardOutput);
    Compare(command, "stderr", command.StandardError, ReadBytes(errors), &m_standardError);
    CompareFiles(command);
  }

  void CompareFiles(CaseCommand& command) {
    for (ExpectedFile& written : command.Written) {
      if (!fs::exists(m_folder / written.Name)) {
        Problem(command, "the file " + written.Name + " was not written\n");
        continue;
      }
      std::string content = ReadBytes(m_folder / written.Name);
      if (written.IsUnpacked) content = ListZip(content);
      Compare(command, written.Name, written.Text, std::move(content), nullptr);
    }
    for (const std::string& absent : command.Absent) {
      if (fs::exists(m_folder / absent)) Problem(command, "the file " + absent + " is there\n");
    }
    for (const auto& entry : fs::recursive_directory_iterator(m_folder)) {
      const std::string name = entry.path().filename().string();
      if (name.starts_with(kUnfinishedFile)) Problem(command, "the unfinished file " + name + " was left behind\n");
    }
  }

  void Compare(const CaseCommand& command,
               const std::string& what,
               ExpectedText& expected,
               std::string actual,
               std::string* before) {
    std::string difference;
    if (expected.HowToCompare == ExpectedText::Rule::Exact) {
      difference = CompareOutput(expected.Content, actual, m_case.Digits);
      if (!difference.empty()) expected.Content = actual;
    } else if (expected.HowToCompare == ExpectedText::Rule::AsBefore) {
      if (before == nullptr) throw CaseFileError("\"as before\" is for stdout and stderr");
      difference = CompareOutput(*before, actual, 0);
    }
    if (!difference.empty()) Problem(command, what + ", " + difference + "  the whole " + what + ":\n" + actual);
    if (before != nullptr) *before = std::move(actual);
  }

  void Problem(const CaseCommand& command, const std::string& text) {
    m_outcome.Problems += "$ " + command.Text + "\n" + text;
  }

  const CaseFile& m_case;
  fs::path m_program;
  TemporaryFolder m_place;
  fs::path m_folder;
  CaseOutcome m_outcome;
  std::string m_standardOutput;  // of the command before
  std::string m_standardError;
};

}  // namespace

CaseOutcome RunCase(const CaseFile& file, const std::filesystem::path& program) {
  return CasePlay(file, program).Play();
}

}  // namespace orv::testing
