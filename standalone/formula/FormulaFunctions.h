// FormulaFunctions: the functions of the formula language.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/formula/FormulaProgram.h"

namespace orv {

struct FormulaFunction {
  enum class Kind {
    OfOne,   // one argument
    OfMany,  // two arguments or more, taken from left to right
    If,      // if(condition, then, else)
  };
  std::string_view Name;
  std::string_view Form;  // as messages show it, such as "log(x)"
  Kind What;
  UnaryOperation OfOne;    // of Kind::OfOne
  BinaryOperation OfMany;  // of Kind::OfMany
};

// Null when there is none. Case does not count.
const FormulaFunction* FindFunction(std::string_view name);

// The 2 function names most like this one.
std::vector<std::string> NearestFunctions(std::string_view name);

}  // namespace orv
