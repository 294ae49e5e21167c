#include <fmt/format.h>
#include <fmt/ranges.h>

#include <sstream>
#include <string>

#include "apps/orvcox/pages/ShellCompletion.h"

namespace orv::pages {

namespace {

constexpr std::string_view kBody = R"(
_{0}() {{
  local curcontext=$curcontext state state_descr line
  typeset -A opt_args
  _arguments -C \
{1}    '1:command:->command' \
    '*::argument:->argument' && return
  case $state in
    command)
      local -a commands=(
{2}      )
      _describe -t commands command commands
      ;;
    argument)
      (( $+functions[_{0}_$line[1]] )) || return
      curcontext=${{curcontext%:*}}-$line[1]:
      _{0}_$line[1]
      ;;
  esac
}}

_{0} "$@"
)";

// Within a specification a colon ends a part and brackets enclose the help.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\\' || c == ':' || c == '[' || c == ']') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

// What completes a value; a blank shows its name alone.
std::string ActionOf(const OptionOutline& option) {
  if (option.TakesFile) return "_files";
  if (option.Words.Words.empty()) return " ";
  const std::string words = fmt::format("{}", fmt::join(option.Words.Words, " "));
  return option.Words.IsList ? "_sequence compadd - " + words : "(" + words + ")";
}

// ":NAME:action" for each value, so that the second of "START STOP" is asked for by its own name.
std::string ValuesOf(const OptionOutline& option) {
  std::string values;
  std::istringstream names(option.Values);
  for (int value = 0; value < option.ValueCount; ++value) {
    std::string name = option.Values;
    if (option.ValueCount > 1) names >> name;
    values += fmt::format(":{}:{}", Escaped(name), ActionOf(option));
  }
  return values;
}

std::string SpecificationsOf(const OptionOutline& option) {
  std::string lines;
  for (const std::string& name : option.Names) {
    // Of several names one excludes the others.
    const bool excludes = option.Names.size() > 1 && !option.IsRepeatable;
    const std::string exclusion = excludes ? fmt::format("({})", fmt::join(option.Names, " ")) : "";
    lines += "    " +
             QuotedForShell(fmt::format("{}{}{}{}[{}]{}", option.IsRepeatable ? "*" : "", exclusion, name,
                                        option.ValueCount > 0 ? "=" : "", Escaped(option.Help), ValuesOf(option))) +
             " \\\n";
  }
  return lines;
}

std::string SpecificationsOf(const CommandOutline& command) {
  std::string lines;
  for (const GroupOutline& group : command.Groups) {
    for (const OptionOutline& option : group.Options) lines += SpecificationsOf(option);
  }
  return lines;
}

}  // namespace

std::string WriteZshCompletion(const ProgramOutline& outline) {
  const std::string& program = outline.Program.Name;
  std::string text = fmt::format(
      "#compdef {0}\n# Completion of {0} in zsh. Written from the declaration of the "
      "program's options.\n",
      program);
  std::string commands;
  for (const CommandOutline& command : outline.Commands) {
    commands += "        " + QuotedForShell(command.Name + ":" + Escaped(command.Description)) + "\n";
    text += fmt::format("\n_{}_{}() {{\n  _arguments \\\n{}", program, command.Name, SpecificationsOf(command));
    for (std::size_t k = 0; k < command.Arguments.size(); ++k) {
      const bool isLast = k + 1 == command.Arguments.size();
      text += fmt::format("    {}{}\n", QuotedForShell(fmt::format("{}:{}:_files", k + 1, command.Arguments[k].Name)),
                          isLast ? "" : " \\");
    }
    text += "}\n";
  }
  return text + fmt::format(kBody, program, SpecificationsOf(outline.Program), commands);
}

}  // namespace orv::pages
