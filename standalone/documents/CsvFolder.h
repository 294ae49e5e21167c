// CsvFolder: results as a folder of files, one a document, for programs that read tables.
#pragma once

#include "standalone/documents/ResultDocuments.h"
#include "standalone/documents/RunReport.h"
#include "standalone/documents/WriteFolderAtomically.h"

namespace orv {

// Hands over, in this order:
//
//   00-run.csv       item, value: the facts of the run (RunFacts.h)
//   00-contents.csv  file, result, title: one record for each file that follows. A title of several lines keeps them
//   NN-NAME.csv      a sheet: the number of the document from 01, and the result's name. The first record names the
//                    columns; the first column holds the row names unless none has a name. Numbers carry all their
//                    digits, what is missing is empty. A column without a title is called "value", the row names
//                    "name". A chart is the table of its points
//   NN-NAME.txt      a text, as it is
void WriteCsvFiles(const RunReport& report, const ResultDocuments& documents, const FileSink& sink);

}  // namespace orv
