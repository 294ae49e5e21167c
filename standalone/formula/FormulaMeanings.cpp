#include "standalone/formula/FormulaMeanings.h"

#include <algorithm>
#include <charconv>
#include <numbers>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "standalone/formula/FormulaCharacters.h"
#include "standalone/formula/FormulaFunctions.h"
#include "standalone/formula/FormulaMessages.h"
#include "standalone/formula/FormulaTokens.h"

namespace orv {
namespace {

using Kind = FormulaNode::Kind;
namespace Messages = FormulaMessages;

// The digits of v3; empty for any other word.
std::string_view DigitsAfterV(std::string_view word) {
  if (word.size() < 2 || (word[0] != 'v' && word[0] != 'V')) return {};
  const std::string_view digits = word.substr(1);
  return std::all_of(digits.begin(), digits.end(), IsDigit) ? digits : std::string_view();
}

bool HasLabels(const FormulaVariable& variable) {
  return variable.Labels != nullptr && !variable.Labels->empty();
}

}  // namespace

FormulaMeaning FormulaMeanings::Of(const FormulaNode& leaf) const {
  if (const std::optional<FormulaMeaning> known = Known(leaf)) return *known;
  FailUnknown(leaf);
}

std::optional<double> FormulaMeanings::AsText(const FormulaNode& side,
                                              const FormulaNode& other,
                                              BinaryOperation comparison) const {
  if (side.What != Kind::Quoted && side.What != Kind::Name) return std::nullopt;
  const std::optional<int> number = VariableOf(other);
  if (!number) return std::nullopt;
  const FormulaVariable& variable = m_names.Variable(*number);
  const TextValue text = FindTextValue(variable, side.Text);
  if (side.What == Kind::Name) {
    if (text.What == TextValue::Kind::Label && !Known(side) && m_names.Find(side.Text).empty())
      Fail(side, Messages::TextWithoutQuotes(side.Text, variable.Name));
    return std::nullopt;
  }
  const bool isVariable = m_names.Has(side.Text);
  switch (text.What) {
    case TextValue::Kind::Date:
      return text.Code;
    case TextValue::Kind::Label:
      if (comparison == BinaryOperation::Equal || comparison == BinaryOperation::NotEqual) return text.Code;
      if (isVariable) return std::nullopt;
      Fail(side, Messages::OrderOfTexts(variable.Name, side.Text));
    case TextValue::Kind::Ambiguous:
      if (isVariable) return std::nullopt;
      Fail(side, Messages::AmbiguousText(variable.Name, side.Text));
    case TextValue::Kind::NoSuchDay:
      if (isVariable) return std::nullopt;
      Fail(side, Messages::NoSuchDay(side.Text));
    case TextValue::Kind::None:
      break;
  }
  if (isVariable) return std::nullopt;
  if (HasLabels(variable))
    Fail(side, Messages::UnknownText(variable.Name, side.Text, NearestTexts(variable, side.Text)));
  Fail(side, variable.HoldsDates ? Messages::NotADate(variable.Name, side.Text)
                                 : Messages::VariableWithoutTexts(variable.Name, side.Text));
}

std::optional<FormulaMeaning> FormulaMeanings::Known(const FormulaNode& leaf) const {
  if (leaf.What == Kind::VariableNumber) return NumberedVariable(std::string_view(leaf.Text).substr(1));
  if (leaf.What == Kind::Name) return KnownName(leaf.Text);
  const std::vector<int> found = m_names.Find(leaf.Text);
  return found.size() == 1 ? std::optional(FormulaMeaning{found.front(), 0.0}) : std::nullopt;
}

// A variable comes before what the language itself gives a word, but for the time.
std::optional<FormulaMeaning> FormulaMeanings::KnownName(std::string_view name) const {
  if (m_time == TimeSymbol::Allowed && IsTime(name)) return FormulaMeaning{m_names.Count() + 1, 0.0};
  const std::vector<int> found = m_names.Find(name);
  if (found.size() > 1) return std::nullopt;
  if (!found.empty()) return FormulaMeaning{found.front(), 0.0};
  if (const std::string_view digits = DigitsAfterV(name); !digits.empty()) return NumberedVariable(digits);
  if (SameButForCase(name, "pi")) return FormulaMeaning{std::nullopt, std::numbers::pi};
  return std::nullopt;
}

std::optional<FormulaMeaning> FormulaMeanings::NumberedVariable(std::string_view digits) const {
  int number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const bool valid = error == std::errc() && end == digits.data() + digits.size();
  if (!valid || number < 1 || number > m_names.Count()) return std::nullopt;
  return FormulaMeaning{number, 0.0};
}

// The variable that a node is, when it is nothing but one.
std::optional<int> FormulaMeanings::VariableOf(const FormulaNode& node) const {
  if (node.What != Kind::Name && node.What != Kind::Quoted && node.What != Kind::VariableNumber) return std::nullopt;
  const std::optional<FormulaMeaning> known = Known(node);
  if (!known || !known->Symbol || *known->Symbol > m_names.Count()) return std::nullopt;
  return known->Symbol;
}

bool FormulaMeanings::IsTime(std::string_view name) const {
  return name.size() == 2 && SameButForCase(name, "t_");
}

void FormulaMeanings::FailUnknown(const FormulaNode& leaf) const {
  if (leaf.What == Kind::VariableNumber) Fail(leaf, Messages::NoVariableOfThisNumber(leaf.Text, m_names.Count()));
  const std::vector<int> found = m_names.Find(leaf.Text);
  if (!found.empty()) {
    std::vector<std::string> names;
    names.reserve(found.size());
    for (const int number : found) names.push_back(m_names.Variable(number).Name);
    Fail(leaf, Messages::AmbiguousName(leaf.Text, names, found));
  }
  if (leaf.What == Kind::Name) {
    if (IsTime(leaf.Text)) Fail(leaf, Messages::TimeNotAllowed(leaf.Text));
    if (!DigitsAfterV(leaf.Text).empty()) Fail(leaf, Messages::NoVariableOfThisNumber(leaf.Text, m_names.Count()));
    if (const std::string_view number = LeadingNumber(leaf.Text); !number.empty())
      Fail(leaf, Messages::MalformedNumber(leaf.Text, number));
    if (const FormulaFunction* function = FindFunction(leaf.Text))
      Fail(leaf, Messages::FunctionNeedsParentheses(leaf.Text, function->Form));
  }
  Fail(leaf, Messages::UnknownVariable(leaf.Text, m_names.Nearest(leaf.Text)));
}

void FormulaMeanings::Fail(const FormulaNode& leaf, FormulaFault fault) const {
  throw FormulaError(m_formula, leaf.Position, std::move(fault));
}

}  // namespace orv
