// CompileFormula: turns the text of a formula into a program for EvaluateFormula.
//
// The language is described in docs/formulas.md.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "standalone/formula/FormulaError.h"
#include "standalone/formula/FormulaMeanings.h"
#include "standalone/formula/FormulaNames.h"

namespace orv {

struct CompiledFormula {
  std::vector<std::byte> Program;  // at most 32000 bytes; see FormulaProgram.h
  // The symbols that the formula reads, once each, in order of their first appearance: numbers of variables, from 1,
  // and one more than there are variables for the time. The program reads argument k as the value of Symbols[k].
  std::vector<int> Symbols;
};

// Throws FormulaError, with the place, for a formula that is no formula, names what is not there, or is too long or too
// deep. Any bytes may be passed.
CompiledFormula CompileFormula(std::string_view formula, const FormulaNames& names, TimeSymbol time = TimeSymbol::None);

}  // namespace orv
