// The reader of delimited text: CSV and its relatives.
//
// The first line names the variables, every further line is a case (see DelimitedRecords.h for lines and fields,
// CellText.h for values and ColumnBuilder.h for the type of a column). Names and values have no blanks around them.
// A text column becomes codes 1..K with its texts, sorted by their bytes, as labels; a date column days since
// 1970-01-01. Every variable has the missing code kMissingCode. The cases have no names.
//
// The file is read once, in blocks of 256 KiB; a second time only when a column that began as numbers or dates turns
// out to be text.
#pragma once

#include <string>

#include "standalone/tables/ByteSource.h"
#include "standalone/tables/MemoryTable.h"
#include "standalone/tables/TableReaders.h"

namespace orv {

// Reads from a source; `name` is its name in messages, `preferTab` as in DelimitedRecords. Throws TableError and
// TableReadCancelled, as the other two do.
MemoryTable ReadDelimited(ByteSource& source, const std::string& name, bool preferTab, const TableReadOptions& options);

// Reads a file. In one that ends in .tsv a tab in the first line is the delimiter.
MemoryTable ReadDelimitedFile(const std::string& path, const TableReadOptions& options);

// Reads options.StandardInput.
MemoryTable ReadDelimitedStream(const TableReadOptions& options);

}  // namespace orv
