// HtmlWriter: results as one page for a browser and a printer.
#pragma once

#include <string>

#include "standalone/documents/DocumentFormats.h"

namespace orv {

// One file that needs nothing besides: no script, no picture, no other address. It holds the facts of the run
// (RunFacts.h) and the documents in their order, each as a section with its first title line as a heading. A sheet is a
// table with a numbered caption, column and row headers, and numbers to the right in the shapes of the text form, so
// that their decimal points stand below each other. Highlighted cells are bold on a tinted ground, and a bar stands
// beside the name of a row whose numbers are all highlighted. A table that is too wide for a sheet of paper is cut into
// parts, one below the other, as in the text form. On a screen that is narrower still, tables scroll in boxes of their
// own.
//
// A text is preformatted; a chart is told by its ranges. The cost is linear in the number of cells. The options do not
// matter.
std::string WriteHtml(const RunReport& report, const ResultDocuments& documents, const WriteOptions& options);

}  // namespace orv
