// MarkdownWriter: results in GitHub Flavored Markdown, to be pasted into an issue, a notebook or a page.
#pragma once

#include <string>

#include "standalone/documents/DocumentFormats.h"

namespace orv {

// A heading, the facts of the run (RunFacts.h) as a list, and the documents in their order, each under a heading. A
// sheet is one table whatever its width, with numbers to the right, in the shapes of the text form, and highlighted
// cells in bold. Cells are padded so that the source can be read, too, but not beyond 40 characters. Lines of a title
// behind the first stand above the table. A text stands in a fenced block; a chart is told by its ranges. The options
// do not matter.
std::string WriteMarkdown(const RunReport& report, const ResultDocuments& documents, const WriteOptions& options);

}  // namespace orv
