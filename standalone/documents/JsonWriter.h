// JsonWriter: a run as one JSON object, for programs.
#pragma once

#include <string>

#include "standalone/documents/DocumentFormats.h"

namespace orv {

// Members, in this order: program, version, cases, left_out_columns, converged, status, iterations, messages,
// documents. What is not known is left out: `cases` of a run that ended before its cases were read, `status` and
// `iterations` of a run without a fit, whose `converged` is false, and the `id` of a message that has none.
//
// A sheet has kind, name, titles, columns, rows, cells, highlighted, properties; `cells` and `highlighted` have one
// array per row. A text has kind, name, title, text, properties; a chart kind, name, titles, x_title, y_title, series,
// properties. `properties` of a text or chart is left out when it has none. Numbers carry all digits, a missing one is
// null. The options do not matter.
std::string WriteJson(const RunReport& report, const ResultDocuments& documents, const WriteOptions& options);

}  // namespace orv
