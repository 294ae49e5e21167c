#include "inference/StratumRows.h"

#include "core/CCoxPH.h"
#include "data/AlmostEqual.h"
#include "data/CCoxData.h"

namespace orv {

std::vector<StratumRows> StrataOf(const CCoxData& data) {
  const int n = static_cast<int>(data.ValidCaseCount);
  if (n == 0) return {};
  if (!data.Owner->m_Settings.HasStrata()) return {{1, n}};
  const auto stratum = [&data](int row) { return data.CaseTable.GetRow(row)[data.StratumColumn]; };
  std::vector<StratumRows> strata{{1, 1}};
  for (int row = 2; row <= n; ++row) {
    if (AlmostEqual(stratum(row), stratum(row - 1))) {
      strata.back().Last = row;
    } else {
      strata.push_back({row, row});
    }
  }
  return strata;
}

}  // namespace orv
