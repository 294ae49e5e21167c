#include "standalone/tables/OrvReader.h"

#include <fmt/format.h>

#include <cmath>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "standalone/tables/DatabaseMessages.h"
#include "standalone/tables/MessageExcerpt.h"
#include "standalone/tables/OrvSchema.h"
#include "standalone/tables/ReadDatabase.h"
#include "standalone/tables/ReadMeter.h"
#include "standalone/tables/SqliteDatabase.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"
#include "standalone/tables/TextCheck.h"
#include "standalone/tables/VariableNames.h"

namespace orv {
namespace {

constexpr std::uint64_t kCasesPerQuery = 1024;

// The variables of one table of cases: their places in the list of all variables, and their columns.
struct CaseTablePart {
  std::string Name;
  std::vector<std::size_t> Variables;
  std::vector<std::string> Columns;
};

std::optional<VariableType> TypeNamed(std::string_view name) {
  for (const VariableType type : {VariableType::Number, VariableType::Text, VariableType::Date}) {
    if (VariableTypeName(type) == name) return type;
  }
  return std::nullopt;
}

class OrvReading {
 public:
  OrvReading(const std::string& path, const SqliteDatabase& database, const TableReadOptions& options)
      : m_path(path), m_database(database), m_options(options), m_meter(options) {}

  MemoryTable Read() {
    CheckVersion();
    ReadVariables();
    ReadValueLabels();
    CountCases();
    for (const CaseTablePart& part : m_parts) ReadCases(part);
    for (const TableVariable& variable : m_variables) CheckTexts(variable);
    MemoryTable table(m_path);
    for (TableVariable& variable : m_variables) table.AddVariable(std::move(variable));
    table.SetCaseNames(ReadCaseNames());
    m_meter.Finish(Total());
    return table;
  }

 private:
  std::int64_t Single(const std::string& sql) const {
    SqliteStatement statement(m_database, sql);
    return statement.Step() ? statement.Integer(0) : 0;
  }

  void CheckVersion() const {
    if (Single("PRAGMA application_id") != OrvSchema::ApplicationId) throw TableError(ForeignDatabaseMessage(m_path));
    const std::int64_t version = Single("PRAGMA user_version");
    if (version > OrvSchema::Version) throw TableError(NewerOrvMessage(m_path, version, OrvSchema::Version));
    if (version < 1) Refuse("its version is not set");
  }

  [[noreturn]] void Refuse(const std::string& fault) const { throw TableError(DamagedOrvMessage(m_path, fault)); }

  std::string SoundText(const SqliteStatement& statement, int column, const char* what) const {
    std::string text(statement.Text(column));
    if (!IsSoundText(text)) Refuse(fmt::format("{} is no UTF-8 text", what));
    return text;
  }

  void ReadVariables() {
    SqliteStatement statement(m_database,
                              "SELECT name, type, missing_code, format, label, case_table, case_column, number "
                              "FROM variables ORDER BY number");
    std::vector<std::string> names;
    while (statement.Step()) {
      // Before a name is stored: a query may give rows without end.
      if (names.size() == static_cast<std::size_t>(kMaximumVariables))
        throw TableError(TooManyVariablesMessage(m_path));
      names.emplace_back(statement.Text(0));
      m_numbers.push_back(statement.Integer(7));
      AddVariable(statement);
    }
    names = CheckedVariableNames(m_path, std::move(names));
    for (std::size_t i = 0; i < names.size(); ++i) m_variables[i].Name = std::move(names[i]);
  }

  void AddVariable(const SqliteStatement& statement) {
    const std::size_t place = m_variables.size();
    TableVariable variable;
    const std::optional<VariableType> type = TypeNamed(statement.Text(1));
    if (!type) Refuse(fmt::format("the type of variable {} is none of number, text and date", place + 1));
    variable.Type = *type;
    if (statement.Type(2) != SQLITE_NULL) variable.MissingCode = statement.Number(2);
    if (!std::isfinite(variable.MissingCode))
      Refuse(fmt::format("the missing code of variable {} is infinite", place + 1));
    variable.Format = SoundText(statement, 3, "a format");
    variable.Label = SoundText(statement, 4, "a label");
    m_variables.push_back(std::move(variable));
    AddToPart(place, std::string(statement.Text(5)), std::string(statement.Text(6)));
  }

  void AddToPart(std::size_t variable, const std::string& table, const std::string& column) {
    if (!m_columns.emplace(table, column).second)
      Refuse(fmt::format("variable {} has the same column as another", variable + 1));
    if (m_parts.empty() || m_parts.back().Name != table) m_parts.push_back({table, {}, {}});
    m_parts.back().Variables.push_back(variable);
    m_parts.back().Columns.push_back(column);
  }

  void ReadValueLabels() {
    SqliteStatement statement(m_database, "SELECT code, text FROM value_labels WHERE variable = ? ORDER BY code");
    for (std::size_t i = 0; i < m_variables.size(); ++i) {
      statement.Reset();
      statement.BindInteger(1, m_numbers[i]);
      std::vector<ValueLabel>& labels = m_variables[i].Labels;
      while (statement.Step()) {
        const int type = statement.Type(0);
        const double code = statement.Number(0);
        if ((type != SQLITE_INTEGER && type != SQLITE_FLOAT) || !std::isfinite(code))
          Refuse(fmt::format("a code of \"{}\" is no number", Excerpt(m_variables[i].Name)));
        if (!labels.empty() && labels.back().Code == code)
          Refuse(fmt::format("a code of \"{}\" has two labels", Excerpt(m_variables[i].Name)));
        labels.push_back({code, SoundText(statement, 1, "a value label")});
      }
      if (m_variables[i].Type == VariableType::Text) CheckCodes(m_variables[i]);
    }
  }

  // The texts of a text variable are numbered 1 to K in their sorted order.
  void CheckCodes(const TableVariable& variable) const {
    for (std::size_t k = 0; k < variable.Labels.size(); ++k) {
      const bool inPlace = variable.Labels[k].Code == static_cast<double>(k) + 1.0;
      if (!inPlace || (k > 0 && variable.Labels[k].Text <= variable.Labels[k - 1].Text))
        throw TableError(UnsortedTextsMessage(m_path, variable.Name));
    }
  }

  void CountCases() {
    // A view could count without end.
    for (const CaseTablePart& part : m_parts) {
      SqliteStatement find(m_database, "SELECT 1 FROM sqlite_schema WHERE type = 'table' AND name = ?");
      find.Bind(1, part.Name);
      if (!find.Step()) Refuse(fmt::format("the table \"{}\" is not there", Excerpt(part.Name)));
    }
    const std::int64_t count = Single("SELECT count(*) FROM " + QuotedName(m_parts[0].Name));
    if (count <= 0) throw TableError(NoRowsMessage(m_path));
    if (count > m_options.MaximumCases) throw TableError(TooManyCasesMessage(m_path, m_options.MaximumCases));
    m_cases = static_cast<std::size_t>(count);
  }

  std::uint64_t Total() const { return m_cases * m_variables.size(); }

  void ReadCases(const CaseTablePart& part) {
    // With the table's name before it, a column that is not there is an error, not a text in quotes.
    std::string sql = "SELECT t.case_number";
    for (const std::string& column : part.Columns) sql += ", t." + QuotedName(column);
    SqliteStatement statement(m_database, sql + " FROM " + QuotedName(part.Name) + " AS t ORDER BY 1");
    for (const std::size_t v : part.Variables) m_variables[v].Values.reserve(m_cases);
    const bool isFirst = &part == &m_parts[0];
    std::size_t row = 0;
    for (; statement.Step(); ++row) {
      if (row == m_cases) Refuse("its tables of cases differ in length");
      if (row % kCasesPerQuery == 0) m_meter.Advance(m_read + row * part.Columns.size(), Total());
      CheckCaseNumber(isFirst, row, statement.Integer(0));
      for (std::size_t k = 0; k < part.Variables.size(); ++k) {
        TableVariable& variable = m_variables[part.Variables[k]];
        variable.Values.push_back(ValueAt(statement, static_cast<int>(k) + 1, variable, row));
      }
    }
    if (row != m_cases) Refuse("its tables of cases differ in length");
    m_read += row * part.Columns.size();
  }

  // Rows of different tables belong together by their case number.
  void CheckCaseNumber(bool isFirst, std::size_t row, std::int64_t number) {
    if (m_parts.size() == 1) return;
    if (isFirst) m_caseNumbers.push_back(number);
    if (m_caseNumbers[row] != number) Refuse("its tables of cases hold different cases");
  }

  double ValueAt(const SqliteStatement& statement, int column, const TableVariable& variable, std::size_t row) const {
    const int type = statement.Type(column);
    if (type == SQLITE_FLOAT || type == SQLITE_INTEGER) {
      const double value = statement.Number(column);
      if (std::isfinite(value)) return value;
    }
    if (type == SQLITE_NULL) return variable.MissingCode;
    throw TableError(NoNumberMessage(m_path, row + 1, variable.Name));
  }

  void CheckTexts(const TableVariable& variable) const {
    if (variable.Type != VariableType::Text) return;
    const auto codes = static_cast<double>(variable.Labels.size());
    for (const double value : variable.Values) {
      const bool isCode = value >= 1.0 && value <= codes && value == std::floor(value);
      if (!isCode && value != variable.MissingCode) throw TableError(UnknownTextCodeMessage(m_path, variable.Name));
    }
  }

  std::vector<std::string> ReadCaseNames() const {
    SqliteStatement find(m_database, "SELECT 1 FROM pragma_table_info(?) WHERE name = 'case_name'");
    find.Bind(1, m_parts[0].Name);
    std::vector<std::string> names;
    if (!find.Step()) return names;
    SqliteStatement statement(m_database,
                              "SELECT case_name FROM " + QuotedName(m_parts[0].Name) + " ORDER BY case_number");
    names.reserve(m_cases);
    while (statement.Step()) names.push_back(SoundText(statement, 0, "a case name"));
    if (names.size() != m_cases) Refuse("it changed while it was read");
    return names;
  }

  const std::string& m_path;
  const SqliteDatabase& m_database;
  const TableReadOptions& m_options;
  ReadMeter m_meter;
  std::vector<TableVariable> m_variables;
  std::vector<std::int64_t> m_numbers;  // of the variables, as the file gives them
  std::vector<CaseTablePart> m_parts;
  std::set<std::pair<std::string, std::string>> m_columns;  // tables and columns that belong to a variable
  std::vector<std::int64_t> m_caseNumbers;                  // only when there are several tables of cases
  std::size_t m_cases = 0;
  std::uint64_t m_read = 0;  // values so far
};

}  // namespace

MemoryTable ReadOrvFile(const std::string& path, const TableReadOptions& options) {
  return ReadDatabase(path, options,
                      [&](SqliteDatabase& database) { return OrvReading(path, database, options).Read(); });
}

}  // namespace orv
