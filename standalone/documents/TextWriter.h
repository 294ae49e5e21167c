// TextWriter: results as plain text for a terminal or a file.
#pragma once

#include <string>

#include "standalone/documents/DocumentFormats.h"

namespace orv {

// The documents in their order, a blank line between two. A table has its titles above it, numbers to the right with
// their decimal points below each other (NumberColumn.h), missing cells blank. A table wider than `options.Width` is
// cut into blocks of columns (TableLayout.h); the row names and the columns of texts before the first number stand in
// every block. A column of names whose texts are all numbers stands to the right, too.
//
// With `options.Bold`, titles and highlighted cells are bold, and the names of rows whose numbers are all highlighted.
// A chart is told by its titles and the range of each series. The report is told elsewhere.
std::string WriteText(const RunReport& report, const ResultDocuments& documents, const WriteOptions& options);

}  // namespace orv
