// TableSpreadsheet: a table as the spreadsheet that the module asks a host to open.
#pragma once

#include <string>

#include "host/Host.h"
#include "standalone/tables/MemoryTable.h"

namespace orv {

class TableSpreadsheet : public HostSpreadsheet {
 public:
  explicit TableSpreadsheet(MemoryTable table) : m_table(std::move(table)) {}

  int ColumnCount() const override { return m_table.VariableCount(); }
  int CaseCount() const override { return m_table.CaseCount(); }
  // The label of a value that has one, else its shortest digits that read back as the same double.
  std::string CellText(int caseNumber, int column) const override;

 private:
  MemoryTable m_table;
};

}  // namespace orv
