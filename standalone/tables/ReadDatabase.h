// ReadDatabase: the frame around every reading of an SQLite file.
#pragma once

#include <functional>
#include <string>

#include "standalone/tables/MemoryTable.h"
#include "standalone/tables/SqliteDatabase.h"
#include "standalone/tables/TableReaders.h"

namespace orv {

// Opens a file for reading and calls `read` with it. What SQLite reports becomes a TableError that names the file, and
// a statement that the user broke off TableReadCancelled. A file of another form is refused before it is opened.
MemoryTable ReadDatabase(const std::string& path,
                         const TableReadOptions& options,
                         const std::function<MemoryTable(SqliteDatabase&)>& read);

}  // namespace orv
