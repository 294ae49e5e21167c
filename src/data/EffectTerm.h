// Terms: the symbolic form of an effect, such as "v3", "v3*v5", "v4(v2)" or "v3*TIME_EXPRESSION1".
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "data/CoxDesignColumn.h"

namespace orv {

struct CoxSettings;

inline constexpr std::string_view kTimeExpressionSymbol = "TIME_EXPRESSION";

// "v3" for variable 3.
std::string VariableSymbol(int variable);
// "TIME_EXPRESSION2" for the second time-dependent covariate; positions count from 1.
std::string TimeExpressionSymbol(int position);

// Appends the variables of a term to `record`, with their roles: covariate when the number is among
// CovariateVariables, else factor. The first character is taken to be a "v" and is not looked at. Nesting and crossing
// are the same to the parser.
void ParseEffect(const CoxSettings& settings, std::string_view term, CoxDesignColumn& record);

// The same for designs with time-dependent covariates: an expression symbol goes to ExpressionIds, with role -1. A term
// that ends in ")" takes a spurious expression 0: kept, since nesting needs the overparameterized coding, which such
// designs do not use.
void ParseTimeEffect(const CoxSettings& settings, std::string_view term, CoxDesignColumn& record);

}  // namespace orv
