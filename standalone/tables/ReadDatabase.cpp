#include "standalone/tables/ReadDatabase.h"

#include "standalone/tables/OrdinaryFile.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"

namespace orv {

MemoryTable ReadDatabase(const std::string& path,
                         const TableReadOptions& options,
                         const std::function<MemoryTable(SqliteDatabase&)>& read) {
  CheckOrdinaryFile(path, FileForm::Sqlite, true);
  try {
    SqliteDatabase database = SqliteDatabase::OpenToRead(path, options.Cancelled);
    return read(database);
  } catch (const SqliteError& error) {
    if (error.Code() == SQLITE_INTERRUPT) throw TableReadCancelled();
    throw TableError(DamagedFileMessage(path, FormName(FileForm::Sqlite), error.what()));
  }
}

}  // namespace orv
