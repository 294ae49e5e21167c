#include "output/FitTables.h"

#include <algorithm>
#include <cmath>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "fit/CCoxFit.h"
#include "output/CResultSpreadsheet.h"
#include "output/CoefficientLabels.h"

namespace orv {

namespace {

constexpr const char* kStep = "Step";

// Builds a p by p table from the lower triangle of the covariance in use. `cell` gives the value of (i, j), or false
// for a cell that stays missing.
template <typename CellFunction>
void ShowMatrix(const CCoxFit& fit, const char* title, CellFunction cell) {
  const CCoxData& data = *fit.m_pData;
  const DenseMatrix& V = fit.CovarianceInUse();
  const std::vector<std::string> labels = CoefficientLabels(data);
  const int p = static_cast<int>(labels.size());
  CResultSpreadsheet sheet(fit.Owner().GetHost(), p, p);
  sheet.SetTitle1(title);
  for (int i = 0; i < p; ++i) {
    sheet.SetRowName(i, labels[static_cast<std::size_t>(i)]);
    sheet.SetColumnName(i, labels[static_cast<std::size_t>(i)]);
  }
  const auto dropped = [&data](int i) { return data.DesignColumns[static_cast<std::size_t>(i)].Dropped; };
  for (int i = 0; V.size() == labels.size() && i < p; ++i) {
    for (int j = 0; j <= i; ++j) {
      double value = 0.0;
      if (dropped(i) || dropped(j) || !cell(V, static_cast<std::size_t>(i), static_cast<std::size_t>(j), value))
        continue;
      sheet.SetNumber(i, j, value);
      sheet.SetNumber(j, i, value);
    }
  }
  sheet.Show();
}

}  // namespace

void ShowIterationHistory(const CCoxFit& fit) {
  const std::vector<std::string> labels = CoefficientLabels(*fit.m_pData);
  const int p = static_cast<int>(labels.size());
  const int rows = static_cast<int>(fit.m_LogLikHistory.size());
  CResultSpreadsheet sheet(fit.Owner().GetHost(), rows, p + 2);
  sheet.SetTitle1("Iteration history");
  sheet.SetShortName(kStep);
  sheet.SetColumnName(0, kStep);
  sheet.SetColumnName(1, "Log-likelihood");
  for (int j = 0; j < p; ++j) sheet.SetColumnName(j + 2, labels[static_cast<std::size_t>(j)]);
  for (int row = 0; row < rows; ++row) {
    const auto entry = static_cast<std::size_t>(row);
    sheet.SetNumber(row, 0, row + 1);
    sheet.SetNumber(row, 1, fit.m_LogLikHistory[entry]);
    if (entry >= fit.m_BetaHistory.size()) continue;
    for (int j = 0; j < p; ++j) sheet.SetNumber(row, j + 2, fit.m_BetaHistory[entry][static_cast<std::size_t>(j)]);
  }
  sheet.Show();
}

void ShowCovariance(const CCoxFit& fit) {
  ShowMatrix(fit, "Covariance matrix of parameters", [](const DenseMatrix& V, auto i, auto j, double& value) {
    value = V[i][j];
    return true;
  });
}

void ShowCorrelation(const CCoxFit& fit) {
  ShowMatrix(fit, "Correlation matrix of parameters", [](const DenseMatrix& V, auto i, auto j, double& value) {
    if (!(V[i][i] > 0.0) || !(V[j][j] > 0.0)) return false;
    // The deviations one by one: the product of two variances may leave the range of a double.
    value = i == j ? 1.0 : V[i][j] / std::sqrt(V[i][i]) / std::sqrt(V[j][j]);
    return true;
  });
}

}  // namespace orv
