#include "standalone/tables/ColumnFaults.h"

#include <optional>
#include <utility>

#include "standalone/tables/TableError.h"
#include "standalone/tables/TableMessages.h"

namespace orv {
namespace {

std::string ValueMessage(const TextPlace& place, const CellFault& fault) {
  switch (fault.Kind) {
    case CellKind::OutOfRange:
      return OutOfRangeMessage(place, fault.Text);
    case CellKind::NotFinite:
      return NotFiniteMessage(place, fault.Text);
    case CellKind::NoSuchDay:
      return NoSuchDayMessage(place, fault.Text);
    default:
      return CommaNumberMessage(place, fault.Text);
  }
}

}  // namespace

void RefuseFaultyValues(const std::string& source,
                        std::string_view unit,
                        const std::vector<std::string>& names,
                        const std::vector<ColumnBuilder>& columns) {
  std::optional<CellFault> first;
  std::size_t column = 0;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    auto fault = columns[i].Fault();
    if (!fault || (first && first->Line <= fault->Line)) continue;
    first = std::move(fault);
    column = i;
  }
  if (first) throw TableError(ValueMessage({source, first->Line, column + 1, names[column], unit}, *first));
}

}  // namespace orv
