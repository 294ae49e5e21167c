// SqliteDatabase and SqliteStatement: an open SQLite database and a statement in it, closed by their destructors.
//
// A database that is read may come from anywhere: its schema is not trusted.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace orv {

// What SQLite reports. what() is SQLite's own text, for a message that names the file.
class SqliteError : public std::runtime_error {
 public:
  explicit SqliteError(sqlite3* database);
  SqliteError(int code, const std::string& text) : std::runtime_error(text), m_code(code) {}
  int Code() const { return m_code; }                  // the primary result code, such as SQLITE_CORRUPT
  int SystemReason() const { return m_systemReason; }  // error number of the operating system; 0 when it is not known

 private:
  int m_code;
  int m_systemReason = 0;
};

class SqliteDatabase {
 public:
  // Opens an existing file for reading alone. A row or a value beyond 64 MiB is an error. `interrupted` is asked while
  // a statement runs; true ends the statement with SQLITE_INTERRUPT. Throws SqliteError and std::bad_alloc.
  static SqliteDatabase OpenToRead(const std::string& path, std::function<bool()> interrupted);
  // Opens an empty file to be filled and renamed afterwards: without a journal, since the file is lost with any
  // failure.
  static SqliteDatabase OpenToFill(const std::string& path);

  // From now on statements may do nothing but select: no settings, no other files, no changes.
  void AllowOnlySelecting();

  sqlite3* Handle() const { return m_handle.get(); }
  // Runs statements that give no rows. Throws SqliteError.
  void Execute(const std::string& statements);
  // Closes the database. Throws SqliteError.
  void Close();

 private:
  struct Closer {
    void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
  };
  SqliteDatabase(const std::string& path, int flags);

  std::unique_ptr<sqlite3, Closer> m_handle;
  std::unique_ptr<std::function<bool()>> m_interrupted;  // at an address that SQLite may keep
};

class SqliteStatement {
 public:
  // Throws SqliteError: SQLITE_MISUSE when the text holds no statement or more than one.
  SqliteStatement(const SqliteDatabase& database, std::string_view sql);

  // The next row; false after the last. Throws SqliteError and std::bad_alloc.
  bool Step();
  // Back to the first row, or ready for other values.
  void Reset();
  int ColumnCount() const { return sqlite3_column_count(m_handle.get()); }
  std::string ColumnName(int column) const;

  // Values of the current row; columns count from 0. The type is one of SQLITE_INTEGER, _FLOAT, _TEXT, _BLOB, _NULL.
  int Type(int column) const { return sqlite3_column_type(m_handle.get(), column); }
  double Number(int column) const { return sqlite3_column_double(m_handle.get(), column); }
  std::int64_t Integer(int column) const { return sqlite3_column_int64(m_handle.get(), column); }
  // Until the next call for this column or the next row. Throws std::bad_alloc.
  std::string_view Text(int column) const;

  // Parameters count from 1. A text must stay until the statement has been stepped.
  void Bind(int parameter, double value);
  void BindInteger(int parameter, std::int64_t value);
  void Bind(int parameter, std::string_view text);
  void BindNull(int parameter);

 private:
  struct Finalizer {
    void operator()(sqlite3_stmt* handle) const { sqlite3_finalize(handle); }
  };
  void Check(int code) const;

  sqlite3* m_database;
  std::unique_ptr<sqlite3_stmt, Finalizer> m_handle;
};

// A name as SQL takes it: in double quotes.
std::string QuotedName(std::string_view name);

}  // namespace orv
