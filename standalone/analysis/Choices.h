// The words for the small-integer settings: one table each, for parsing, help and messages.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace orv {

struct Choice {
  std::string_view Word;
  int Value;
};

std::span<const Choice> CodingChoices();
std::span<const Choice> TieChoices();
std::span<const Choice> ConvergenceChoices();

// The words as a list for help and messages: "sigma, reference or overparameterized".
std::string ChoiceList(std::span<const Choice> choices);

// The value of a word; `fallback` for an empty word. Throws DefinitionError for a word that is none of the choices.
std::int16_t ChoiceValue(const std::string& option,
                         const std::string& word,
                         std::span<const Choice> choices,
                         int fallback);

}  // namespace orv
