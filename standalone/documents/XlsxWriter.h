// XlsxWriter: results as a workbook for spreadsheet programs (Office Open XML).
#pragma once

#include <string>

#include "standalone/documents/DocumentFormats.h"

namespace orv {

// The first sheet, "Run", holds the facts of the run (RunFacts.h). Then each document has a sheet under the name of its
// result (XlsxNames.h), as XlsxSheet lays it out; one of more rows than the format allows is continued on sheets behind
// it. A text has a row for each line, a chart one for each point. The same results give the same bytes, as long as the
// library that compresses them is the same.
//
// REQUIRES: WhyNotXlsx is empty. Throws OutputError when the workbook cannot be packed. The options do not matter.
std::string WriteXlsx(const RunReport& report, const ResultDocuments& documents, const WriteOptions& options);

// Why a workbook cannot hold the documents; empty when it can. The text follows "cannot be written: ".
std::string WhyNotXlsx(const ResultDocuments& documents);

}  // namespace orv
