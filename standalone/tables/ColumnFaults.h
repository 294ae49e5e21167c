// What columns refuse once all their cells are known.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "standalone/tables/ColumnBuilder.h"

namespace orv {

// Throws TableError for the first value, in the order of the file, that its column refuses.
//
//   unit   what messages call the place of a case: "line" or "row"
//   names  one a column
void RefuseFaultyValues(const std::string& source,
                        std::string_view unit,
                        const std::vector<std::string>& names,
                        const std::vector<ColumnBuilder>& columns);

}  // namespace orv
