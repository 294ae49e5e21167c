// ProgramOutline: what the declaration of the program says of its commands and options, in the order of the help; the
// source of the manual page and of the completions.
#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "apps/orvcox/OptionWords.h"

namespace orv::pages {

struct OptionOutline {
  std::vector<std::string> Names;  // with their dashes, short names first
  std::string Values;              // as the help calls them, "V V"; empty for a flag
  int ValueCount = 0;
  bool IsRepeatable = false;
  bool TakesFile = false;
  OptionWords Words;  // empty when the values are no choice of words
  std::string Help;   // without line breaks
};

struct GroupOutline {
  std::string Name;
  std::vector<OptionOutline> Options;
};

struct ArgumentOutline {
  std::string Name;  // TABLE; every argument is a file
  std::string Help;  // without line breaks
};

// What stands below the options of a help.
struct NoteOutline {
  std::string Heading;             // "Examples"; empty for running text
  std::vector<std::string> Lines;  // one of running text; below a heading to be shown as they are
};

struct CommandOutline {
  std::string Name;
  std::string Description;
  std::vector<ArgumentOutline> Arguments;
  std::vector<GroupOutline> Groups;
  std::vector<NoteOutline> Notes;
};

struct ProgramOutline {
  std::string Version;
  CommandOutline Program;  // options that stand without a command
  std::vector<CommandOutline> Commands;
};

// An option takes a file when its values are called FILE.
ProgramOutline OutlineProgram(const CLI::App& program, const WordsOfOptions& words, const std::string& version);

}  // namespace orv::pages
