#include "standalone/tables/DelimitedReader.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <memory>
#include <new>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

#include "standalone/tables/CellText.h"
#include "standalone/tables/ColumnBuilder.h"
#include "standalone/tables/ColumnFaults.h"
#include "standalone/tables/DelimitedRecords.h"
#include "standalone/tables/FileForm.h"
#include "standalone/tables/ReadMeter.h"
#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"

namespace orv {
namespace {

// What both readings share: the header, and that every record has as many fields as it.
class CaseSink : public RecordSink {
 public:
  CaseSink(const std::string& source, const TableReadOptions& options) : m_source(source), m_options(options) {}

  // To be called before the reading begins.
  void Attach(const DelimitedRecords& records) { m_records = &records; }
  const HeaderLine& Header() const { return m_header; }
  bool HasHeader() const { return m_hasHeader; }
  int CaseCount() const { return m_cases; }

  void Field(std::string_view text, std::uint64_t line) final {
    // A quoted first field may have begun on an earlier line.
    if (m_fields == 0) m_recordLine = line - CountLineBreaks(text);
    if (!m_hasHeader) {
      AddName(text);
    } else if (m_fields < m_header.Names.size()) {
      if (m_fields + 1 == m_header.Names.size()) m_lastField.assign(text);
      Value(m_fields, text, line);
    } else if (m_fields == m_header.Names.size()) {
      m_extraField.assign(text);
    }
    ++m_fields;
  }

  void EndRecord() final {
    const std::size_t fields = std::exchange(m_fields, 0);
    if (!m_hasHeader) {
      m_hasHeader = true;
      m_header.Line = m_recordLine;
      CheckNames();
      NamesComplete(m_header.Names.size());
      return;
    }
    if (fields != m_header.Names.size()) ThrowRagged(fields);
    if (m_cases == m_options.MaximumCases) throw TableError(TooManyCasesMessage(m_source, m_options.MaximumCases));
    ++m_cases;
  }

  std::string ColumnName(std::uint64_t column) const final {
    return m_hasHeader && column <= m_header.Names.size() ? m_header.Names[column - 1] : std::string();
  }

 protected:
  // The names are known; `count` of them.
  virtual void NamesComplete(std::size_t count) = 0;
  // A value of a case; `column` counts from 0.
  virtual void Value(std::size_t column, std::string_view text, std::uint64_t line) = 0;

 private:
  void AddName(std::string_view text) {
    if (m_header.Names.size() == static_cast<std::size_t>(kMaximumVariables))
      throw TableError(TooManyVariablesMessage(m_source));
    m_header.Names.emplace_back(TrimBlanks(text));
  }

  void CheckNames() const {
    const std::vector<std::string>& names = m_header.Names;
    const auto isNumber = [](const std::string& name) { return ReadCell(name).Kind == CellKind::Number; };
    if (std::all_of(names.begin(), names.end(), isNumber)) throw TableError(NumbersAsNamesMessage(m_source, m_header));
    std::unordered_map<std::string_view, std::size_t> columns;
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (names[i].empty()) throw TableError(EmptyNameMessage(m_source, m_header.Line, i + 1));
      const auto [found, isNew] = columns.emplace(names[i], i + 1);
      if (!isNew) throw TableError(DuplicateNameMessage(m_source, m_header.Line, names[i], found->second, i + 1));
    }
  }

  [[noreturn]] void ThrowRagged(std::size_t fields) const {
    const char delimiter = m_records->Delimiter();
    throw TableError(fields < m_header.Names.size()
                         ? TooFewFieldsMessage(m_source, m_recordLine, fields, m_header, delimiter)
                         : TooManyFieldsMessage(m_source, m_recordLine, fields, m_header,
                                                std::string(TrimBlanks(m_lastField)),
                                                std::string(TrimBlanks(m_extraField)), delimiter));
  }

  const std::string& m_source;
  const TableReadOptions& m_options;
  const DelimitedRecords* m_records = nullptr;
  HeaderLine m_header;
  bool m_hasHeader = false;
  int m_cases = 0;
  std::size_t m_fields = 0;        // of the current record
  std::uint64_t m_recordLine = 0;  // on which it begins
  std::string m_lastField;         // its field in the last named column
  std::string m_extraField;        // and the first beyond it
};

class FirstReading : public CaseSink {
 public:
  using CaseSink::CaseSink;

  // The first block tells how many cases to expect, so that the columns need not be copied as they grow. Room that is
  // not filled costs no memory.
  void HasRead(double share) override {
    constexpr double kMargin = 1.05;
    if (std::exchange(m_hasRoom, true)) return;
    const double expected = std::min<double>(CaseCount() / share * kMargin, std::numeric_limits<int>::max());
    try {
      for (ColumnBuilder& column : m_columns) column.Reserve(static_cast<std::size_t>(expected));
    } catch (const std::bad_alloc&) {
      // Lines may grow longer further on; the columns grow as the cases come.
    }
  }
  std::vector<ColumnBuilder>& Columns() { return m_columns; }

 protected:
  void NamesComplete(std::size_t count) override { m_columns.resize(count); }
  void Value(std::size_t column, std::string_view text, std::uint64_t line) override {
    m_columns[column].Add(text, line);
  }

 private:
  std::vector<ColumnBuilder> m_columns;
  bool m_hasRoom = false;
};

// Reads the columns that are text after all.
class SecondReading : public CaseSink {
 public:
  SecondReading(const std::string& source, const TableReadOptions& options, std::vector<ColumnBuilder>& columns)
      : CaseSink(source, options), m_source(source), m_columns(columns), m_texts(columns.size()) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
      m_texts[i] = columns[i].NeedsRereading();
      if (m_texts[i]) columns[i].StartRereading();
    }
  }

 protected:
  void NamesComplete(std::size_t count) override {
    if (count != m_columns.size()) throw TableError(FileChangedMessage(m_source));
  }
  void Value(std::size_t column, std::string_view text, std::uint64_t) override {
    if (m_texts[column]) m_columns[column].AddText(text);
  }

 private:
  const std::string& m_source;
  std::vector<ColumnBuilder>& m_columns;
  std::vector<bool> m_texts;
};

// A file that says in its first bytes that it is no text gets a better message than its first odd byte would.
void RefuseOtherForms(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return;
  const FileForm form = FormOfFile(path);
  if (form != FileForm::Unknown && form != FileForm::Text)
    throw TableError(WrongFormMessage(path, "delimited text", form));
}

void Run(ByteSource& source, const std::string& name, bool preferTab, ReadMeter& meter, CaseSink& sink) {
  DelimitedRecords records(source, name, preferTab, meter);
  sink.Attach(records);
  records.ReadInto(sink);
}

}  // namespace

MemoryTable ReadDelimited(ByteSource& source,
                          const std::string& name,
                          bool preferTab,
                          const TableReadOptions& options) {
  ReadMeter meter(options);
  FirstReading first(name, options);
  Run(source, name, preferTab, meter, first);
  if (!first.HasHeader()) throw TableError(EmptyFileMessage(name));
  if (first.CaseCount() == 0) throw TableError(NoCasesMessage(name, first.Header()));

  std::vector<ColumnBuilder>& columns = first.Columns();
  RefuseFaultyValues(name, "line", first.Header().Names, columns);
  if (std::any_of(columns.begin(), columns.end(), [](const ColumnBuilder& c) { return c.NeedsRereading(); })) {
    SecondReading second(name, options, columns);
    Run(source, name, preferTab, meter, second);
    if (second.CaseCount() != first.CaseCount()) throw TableError(FileChangedMessage(name));
  }

  MemoryTable table(name);
  for (std::size_t i = 0; i < columns.size(); ++i) table.AddVariable(columns[i].Take(first.Header().Names[i]));
  return table;
}

MemoryTable ReadDelimitedFile(const std::string& path, const TableReadOptions& options) {
  RefuseOtherForms(path);
  return ReadDelimited(*OpenFile(path), path, LowerCaseEnding(path) == ".tsv", options);
}

MemoryTable ReadDelimitedStream(const TableReadOptions& options) {
  const std::string name(kStandardInputName);
  const auto source = HoldStream(options.StandardInput, name, [&options] { ReadMeter(options).CheckCancelled(); });
  return ReadDelimited(*source, name, false, options);
}

}  // namespace orv
