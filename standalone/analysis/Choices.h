// The words for the small-integer settings: one table each, for parsing, help and messages.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace orv {

struct Choice {
  std::string_view Word;
  int Value;
};

std::span<const Choice> CodingChoices();
std::span<const Choice> TieChoices();
std::span<const Choice> ConvergenceChoices();
std::span<const Choice> SelectionChoices();     // values of ModelBuildings
std::span<const Choice> SurvivorTypeChoices();  // values of SurvivorType
std::span<const Choice> CIChoices();            // values of SurvivorCIType, or kNoLimits
std::span<const Choice> TransformChoices();     // values of TimeTransform

inline constexpr int kNoLimits = -1;

// The words as a list for help and messages: "sigma, reference or overparameterized".
std::string ChoiceList(std::span<const Choice> choices);

// The value of a word; `fallback` for an empty word. Throws DefinitionError for a word that is none of the choices.
std::int16_t ChoiceValue(const std::string& option,
                         const std::string& word,
                         std::span<const Choice> choices,
                         int fallback);
template <typename Enumeration>
requires std::is_enum_v<Enumeration> std::int16_t ChoiceValue(const std::string& option,
                                                              const std::string& word,
                                                              std::span<const Choice> choices,
                                                              Enumeration fallback) {
  return ChoiceValue(option, word, choices, static_cast<int>(fallback));
}

}  // namespace orv
