#include "apps/orvcox/pages/ProgramOutline.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace orv::pages {

namespace {

constexpr std::string_view kIndent = "  ";  // of lines below a heading

std::string OnOneLine(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

std::vector<std::string> Split(std::string_view text, std::string_view separator) {
  std::vector<std::string> parts;
  while (true) {
    const std::size_t end = text.find(separator);
    parts.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + separator.size());
  }
}

OptionOutline OutlineOption(const CLI::Option& option, const WordsOfOptions& words) {
  OptionOutline outline;
  for (const std::string& name : option.get_snames()) outline.Names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) outline.Names.push_back("--" + name);
  outline.ValueCount = option.get_items_expected_max();
  if (outline.ValueCount > 0) outline.Values = option.get_type_name();
  outline.IsRepeatable = option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
  outline.TakesFile = outline.Values.find("FILE") != std::string::npos;
  if (const auto found = words.find(&option); found != words.end()) outline.Words = found->second;
  outline.Help = OnOneLine(option.get_description());
  return outline;
}

// "Examples:" and indented lines, or running text.
NoteOutline OutlineNote(const std::string& paragraph) {
  std::vector<std::string> lines = Split(paragraph, "\n");
  const bool hasHeading = lines.size() > 1 && lines[0].ends_with(':') && lines[1].starts_with(kIndent);
  if (!hasHeading) return {"", {OnOneLine(paragraph)}};
  NoteOutline note{lines[0].substr(0, lines[0].size() - 1), {}};
  for (std::size_t k = 1; k < lines.size(); ++k) {
    note.Lines.push_back(lines[k].starts_with(kIndent) ? lines[k].substr(kIndent.size()) : lines[k]);
  }
  return note;
}

CommandOutline OutlineCommand(const CLI::App& command, const WordsOfOptions& words) {
  CommandOutline outline;
  outline.Name = command.get_name();
  outline.Description = OnOneLine(command.get_description());
  for (const std::string& name : command.get_groups()) {
    GroupOutline group{name, {}};
    for (const CLI::Option* option : command.get_options()) {
      if (option->get_group() == name && option->nonpositional())
        group.Options.push_back(OutlineOption(*option, words));
    }
    if (!group.Options.empty()) outline.Groups.push_back(std::move(group));
  }
  for (const CLI::Option* option : command.get_options()) {
    if (!option->get_positional()) continue;
    outline.Arguments.push_back({option->get_name(true), OnOneLine(option->get_description())});
  }
  const std::string footer = command.get_footer();
  if (footer.empty()) return outline;
  for (const std::string& paragraph : Split(footer, "\n\n")) outline.Notes.push_back(OutlineNote(paragraph));
  return outline;
}

}  // namespace

ProgramOutline OutlineProgram(const CLI::App& program, const WordsOfOptions& words, const std::string& version) {
  ProgramOutline outline;
  outline.Version = version;
  outline.Program = OutlineCommand(program, words);
  // Not those that a line has called, but all.
  const auto all = [](const CLI::App*) { return true; };
  for (const CLI::App* command : program.get_subcommands(all)) {
    outline.Commands.push_back(OutlineCommand(*command, words));
  }
  return outline;
}

}  // namespace orv::pages
