// Names of coefficients in the tables that have one row or column for each.
#pragma once

#include <string>
#include <vector>

namespace orv {

class CCoxData;
struct CoxDesignColumn;
class CCoxPH;

// The text of a factor's level for a column of one variable; the place in the effect for a column of several variables
// with a factor among them; otherwise empty.
std::string LevelText(const CCoxPH& owner, const CoxDesignColumn& column);

// The effect's name, with "_" and the level text when there is one. One per coefficient, in design order.
std::vector<std::string> CoefficientLabels(const CCoxData& data);

}  // namespace orv
