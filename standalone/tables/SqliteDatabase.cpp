#include "standalone/tables/SqliteDatabase.h"

#include <cerrno>
#include <new>
#include <utility>

namespace orv {
namespace {

constexpr int kLongestRow = 64 * 1024 * 1024;  // bytes
constexpr int kInstructionsBetweenQueries = 10000;

// Refuses whatever is more than reading: attaching other files, settings, changes.
int AllowReading(void*, int action, const char*, const char*, const char*, const char*) {
  const bool reads =
      action == SQLITE_SELECT || action == SQLITE_READ || action == SQLITE_FUNCTION || action == SQLITE_RECURSIVE;
  return reads ? SQLITE_OK : SQLITE_DENY;
}

int AskInterrupted(void* interrupted) {
  return (*static_cast<std::function<bool()>*>(interrupted))() ? 1 : 0;
}

using OwnedStatement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

// True when nothing but blanks and comments stands in a text.
bool HoldsNoStatement(sqlite3* database, const char* text, int size) {
  sqlite3_stmt* handle = nullptr;
  const int code = sqlite3_prepare_v2(database, text, size, &handle, nullptr);
  const OwnedStatement statement(handle, sqlite3_finalize);
  return code == SQLITE_OK && statement == nullptr;
}

}  // namespace

SqliteError::SqliteError(sqlite3* database)
    : std::runtime_error(sqlite3_errmsg(database)),
      m_code(sqlite3_errcode(database) & 0xFF),
      // SQLite itself forgets the number of a write that failed, but nothing has been called since.
      m_systemReason(m_code == SQLITE_IOERR ? errno : 0) {}

SqliteDatabase::SqliteDatabase(const std::string& path, int flags) {
  sqlite3* handle = nullptr;
  const int code = sqlite3_open_v2(path.c_str(), &handle, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  m_handle.reset(handle);
  if (handle == nullptr || code == SQLITE_NOMEM) throw std::bad_alloc();
  if (code != SQLITE_OK) throw SqliteError(handle);
}

SqliteDatabase SqliteDatabase::OpenToRead(const std::string& path, std::function<bool()> interrupted) {
  SqliteDatabase database(path, SQLITE_OPEN_READONLY);
  sqlite3* handle = database.Handle();
  sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, kLongestRow);
  // Damaged pages are found before they are followed.
  database.Execute("PRAGMA cell_size_check = ON");
  if (interrupted) {
    database.m_interrupted = std::make_unique<std::function<bool()>>(std::move(interrupted));
    sqlite3_progress_handler(handle, kInstructionsBetweenQueries, AskInterrupted, database.m_interrupted.get());
  }
  return database;
}

SqliteDatabase SqliteDatabase::OpenToFill(const std::string& path) {
  SqliteDatabase database(path, SQLITE_OPEN_READWRITE);
  database.Execute("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA locking_mode = EXCLUSIVE");
  return database;
}

void SqliteDatabase::AllowOnlySelecting() {
  sqlite3_set_authorizer(Handle(), AllowReading, nullptr);
}

void SqliteDatabase::Execute(const std::string& statements) {
  const int code = sqlite3_exec(Handle(), statements.c_str(), nullptr, nullptr, nullptr);
  if (code == SQLITE_NOMEM) throw std::bad_alloc();
  if (code != SQLITE_OK) throw SqliteError(Handle());
}

void SqliteDatabase::Close() {
  if (sqlite3_close(Handle()) != SQLITE_OK) throw SqliteError(Handle());
  static_cast<void>(m_handle.release());
}

SqliteStatement::SqliteStatement(const SqliteDatabase& database, std::string_view sql) : m_database(database.Handle()) {
  sqlite3_stmt* handle = nullptr;
  const char* rest = nullptr;
  const int code = sqlite3_prepare_v2(m_database, sql.data(), static_cast<int>(sql.size()), &handle, &rest);
  m_handle.reset(handle);
  if (code == SQLITE_NOMEM) throw std::bad_alloc();
  if (code != SQLITE_OK) throw SqliteError(m_database);
  if (handle == nullptr) throw SqliteError(SQLITE_MISUSE, "no statement");
  if (!HoldsNoStatement(m_database, rest, static_cast<int>(sql.data() + sql.size() - rest)))
    throw SqliteError(SQLITE_MISUSE, "more than one statement");
}

void SqliteStatement::Check(int code) const {
  if (code == SQLITE_NOMEM) throw std::bad_alloc();
  if (code != SQLITE_OK) throw SqliteError(m_database);
}

bool SqliteStatement::Step() {
  const int code = sqlite3_step(m_handle.get());
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  if (code == SQLITE_NOMEM) throw std::bad_alloc();
  throw SqliteError(m_database);
}

void SqliteStatement::Reset() {
  // What it returns is the failure of the last step, which Step has thrown.
  sqlite3_reset(m_handle.get());
}

std::string SqliteStatement::ColumnName(int column) const {
  const char* name = sqlite3_column_name(m_handle.get(), column);
  if (name == nullptr) throw std::bad_alloc();
  return name;
}

std::string_view SqliteStatement::Text(int column) const {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_handle.get(), column));
  // Null stands for NULL, too, whose text is empty.
  if (text == nullptr && sqlite3_errcode(m_database) == SQLITE_NOMEM) throw std::bad_alloc();
  if (text == nullptr) return {};
  return {text, static_cast<std::size_t>(sqlite3_column_bytes(m_handle.get(), column))};
}

void SqliteStatement::Bind(int parameter, double value) {
  Check(sqlite3_bind_double(m_handle.get(), parameter, value));
}

void SqliteStatement::BindInteger(int parameter, std::int64_t value) {
  Check(sqlite3_bind_int64(m_handle.get(), parameter, value));
}

void SqliteStatement::Bind(int parameter, std::string_view text) {
  Check(sqlite3_bind_text(m_handle.get(), parameter, text.data(), static_cast<int>(text.size()), SQLITE_STATIC));
}

void SqliteStatement::BindNull(int parameter) {
  Check(sqlite3_bind_null(m_handle.get(), parameter));
}

std::string QuotedName(std::string_view name) {
  std::string quoted = "\"";
  for (const char c : name) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + '"';
}

}  // namespace orv
