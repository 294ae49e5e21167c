#include "apps/orvcox/pages/ManualPage.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace orv::pages {

namespace {

constexpr std::string_view kExitCodes = "Exit codes: ";
constexpr std::size_t kLongestLine = 78;

std::string UpperCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  return text;
}

std::string WithoutFullStop(std::string text) {
  if (text.ends_with('.')) text.pop_back();
  return text;
}

std::string Bold(std::string_view text) {
  return "\\fB" + RoffText(text) + "\\fR";
}

std::string Italic(std::string_view text) {
  return "\\fI" + RoffText(text) + "\\fR";
}

class PageWriter {
 public:
  void Line(std::string_view text) { fmt::format_to(std::back_inserter(m_page), "{}\n", text); }
  void Section(std::string_view name) { Line(fmt::format(".SH \"{}\"", RoffText(name))); }
  void Subsection(std::string_view name) { Line(fmt::format(".SS \"{}\"", RoffText(name))); }
  void Paragraph(std::string_view text) {
    Line(".PP");
    Text(text);
  }
  // `term` is roff already.
  void Item(std::string_view term, std::string_view text) {
    Line(".TP");
    Line(term);
    Text(text);
  }
  // Filled by roff; broken here for who reads the source.
  void Text(std::string_view text) {
    while (text.size() > kLongestLine) {
      const std::size_t blank = text.rfind(' ', kLongestLine);
      if (blank == std::string_view::npos) break;
      Line(RoffText(text.substr(0, blank)));
      text.remove_prefix(blank + 1);
    }
    Line(RoffText(text));
  }
  void AsTheyAre(const std::vector<std::string>& lines) {
    Line(".RS 4");
    Line(".nf");
    for (const std::string& line : lines) Line(RoffText(line));
    Line(".fi");
    Line(".RE");
  }
  std::string Take() { return std::move(m_page); }

 private:
  std::string m_page;
};

void WriteOption(PageWriter& page, const OptionOutline& option) {
  std::string term;
  for (const std::string& name : option.Names) term += (term.empty() ? "" : ", ") + Bold(name);
  if (!option.Values.empty()) term += fmt::format(" {}", Italic(option.Values));
  std::string help = WithoutFullStop(option.Help) + ".";
  if (option.IsRepeatable && help.find("repeatable") == std::string::npos) help += " Repeatable.";
  page.Item(term, help);
}

void WriteSynopsis(PageWriter& page, const ProgramOutline& outline) {
  const std::string& program = outline.Program.Name;
  std::vector<std::string> lines;
  for (const CommandOutline& command : outline.Commands) {
    std::string line = fmt::format("{} [{}]", Bold(program + " " + command.Name), Italic("OPTIONS"));
    for (const ArgumentOutline& argument : command.Arguments) line += fmt::format(" {}", Italic(argument.Name));
    lines.push_back(std::move(line));
  }
  for (const GroupOutline& group : outline.Program.Groups) {
    for (const OptionOutline& option : group.Options) lines.push_back(Bold(program + " " + option.Names.back()));
  }
  page.Section("SYNOPSIS");
  page.Line(fmt::format("{}", fmt::join(lines, "\n.br\n")));
}

void WriteCommand(PageWriter& page, const std::string& program, const CommandOutline& command) {
  page.Section(UpperCase(program + " " + command.Name));
  page.Text(command.Description);
  for (const ArgumentOutline& argument : command.Arguments) {
    page.Item(Italic(argument.Name), WithoutFullStop(argument.Help) + ".");
  }
  for (const NoteOutline& note : command.Notes) {
    if (note.Heading.empty()) page.Paragraph(note.Lines[0]);
  }
  for (const GroupOutline& group : command.Groups) {
    page.Subsection(group.Name);
    for (const OptionOutline& option : group.Options) WriteOption(page, option);
  }
  for (const NoteOutline& note : command.Notes) {
    if (note.Heading.empty()) continue;
    page.Subsection(note.Heading);
    page.AsTheyAre(note.Lines);
  }
}

// "Exit codes: 0 done; 1 failed." as a list.
void WriteExitCodes(PageWriter& page, std::string_view codes) {
  page.Section("EXIT STATUS");
  codes.remove_prefix(kExitCodes.size());
  while (!codes.empty()) {
    const std::size_t end = std::min(codes.find("; "), codes.size());
    const std::string_view code = codes.substr(0, end);
    const std::size_t blank = std::min(code.find(' '), code.size());
    page.Item(Bold(code.substr(0, blank)),
              WithoutFullStop(std::string(code.substr(std::min(blank + 1, code.size())))) + ".");
    codes.remove_prefix(std::min(end + 2, codes.size()));
  }
}

void WriteProgramNotes(PageWriter& page, const std::vector<NoteOutline>& notes) {
  for (const NoteOutline& note : notes) {
    if (note.Heading.empty() && note.Lines[0].starts_with(kExitCodes)) {
      WriteExitCodes(page, note.Lines[0]);
    } else {
      page.Section(UpperCase(note.Heading.empty() ? "Notes" : note.Heading));
      note.Heading.empty() ? page.Text(note.Lines[0]) : page.AsTheyAre(note.Lines);
    }
  }
}

}  // namespace

std::string RoffText(std::string_view line) {
  std::string text;
  if (line.starts_with('.')) text = "\\&";
  for (const char c : line) {
    switch (c) {
      case '\\':
        text += "\\e";
        break;
      case '-':
        text += "\\-";
        break;
      case '\'':
        text += "\\(aq";
        break;
      case '"':
        text += "\\(dq";
        break;
      case '`':
        text += "\\(ga";
        break;
      case '^':
        text += "\\(ha";
        break;
      case '~':
        text += "\\(ti";
        break;
      default:
        text += c;
    }
  }
  return text;
}

std::string WriteManualPage(const ProgramOutline& outline) {
  const CommandOutline& program = outline.Program;
  PageWriter page;
  page.Line(".\\\" Written from the declaration of the program's options.");
  page.Line(
      fmt::format(".TH {} 1 \"\" \"{} {}\" \"User Commands\"", UpperCase(program.Name), program.Name, outline.Version));
  // Hyphens and stretched lines would break up names of options.
  page.Line(".nh");
  page.Line(".ad l");
  page.Section("NAME");
  page.Line(RoffText(program.Name) + " \\- " + RoffText(WithoutFullStop(program.Description)));
  WriteSynopsis(page, outline);
  page.Section("DESCRIPTION");
  page.Text("Reads a table, fits a Cox proportional hazards model to its cases, and writes the results.");
  page.Text("Results go to standard output; messages, notes and progress to standard error.");
  page.Text("The first argument is a command:");
  for (const CommandOutline& command : outline.Commands) page.Item(Bold(command.Name), command.Description);
  for (const GroupOutline& group : program.Groups) {
    page.Section(UpperCase(group.Name));
    for (const OptionOutline& option : group.Options) WriteOption(page, option);
  }
  for (const CommandOutline& command : outline.Commands) WriteCommand(page, program.Name, command);
  WriteProgramNotes(page, program.Notes);
  page.Section("ENVIRONMENT");
  page.Item(Bold("NO_COLOR"), "When set, nothing is written in bold type on a terminal.");
  return page.Take();
}

}  // namespace orv::pages
