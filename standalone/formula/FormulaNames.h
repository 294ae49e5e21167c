// FormulaNames: the variables that a formula may name, and the texts that stand for their values.
//
// Made once for a table and used for any number of formulas. Variables are numbered from 1. Names match without regard
// to case, but a name in exactly the case of the formula comes first.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "standalone/tables/MemoryTable.h"

namespace orv {

struct FormulaVariable {
  std::string Name;
  // The texts of its values; null or empty when it has none. Belongs to the caller and outlives the FormulaNames.
  const std::vector<ValueLabel>* Labels = nullptr;
  bool HoldsDates = false;  // its values are day numbers and may be compared with "2024-03-31"
};

class FormulaNames {
 public:
  explicit FormulaNames(std::vector<FormulaVariable> variables);
  // All variables of a table, with its texts and dates. The table outlives the object.
  static FormulaNames OfTable(const MemoryTable& table);

  int Count() const { return static_cast<int>(m_variables.size()); }
  // REQUIRES: 1 <= number <= Count().
  const FormulaVariable& Variable(int number) const { return m_variables[static_cast<std::size_t>(number) - 1]; }

  // The numbers of the variables that a name may stand for: of those with exactly this name, or else of those whose
  // names differ from it by case only. Ascending; empty when there is none, several when the name is ambiguous.
  std::vector<int> Find(std::string_view name) const;
  bool Has(std::string_view name) const { return !Find(name).empty(); }

  // At most 3 names like this one, the nearest first. None for a name beyond any table's.
  std::vector<std::string> Nearest(std::string_view name) const;

 private:
  std::vector<FormulaVariable> m_variables;
  std::unordered_map<std::string, std::vector<int>> m_byFoldedName;
};

// What a text is as a value of a variable.
struct TextValue {
  enum class Kind {
    None,       // the variable has no such text
    Label,      // a text with a code
    Ambiguous,  // several texts differ from it by case only
    Date,       // a day of the calendar, the variable holding dates
    NoSuchDay,  // the form of a date, the variable holding dates, but no day of the calendar
  };
  Kind What = Kind::None;
  double Code = 0.0;  // the code of the text or the day number
};

// A label in exactly this case comes first, then one that differs by case only, then a date.
TextValue FindTextValue(const FormulaVariable& variable, std::string_view text);

// At most 3 texts of a variable like this one, the nearest first.
std::vector<std::string> NearestTexts(const FormulaVariable& variable, std::string_view text);

}  // namespace orv
