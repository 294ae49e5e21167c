// The list syntax: how a person writes several names, codes or numbers in one option.
//
//   list       = item { "," item }
//   assignment = item "=" list
//   values     = item "=" item { "," item "=" item }
//   item       = any characters but the signs that follow it, or any characters between double quotes
//
// Blanks around an item do not count. Quotes serve names and labels that hold a comma (or, before the "=", an equals
// sign); a quote within a quoted item is doubled. An item that does not begin with a quote may hold some.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orv {

// The items of a list. Throws DefinitionError when one of them is empty or a quote is not closed.
std::vector<std::string> SplitList(const std::string& option, std::string_view text);

// Codes that belong to a factor.
struct CodeAssignment {
  std::string Factor;
  std::vector<std::string> Codes;  // at least one
};

// "F=C,C,...". Throws DefinitionError for another form.
CodeAssignment ParseCodes(const std::string& option, std::string_view text);

// "F=C": one code, which may hold commas without quotes. Throws DefinitionError for another form.
CodeAssignment ParseReference(const std::string& option, std::string_view text);

// "V=X, V=X": one value of each variable. Throws DefinitionError for another form.
std::vector<CodeAssignment> ParseValues(const std::string& option, std::string_view text);

// An item as a list shows it to a person: in quotes when it holds a comma.
std::string ListItem(std::string_view item);

// "F=C,C,..." as ParseCodes, ParseReference and ParseValues read it, with quotes where they are needed.
// REQUIRES: the factor and the codes are not empty.
std::string AssignmentText(const CodeAssignment& assignment);

}  // namespace orv
