// Codes of a variable: what a table holds, and what a person means by a number or a label.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/tables/MemoryTable.h"

namespace orv {

// Where cases may be selected, `isSelected` has a flag a case, in order; empty, every case counts.

// The distinct values of a variable that are not missing, ascending. Stops after `limit` + 1 of them.
std::vector<double> DistinctValues(const MemoryTable& table,
                                   int variable,
                                   std::size_t limit,
                                   const std::vector<char>& isSelected = {});

// The codes of a factor or strata variable as the table holds them, ascending. Throws DefinitionError when a value is
// no whole number or out of range, or when there are more than 500.
std::vector<std::int32_t> FindCodes(const std::string& option,
                                    const MemoryTable& table,
                                    int variable,
                                    const std::vector<char>& isSelected = {});

// The value that a text means: a label of the variable or, unless the variable holds texts, a number. Empty when it is
// neither.
std::optional<double> CodeOfText(const MemoryTable& table, int variable, std::string_view text);

// Throws DefinitionError for a code of a factor, stratum or response beyond -9999999 to 9999999.
void CheckCodeRange(const std::string& option, const MemoryTable& table, int variable, double code);

// A value as a person would write it in a list: its label, or the number in its shortest form.
std::string ValueText(const MemoryTable& table, int variable, double value);

// The first values of a variable for a message, such as "1, 2, 3, ...".
std::string ValuesForMessage(const MemoryTable& table, int variable, const std::vector<char>& isSelected = {});

// A decimal number without anything around it but blanks; empty when the text is none.
std::optional<double> ParseNumber(std::string_view text);

}  // namespace orv
