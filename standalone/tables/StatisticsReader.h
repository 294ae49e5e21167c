// The readers of files of other statistics programs, by the ReadStat library: .sas7bdat, .xpt, .sav, .por and .dta.
//
// A text variable becomes codes 1..K with its texts, sorted by their bytes, as labels, as in a CSV file; one without
// any text holds numbers. A number with a date format becomes a day number (see StatisticsDates.h). Missing is what the
// file says is missing, whichever kind of missing it tells apart, and a text that would be missing in a CSV file. Value
// labels of numbers, labels of variables and formats are kept; weights, selections and value labels of texts are not.
#pragma once

#include <string>

#include "standalone/tables/MemoryTable.h"
#include "standalone/tables/TableReaders.h"

namespace orv {

// All throw TableError and TableReadCancelled.
MemoryTable ReadSasFile(const std::string& path, const TableReadOptions& options);
MemoryTable ReadSasTransportFile(const std::string& path, const TableReadOptions& options);
MemoryTable ReadSpssFile(const std::string& path, const TableReadOptions& options);
MemoryTable ReadSpssPortableFile(const std::string& path, const TableReadOptions& options);
MemoryTable ReadStataFile(const std::string& path, const TableReadOptions& options);

}  // namespace orv
