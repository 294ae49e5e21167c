#include "standalone/formula/FormulaMessages.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <utility>

#include "standalone/documents/DisplayText.h"
#include "standalone/documents/Utf8.h"
#include "standalone/formula/FormulaProgram.h"
#include "standalone/formula/FormulaTree.h"

namespace orv::FormulaMessages {
namespace {

constexpr std::size_t kLongestExcerpt = 40;  // bytes of a text that a message shows

// The beginning of a text on one line, cut between characters.
std::string Excerpt(std::string_view text) {
  if (text.size() <= kLongestExcerpt) return PrintableText(text);
  std::string beginning(text.substr(0, kLongestExcerpt));
  DropIncompleteCharacter(beginning);
  return PrintableText(beginning) + "...";
}

std::string InQuotes(std::string_view text) {
  return '"' + Excerpt(text) + '"';
}

std::string FoundText(std::string_view found) {
  return found.empty() ? "the end of the formula" : InQuotes(found);
}

std::string Closest(const std::vector<std::string>& nearest) {
  if (nearest.empty()) return {};
  std::vector<std::string> quoted;
  quoted.reserve(nearest.size());
  for (const std::string& name : nearest) quoted.push_back(InQuotes(name));
  return fmt::format(" Closest: {}.", fmt::join(quoted, ", "));
}

FormulaFault Found(std::string_view found, std::string sentence) {
  return {std::move(sentence), FoundText(found), {}, {}};
}

FormulaFault Sentence(std::string sentence) {
  return {std::move(sentence), {}, {}, {}};
}

}  // namespace

// ---- Grammar --------------------------------------------------------------------------------------------------------

FormulaFault Empty() {
  return Sentence("the formula is empty.");
}

FormulaFault TooManyCharacters(std::size_t count) {
  return Sentence(fmt::format("the formula has {} characters, more than {}.", count, kMaximumCharacters));
}

FormulaFault Unexpected(std::string_view found, const std::string& expected) {
  return {fmt::format("found {}, expected {}.", FoundText(found), expected), FoundText(found), expected, {}};
}

FormulaFault ChainedComparison(std::string_view found) {
  return Found(found,
               fmt::format("found {}, the second comparison in a row. Join them with and, as in a < b and b < c.",
                           FoundText(found)));
}

FormulaFault NotNeedsParentheses(std::string_view found) {
  return Found(found, fmt::format("{} needs parentheses here, as in 1 + (not a).", FoundText(found)));
}

FormulaFault TooDeep() {
  return Sentence(fmt::format("nested too deeply. A formula may have {} levels, and {} intermediate values at a time.",
                              kMaximumNesting, kStackSlots));
}

FormulaFault TooLong() {
  return Sentence(fmt::format("the formula is too long: up to here it takes more than {} bytes when compiled.",
                              kMaximumProgramBytes));
}

// ---- Characters and numbers -----------------------------------------------------------------------------------------

FormulaFault NotUtf8() {
  return Sentence("a byte that is not UTF-8 text.");
}

FormulaFault OtherSpelling(std::string_view found, std::string_view write) {
  return Unexpected(found, fmt::format("\"{}\"", write));
}

FormulaFault UnclosedQuote(std::string_view quote) {
  return Found(quote, fmt::format("the quote {} is not closed.", quote));
}

FormulaFault NothingBetweenQuotes() {
  return Sentence("there is nothing between the quotes, expected a name or a text.");
}

FormulaFault NumberOutOfRange(std::string_view number) {
  return Found(number,
               fmt::format("{} is beyond the range of numbers, which is about 1e-308 to 1e308.", Excerpt(number)));
}

FormulaFault MalformedNumber(std::string_view found, std::string_view number) {
  const std::string_view rest = found.substr(number.size());
  if (number.empty() || rest.empty() || rest.front() == '.')
    return Found(found, fmt::format("{} is neither a number nor a variable.", FoundText(found)));
  return Found(found, fmt::format("{} is neither a number nor a variable. To multiply, write {} * {}.",
                                  FoundText(found), Excerpt(number), Excerpt(rest)));
}

FormulaFault DecimalComma(std::string_view whole, std::string_view fraction) {
  return Found(
      ",", fmt::format("a decimal comma. Write the number with a point: {}.{}.", Excerpt(whole), Excerpt(fraction)));
}

// ---- Variables ------------------------------------------------------------------------------------------------------

FormulaFault UnknownVariable(std::string_view name, std::vector<std::string> nearest) {
  return {fmt::format("no variable {}.{}", InQuotes(name), Closest(nearest)), InQuotes(name), {}, std::move(nearest)};
}

FormulaFault TextWithoutQuotes(std::string_view word, const std::string& variable) {
  return Found(
      word, fmt::format("no variable {}. It is a value of {}: put it in quotes.", InQuotes(word), InQuotes(variable)));
}

FormulaFault NoVariableOfThisNumber(std::string_view found, int count) {
  return Found(found, count == 0 ? fmt::format("no variable {}. There are no variables.", InQuotes(found))
                                 : fmt::format("no variable {}. The variables are numbered from 1 to {}.",
                                               InQuotes(found), count));
}

FormulaFault AmbiguousName(std::string_view name,
                           const std::vector<std::string>& names,
                           const std::vector<int>& numbers) {
  std::vector<std::string> meanings;
  meanings.reserve(names.size());
  for (std::size_t i = 0; i < names.size(); ++i)
    meanings.push_back(fmt::format("{} (#{})", InQuotes(names[i]), numbers[i]));
  return {fmt::format("{} may be {}. Write the name in exactly its own case, or the number with its sign #.",
                      InQuotes(name), fmt::join(meanings, " or ")),
          InQuotes(name),
          {},
          names};
}

FormulaFault TimeNotAllowed(std::string_view name) {
  return Found(
      name, fmt::format("{} is the time, which only the formula of a time-dependent covariate has.", InQuotes(name)));
}

// ---- Functions ------------------------------------------------------------------------------------------------------

FormulaFault UnknownFunction(std::string_view name, std::vector<std::string> nearest) {
  return {fmt::format("no function {}.{}", InQuotes(name), Closest(nearest)), InQuotes(name), {}, std::move(nearest)};
}

FormulaFault VariableIsNoFunction(std::string_view name) {
  return Found(name, fmt::format("{} is a variable, not a function. To multiply, put * before the parenthesis.",
                                 InQuotes(name)));
}

FormulaFault FunctionNeedsParentheses(std::string_view name, std::string_view form) {
  return Found(name, fmt::format("{} is a function: write {}.", InQuotes(name), form));
}

FormulaFault ArgumentCount(std::string_view form, std::size_t wanted, bool orMore, std::size_t given) {
  return Sentence(fmt::format("{} takes {} argument{}{}, {} given.", form, wanted, wanted == 1 ? "" : "s",
                              orMore ? " or more" : "", given));
}

// ---- Texts of values ------------------------------------------------------------------------------------------------

FormulaFault UnknownText(const std::string& variable, std::string_view text, std::vector<std::string> nearest) {
  return {fmt::format("{} has no value {}.{}", InQuotes(variable), InQuotes(text), Closest(nearest)),
          InQuotes(text),
          {},
          std::move(nearest)};
}

FormulaFault VariableWithoutTexts(const std::string& variable, std::string_view text) {
  return Found(text, fmt::format("no variable {}, and {} holds numbers, not texts. Numbers are written without quotes.",
                                 InQuotes(text), InQuotes(variable)));
}

FormulaFault NotADate(const std::string& variable, std::string_view text) {
  return Found(text, fmt::format("{} is no date. {} holds dates, which are written as \"2024-03-31\".", InQuotes(text),
                                 InQuotes(variable)));
}

FormulaFault AmbiguousText(const std::string& variable, std::string_view text) {
  return Found(text, fmt::format("{} differs from several values of {} by case only. Write one of them as it is.",
                                 InQuotes(text), InQuotes(variable)));
}

FormulaFault OrderOfTexts(const std::string& variable, std::string_view text) {
  return Found(text, fmt::format("{} is a value of {}. Texts are compared with = and <> only.", InQuotes(text),
                                 InQuotes(variable)));
}

FormulaFault NoSuchDay(std::string_view text) {
  return Found(text, fmt::format("{} is no day of the calendar.", InQuotes(text)));
}

}  // namespace orv::FormulaMessages
