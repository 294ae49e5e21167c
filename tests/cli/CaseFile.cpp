#include "cli/CaseFile.h"

#include <charconv>
#include <fstream>
#include <iterator>

namespace orv::testing {

namespace {

constexpr std::string_view kSectionMark = "--- ";
constexpr std::string_view kCommandMark = "$ ";
constexpr std::string_view kProgramName = "orvcox";

bool IsMark(std::string_view line) {
  return line.starts_with(kSectionMark) || line.starts_with(kCommandMark);
}

class CaseParser {
 public:
  CaseParser(std::string_view text, std::filesystem::path root, std::string name)
      : m_rest(text), m_root(std::move(root)), m_name(std::move(name)) {}

  CaseFile Parse() {
    ReadLine();
    while (m_hasLine && !IsMark(m_line)) {
      if (!m_line.empty() && !m_line.starts_with('#')) Fail("a remark starts with #");
      m_case.Remarks.emplace_back(m_line);
      ReadLine();
    }
    while (m_hasLine) ParseSection();
    if (m_case.Commands.empty()) Fail("no command; one starts with \"$ orvcox\"");
    return std::move(m_case);
  }

 private:
  [[noreturn]] void Fail(const std::string& problem) const { FailAt(m_lineNumber, problem); }
  [[noreturn]] void FailAt(int line, const std::string& problem) const {
    throw CaseFileError(m_name + ", line " + std::to_string(line) + ": " + problem + ".");
  }

  void ReadLine() {
    m_hasLine = !m_rest.empty();
    if (!m_hasLine) return;
    const std::size_t end = m_rest.find('\n');
    if (end == std::string_view::npos) FailAt(m_lineNumber + 1, "the last line does not end in a line break");
    m_line = m_rest.substr(0, end);
    m_rest.remove_prefix(end + 1);
    ++m_lineNumber;
  }

  void ParseSection() {
    m_sectionLine = m_lineNumber;
    if (m_line.starts_with(kCommandMark)) return ParseCommand();
    std::vector<std::string> words;
    try {
      words = SplitCommand(m_line.substr(kSectionMark.size()));
    } catch (const CaseFileError& error) {
      Fail(error.what());
    }
    ReadBody();
    m_case.Commands.empty() ? TakeSetting(words) : TakeExpectation(words, m_case.Commands.back());
  }

  // The lines up to the next mark.
  void ReadBody() {
    m_body.clear();
    for (ReadLine(); m_hasLine && !IsMark(m_line); ReadLine()) {
      m_body += m_line;
      m_body += '\n';
    }
  }

  void ParseCommand() {
    CaseCommand command;
    command.Line = m_lineNumber;
    command.Text = m_line.substr(kCommandMark.size());
    std::vector<std::string> words;
    try {
      words = SplitCommand(command.Text);
    } catch (const CaseFileError& error) {
      Fail(error.what());
    }
    if (words.empty() || words[0] != kProgramName) Fail("a command starts with \"$ orvcox\"");
    words.erase(words.begin());
    if (words.size() >= 2 && words[words.size() - 2] == ">") {
      command.StandardOutputTo = words.back();
      words.resize(words.size() - 2);
    }
    command.Arguments = std::move(words);
    ReadBody();
    if (!m_body.empty()) FailAt(m_sectionLine + 1, "a section starts with \"--- \"");
    m_case.Commands.push_back(std::move(command));
  }

  void TakeSetting(const std::vector<std::string>& words) {
    const std::string kind = words.empty() ? "" : words[0];
    if (kind == "file") {
      if (words.size() < 2) FailAt(m_sectionLine, "a file needs a name");
      CaseInput input = TakeInput(words, 2);
      input.Name = words[1];
      m_case.Files.push_back(std::move(input));
    } else if (kind == "folder") {
      RequireNoBody();
      const bool readOnly = words.size() == 3 && words[2] == "read-only";
      if (words.size() != 2 && !readOnly) FailAt(m_sectionLine, "write: folder NAME [read-only]");
      m_case.Folders.push_back({words[1], readOnly});
    } else if (kind == "digits") {
      RequireNoBody();
      m_case.Digits = Number(words);
    } else {
      FailAt(m_sectionLine, "above the first command stand file, folder and digits");
    }
  }

  void TakeExpectation(const std::vector<std::string>& words, CaseCommand& command) {
    const std::string kind = words.empty() ? "" : words[0];
    if (kind == "stdin") {
      command.StandardInput = TakeInput(words, 1);
    } else if (kind == "exit") {
      RequireNoBody();
      command.ExitCode = Number(words);
    } else if (kind == "stdout") {
      command.StandardOutput = TakeExpected(words, 1);
    } else if (kind == "stderr") {
      command.StandardError = TakeExpected(words, 1);
    } else if ((kind == "written" || kind == "unpacked") && words.size() >= 2) {
      command.Written.push_back({words[1], TakeExpected(words, 2), kind == "unpacked"});
    } else if (kind == "absent" && words.size() == 2) {
      RequireNoBody();
      command.Absent.push_back(words[1]);
    } else {
      FailAt(m_sectionLine,
             "below a command stand stdin, exit, stdout, stderr, written NAME, unpacked NAME and absent NAME");
    }
  }

  CaseInput TakeInput(const std::vector<std::string>& words, std::size_t first) const {
    CaseInput input;
    if (words.size() == first) {
      input.Content = m_body;
    } else if (words.size() == first + 1 && words[first] == "escaped") {
      input.WasEscaped = true;
      input.Content = UnescapedBody();
    } else if (words.size() == first + 2 && words[first] == "from") {
      RequireNoBody();
      input.From = words[first + 1];
      input.Content = FileOfRepository(input.From);
    } else {
      FailAt(m_sectionLine, "an input is followed by nothing, by escaped, or by from FILE");
    }
    return input;
  }

  ExpectedText TakeExpected(const std::vector<std::string>& words, std::size_t first) const {
    ExpectedText expected;
    if (words.size() == first) {
      expected.Content = m_body;
    } else if (words.size() == first + 1 && words[first] == "escaped") {
      expected.Content = UnescapedBody();
    } else if (words.size() == first + 1 && words[first] == "any") {
      RequireNoBody();
      expected.HowToCompare = ExpectedText::Rule::Any;
    } else if (words.size() == first + 2 && words[first] == "as" && words[first + 1] == "before") {
      RequireNoBody();
      expected.HowToCompare = ExpectedText::Rule::AsBefore;
    } else {
      FailAt(m_sectionLine, "an output is followed by nothing, by escaped, by any, or by as before");
    }
    return expected;
  }

  std::string UnescapedBody() const {
    try {
      return Unescape(m_body);
    } catch (const CaseFileError& error) {
      FailAt(m_sectionLine, error.what());
    }
  }

  std::string FileOfRepository(const std::string& path) const {
    std::ifstream file(m_root / path, std::ios::binary);
    if (!file) FailAt(m_sectionLine, "there is no file " + path);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  void RequireNoBody() const {
    if (!m_body.empty()) FailAt(m_sectionLine, "nothing may stand below this line but another section");
  }

  int Number(const std::vector<std::string>& words) const {
    int number = 0;
    const std::string text = words.size() == 2 ? words[1] : "";
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) FailAt(m_sectionLine, "a whole number is needed");
    return number;
  }

  std::string_view m_rest;
  std::filesystem::path m_root;
  std::string m_name;
  std::string_view m_line;
  bool m_hasLine = false;
  int m_lineNumber = 0;
  int m_sectionLine = 0;
  std::string m_body;
  CaseFile m_case;
};

// ---- Writing
// ----------------------------------------------------------------------------------------------------------

std::string Section(const std::string& head) {
  return std::string(kSectionMark) + head + '\n';
}

std::string NameWord(const std::string& name) {
  return name.find_first_of(" '\"\\") == std::string::npos ? name : "'" + name + "'";
}

bool NeedsEscapes(std::string_view content) {
  if (!IsPlainText(content)) return true;
  while (!content.empty()) {
    if (IsMark(content)) return true;
    content.remove_prefix(content.find('\n') + 1);
  }
  return false;
}

std::string FormatInput(const std::string& head, const CaseInput& input) {
  if (!input.From.empty()) return Section(head + " from " + NameWord(input.From));
  if (input.WasEscaped || NeedsEscapes(input.Content)) return Section(head + " escaped") + Escape(input.Content);
  return Section(head) + input.Content;
}

std::string FormatExpected(const std::string& head, const ExpectedText& expected) {
  switch (expected.HowToCompare) {
    case ExpectedText::Rule::Any:
      return Section(head + " any");
    case ExpectedText::Rule::AsBefore:
      return Section(head + " as before");
    case ExpectedText::Rule::Exact:
      break;
  }
  if (NeedsEscapes(expected.Content)) return Section(head + " escaped") + Escape(expected.Content);
  return Section(head) + expected.Content;
}

bool IsDefault(const ExpectedText& expected) {
  return expected.HowToCompare == ExpectedText::Rule::Exact && expected.Content.empty();
}

}  // namespace

CaseFile ParseCase(std::string_view text, const std::filesystem::path& root, const std::string& name) {
  return CaseParser(text, root, name).Parse();
}

std::string FormatCase(const CaseFile& file) {
  std::string text;
  for (const std::string& remark : file.Remarks) text += remark + '\n';
  if (file.Digits > 0) text += Section("digits " + std::to_string(file.Digits));
  for (const CaseFolder& folder : file.Folders) {
    text += Section("folder " + NameWord(folder.Name) + (folder.ReadOnly ? " read-only" : ""));
  }
  for (const CaseInput& input : file.Files) text += FormatInput("file " + NameWord(input.Name), input);
  for (const CaseCommand& command : file.Commands) {
    text += std::string(kCommandMark) + command.Text + '\n';
    if (command.StandardInput) text += FormatInput("stdin", *command.StandardInput);
    if (command.ExitCode != 0) text += Section("exit " + std::to_string(command.ExitCode));
    if (!IsDefault(command.StandardOutput)) text += FormatExpected("stdout", command.StandardOutput);
    if (!IsDefault(command.StandardError)) text += FormatExpected("stderr", command.StandardError);
    for (const ExpectedFile& written : command.Written) {
      const std::string kind = written.IsUnpacked ? "unpacked " : "written ";
      text += FormatExpected(kind + NameWord(written.Name), written.Text);
    }
    for (const std::string& absent : command.Absent) text += Section("absent " + NameWord(absent));
  }
  return text;
}

std::vector<std::string> SplitCommand(std::string_view command) {
  std::vector<std::string> words;
  std::string word;
  bool inWord = false;
  char quote = 0;
  for (std::size_t i = 0; i < command.size(); ++i) {
    const char c = command[i];
    if (quote != 0) {
      const char next = i + 1 < command.size() ? command[i + 1] : ' ';
      if (c == quote) {
        quote = 0;
      } else if (c == '\\' && quote == '"' && (next == '"' || next == '\\')) {
        word += next;
        ++i;
      } else {
        word += c;
      }
    } else if (c == '\'' || c == '"') {
      quote = c;
      inWord = true;
    } else if (c == ' ') {
      if (inWord) words.push_back(std::move(word));
      word.clear();
      inWord = false;
    } else {
      word += c;
      inWord = true;
    }
  }
  if (quote != 0) throw CaseFileError("a quote is not closed");
  if (inWord) words.push_back(std::move(word));
  return words;
}

}  // namespace orv::testing
