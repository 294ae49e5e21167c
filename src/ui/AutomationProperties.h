// AutomationProperties: the one vocabulary of the analysis. Macros, job files and recorders name an option or an output
// as this table does, and the help of each is its text here.
#pragma once

#include <span>
#include <string_view>

namespace orv {

// What a property holds, and with it the type of its value in a macro.
enum class PropertyKind {
  Choice,   // long: true when this one of its group is chosen; writing true chooses it
  Check,    // long: on or off
  Whole,    // long: a whole number
  Real,     // double
  Variant,  // a list, a name, a code or a document
  Bool,     // bool: on or off
  Output,   // object, read only: reading it makes the output and gives its document
};

// The properties of a group exclude each other.
enum class ChoiceGroup {
  None,
  InputType,
  Likelihood,
  Coding,
  ModelBuilding,
  Convergence,
  SurvivorType,
  SurvivorLimits,
  TimeTransform,
};

struct AutomationProperty {
  std::string_view Name;
  PropertyKind Kind;
  int Control;            // number of the dialog control that the property stands for, or kCustom
  std::string_view Help;  // in the words that a macro editor shows
  ChoiceGroup Group = ChoiceGroup::None;
};

// The control of a property that has a routine of its own, since its value is a list, a grid or a document.
inline constexpr int kCustom = 0;

// The interface CoxPHStartup: what an analysis is. In slot order.
std::span<const AutomationProperty> StartupProperties();

// The interface CoxPHResults: what is told about it. In slot order. Two names of the likelihood displacement share a
// control: the one that misses a letter stays for macros that were written with it.
std::span<const AutomationProperty> ResultsProperties();

// Names are compared to the letter, capitals too. Null when the list has none of that name.
const AutomationProperty* FindProperty(std::span<const AutomationProperty> properties, std::string_view name);

}  // namespace orv
