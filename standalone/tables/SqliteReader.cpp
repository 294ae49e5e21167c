#include "standalone/tables/SqliteReader.h"

#include <algorithm>
#include <filesystem>
#include <utility>
#include <vector>

#include "standalone/tables/ColumnBuilder.h"
#include "standalone/tables/ColumnFaults.h"
#include "standalone/tables/DatabaseMessages.h"
#include "standalone/tables/ReadDatabase.h"
#include "standalone/tables/ReadMeter.h"
#include "standalone/tables/SqliteAddress.h"
#include "standalone/tables/SqliteDatabase.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"
#include "standalone/tables/TextCheck.h"
#include "standalone/tables/VariableNames.h"

namespace orv {
namespace {

constexpr std::uint64_t kRowsPerQuery = 1024;

class QueryReading {
 public:
  // `source` is the name of the table in messages.
  QueryReading(const std::string& source, const TableReadOptions& options, SqliteStatement& statement)
      : m_source(source), m_options(options), m_meter(options), m_statement(statement) {
    std::vector<std::string> names;
    for (int column = 0; column < statement.ColumnCount(); ++column) names.push_back(statement.ColumnName(column));
    m_names = CheckedVariableNames(source, std::move(names));
    m_columns.resize(m_names.size());
  }

  MemoryTable Read() {
    const std::uint64_t rows = ForEachRow([this](std::uint64_t row) {
      for (std::size_t k = 0; k < m_columns.size(); ++k) AddCell(k, row);
    });
    if (rows == 0) throw TableError(NoRowsMessage(m_source));
    RefuseFaultyValues(m_source, "row", m_names, m_columns);
    ReadLateTexts(rows);
    MemoryTable table(m_source);
    for (std::size_t k = 0; k < m_columns.size(); ++k) table.AddVariable(m_columns[k].Take(m_names[k]));
    m_meter.Finish(rows);
    return table;
  }

 private:
  template <typename Call>
  std::uint64_t ForEachRow(Call call) {
    m_statement.Reset();
    std::uint64_t row = 0;
    while (m_statement.Step()) {
      if (row == static_cast<std::uint64_t>(m_options.MaximumCases))
        throw TableError(TooManyCasesMessage(m_source, m_options.MaximumCases));
      if (row % kRowsPerQuery == 0) m_meter.Advance(row, 0);
      call(++row);
    }
    return row;
  }

  void AddCell(std::size_t k, std::uint64_t row) {
    const int column = static_cast<int>(k);
    switch (m_statement.Type(column)) {
      case SQLITE_INTEGER:
      case SQLITE_FLOAT:
        return m_columns[k].AddNumber(m_statement.Number(column), row);
      case SQLITE_NULL:
        return m_columns[k].Add({}, row);
      default:
        return m_columns[k].Add(TextAt(k, row), row);
    }
  }

  std::string_view TextAt(std::size_t k, std::uint64_t row) const {
    const int column = static_cast<int>(k);
    if (m_statement.Type(column) == SQLITE_BLOB) throw TableError(BinaryValueMessage(m_source, row, m_names[k]));
    const std::string_view text = m_statement.Text(column);
    if (!IsSoundText(text)) throw TableError(UnreadableTextMessage(m_source, row, m_names[k]));
    return text;
  }

  void ReadLateTexts(std::uint64_t rows) {
    std::vector<std::size_t> late;
    for (std::size_t k = 0; k < m_columns.size(); ++k) {
      if (!m_columns[k].NeedsRereading()) continue;
      m_columns[k].StartRereading();
      late.push_back(k);
    }
    if (late.empty()) return;
    const std::uint64_t again = ForEachRow([&](std::uint64_t row) {
      for (const std::size_t k : late) AddLateCell(k, row);
    });
    if (again != rows) throw TableError(FileChangedMessage(m_source));
  }

  void AddLateCell(std::size_t k, std::uint64_t row) {
    const int column = static_cast<int>(k);
    const int type = m_statement.Type(column);
    if (type == SQLITE_INTEGER || type == SQLITE_FLOAT) {
      m_columns[k].AddText(ShortestNumber(m_statement.Number(column)));
    } else {
      m_columns[k].AddText(type == SQLITE_NULL ? std::string_view() : TextAt(k, row));
    }
  }

  const std::string& m_source;
  const TableReadOptions& m_options;
  ReadMeter m_meter;
  SqliteStatement& m_statement;
  std::vector<std::string> m_names;
  std::vector<ColumnBuilder> m_columns;
};

std::vector<std::string> TablesOf(const SqliteDatabase& database) {
  SqliteStatement statement(
      database,
      "SELECT name FROM sqlite_schema WHERE type IN ('table', 'view') AND name NOT LIKE 'sqlite\\_%' "
      "ESCAPE '\\' ORDER BY name");
  std::vector<std::string> tables;
  while (statement.Step()) tables.emplace_back(statement.Text(0));
  return tables;
}

std::string OnlyTable(const SqliteDatabase& database, const std::string& path) {
  const std::vector<std::string> tables = TablesOf(database);
  if (tables.empty()) throw TableError(NoTablesMessage(path));
  if (tables.size() > 1) throw TableError(SeveralTablesMessage(path, tables));
  return tables[0];
}

MemoryTable ReadWholeTable(SqliteDatabase& database,
                           const std::string& source,
                           const std::string& table,
                           const TableReadOptions& options) {
  SqliteStatement statement(database, "SELECT * FROM " + QuotedName(table));
  return QueryReading(source, options, statement).Read();
}

MemoryTable ReadQuery(SqliteDatabase& database,
                      const std::string& source,
                      const SqliteAddress& address,
                      const TableReadOptions& options) {
  database.AllowOnlySelecting();
  try {
    SqliteStatement statement(database, address.Query);
    return QueryReading(source, options, statement).Read();
  } catch (const SqliteError& error) {
    if (error.Code() == SQLITE_AUTH) throw TableError(NotASelectMessage(address.File));
    if (error.Code() == SQLITE_ERROR || error.Code() == SQLITE_MISUSE)
      throw TableError(QueryMessage(address.File, error.what()));
    throw;
  }
}

}  // namespace

MemoryTable ReadSqliteFile(const std::string& path, const TableReadOptions& options) {
  return ReadDatabase(path, options, [&](SqliteDatabase& database) {
    return ReadWholeTable(database, path, OnlyTable(database, path), options);
  });
}

MemoryTable ReadSqliteAddress(const std::string& address, const TableReadOptions& options) {
  const SqliteAddress parsed = ParseSqliteAddress(address);
  return ReadDatabase(parsed.File, options, [&](SqliteDatabase& database) {
    if (!parsed.Query.empty()) return ReadQuery(database, address, parsed, options);
    if (parsed.Table.empty()) return ReadWholeTable(database, address, OnlyTable(database, parsed.File), options);
    const std::vector<std::string> tables = TablesOf(database);
    if (std::find(tables.begin(), tables.end(), parsed.Table) == tables.end())
      throw TableError(NoSuchTableMessage(parsed.File, parsed.Table, tables));
    return ReadWholeTable(database, address, parsed.Table, options);
  });
}

}  // namespace orv
