// OptionWords: the words that the value of an option is chosen from, by option, for completion in a shell.
#pragma once

#include <CLI/Option.hpp>
#include <map>
#include <string>
#include <vector>

namespace orv {

struct OptionWords {
  std::vector<std::string> Words;
  bool IsList = false;  // several of them with commas
};

// Filled where the options are declared. An option that is not in it takes other values, or none.
using WordsOfOptions = std::map<const CLI::Option*, OptionWords>;

}  // namespace orv
