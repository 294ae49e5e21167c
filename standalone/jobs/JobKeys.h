// The keys of a job file: the properties of the two automation interfaces, the roles of the variables, and what the
// program has around an analysis. The command-line options are short synonyms of them.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ui/AutomationProperties.h"

namespace orv {

namespace JobSections {

inline constexpr std::string_view Top = "";  // above the first section
inline constexpr std::string_view Variables = "CoxPHStartup.Variables";
inline constexpr std::string_view Startup = "CoxPHStartup";
inline constexpr std::string_view Results = "CoxPHResults";
inline constexpr std::string_view Host = "Host";  // what is no part of the analysis

}  // namespace JobSections

// What the value of a key has to be.
enum class JobForm {
  Flag,
  WholeNumber,
  Number,
  Text,
  Texts,  // a list; a single text counts as a list of one, here and below
  Code,   // a number or the label of a value
  Codes,
  CodeByFactor,  // a table from names to codes
  CodesByFactor,
  StartValues,  // a table with the lists Values and Fixed
  Functions,    // a list of lists of numbers
  Patterns,     // a list of tables from names to codes
  NotYet,       // belongs to results that this version does not have
};

struct JobKey {
  std::string_view Section;
  std::string_view Name;  // stands once in all sections
  JobForm Form;
  std::string_view Help;
  ChoiceGroup Group = ChoiceGroup::None;
};

// All keys in the order in which a job is written: sections as above, properties in slot order.
std::span<const JobKey> JobKeys();

// Null when there is no such key.
const JobKey* FindJobKey(std::string_view name);

// "Variables.Strata", "UseEfronLikelihood", "Host.Format": a key as messages name it.
std::string ShownName(const JobKey& key);

// "true or false", `a list of names, such as ["age", "dose"]`: for messages and the manual.
std::string_view FormText(JobForm form);

// An option of the command line, or an option with one of its words, and the key that says the same.
struct OptionSynonym {
  std::string_view Option;
  std::string_view Word;  // empty when the key stands for the option with any value
  std::string_view Key;
};

std::span<const OptionSynonym> OptionSynonyms();

// The word of an option that a chosen property stands for, such as "efron" of "--ties"; empty when it has none.
std::string_view WordOf(std::string_view key);
// The key for a word of an option; empty when there is none.
std::string_view KeyOf(std::string_view option, std::string_view word);

}  // namespace orv
