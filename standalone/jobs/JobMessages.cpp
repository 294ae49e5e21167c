#include "standalone/jobs/JobMessages.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace orv::JobMessages {

namespace {

std::string Closest(const std::vector<std::string>& close) {
  return close.empty() ? "" : fmt::format(" Closest: {}.", fmt::join(close, ", "));
}

}  // namespace

std::string At(const std::string& file, std::uint64_t line, const std::string& message) {
  return line == 0 ? fmt::format("{}: {}", file, message) : fmt::format("{}:{}: {}", file, line, message);
}

std::string NotToml(const std::string& file, std::uint64_t line, const std::string& fault) {
  return At(file, line, fmt::format("this is not TOML: {}. A line is KEY = VALUE, and texts stand in quotes.", fault));
}

std::string StandsTwice(const std::string& file, std::uint64_t line, bool isTable) {
  return At(file, line,
            isTable ? "this section or table is there already. Write all that belongs to it in one place."
                    : "this key is there already. Take one of the two out.");
}

std::string NumberOutOfRange(const std::string& file, std::uint64_t line, const std::string& number) {
  return At(file, line, fmt::format("the number {} is out of range.", number));
}

std::string TooLarge(const std::string& file, std::size_t limit) {
  return fmt::format("{}: more than {} bytes, which no job has. Is it the table?", file, limit);
}

std::string UnknownKey(std::string_view section,
                       const std::string& key,
                       const std::vector<std::string>& close,
                       std::string_view other) {
  const std::string where = section.empty() ? "above the first section" : fmt::format("in [{}]", section);
  const std::string known = section.empty() ? " There is Table alone." : "";
  if (other.empty()) return fmt::format("{}: no such key {}.{}", key, where, close.empty() ? known : Closest(close));
  return fmt::format("{}: no such key {}. It belongs to [{}].", key, where, other);
}

std::string BelongsAbove(const std::string& key) {
  return fmt::format("{}: no such key here. It stands above the first section.", key);
}

std::string UnknownSection(const std::string& section, const std::vector<std::string>& close) {
  const std::string known = " There are [CoxPHStartup], [CoxPHStartup.Variables], [CoxPHResults] and [Host].";
  return fmt::format("[{}]: no such section.{}", section, close.empty() ? known : Closest(close));
}

std::string NotASection(std::string_view section) {
  return fmt::format("{} is a section: write [{}] and its keys below.", section, section);
}

std::string KeyMissing(const std::string& key, std::string_view purpose) {
  return fmt::format("{} is missing: {}.", key, purpose);
}

std::string WrongForm(const std::string& key, std::string_view form, std::string_view found) {
  return fmt::format("{}: use {}, not {}.", key, form, found);
}

std::string ItemOfList(std::size_t number, const std::string& outer) {
  return outer.empty() ? fmt::format("item {}", number) : fmt::format("{}, item {}", outer, number);
}

std::string WrongItem(const std::string& key, const std::string& item, std::string_view form, std::string_view found) {
  return fmt::format("{}: {} is {}. Use {}.", key, item, found, form);
}

std::string EmptyText(const std::string& key) {
  return fmt::format("{}: the text is empty. Write a value, or leave the key out.", key);
}

std::string EmptyList(const std::string& key) {
  return fmt::format("{}: the list is empty. Write its items, or leave the key out.", key);
}

std::string NotFinite(const std::string& key) {
  return fmt::format("{}: the number is not finite.", key);
}

std::string NameWithDot(const std::string& key, const std::string& name) {
  return fmt::format("{}: a name with a dot stands in quotes, such as \"{}\" = ...", key, name);
}

std::string NotYet(const std::string& key) {
  return fmt::format("{}: not available yet in this version.", key);
}

std::string TwoChosen(const std::string& key, const std::string& other, std::uint64_t otherLine) {
  return fmt::format("{}: {} (line {}) is true as well, and one of them can be chosen. Take one of the lines out.", key,
                     other, otherLine);
}

std::string SameControl(const std::string& key, const std::string& other, std::uint64_t otherLine) {
  return fmt::format("{}: {} (line {}) is another name for it and says the opposite. Take one of the lines out.", key,
                     other, otherLine);
}

std::string SurvivalTimesCount(std::size_t given) {
  return fmt::format(
      "Variables.SurvivalTimes: name 1 variable (the time), 2 (start and end date) or 6 (month, day, year of the "
      "start, "
      "then of the end), not {}.",
      given);
}

std::string InputTypeDiffers(const std::string& key, std::string_view needs) {
  return fmt::format("{}: this form of input goes with {}.", key, needs);
}

std::string TimesInTwoForms(const std::string& key, std::uint64_t otherLine) {
  return fmt::format("{}: line {} names survival times, and a case has either these or an interval.", key, otherLine);
}

std::string NamesAndExpressions(std::size_t names, std::size_t expressions) {
  return fmt::format(
      "TimeDependentCovariateNames and TimeDependentCovariateExpressions belong together, one by one: there are {} "
      "and {}.",
      names, expressions);
}

std::string EqualsInName(const std::string& name) {
  return fmt::format("TimeDependentCovariateNames: \"{}\" holds an equals sign. Give the covariate another name.",
                     name);
}

std::string NotOneEffect(const std::string& text) {
  return fmt::format("DesignEffects: \"{}\" is more than one effect. Write each as an item of the list.", text);
}

std::string StartValuesUnused() {
  return "UseStartValues is false, but start values or held coefficients are given. Leave them out, or write true.";
}

std::string StartValuesMissing() {
  return "UseStartValues: write the values as EditParameterStatusValues = { Values = [X, ...] }, or name a file in "
         "DataFileThatContainsStartvaluesForParameter.";
}

std::string StartValuesTwice(std::uint64_t otherLine) {
  return fmt::format("EditParameterStatusValues: the start values come from a file (line {}). Take one of them out.",
                     otherLine);
}

std::string UnknownPart(const std::string& key, const std::string& part) {
  return fmt::format("{}: \"{}\" is no part of it: use Values and Fixed.", key, part);
}

std::string PatternCount(std::int64_t told, std::size_t given) {
  return fmt::format("NumberOfCovariatePatterns: {}, but SpecifyCovariateValues has {}. The line can be left out.",
                     told, given);
}

std::string NoResidual() {
  return "ResidualSummary: all residuals are false. Choose one, such as ComputeMartingale = true.";
}

std::string NoFunction() {
  return "SurvivalCumulativeHazardSummary: ComputeSurvivorFunction or ComputeCumulativeHazardFunction has to be true.";
}

std::string NoOutput() {
  return "no output is chosen: write true for one, such as ParameterEstimates = true.";
}

std::string ComputeWithoutSummary(const std::string& key) {
  return fmt::format("{} says something about a result that is not shown: add SurvivalCumulativeHazardSummary = true.",
                     key);
}

std::string TypeWithoutLimits(const std::string& key, std::uint64_t otherLine) {
  return fmt::format("{}: ComputeSurvivorCI (line {}) is false, so there are no limits. Take one of the lines out.",
                     key, otherLine);
}

}  // namespace orv::JobMessages
