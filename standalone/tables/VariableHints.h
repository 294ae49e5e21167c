// What a variable could serve for in an analysis, guessed from its values alone.
#pragma once

#include <string_view>

#include "standalone/tables/MemoryTable.h"

namespace orv {

// "status or factor?"  two distinct values that are whole numbers or texts
// "factor?"            3 to 10 distinct whole numbers, or 3 to 500 distinct labelled values or texts, and at least
// twice as
//                      many valid cases
// "time?"              many distinct numbers, none negative and without labels: more than 20, or more than half as many
// as
//                      valid cases. The numbers of the cases, 1, 2, 3 and so on, are none
// "date?"              dates, of which two make a time
// Empty when nothing fits.
std::string_view HintOnVariable(const TableVariable& variable);

}  // namespace orv
