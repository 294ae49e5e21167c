#include "inference/ProportionalHazards.h"

#include "data/CCoxData.h"
#include "fit/CCoxFit.h"

namespace orv {

namespace {

std::vector<int> KeptColumns(const CCoxData& data) {
  std::vector<int> columns;
  for (int column = 0; column < static_cast<int>(data.CoefficientCount); ++column) {
    if (!data.DesignColumns[static_cast<std::size_t>(column)].Dropped) columns.push_back(column);
  }
  return columns;
}

// Mean and sum of squares of g by case weight, updated from event to event (West, CACM 22 (1979) 532-535).
void MeasureTransform(const CCoxData& data, const std::vector<double>& g, ProportionalHazardsTest& test) {
  double W = 0.0;
  std::size_t next = 0;
  for (int row = 1; row <= static_cast<int>(data.ValidCaseCount); ++row) {
    const double* cells = data.CaseTable.GetRow(row);
    if (cells[data.StatusColumn] != 1.0) continue;
    const double value = g[next++];
    const double weight = cells[data.WeightColumn];
    W += weight;
    const double delta = (value - test.Mean) * weight;
    test.Mean += delta / W;
    test.SumOfSquares += (value - test.Mean) * delta;
  }
}

// R'CR over the kept columns, from the lower triangle of C.
double QuadraticForm(const DenseMatrix& C, const std::vector<double>& R, const std::vector<int>& columns) {
  double sum = 0.0;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    for (std::size_t j = 0; j < columns.size(); ++j) {
      const auto row = static_cast<std::size_t>(columns[i > j ? i : j]);
      const auto column = static_cast<std::size_t>(columns[i > j ? j : i]);
      sum += R[i] * C[row][column] * R[j];
    }
  }
  return sum;
}

}  // namespace

std::optional<ProportionalHazardsTest> ComputeProportionalHazardsTest(const CCoxFit& fit,
                                                                      const std::vector<double>& g) {
  const CCoxData& data = *fit.m_pData;
  const std::size_t p = data.CoefficientCount;
  const DenseMatrix& C = fit.CovarianceInUse();
  const bool complete = fit.m_SchoenfeldResiduals.size() == p && fit.m_ScaledSchoenfeldResiduals.size() == p;
  if (!complete || C.size() != p || g.size() != data.CompleteCaseCount) return std::nullopt;

  ProportionalHazardsTest test;
  test.Columns = KeptColumns(data);
  MeasureTransform(data, g, test);

  const std::size_t kept = test.Columns.size();
  std::vector<double> T(kept, 0.0);
  std::vector<double> R(kept, 0.0);
  double D = 0.0;
  std::size_t next = 0;
  for (std::size_t i = 0; i < data.ValidCaseCount; ++i) {
    if (data.CaseTable.GetRow(static_cast<int>(i) + 1)[data.StatusColumn] != 1.0) continue;
    const double c = g[next++] - test.Mean;
    D += 1.0;
    for (std::size_t k = 0; k < kept; ++k) {
      const auto column = static_cast<std::size_t>(test.Columns[k]);
      T[k] += c * fit.m_ScaledSchoenfeldResiduals[column][i];
      R[k] += c * fit.m_SchoenfeldResiduals[column][i];
    }
  }

  const double Q = QuadraticForm(C, R, test.Columns);
  if (!(test.SumOfSquares > 0.0) || !(Q > 0.0)) return std::nullopt;
  test.Overall = Q / test.SumOfSquares * D;
  for (std::size_t k = 0; k < kept; ++k) {
    const auto column = static_cast<std::size_t>(test.Columns[k]);
    test.ChiSquares.push_back(T[k] * T[k] / (C[column][column] * D * test.SumOfSquares));
  }
  return test;
}

}  // namespace orv
