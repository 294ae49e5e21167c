#include "standalone/analysis/DefinitionMessages.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace orv::DefinitionMessages {

namespace {

constexpr std::size_t kShownVariables = 8;

std::string Closest(const std::vector<std::string>& close) {
  if (close.empty()) return {};
  std::vector<std::string> quoted;
  for (const std::string& name : close) quoted.push_back('"' + name + '"');
  return fmt::format(" Closest: {}.", fmt::join(quoted, ", "));
}

std::string SomeOf(const std::vector<std::string_view>& names) {
  if (names.size() <= kShownVariables) return fmt::format("{}", fmt::join(names, ", "));
  return fmt::format("{}, ... ({} in all)", fmt::join(names.begin(), names.begin() + kShownVariables, ", "),
                     names.size());
}

}  // namespace

std::string UnknownVariable(const std::string& option,
                            const std::string& name,
                            const std::string& table,
                            const std::vector<std::string>& close,
                            const std::vector<std::string_view>& all) {
  const std::string known = close.empty() ? fmt::format(" It has {}.", SomeOf(all)) : Closest(close);
  return fmt::format("{}: no variable \"{}\" in {}.{}", option, name, table, known);
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
  return fmt::format("{}: \"{}\" holds texts. {}", option, variable, hint);
}

std::string NotADuration(const std::string& variable) {
  return fmt::format("--time: \"{}\" holds dates. Use --dates START END, and the survival time is counted in days.",
                     variable);
}

std::string IntervalOfDates(const std::string& variable) {
  return fmt::format(
      "--interval: \"{}\" holds dates. Count the ends of intervals from a common origin, such as days since entry.",
      variable);
}

std::string EntryWithIntervals() {
  return "--entry goes with survival times; with --interval the start of an interval is its entry.";
}

std::string IntervalsWithTimeCovariates() {
  return "--time-covariate goes with survival times; with --interval a covariate that changes has its values in the "
         "rows "
         "of the intervals.";
}

std::string DiscreteWithTimeCovariates() {
  return "--ties discrete is not offered with --time-covariate: use --ties efron or breslow.";
}

std::string FormulaProblem(const std::string& option, const std::string& problem) {
  return fmt::format("{}: {}", option, problem);
}

std::string NoCaseSelected() {
  return "--where: no case meets the condition.";
}

std::string NamesDifferByCase(const std::string& covariate) {
  return fmt::format(
      "--time-covariate {}: the table has names or texts that differ by case only, which such a formula cannot tell "
      "apart. "
      "Write a variable as #3 and a text as the number of its code.",
      covariate);
}

std::string TimeCovariatesUnused() {
  return "--time-covariate: none of them is in an effect of --effects. Add one to an effect, or leave them out.";
}

std::string DateWithoutDate(const std::string& date, const std::string& other) {
  return fmt::format("--dates: \"{}\" holds dates and \"{}\" numbers. Both must be dates, or both numbers of days.",
                     date, other);
}

std::string TimeCovariateIsTime(const std::string& name) {
  return fmt::format("--time-covariate: {} is the time itself. Give the covariate another name.", name);
}

std::string TimeCovariateIsVariable(const std::string& name) {
  return fmt::format("--time-covariate: the table has a variable \"{}\". Give the covariate another name.", name);
}

std::string TooManyTimeCovariates(std::size_t given, std::size_t limit) {
  return fmt::format("--time-covariate: {} are given; at most {} are possible.", given, limit);
}

std::string NestingWithTimeCovariates(const std::string& effect) {
  return fmt::format(
      "--effects: \"{}\": nesting is not offered with --time-covariate. A product such as a*b has the same columns.",
      effect);
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
      "{}: \"{}\" holds {} (case {}), which is not a whole number. Codes are whole numbers or texts; a continuous "
      "variable "
      "belongs to --covariates.",
      option, variable, value, line);
}

std::string CodeTooLarge(const std::string& option, const std::string& variable, const std::string& value) {
  return fmt::format("{}: the code {} of \"{}\" is beyond the range of -9999999 to 9999999.", option, value, variable);
}

std::string TooManyCodes(const std::string& option, const std::string& variable, std::size_t found, int limit) {
  return fmt::format("{}: \"{}\" has {} codes, and at most {} can be used. Is it a continuous variable?", option,
                     variable, found, limit);
}

std::string DuplicateCode(const std::string& option, const std::string& variable, const std::string& code) {
  return fmt::format("{}: the code \"{}\" of \"{}\" is named twice.", option, code, variable);
}

std::string MalformedAssignment(const std::string& option, const std::string& text, const std::string& form) {
  return fmt::format("{}: \"{}\" is not of the form {}.", option, text, form);
}

std::string EmptyListItem(const std::string& option, const std::string& list) {
  return fmt::format("{}: \"{}\" has a comma with nothing before or after it.", option, list);
}

std::string MisplacedQuote(const std::string& option, const std::string& list) {
  return fmt::format("{}: in {}, a quote is not closed, or closed before the end of an item.", option, list);
}

std::string CodesTwice(const std::string& factor) {
  return fmt::format("--codes: \"{}\" is given twice. Name all its codes at once.", factor);
}

std::string ReferenceTwice(const std::string& factor) {
  return fmt::format("--reference: \"{}\" is given twice. A factor has one reference code.", factor);
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

std::string EffectSyntax(const std::string& effects, const std::string& place, const std::string& problem) {
  return fmt::format("--effects: in \"{}\", {}: {}.", effects, place, problem);
}

std::string FactorTwiceInEffect(const std::string& effect, const std::string& factor) {
  return fmt::format("--effects: the factor \"{}\" stands twice in \"{}\".", factor, effect);
}

std::string EffectNotAPredictor(const std::string& effect,
                                const std::string& name,
                                const std::vector<std::string>& close) {
  const std::string place = name == effect ? std::string{} : fmt::format("in \"{}\": ", effect);
  const std::string hint = name.find(' ') == std::string::npos ? Closest(close) : " Effects are separated by commas.";
  return fmt::format("--effects: {}\"{}\" is not among the predictors.{}", place, name, hint);
}

std::string DuplicateEffect(const std::string& effect) {
  return fmt::format("--effects: \"{}\" is named twice.", effect);
}

std::string FixWithoutStartValues() {
  return "--fix: coefficients are held at their start values, so give these with --start-values.";
}

std::string FixOutOfRange(int coefficient, int count) {
  return fmt::format("--fix: there is no coefficient {}. The model has {}, numbered from 1.", coefficient, count);
}

std::string FixPartOfEffect(const std::string& effect, int first, int last) {
  return fmt::format("--fix: coefficients {} to {} belong to one effect ({}) and are held together: name all or none.",
                     first, last, effect);
}

std::string FixWithTimeCovariates(const std::string& effect) {
  return fmt::format("--fix: with --time-covariate only effects without factors can be held, not {}.", effect);
}

std::string RobustWithTimeCovariates() {
  return "--robust and --subject are not offered with --time-covariate.";
}

std::string OptionWithoutSelection(const std::string& option, const std::string& selections) {
  return fmt::format("{} belongs to --select {}.", option, selections);
}

std::string SelectionWithTimeCovariates() {
  return "--select is not offered with --time-covariate: score tests of covariates that change with time are not "
         "there.";
}

std::string BestSubsetsWithFactors() {
  return "--select best compares single columns and is not offered with --factors: use --select forward, "
         "backward or stepwise.";
}

std::string ForceOutOfRange(int forced, int effects) {
  return fmt::format("--force {}: use 0 to {}, the number of effects in the design.", forced, effects);
}

std::string StepsWithoutSelection() {
  return "--show steps: there are steps only with --select forward, backward, stepwise or best.";
}

std::string OptionWithoutResult(const std::string& option, const std::string& result) {
  return fmt::format("{} says something about a result that is not shown: add --show {}.", option, result);
}

std::string ResultWithTimeCovariates(const std::string& result) {
  return fmt::format("--show {}: not offered with --time-covariate.", result);
}

std::string ResidualWithIntervals(const std::string& residual) {
  return fmt::format("--residuals {}: not offered with --interval.", residual);
}

std::string ContrastMissing() {
  return "--show contrast: say what to estimate with --contrast \"X X X\", a number for each coefficient.";
}

std::string ContrastNotANumber(const std::string& contrast, const std::string& word) {
  if (word.empty()) return fmt::format("--contrast \"{}\": write a number for each coefficient.", contrast);
  return fmt::format("--contrast \"{}\": \"{}\" is not a number.", contrast, word);
}

std::string ContrastOfAnotherLength(const std::string& contrast,
                                    std::size_t given,
                                    const std::vector<std::string>& coefficients) {
  if (coefficients.empty()) return fmt::format("--contrast \"{}\": the model has no coefficients.", contrast);
  const auto counted = [](std::size_t count, const char* noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
  };
  return fmt::format("--contrast \"{}\": {} given, but the model has {}: {}.", contrast, counted(given, "number"),
                     counted(coefficients.size(), "coefficient"), fmt::join(coefficients, ", "));
}

std::string PatternNotAPredictor(const std::string& name, const std::vector<std::string>& close) {
  return fmt::format("--pattern: \"{}\" is no covariate or factor of the model.{}", name, Closest(close));
}

std::string PatternNotANumber(const std::string& covariate, const std::string& value) {
  return fmt::format("--pattern: \"{}\" is no number, as the covariate \"{}\" needs.", value, covariate);
}

std::string PatternCodeUnknown(const std::string& factor, const std::string& code, const std::string& selected) {
  return fmt::format("--pattern: \"{}\" is not a selected code of \"{}\": {}.", code, factor, selected);
}

std::string ContrastOfZeros(const std::string& contrast) {
  return fmt::format("--contrast \"{}\": all its numbers are 0, so there is nothing to test.", contrast);
}

std::string PatternRefused() {
  return "--pattern: a value is none of its variable.";
}

std::string TooManyPatterns(std::size_t given, std::size_t limit) {
  return fmt::format("--pattern: {} are given; at most {} are possible.", given, limit);
}

std::string ProductLimitWith(const std::string& option) {
  return fmt::format("--survivor-type kaplan-meier: not offered with {}.", option);
}

std::string StatusCodesTaken(const std::string& variable) {
  return fmt::format("{}: 1 is taken as an event and 0 as censored.", variable);
}

std::string UnusedPredictor(const std::string& variable) {
  return fmt::format("--effects: \"{}\" is in no effect and takes no part in the analysis.", variable);
}

std::string TooFewCodes(const std::string& factor, const std::string& codes) {
  if (codes.empty()) return fmt::format("--factors: \"{}\" has no codes, all its values are missing.", factor);
  return fmt::format("--factors: \"{}\" has a single code, {}.", factor, codes);
}

std::string EntryHasNoEffect() {
  return "--entry: entry times have no effect on risk sets with this form of survival time; for late entry use "
         "--interval "
         "ENTRY TIME. Cases without one are left out.";
}

std::string FormulaWithoutTime(const std::string& name) {
  return fmt::format("--time-covariate {}: the formula does not read the time, T_.", name);
}

std::string TooManyFormulaVariables(int given, int limit) {
  return fmt::format("--time-covariate: the formulas read {} variables; at most {} are possible.", given, limit);
}

std::string TimeCovariatesAlone() {
  return "--time-covariate: the analysis needs a covariate besides (--covariates V); one that is in no effect will do.";
}

std::string StrataWithTimeCovariates() {
  return "--strata: with --time-covariate the strata cut tied groups only, and every risk set runs across all strata. "
         "For "
         "strata with baselines of their own, split the cases into intervals and use --interval.";
}

std::string SubjectWithoutRobust() {
  return "--subject: subjects count for the robust variance only. Add --robust.";
}

std::string NoBaseline() {
  return "there is no baseline, survivor function or martingale residual: the relative risks are out of range. Take "
         "covariates from a value near their middle, such as year - 2000.";
}

std::string SummaryAlone() {
  return "without predictors there is a summary only.";
}

std::string PatternOutOfRange(const std::string& pattern) {
  return fmt::format("the pattern {}is out of range, and its tables stay empty.", pattern);
}

std::string ProductLimitWithStrata() {
  return "--survivor-type kaplan-meier: with strata the event at the last time of a stratum may lack its row; the "
         "curves "
         "of breslow have all.";
}

std::string WeightedScores() {
  return "--weights: score residuals, influence measures and the robust variance take the weights of events and risk "
         "sets, "
         "but not always that of the case itself, so they change with the scale of the weights.";
}

std::string DiscreteScores() {
  return "--ties discrete: residuals, robust variance and ph test are those of Breslow's rule at these estimates, so "
         "score "
         "residuals do not add up to 0.";
}

std::string EffectsWaitForEachOther(const std::vector<std::string>& effects, bool enter) {
  return fmt::format("{} hold the same variables, so each counts as part of the other: {}", fmt::join(effects, " and "),
                     enter ? "none of them can enter alone. --force takes the first effects of the design in."
                           : "none of them is removed while another is there.");
}

std::string BestSubsetsFitAll() {
  return "best subsets are compared by score tests; estimates and other results are those of all effects.";
}

std::string ContrastNotSelected(const std::string& coefficient) {
  return fmt::format("contrast left out: it has a number for {}, which is not in the model selected.", coefficient);
}

std::string PatternNotSelected(const std::string& predictor) {
  return fmt::format("{} of --pattern is not in the model selected and changes nothing.", predictor);
}

std::string ProductLimitFailed() {
  return "--survivor-type kaplan-meier: there is no such estimate for these data, so Breslow's is shown.";
}

std::string StartValuesStandardized() {
  return "--start-values: taken on the scale of the standardised columns; with --fix they are on the scale of the "
         "data.";
}

}  // namespace orv::DefinitionMessages
