// FormulaTree: a formula as it was written, before its names are looked up.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/formula/FormulaNames.h"
#include "standalone/formula/FormulaProgram.h"

namespace orv {

// The module keeps the text of a time-dependent covariate up to this length.
inline constexpr std::size_t kMaximumCharacters = 32000;
// Parentheses, functions, signs and powers that may stand within one another.
inline constexpr int kMaximumNesting = 200;

struct FormulaNode {
  enum class Kind {
    Number,
    Name,            // a word without quotes: a variable, v3, T_ or pi
    Quoted,          // a variable, or the text of a value in a comparison
    VariableNumber,  // #3
    Unary,           // OfOne on its one operand
    Chain,           // from left to right: the first operand, then the Join of each further one
    Comparison,      // two operands; Join of the second one
    If,              // three operands
  };
  Kind What = Kind::Number;
  std::size_t Position = 0;  // first byte in the formula
  std::size_t Length = 0;    // bytes of a Name, Quoted or VariableNumber, as written
  double Value = 0.0;
  std::string Text;
  UnaryOperation OfOne = UnaryOperation::Negate;
  BinaryOperation Join = BinaryOperation::Add;  // the operation by which this node joins the operands before it
  std::size_t JoinPosition = 0;
  std::vector<FormulaNode> Operands;
};

// Parses a formula. Throws FormulaError. The depth of the tree, and that of the calls, is bounded by kMaximumNesting.
// The names serve one message only: they tell a variable before a parenthesis from a misspelt function.
FormulaNode ParseFormula(std::string_view formula, const FormulaNames& names);

}  // namespace orv
