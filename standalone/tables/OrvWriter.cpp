#include "standalone/tables/OrvWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

#include "data/AlmostEqual.h"
#include "standalone/tables/OrvSchema.h"
#include "standalone/tables/SqliteDatabase.h"

namespace orv {
namespace {

constexpr int kCasesPerCheckpoint = 4096;

// The variables of one table of cases: `First` and the next ones, counted from 1.
struct CaseTablePart {
  std::string Name;
  int First = 0;
  std::vector<std::string> Columns;
};

// SQL does not tell upper from lower case in the names of columns.
std::string LowerCase(std::string name) {
  for (char& c : name) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return name;
}

// The name of a variable, with a number behind it when the table has such a column already.
std::string NewColumn(const std::string& name, std::set<std::string>& taken) {
  std::string column = name;
  for (int number = 2; !taken.insert(LowerCase(column)).second; ++number) column = fmt::format("{}_{}", name, number);
  return column;
}

std::vector<CaseTablePart> DivideVariables(const MemoryTable& table) {
  std::vector<CaseTablePart> parts;
  std::set<std::string> taken;
  for (int v = 1; v <= table.VariableCount(); ++v) {
    if ((v - 1) % OrvSchema::VariablesPerTable == 0) {
      parts.push_back({parts.empty() ? "cases" : fmt::format("cases_{}", parts.size() + 1), v, {}});
      taken = {"case_number", "case_name"};
    }
    parts.back().Columns.push_back(NewColumn(table.Variable(v).Name, taken));
  }
  return parts;
}

void WriteVariables(const SqliteDatabase& database, const MemoryTable& table, const std::vector<CaseTablePart>& parts) {
  SqliteStatement insert(database, "INSERT INTO variables VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
  SqliteStatement insertLabel(database, "INSERT INTO value_labels VALUES (?, ?, ?)");
  for (const CaseTablePart& part : parts) {
    for (std::size_t k = 0; k < part.Columns.size(); ++k) {
      const int number = part.First + static_cast<int>(k);
      const TableVariable& variable = table.Variable(number);
      insert.Reset();
      insert.BindInteger(1, number);
      insert.Bind(2, variable.Name);
      insert.Bind(3, VariableTypeName(variable.Type));
      if (variable.MissingCode == kMissingCode) {
        insert.BindNull(4);
      } else {
        insert.Bind(4, variable.MissingCode);
      }
      insert.Bind(5, variable.Format);
      insert.Bind(6, variable.Label);
      insert.Bind(7, part.Name);
      insert.Bind(8, part.Columns[k]);
      insert.Step();
      for (const ValueLabel& label : variable.Labels) {
        insertLabel.Reset();
        insertLabel.BindInteger(1, number);
        insertLabel.Bind(2, label.Code);
        insertLabel.Bind(3, label.Text);
        insertLabel.Step();
      }
    }
  }
}

void CreateCases(SqliteDatabase& database, const CaseTablePart& part, bool withNames) {
  std::string sql = fmt::format("CREATE TABLE {} (case_number INTEGER PRIMARY KEY", part.Name);
  if (withNames) sql += ", case_name TEXT";
  for (const std::string& column : part.Columns) sql += ", " + QuotedName(column) + " REAL";
  database.Execute(sql + ")");
}

void WriteCases(SqliteDatabase& database,
                const MemoryTable& table,
                const CaseTablePart& part,
                const std::function<void()>& checkpoint) {
  const bool withNames = part.First == 1 && table.HasCaseNames();
  CreateCases(database, part, withNames);
  const int columns = static_cast<int>(part.Columns.size());
  const int before = withNames ? 2 : 1;
  std::string sql = fmt::format("INSERT INTO {} VALUES (?", part.Name);
  for (int k = 1; k < before + columns; ++k) sql += ", ?";
  SqliteStatement insert(database, sql + ")");
  for (int c = 1; c <= table.CaseCount(); ++c) {
    if (checkpoint && c % kCasesPerCheckpoint == 0) checkpoint();
    insert.Reset();
    insert.BindInteger(1, c);
    if (withNames) insert.Bind(2, table.CaseName(c));
    for (int k = 0; k < columns; ++k) {
      const TableVariable& variable = table.Variable(part.First + k);
      const double value = variable.Values[static_cast<std::size_t>(c) - 1];
      if (AlmostEqual(value, variable.MissingCode)) {
        insert.BindNull(before + 1 + k);
      } else {
        insert.Bind(before + 1 + k, value);
      }
    }
    insert.Step();
  }
}

void Fill(const std::string& file, const MemoryTable& table, const std::function<void()>& checkpoint) {
  SqliteDatabase database = SqliteDatabase::OpenToFill(file);
  database.Execute(fmt::format("PRAGMA application_id = {}; PRAGMA user_version = {}; BEGIN", OrvSchema::ApplicationId,
                               OrvSchema::Version));
  database.Execute(OrvSchema::CreateVariables);
  database.Execute(OrvSchema::CreateValueLabels);
  const std::vector<CaseTablePart> parts = DivideVariables(table);
  WriteVariables(database, table, parts);
  for (const CaseTablePart& part : parts) WriteCases(database, table, part, checkpoint);
  database.Execute("COMMIT");
  database.Close();
}

}  // namespace

void WriteOrv(const MemoryTable& table, const std::string& file, const std::function<void()>& checkpoint) {
  try {
    Fill(file, table, checkpoint);
  } catch (const SqliteError& error) {
    const int reason = error.Code() == SQLITE_FULL ? ENOSPC : error.SystemReason();
    throw std::system_error(reason == 0 ? EIO : reason, std::generic_category(), error.what());
  }
}

}  // namespace orv
