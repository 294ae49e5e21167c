#include "standalone/formula/FormulaFunctions.h"

#include <algorithm>
#include <iterator>

#include "standalone/formula/FormulaCharacters.h"
#include "standalone/tables/NearestNames.h"

namespace orv {
namespace {

constexpr FormulaFunction OfOne(std::string_view name, std::string_view form, UnaryOperation operation) {
  return {name, form, FormulaFunction::Kind::OfOne, operation, BinaryOperation::Add};
}

constexpr FormulaFunction OfMany(std::string_view name, std::string_view form, BinaryOperation operation) {
  return {name, form, FormulaFunction::Kind::OfMany, UnaryOperation::Negate, operation};
}

constexpr FormulaFunction kFunctions[] = {
    OfOne("abs", "abs(x)", UnaryOperation::Absolute),
    OfOne("acos", "acos(x)", UnaryOperation::ArcCosine),
    OfOne("arccos", "arccos(x)", UnaryOperation::ArcCosine),
    OfOne("arcsin", "arcsin(x)", UnaryOperation::ArcSine),
    OfOne("arctan", "arctan(x)", UnaryOperation::ArcTangent),
    OfOne("asin", "asin(x)", UnaryOperation::ArcSine),
    OfOne("atan", "atan(x)", UnaryOperation::ArcTangent),
    OfOne("ceil", "ceil(x)", UnaryOperation::Ceiling),
    OfOne("cos", "cos(x)", UnaryOperation::Cosine),
    OfOne("exp", "exp(x)", UnaryOperation::Exponential),
    OfOne("floor", "floor(x)", UnaryOperation::Floor),
    {"if", "if(condition, a, b)", FormulaFunction::Kind::If, UnaryOperation::Negate, BinaryOperation::Add},
    OfOne("ln", "ln(x)", UnaryOperation::Logarithm),
    OfOne("log", "log(x)", UnaryOperation::Logarithm),
    OfOne("log10", "log10(x)", UnaryOperation::Logarithm10),
    OfOne("log2", "log2(x)", UnaryOperation::Logarithm2),
    OfMany("max", "max(a, b)", BinaryOperation::Maximum),
    OfMany("min", "min(a, b)", BinaryOperation::Minimum),
    OfOne("missing", "missing(x)", UnaryOperation::Missing),
    OfOne("round", "round(x)", UnaryOperation::Round),
    OfOne("sign", "sign(x)", UnaryOperation::Sign),
    OfOne("sin", "sin(x)", UnaryOperation::Sine),
    OfOne("sqrt", "sqrt(x)", UnaryOperation::SquareRoot),
    OfOne("tan", "tan(x)", UnaryOperation::Tangent),
    OfOne("trunc", "trunc(x)", UnaryOperation::Truncate),
};

// No name of a function is longer; a longer word is not like any of them either.
constexpr std::size_t kLongestName = 20;

}  // namespace

const FormulaFunction* FindFunction(std::string_view name) {
  if (name.size() > kLongestName) return nullptr;
  const std::string folded = FoldCase(name);
  const auto* found = std::find_if(std::begin(kFunctions), std::end(kFunctions),
                                   [&](const FormulaFunction& function) { return function.Name == folded; });
  return found == std::end(kFunctions) ? nullptr : found;
}

std::vector<std::string> NearestFunctions(std::string_view name) {
  constexpr std::size_t kNearest = 2;
  if (name.size() > kLongestName) return {};
  std::vector<std::string_view> candidates;
  for (const FormulaFunction& function : kFunctions) candidates.push_back(function.Name);
  return NearestNames(name, candidates, kNearest);
}

}  // namespace orv
