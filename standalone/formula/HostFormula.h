// HostFormula: compiling and evaluating formulas in the form in which the module asks its host for them.
#pragma once

#include "host/Host.h"
#include "standalone/formula/FormulaNames.h"

namespace orv {

// Compiles a formula that the module hands over; the work of `Host::COMP`.
//
//   text   one byte that does not count (the length of the formula plus 1, cut to 8 bits), the formula in upper case,
//          ";" and a zero byte
//   names  the names of all variables in order; when the last one is "T_" it is no variable but the time
//   area   out: the instructions, when there is room for them; the symbols as far as there is room, and their full
//          count; ErrorPosition 0, or for a formula that cannot be compiled its first wrong byte, from 1
//
// Returns 0, or 5 when memory is out.
int CompileHostFormula(const char* text, const CAnalysisNamesArray& names, CompiledFormulaArea& area);

// The same for a host that knows the texts and dates of its variables. `variables` are those of the table; the time is
// the symbol after the last of them.
int CompileHostFormula(const char* text, const FormulaNames& variables, CompiledFormulaArea& area);

// Evaluates the instructions; the work of `Host::RunSpreadsheetFormula`. Returns 0, or 1 on a numerical failure and for
// a missing result, which no computation can use; `result` is unchanged then.
int RunHostFormula(const double* arguments, const unsigned char* instructions, double& result);

}  // namespace orv
