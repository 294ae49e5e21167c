#include "standalone/tables/ReadDatabase.h"

#include <cstdint>
#include <filesystem>
#include <system_error>

#include "standalone/tables/OrdinaryFile.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"

namespace orv {
namespace {

// SQLite takes a last page that is cut off as if zeros followed, which would read as missing values.
void RefuseIncompletePages(const std::string& path, const SqliteDatabase& database) {
  SqliteStatement pageSize(database, "PRAGMA page_size");
  const auto size = static_cast<std::uintmax_t>(pageSize.Step() ? pageSize.Integer(0) : 0);
  std::error_code error;
  if (size > 0 && std::filesystem::file_size(path, error) % size != 0)
    throw TableError(DamagedFileMessage(path, FormName(FileForm::Sqlite), "its last page is cut off"));
}

}  // namespace

MemoryTable ReadDatabase(const std::string& path,
                         const TableReadOptions& options,
                         const std::function<MemoryTable(SqliteDatabase&)>& read) {
  CheckOrdinaryFile(path, FileForm::Sqlite, true);
  try {
    SqliteDatabase database = SqliteDatabase::OpenToRead(path, options.Cancelled);
    RefuseIncompletePages(path, database);
    return read(database);
  } catch (const SqliteError& error) {
    if (error.Code() == SQLITE_INTERRUPT) throw TableReadCancelled();
    throw TableError(DamagedFileMessage(path, FormName(FileForm::Sqlite), error.what()));
  }
}

}  // namespace orv
