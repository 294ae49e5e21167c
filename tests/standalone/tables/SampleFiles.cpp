#include "standalone/tables/SampleFiles.h"

#include <readstat.h>
#include <sqlite3.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>

#include "standalone/tables/IsoDate.h"
#include "standalone/tables/SqliteDatabase.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableReaders.h"

namespace orv::testing {

const std::string_view kSampleText =
    "DAYS,DIED,AGE,DOSE,ARM,ENTERED\n"
    "5,1,61,1.5,drug,2019-02-28\n"
    "8,0,48,-0.25,placebo,2020-02-29\n"
    "11,1,70,,drug,1969-12-31\n"
    "12,1,,2.125,,2021-12-24\n"
    "15,0,55,1024.5,none,\n"
    "21,1,66,0,placebo,1970-01-01\n"
    "22,0,59,3.5,drug,1955-07-17\n"
    "30,1,44,-7,other,2000-01-01\n"
    "31,1,52,0.0625,placebo,1999-12-31\n";

namespace {

struct FormOfEnding {
  readstat_error_t (*Begin)(readstat_writer_t*, void*, long);
  int Version;
  const char* DateFormat;
  double UnitsPerDay;
  double DayZero;  // the program's day 0 in days before 1970-01-01
};

const std::map<std::string, FormOfEnding>& Forms() {
  static const std::map<std::string, FormOfEnding> kForms = {
      {".sas7bdat", {readstat_begin_writing_sas7bdat, 0, "DATE9", 1.0, 3653.0}},
      {".xpt", {readstat_begin_writing_xport, 8, "DATE9", 1.0, 3653.0}},
      {".sav", {readstat_begin_writing_sav, 2, "DATE11", 86400.0, 141428.0}},
      {".zsav", {readstat_begin_writing_sav, 3, "DATE11", 86400.0, 141428.0}},
      {".por", {readstat_begin_writing_por, 0, "DATE11", 86400.0, 141428.0}},
      {".dta", {readstat_begin_writing_dta, 118, "%td", 1.0, 3653.0}},
  };
  return kForms;
}

const FormOfEnding& FormFor(const std::string& path) {
  return Forms().at(LowerCaseEnding(path));
}

void Check(readstat_error_t code) {
  if (code != READSTAT_OK) throw std::runtime_error(readstat_error_message(code));
}

std::size_t LongestText(const TableVariable& variable) {
  std::size_t longest = 1;
  for (const ValueLabel& label : variable.Labels) longest = std::max(longest, label.Text.size());
  return longest;
}

void DeclareVariable(readstat_writer_t* writer, const TableVariable& variable, const FormOfEnding& form) {
  if (variable.Type == VariableType::Text) {
    readstat_add_variable(writer, variable.Name.c_str(), READSTAT_TYPE_STRING, LongestText(variable));
    return;
  }
  readstat_variable_t* added = readstat_add_variable(writer, variable.Name.c_str(), READSTAT_TYPE_DOUBLE, 8);
  if (variable.Type == VariableType::Date) readstat_variable_set_format(added, form.DateFormat);
}

void FillValue(readstat_writer_t* writer, const MemoryTable& table, int v, int c, const FormOfEnding& form) {
  const readstat_variable_t* variable = readstat_get_variable(writer, v - 1);
  const double value = table.Value(v, c);
  const VariableType type = table.Variable(v).Type;
  if (table.IsMissing(v, c)) return Check(readstat_insert_missing_value(writer, variable));
  if (type == VariableType::Text)
    return Check(readstat_insert_string_value(writer, variable, std::string(table.LabelOf(v, value)).c_str()));
  const double own = type == VariableType::Date ? (value + form.DayZero) * form.UnitsPerDay : value;
  Check(readstat_insert_double_value(writer, variable, own));
}

ssize_t Append(const void* data, size_t size, void* content) {
  static_cast<std::string*>(content)->append(static_cast<const char*>(data), size);
  return static_cast<ssize_t>(size);
}

struct Closer {
  void operator()(sqlite3* handle) const { sqlite3_close(handle); }
};
using Database = std::unique_ptr<sqlite3, Closer>;

Database Open(const std::string& path) {
  sqlite3* handle = nullptr;
  const int code = sqlite3_open(path.c_str(), &handle);
  Database database(handle);
  if (code != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(handle));
  return database;
}

std::string SqlText(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? "''" : std::string(1, c);
  return quoted + "'";
}

std::string SqlLiteral(const MemoryTable& table, int v, int c) {
  if (table.IsMissing(v, c)) return "NULL";
  const double value = table.Value(v, c);
  if (table.Variable(v).Type == VariableType::Text) return SqlText(table.LabelOf(v, value));
  if (table.Variable(v).Type == VariableType::Date) return SqlText(IsoDate(value));
  char digits[40];
  std::snprintf(digits, sizeof digits, "%.17g", value);
  return digits;
}

}  // namespace

const std::vector<std::string>& StatisticsEndings() {
  static const std::vector<std::string> kEndings = {".sas7bdat", ".xpt", ".sav", ".zsav", ".por", ".dta"};
  return kEndings;
}

void WriteStatisticsFile(const std::string& path, const StatisticsContent& content) {
  const FormOfEnding& form = FormFor(path);
  const std::unique_ptr<readstat_writer_t, void (*)(readstat_writer_t*)> writer(readstat_writer_init(),
                                                                                readstat_writer_free);
  std::string bytes;
  Check(readstat_set_data_writer(writer.get(), Append));
  const int version = content.Version > 0 ? content.Version : form.Version;
  if (version > 0) Check(readstat_writer_set_file_format_version(writer.get(), static_cast<std::uint8_t>(version)));
  // A file that is made again is the same to the byte.
  Check(readstat_writer_set_file_timestamp(writer.get(), 1577880000));
  content.Declare(writer.get());
  Check(form.Begin(writer.get(), &bytes, content.Rows));
  content.Fill(writer.get());
  Check(readstat_end_writing(writer.get()));
  WriteContent(path, bytes);
}

void WriteStatisticsFile(const MemoryTable& table, const std::string& path) {
  const FormOfEnding& form = FormFor(path);
  StatisticsContent content;
  content.Rows = table.CaseCount();
  content.Declare = [&](readstat_writer_t* writer) {
    for (int v = 1; v <= table.VariableCount(); ++v) DeclareVariable(writer, table.Variable(v), form);
  };
  content.Fill = [&](readstat_writer_t* writer) {
    for (int c = 1; c <= table.CaseCount(); ++c) {
      Check(readstat_begin_row(writer));
      for (int v = 1; v <= table.VariableCount(); ++v) FillValue(writer, table, v, c, form);
      Check(readstat_end_row(writer));
    }
  };
  WriteStatisticsFile(path, content);
}

void RunSql(const std::string& path, const std::string& statements) {
  const Database database = Open(path);
  if (sqlite3_exec(database.get(), statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
    throw std::runtime_error(sqlite3_errmsg(database.get()));
}

std::string SqlValue(const std::string& path, const std::string& query) {
  const Database database = Open(path);
  sqlite3_stmt* handle = nullptr;
  sqlite3_prepare_v2(database.get(), query.c_str(), -1, &handle, nullptr);
  const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(handle, sqlite3_finalize);
  if (sqlite3_step(handle) != SQLITE_ROW) throw std::runtime_error(sqlite3_errmsg(database.get()));
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(handle, 0));
  return text == nullptr ? "NULL" : text;
}

void WriteForeignDatabase(const MemoryTable& table, const std::string& path) {
  std::string columns;
  for (int v = 1; v <= table.VariableCount(); ++v) columns += (v > 1 ? ", " : "") + QuotedName(table.Variable(v).Name);
  std::string sql = "CREATE TABLE study (" + columns + ");";
  for (int c = 1; c <= table.CaseCount(); ++c) {
    sql += "INSERT INTO study VALUES (";
    for (int v = 1; v <= table.VariableCount(); ++v) sql += (v > 1 ? ", " : "") + SqlLiteral(table, v, c);
    sql += ");";
  }
  RunSql(path, sql);
}

std::string ContentOfFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteContent(const std::string& path, std::string_view content) {
  std::ofstream(path, std::ios::binary) << content;
}

std::string RefusalOf(const std::string& path) {
  try {
    ReadTable(path);
  } catch (const TableError& error) {
    return error.what();
  }
  return "(it reads)";
}

}  // namespace orv::testing
