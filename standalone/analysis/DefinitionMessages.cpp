#include "standalone/analysis/DefinitionMessages.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace orv::DefinitionMessages {

namespace {

std::string Closest(const std::vector<std::string>& nearest) {
  if (nearest.empty()) return {};
  std::vector<std::string> quoted;
  for (const std::string& name : nearest) quoted.push_back('"' + name + '"');
  return fmt::format(" Closest: {}.", fmt::join(quoted, ", "));
}

}  // namespace

std::string UnknownVariable(const std::string& option,
                            const std::string& name,
                            const std::string& table,
                            const std::vector<std::string>& nearest) {
  return fmt::format("{}: no variable \"{}\" in {}.{}", option, name, table, Closest(nearest));
}

std::string MissingOption(const std::string& option, const std::string& purpose) {
  return fmt::format("{} is missing: {}.", option, purpose);
}

std::string SeveralTimes(const std::string& first, const std::string& second) {
  return fmt::format("{} and {} both define the survival time: give one of them.", first, second);
}

std::string WrongCount(const std::string& option, std::size_t wanted, std::size_t given, const std::string& what) {
  return fmt::format("{}: {} variables are needed ({}), {} given.", option, wanted, what, given);
}

std::string DuplicateRole(const std::string& variable, const std::string& first, const std::string& second) {
  return fmt::format("{}: \"{}\" is already used by {}. A variable has one role.", second, variable, first);
}

std::string DuplicateVariable(const std::string& option, const std::string& variable) {
  return fmt::format("{}: \"{}\" is named twice.", option, variable);
}

std::string TextVariable(const std::string& option, const std::string& variable, const std::string& hint) {
  return fmt::format("{}: \"{}\" holds texts, not numbers. {}", option, variable, hint);
}

std::string NotADuration(const std::string& variable) {
  return fmt::format("--time: \"{}\" holds dates. Use --dates START END, and the survival time is counted in days.", variable);
}

std::string UnknownCode(const std::string& option,
                        const std::string& code,
                        const std::string& variable,
                        const std::string& found) {
  return fmt::format("{}: \"{}\" has no value \"{}\". Its values: {}.", option, variable, code, found);
}

std::string CodesNeeded(const std::string& variable, const std::string& found) {
  return fmt::format(
      "--status: \"{}\" does not hold exactly the values 0 and 1, so say what its codes mean with --event CODE and "
      "--censored CODE. Its values: {}.",
      variable, found);
}

std::string FractionalCode(const std::string& option, const std::string& variable, const std::string& value, int line) {
  return fmt::format(
      "{}: \"{}\" holds {} (case {}), which is no whole number. Codes are whole numbers or texts; a continuous variable "
      "belongs to --covariates.",
      option, variable, value, line);
}

std::string CodeTooLarge(const std::string& option, const std::string& variable, const std::string& value) {
  return fmt::format("{}: \"{}\" holds the code {}, beyond the range of -9999999 to 9999999.", option, variable, value);
}

std::string TooManyCodes(const std::string& option, const std::string& variable, std::size_t found, int limit) {
  return fmt::format("{}: \"{}\" has {} codes, and at most {} can be used. Is it a continuous variable?",
                     option, variable, found, limit);
}

std::string DuplicateCode(const std::string& option, const std::string& variable, const std::string& code) {
  return fmt::format("{}: the code \"{}\" of \"{}\" is named twice.", option, code, variable);
}

std::string MalformedAssignment(const std::string& option, const std::string& text, const std::string& form) {
  return fmt::format("{}: \"{}\" is not of the form {}.", option, text, form);
}

std::string AssignedTwice(const std::string& option, const std::string& variable) {
  return fmt::format("{}: \"{}\" is given twice. Name all its codes in one option.", option, variable);
}

std::string NotAFactor(const std::string& option, const std::string& variable) {
  return fmt::format("{}: \"{}\" is not among --factors.", option, variable);
}

std::string ReferenceNotSelected(const std::string& variable, const std::string& code, const std::string& selected) {
  return fmt::format("--reference: \"{}\" is not a selected code of \"{}\". Selected: {}.", code, variable, selected);
}

std::string UnknownChoice(const std::string& option, const std::string& value, const std::string& choices) {
  return fmt::format("{} {}: use {}.", option, value, choices);
}

std::string EffectSyntax(const std::string& effect, const std::string& problem) {
  return fmt::format("--effects: in \"{}\": {}", effect, problem);
}

std::string EffectNotAPredictor(const std::string& effect,
                                const std::string& name,
                                const std::vector<std::string>& nearest) {
  return fmt::format("--effects: in \"{}\": \"{}\" is not among --covariates and --factors.{}",
                     effect, name, Closest(nearest));
}

std::string DuplicateEffect(const std::string& effect) {
  return fmt::format("--effects: \"{}\" is named twice.", effect);
}

std::string FixWithoutStartValues() {
  return "--fix: coefficients are held at their start values: give them with --start-values.";
}

std::string FixOutOfRange(int coefficient, int count) {
  return fmt::format("--fix: there is no coefficient {}. The model has {}, numbered from 1.", coefficient, count);
}

std::string FixPartOfEffect(const std::string& effect, int first, int last) {
  return fmt::format("--fix: coefficients {} to {} belong to one effect ({}) and are held together: name all or none.",
                     first, last, effect);
}

std::string StatusCodesTaken(const std::string& variable) {
  return fmt::format("{}: 1 is taken as an event and 0 as censored.", variable);
}

std::string UnusedPredictor(const std::string& variable) {
  return fmt::format("\"{}\" is in no effect and was left out of the analysis.", variable);
}

std::string EntryHasNoEffect() {
  return "--entry has no effect on the risk sets with this form of survival time. For late entry, define each case as an "
         "interval.";
}

std::string StartValuesStandardized() {
  return "start values are taken on the scale of the standardised columns. With --fix they are on the scale of the data.";
}

}  // namespace orv::DefinitionMessages
