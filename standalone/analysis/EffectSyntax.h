// The effect syntax: how a person writes the effects of a design.
//
//   effects = effect { "," effect }
//   effect  = name { "*" name } [ "(" name { "*" name } ")" ]
//   name    = any characters but , * ( ) " and without blanks around, or any characters between double quotes
//
// "age" is a main effect, "age*sex" a cross, "clinic(region)" clinic nested in region. Quotes serve names that hold one
// of the signs; a quote within a quoted name is doubled.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orv {

struct WrittenEffect {
  std::string Text;                  // as written, for messages
  std::vector<std::string> Crossed;  // the names before the parenthesis
  std::vector<std::string> Nesting;  // the names within, empty without nesting
};

// Throws DefinitionError with the place and what was expected.
std::vector<WrittenEffect> ParseEffects(std::string_view text);

// The name of an effect as tables show it: "age*sex", "clinic(region)".
std::string EffectName(const WrittenEffect& effect);

}  // namespace orv
