// StatisticsColumns: the variables of a file of another statistics program, filled value by value.
#pragma once

#include <readstat.h>

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "standalone/tables/MemoryTable.h"
#include "standalone/tables/StatisticsDates.h"
#include "standalone/tables/TextCodes.h"

namespace orv {

// What a file holds cannot be what was written into it. what() is the reason, for a message that names the file.
class StatisticsFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A text that is not in the encoding that the file is read in.
class StatisticsTextFault : public std::exception {
 public:
  StatisticsTextFault(std::uint64_t caseNumber, std::string variable)
      : CaseNumber(caseNumber), Variable(std::move(variable)) {}
  const char* what() const noexcept override { return "a text that is not in the encoding of the file"; }

  std::uint64_t CaseNumber;  // 0 for a text that belongs to no case
  std::string Variable;
};

class StatisticsColumns {
 public:
  // `fileSize` in bytes bounds the memory that is set aside on the word of the file alone.
  StatisticsColumns(std::string source, StatisticsProgram program, std::uint64_t fileSize, int maximumCases)
      : m_source(std::move(source)), m_program(program), m_fileSize(fileSize), m_maximumCases(maximumCases) {}

  // What the parser finds, in its order: the size of the table, the variables, then values and labels. All throw
  // TableError, StatisticsFault or StatisticsTextFault. The number of cases is negative when it is not known.
  void SetSize(std::int64_t variables, std::int64_t cases);
  void AddVariable(int index, const readstat_variable_t& variable, const char* labelSet);
  void AddValue(int row, const readstat_variable_t& variable, const readstat_value_t& value);
  void AddLabel(const char* labelSet, const readstat_value_t& value, const char* label);

  // The finished table; the object is empty afterwards.
  MemoryTable Take();

 private:
  struct Column {
    TableVariable Variable;
    bool IsText = false;
    std::optional<DateScale> Dates;
    std::string LabelSet;                                  // empty when there is none
    std::vector<std::pair<double, double>> MissingRanges;  // numbers that the file declares missing, ends included
    TextCodes Codes;
  };

  double TextValue(Column& column, const readstat_value_t& value);
  double NumberValue(const Column& column, const readstat_value_t& value) const;
  std::vector<ValueLabel> LabelsOf(const Column& column) const;

  std::string m_source;
  StatisticsProgram m_program;
  std::uint64_t m_fileSize;
  int m_maximumCases;
  std::int64_t m_expectedCases = -1;
  std::uint64_t m_values = 0;
  std::vector<Column> m_columns;
  std::map<std::string, std::vector<ValueLabel>> m_labelSets;
};

}  // namespace orv
