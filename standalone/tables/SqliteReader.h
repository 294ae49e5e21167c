// The reader of SQLite databases: one table, or what a query gives.
//
// Integers and reals are numbers, NULL is missing, and a text is read as the same text in a CSV file would be: as a
// number, a date, missing or a text (see ColumnBuilder.h). A column with both numbers and texts is a text column.
// Binary values are refused. The query runs a second time when a column turns out to be text late.
#pragma once

#include <string>

#include "standalone/tables/MemoryTable.h"
#include "standalone/tables/TableReaders.h"

namespace orv {

// `address` is a text that begins with "sqlite:" (see SqliteAddress.h). Throws TableError and TableReadCancelled.
MemoryTable ReadSqliteAddress(const std::string& address, const TableReadOptions& options);

// Reads the table of a database that has exactly one; of one with several the message names them.
MemoryTable ReadSqliteFile(const std::string& path, const TableReadOptions& options);

}  // namespace orv
