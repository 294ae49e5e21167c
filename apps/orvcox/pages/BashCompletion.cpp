#include <fmt/format.h>
#include <fmt/ranges.h>

#include <string>
#include <vector>

#include "apps/orvcox/pages/ShellCompletion.h"

namespace orv::pages {

namespace {

// bash breaks the line at "=" and ":" as well as at blanks, so that an option, its "=" and its value are three words.
// The walk over the words up to the cursor joins what belongs together; $PROGRAM stands for the name of the program.
constexpr std::string_view kWalk = R"(
# Sets command, option (of which a value is still to come, or empty), given (the options up to here) and arguments
# (their number). Fails when the cursor stands in the middle of a value.
_$PROGRAM_walk() {
  local values=0 joined= k word count repeatable list files words
  command= option= given=' ' arguments=0
  for ((k = 1; k <= COMP_CWORD; ++k)); do
    word=${COMP_WORDS[k]}
    if [[ $word =~ ^[=:@]+$ ]]; then
      # Right behind an option it opens the value; anywhere else the value goes on behind it.
      if [[ -z $option || -n $joined || $word != = ]]; then
        ((++k))
        ((k < COMP_CWORD)) || return 1
      fi
      joined=1
      continue
    fi
    ((k < COMP_CWORD)) || return 0
    joined=
    if [[ -z $command ]]; then
      command=$word
    elif ((values > 0)) && [[ $word != --* ]]; then
      ((--values)) || option=
      joined=1
    elif [[ $word == -?* ]]; then
      _$PROGRAM_option "$command" "$word"
      [[ -n $repeatable ]] || given+="$word "
      values=$count option=
      ((count == 0)) || option=$word
    else
      ((++arguments))
      option= values=0
    fi
  done
}

_$PROGRAM() {
  local command option given arguments count repeatable list files words word head
  local current=${COMP_WORDS[COMP_CWORD]}
  COMPREPLY=()
  [[ $current =~ ^[=:@]+$ ]] && current=
  if ! _$PROGRAM_walk; then
    compopt +o default +o bashdefault
    return
  fi
  if [[ -n $option && $current != --* ]]; then
    _$PROGRAM_option "$command" "$option"
  elif [[ -z $command || $current == -* ]] || ((arguments >= $(_$PROGRAM_arguments "$command"))); then
    compopt +o default +o bashdefault
    for word in $(_$PROGRAM_names "$command"); do
      [[ -z $command && $current != -* && $word == -* ]] || [[ $given == *" $word "* || $word != "$current"* ]] ||
        COMPREPLY+=("$word")
    done
    return
  else
    files=1
  fi
  # Without a reply bash completes the names of files, quotes and folders included.
  [[ -n $files ]] && return
  compopt +o default +o bashdefault
  head=
  if [[ -n $list && $current == *,* ]]; then
    head=${current%,*},
    current=${current##*,}
  fi
  [[ -z $list ]] || compopt -o nospace
  for word in $words; do
    [[ ",$head" == *",$word,"* || $word != "$current"* ]] || COMPREPLY+=("$head$word")
  done
}

complete -o bashdefault -o default -F _$PROGRAM $PROGRAM
)";

std::string WithProgram(std::string_view text, const std::string& program) {
  constexpr std::string_view kPlace = "$PROGRAM";
  std::string filled(text);
  for (std::size_t at = filled.find(kPlace); at != std::string::npos; at = filled.find(kPlace, at + program.size())) {
    filled.replace(at, kPlace.size(), program);
  }
  return filled;
}

std::string NamesOf(const CommandOutline& command) {
  std::string names;
  for (const GroupOutline& group : command.Groups) {
    for (const OptionOutline& option : group.Options) names += fmt::format(" {}", fmt::join(option.Names, " "));
  }
  return names;
}

std::string LineOf(const std::string& command, const OptionOutline& option) {
  std::vector<std::string> patterns;
  for (const std::string& name : option.Names) patterns.push_back(fmt::format("{}/{}", command, name));
  std::string line = fmt::format("    {}) count={}", fmt::join(patterns, " | "), option.ValueCount);
  if (option.IsRepeatable) line += " repeatable=1";
  if (option.TakesFile) line += " files=1";
  if (option.Words.IsList) line += " list=1";
  if (!option.Words.Words.empty()) {
    line += " words=" + QuotedForShell(fmt::format("{}", fmt::join(option.Words.Words, " ")));
  }
  return line + " ;;\n";
}

}  // namespace

std::string WriteBashCompletion(const ProgramOutline& outline) {
  const std::string& program = outline.Program.Name;
  std::string text =
      fmt::format("# Completion of {} in bash. Written from the declaration of the program's options.\n", program);
  text += fmt::format(
      "\n# What may begin a word: commands and options without a command, or the options of one.\n"
      "_{}_names() {{\n  case $1 in\n",
      program);
  std::vector<std::string> commands;
  for (const CommandOutline& command : outline.Commands) commands.push_back(command.Name);
  text += fmt::format("    '') echo {}{} ;;\n", fmt::join(commands, " "), NamesOf(outline.Program));
  for (const CommandOutline& command : outline.Commands) {
    text += fmt::format("    {}) echo{} ;;\n", command.Name, NamesOf(command));
  }
  text += fmt::format("  esac\n}}\n\n# How many files a command takes.\n_{}_arguments() {{\n  case $1 in\n", program);
  for (const CommandOutline& command : outline.Commands) {
    text += fmt::format("    {}) echo {} ;;\n", command.Name, command.Arguments.size());
  }
  text += fmt::format(
      "    *) echo 0 ;;\n  esac\n}}\n\n"
      "# Sets count (of values), repeatable, list, files and words of an option of a command.\n"
      "_{}_option() {{\n  count=0 repeatable= list= files= words=\n  case $1/$2 in\n",
      program);
  for (const CommandOutline& command : outline.Commands) {
    for (const GroupOutline& group : command.Groups) {
      for (const OptionOutline& option : group.Options) text += LineOf(command.Name, option);
    }
  }
  return text + "  esac\n}\n" + WithProgram(kWalk, program);
}

std::string QuotedForShell(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'') {
      quoted += "'\\''";
    } else {
      quoted += c;
    }
  }
  return quoted + "'";
}

}  // namespace orv::pages
