// FormulaTokens: the words, numbers and signs of a formula.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "standalone/formula/FormulaError.h"

namespace orv {

enum class TokenKind {
  End,
  Number,
  Name,            // a word without quotes; it may begin with a digit
  Quoted,          // anything between double or single quotes
  VariableNumber,  // #3
  Plus,
  Minus,
  Times,
  Divide,
  Power,
  Equal,
  NotEqual,
  Less,
  LessOrEqual,
  Greater,
  GreaterOrEqual,
  And,
  Or,
  Not,
  Open,
  Close,
  Comma,
  Unknown,  // one character that no formula has
};

struct FormulaToken {
  TokenKind Kind = TokenKind::End;
  std::size_t Position = 0;  // first byte in the formula, from 0
  std::size_t Length = 0;    // bytes
  double Value = 0.0;        // of a Number
  std::string Text;          // of a Name, as written; of a Quoted, without its quotes and with doubled ones as one
};

class FormulaTokens {
 public:
  // The text outlives the object.
  explicit FormulaTokens(std::string_view formula) : m_formula(formula) {}

  // The next token, End again and again after the last. Throws FormulaError.
  FormulaToken Next();

  // What the formula has at a token.
  std::string_view Written(const FormulaToken& token) const { return m_formula.substr(token.Position, token.Length); }

  [[noreturn]] void Fail(std::size_t position, FormulaFault fault) const;

 private:
  void SkipBlanks();
  bool AtNumber() const;
  FormulaToken Number();
  FormulaToken Word(std::size_t length) const;
  FormulaToken Quoted() const;
  FormulaToken VariableNumber() const;
  FormulaToken Sign() const;
  std::size_t NumberEnd() const;

  std::string_view m_formula;
  std::size_t m_at = 0;
};

// The digits at the start of a word, with a point and digits after them; empty when it starts with neither.
std::string_view LeadingNumber(std::string_view word);

}  // namespace orv
