// Codes, positions and levels of factors.
//
// A factor with K selected codes has levels 1 to K. Under the overparameterized coding level and position agree. Under
// the restricted codings the reference code takes level K and the other codes keep their order.
#pragma once

#include <string>

namespace orv {

class CCoxPH;
struct CoxSettings;

// The place of a variable among the factors, from 0; FactorCount when it is none.
int FactorPlace(const CoxSettings& settings, int variable);

// Index in FactorCodes of the first code of a factor. `place` counts from 0.
int FirstCodeIndex(const CoxSettings& settings, int place);

// The level of the code at a position within the factor's codes; both count from 1.
int LevelOfPosition(const CoxSettings& settings, int place, int position);

// The position of the code that a level stands for; the inverse of LevelOfPosition.
int PositionOfLevel(const CoxSettings& settings, int place, int level);

// The position of the code that a value equals, strictly by AlmostEqual; 0 when it equals none. A value that is no
// whole number matches no code.
int PositionOfValue(const CoxSettings& settings, int place, double value);

// The text of a code: its label in the input table, or the code itself.
std::string CodeText(const CCoxPH& owner, int variable, int code);

// The text of one level of a factor, for labels. Empty when the variable is no factor or the level does not exist.
std::string FactorLevelText(const CCoxPH& owner, int variable, int level);

// The text of the reference code of a factor; empty when the variable is no factor.
std::string ReferenceLevelText(const CCoxPH& owner, int variable);

}  // namespace orv
