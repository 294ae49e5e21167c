// FormulaMeanings: what the names and texts of a formula stand for.
#pragma once

#include <optional>
#include <string_view>

#include "standalone/formula/FormulaError.h"
#include "standalone/formula/FormulaNames.h"
#include "standalone/formula/FormulaTree.h"

namespace orv {

// Whether "T_" is the time in a formula. Where it is not, it is a name like any other.
enum class TimeSymbol { None, Allowed };

struct FormulaMeaning {
  std::optional<int> Symbol;  // a variable's number from 1, or one more than there are variables for the time
  double Constant = 0.0;      // when there is no symbol
};

class FormulaMeanings {
 public:
  // Both texts and names outlive the object.
  FormulaMeanings(std::string_view formula, const FormulaNames& names, TimeSymbol time)
      : m_formula(formula), m_names(names), m_time(time) {}

  // The meaning of a Name, Quoted or VariableNumber that stands for itself. Throws FormulaError when it has none.
  FormulaMeaning Of(const FormulaNode& leaf) const;

  // One side of a comparison as the text of a value of the variable on the other side: its code or day number. Empty
  // when it is no such text but something of its own. Throws FormulaError when it is neither, or when texts cannot be
  // compared in this way.
  std::optional<double> AsText(const FormulaNode& side, const FormulaNode& other, BinaryOperation comparison) const;

 private:
  std::optional<FormulaMeaning> Known(const FormulaNode& leaf) const;
  std::optional<int> VariableOf(const FormulaNode& node) const;
  std::optional<FormulaMeaning> KnownName(std::string_view name) const;
  std::optional<FormulaMeaning> NumberedVariable(std::string_view digits) const;
  bool IsTime(std::string_view name) const;
  [[noreturn]] void FailUnknown(const FormulaNode& leaf) const;
  [[noreturn]] void Fail(const FormulaNode& leaf, FormulaFault fault) const;

  std::string_view m_formula;
  const FormulaNames& m_names;
  TimeSymbol m_time;
};

}  // namespace orv
