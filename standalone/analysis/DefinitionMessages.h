// What is said when an analysis cannot be defined, and what a person should know about one that can. One function a
// message; `option` is the command-line name with its dashes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orv::DefinitionMessages {

std::string UnknownVariable(const std::string& option,
                            const std::string& name,
                            const std::string& table,
                            const std::vector<std::string>& close,
                            const std::vector<std::string_view>& all);
std::string MissingOption(const std::string& option, const std::string& purpose);
std::string SeveralTimes(const std::string& first, const std::string& second);
std::string WrongCount(const std::string& option, std::size_t wanted, std::size_t given, const std::string& what);
std::string DuplicateRole(const std::string& variable, const std::string& first, const std::string& second);
std::string DuplicateVariable(const std::string& option, const std::string& variable);
std::string TextVariable(const std::string& option, const std::string& variable, const std::string& hint);
std::string NotADuration(const std::string& variable);
std::string IntervalOfDates(const std::string& variable);
std::string EntryWithIntervals();
std::string IntervalsWithTimeCovariates();
std::string DiscreteWithTimeCovariates();
// `problem` is what the formula's error says, its place first; `option` may name the covariate too.
std::string FormulaProblem(const std::string& option, const std::string& problem);
std::string NoCaseSelected();
std::string NamesDifferByCase(const std::string& covariate);
std::string TimeCovariatesUnused();
std::string DateWithoutDate(const std::string& date, const std::string& other);
std::string TimeCovariateIsTime(const std::string& name);
std::string TimeCovariateIsVariable(const std::string& name);
std::string TooManyTimeCovariates(std::size_t given, std::size_t limit);
std::string NestingWithTimeCovariates(const std::string& effect);
std::string UnknownCode(const std::string& option,
                        const std::string& code,
                        const std::string& variable,
                        const std::string& found);
std::string CodesNeeded(const std::string& variable, const std::string& found);
std::string FractionalCode(const std::string& option, const std::string& variable, const std::string& value, int line);
std::string CodeTooLarge(const std::string& option, const std::string& variable, const std::string& value);
std::string TooManyCodes(const std::string& option, const std::string& variable, std::size_t found, int limit);
std::string DuplicateCode(const std::string& option, const std::string& variable, const std::string& code);
std::string MalformedAssignment(const std::string& option, const std::string& text, const std::string& form);
std::string EmptyListItem(const std::string& option, const std::string& list);
std::string MisplacedQuote(const std::string& option, const std::string& list);
std::string CodesTwice(const std::string& factor);
std::string ReferenceTwice(const std::string& factor);
std::string NotAFactor(const std::string& option, const std::string& variable);
std::string ReferenceNotSelected(const std::string& variable, const std::string& code, const std::string& selected);
std::string UnknownChoice(const std::string& option, const std::string& value, const std::string& choices);
// `place` is where in the text the problem stands, such as "at character 4".
std::string EffectSyntax(const std::string& effects, const std::string& place, const std::string& problem);
std::string FactorTwiceInEffect(const std::string& effect, const std::string& factor);
std::string EffectNotAPredictor(const std::string& effect,
                                const std::string& name,
                                const std::vector<std::string>& close);
std::string DuplicateEffect(const std::string& effect);
std::string FixWithoutStartValues();
std::string FixOutOfRange(int coefficient, int count);
std::string FixPartOfEffect(const std::string& effect, int first, int last);
std::string FixWithTimeCovariates(const std::string& effect);
std::string RobustWithTimeCovariates();
std::string OptionWithoutSelection(const std::string& option, const std::string& selections);
std::string SelectionWithTimeCovariates();
std::string BestSubsetsWithFactors();
std::string ForceOutOfRange(int forced, int effects);
std::string StepsWithoutSelection();
std::string OptionWithoutResult(const std::string& option, const std::string& result);
std::string ResultWithTimeCovariates(const std::string& result);
std::string ResidualWithIntervals(const std::string& residual);
std::string ContrastMissing();
// `word` is empty for a contrast without any number.
std::string ContrastNotANumber(const std::string& contrast, const std::string& word);
std::string ContrastOfAnotherLength(const std::string& contrast,
                                    std::size_t given,
                                    const std::vector<std::string>& coefficients);
std::string PatternNotAPredictor(const std::string& name, const std::vector<std::string>& close);
std::string PatternNotANumber(const std::string& covariate, const std::string& value);
std::string PatternCodeUnknown(const std::string& factor, const std::string& code, const std::string& selected);
std::string PatternRefused();
std::string ContrastOfZeros(const std::string& contrast);
std::string TooManyPatterns(std::size_t given, std::size_t limit);
std::string ProductLimitWith(const std::string& option);

// Notes.
std::string StatusCodesTaken(const std::string& variable);
std::string UnusedPredictor(const std::string& variable);
std::string TooFewCodes(const std::string& factor, const std::string& codes);
std::string EntryHasNoEffect();
std::string FormulaWithoutTime(const std::string& name);
std::string TooManyFormulaVariables(int given, int limit);
std::string TimeCovariatesAlone();
std::string StrataWithTimeCovariates();
std::string StartValuesStandardized();
std::string SubjectWithoutRobust();
// `effects` hold the same variables; `enter` tells whether the selection adds effects or removes them alone.
std::string EffectsWaitForEachOther(const std::vector<std::string>& effects, bool enter);
std::string BestSubsetsFitAll();
std::string ContrastNotSelected(const std::string& coefficient);
std::string PatternNotSelected(const std::string& predictor);
std::string ProductLimitFailed();
std::string ProductLimitWithStrata();
std::string WeightedScores();
std::string DiscreteScores();
std::string NoBaseline();
std::string SummaryAlone();
std::string PatternOutOfRange(const std::string& pattern);

}  // namespace orv::DefinitionMessages
