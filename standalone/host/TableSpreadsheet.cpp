#include "standalone/host/TableSpreadsheet.h"

#include <array>
#include <charconv>

namespace orv {

std::string TableSpreadsheet::CellText(int caseNumber, int column) const {
  if (m_table.IsMissing(column, caseNumber)) return {};
  const double value = m_table.Value(column, caseNumber);
  const std::string_view label = m_table.LabelOf(column, value);
  if (!label.empty()) return std::string(label);
  std::array<char, 32> digits{};
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  return error == std::errc() ? std::string(digits.data(), end) : std::string();
}

}  // namespace orv
