// The messages about formulas that cannot be compiled: one function a message, so that the tone stays even.
//
// Texts that come from the formula are the exact bytes; the messages shorten them and show control characters as
// blanks.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/formula/FormulaError.h"

namespace orv::FormulaMessages {

// ---- Grammar --------------------------------------------------------------------------------------------------------
FormulaFault Empty();
FormulaFault TooManyCharacters(std::size_t count);
// `found` is what stands in the formula, empty at its end. `expected` is a list such as `an operator or ")"`.
FormulaFault Unexpected(std::string_view found, const std::string& expected);
FormulaFault ChainedComparison(std::string_view found);
// "not" after a sign that binds tighter.
FormulaFault NotNeedsParentheses(std::string_view found);
FormulaFault TooDeep();
FormulaFault TooLong();

// ---- Characters and numbers -----------------------------------------------------------------------------------------
FormulaFault NotUtf8();
FormulaFault OtherSpelling(std::string_view found, std::string_view write);
FormulaFault UnclosedQuote(std::string_view quote);
FormulaFault NothingBetweenQuotes();
FormulaFault NumberOutOfRange(std::string_view number);
// `number` is the part of `found` that is a number; empty when no part of it is.
FormulaFault MalformedNumber(std::string_view found, std::string_view number);
FormulaFault DecimalComma(std::string_view whole, std::string_view fraction);

// ---- Variables ------------------------------------------------------------------------------------------------------
FormulaFault UnknownVariable(std::string_view name, std::vector<std::string> nearest);
// A bare word that is a value of the variable on the other side of a comparison.
FormulaFault TextWithoutQuotes(std::string_view word, const std::string& variable);
FormulaFault NoVariableOfThisNumber(std::string_view found, int count);
FormulaFault AmbiguousName(std::string_view name,
                           const std::vector<std::string>& names,
                           const std::vector<int>& numbers);
FormulaFault TimeNotAllowed(std::string_view name);

// ---- Functions ------------------------------------------------------------------------------------------------------
FormulaFault UnknownFunction(std::string_view name, std::vector<std::string> nearest);
FormulaFault VariableIsNoFunction(std::string_view name);
FormulaFault FunctionNeedsParentheses(std::string_view name, std::string_view form);
// `form` shows the function, such as "log(x)".
FormulaFault ArgumentCount(std::string_view form, std::size_t wanted, bool orMore, std::size_t given);

// ---- Texts of values ------------------------------------------------------------------------------------------------
FormulaFault UnknownText(const std::string& variable, std::string_view text, std::vector<std::string> nearest);
FormulaFault VariableWithoutTexts(const std::string& variable, std::string_view text);
FormulaFault NotADate(const std::string& variable, std::string_view text);
FormulaFault AmbiguousText(const std::string& variable, std::string_view text);
FormulaFault OrderOfTexts(const std::string& variable, std::string_view text);
FormulaFault NoSuchDay(std::string_view text);

}  // namespace orv::FormulaMessages
