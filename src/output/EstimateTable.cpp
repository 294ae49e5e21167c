#include "output/EstimateTable.h"

#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "core/CCoxPH.h"
#include "data/CCoxData.h"
#include "data/FactorLevels.h"
#include "fit/CCoxFit.h"
#include "host/FormatText.h"
#include "inference/EffectContainment.h"
#include "inference/ExponentGuard.h"
#include "inference/LinearHypothesis.h"
#include "output/CResultSpreadsheet.h"
#include "output/SignificanceLevel.h"

namespace orv {

namespace {

constexpr int kNumericColumns = 9;

// Places of the numeric columns, after the level column when there is one.
enum NumericColumn { kEstimate, kStandardError, kChiSquare, kPValue, kLower, kUpper, kRatio, kRatioLower, kRatioUpper };

class EstimateTable {
 public:
  EstimateTable(const CCoxFit& fit, double confidenceLevel)
      : m_fit(fit),
        m_data(*fit.m_pData),
        m_owner(*m_data.Owner),
        m_level(confidenceLevel),
        m_p(static_cast<int>(m_data.CoefficientCount)),
        m_first(HasFactor() ? 1 : 0),
        m_sheet(m_owner.GetHost(), m_p, m_first + kNumericColumns) {
    m_alpha = AlphaOf(confidenceLevel);
    m_z = m_owner.GetHost().NormalQuantile(1.0 - m_alpha / 2.0, 0.0, 1.0);
  }

  void Show() {
    NameColumns();
    MarkEligibleColumns();
    for (int row = 0; row < m_p; ++row) AddRow(row);
    std::string title = "Parameter Estimates";
    if (m_hasFixedRow) title += "\n * denotes parameters held fixed at specified values.";
    m_sheet.SetTitle1(title);
    m_sheet.Show();
  }

 private:
  const CoxDesignColumn& Column(int row) const { return m_data.DesignColumns[static_cast<std::size_t>(row)]; }

  bool HasFactor() const {
    for (int row = 0; row < m_p; ++row) {
      if (Column(row).HasFactor()) return true;
    }
    return false;
  }

  void NameColumns() {
    const std::string percent = FormatGeneral(m_level * 100.0) + "% ";
    const std::vector<std::string> names = {"Parameter Estimate",
                                            "Standard Error",
                                            "Chi-square",
                                            "P value",
                                            percent + "Lower CL",
                                            percent + "Upper CL",
                                            "Hazard Ratio",
                                            percent + "Hazard Ratio Lower CL",
                                            percent + "Hazard Ratio Upper CL"};
    if (m_first == 1) m_sheet.SetColumnName(0, "Level of Effect");
    for (int k = 0; k < kNumericColumns; ++k) m_sheet.SetColumnName(m_first + k, names[static_cast<std::size_t>(k)]);
  }

  // A single-variable term has a hazard ratio unless another effect of the model contains it.
  void MarkEligibleColumns() {
    m_eligible.assign(static_cast<std::size_t>(m_p), false);
    const int effects = static_cast<int>(m_data.EffectFirstColumn.size());
    for (int effect = 0; effect < effects; ++effect) {
      bool contained = false;
      for (int other = 0; other < effects && !contained; ++other) {
        contained = other != effect && EffectContains(m_fit, effect, other);
      }
      if (contained) continue;
      const auto e = static_cast<std::size_t>(effect);
      for (int c = m_data.EffectFirstColumn[e] - 1; c < m_data.EffectLastColumn[e]; ++c) {
        const CoxDesignColumn& column = Column(c);
        const bool loneExpression = column.VariableCount == 0 && column.ExpressionCount == 1;
        m_eligible[static_cast<std::size_t>(c)] = column.VariableCount == 1 || loneExpression;
      }
    }
  }

  void AddRow(int row) {
    const CoxDesignColumn& column = Column(row);
    AddLevel(row, column);
    if (column.Fixed) m_hasFixedRow = true;
    m_sheet.SetRowName(row, column.Fixed ? "* " + column.EffectName : column.EffectName);
    if (m_fit.m_BetaHistory.empty()) return;
    const auto i = static_cast<std::size_t>(row);
    const double b = m_fit.m_BetaHistory.back()[i];
    Set(row, kEstimate, b);
    const DenseMatrix& V = m_fit.CovarianceInUse();
    if (column.Dropped || V.size() != static_cast<std::size_t>(m_p)) return;

    const double s = V[i][i] > 0.0 ? std::sqrt(V[i][i]) : 0.0;
    Set(row, kStandardError, s);
    if (s > 0.0) AddTest(row, b, s);
    if (m_eligible[i]) AddHazardRatio(row, b, s);
  }

  // The level text lives on from row to row: a covariate below a factor repeats the text of the row above. That is the
  // look which readers of saved tables expect.
  void AddLevel(int row, const CoxDesignColumn& column) {
    if (m_first == 0) return;
    if (column.VariableCount != 1) {
      if (column.HasFactor()) m_levelText = FormatInteger(column.ColumnInEffect);
    } else if (column.VariableRoles[0] == VariableRole::Factor) {
      m_levelText = FactorLevelText(m_owner, column.Variables[0], column.LevelIndex[0]);
    }
    m_sheet.SetText(row, 0, m_levelText);
  }

  void AddTest(int row, double b, double s) {
    const double ratio = b / s;
    const double chiSquare = ratio * ratio;
    const double p = 1.0 - m_owner.GetHost().ChiSquareCdf(chiSquare, 1.0);
    Set(row, kChiSquare, chiSquare);
    Set(row, kPValue, p);
    if (std::abs(p) < m_alpha) {
      for (int k = 0; k < kNumericColumns; ++k) m_sheet.HighlightCell(row, m_first + k);
    }
    Set(row, kLower, b - m_z * s);
    Set(row, kUpper, b + m_z * s);
  }

  void AddHazardRatio(int row, double b, double s) {
    const CoxDesignColumn& column = Column(row);
    double t = b;
    double u = s;
    const bool isFactor = !column.VariableRoles.empty() && column.VariableRoles[0] == VariableRole::Factor;
    if (isFactor && m_owner.m_Settings.Coding == Codings::SigmaRestricted) {
      double estimate = 0.0;
      double standardError = 0.0;
      int df = 0;
      int failed = 0;
      TestLinearHypothesis(m_fit, LastLevelContrast(row), estimate, standardError, df, failed);
      if (failed == 0) {
        t = estimate;
        u = standardError;
      }
    }
    SetExp(row, kRatio, t);
    if (!(u > 0.0)) return;
    SetExp(row, kRatioLower, t - m_z * u);
    SetExp(row, kRatioUpper, t + m_z * u);
  }

  // The level of a row against the last level, under sigma-restricted coding: 2 at the column, 1 at the earlier columns
  // of the effect and 1 at the next one. It reaches one column ahead and no further: recorded hazard ratios of factors
  // with many levels depend on that.
  DenseMatrix LastLevelContrast(int row) const {
    DenseMatrix L(static_cast<std::size_t>(m_p), std::vector<double>(1, 0.0));
    const int place = Column(row).ColumnInEffect;
    for (int j = row - place + 1; j <= row; ++j) L[static_cast<std::size_t>(j)][0] = 1.0;
    if (row + 1 < m_p && Column(row + 1).ColumnInEffect > place) L[static_cast<std::size_t>(row) + 1][0] = 1.0;
    L[static_cast<std::size_t>(row)][0] = 2.0;
    return L;
  }

  void Set(int row, NumericColumn column, double value) { m_sheet.SetNumber(row, m_first + column, value); }

  void SetExp(int row, NumericColumn column, double exponent) {
    const std::optional<double> value = GuardedExp(exponent);
    if (value) Set(row, column, *value);
  }

  const CCoxFit& m_fit;
  const CCoxData& m_data;
  const CCoxPH& m_owner;
  const double m_level;
  const int m_p;
  const int m_first;  // column of the first number
  CResultSpreadsheet m_sheet;
  double m_alpha = 0.0;
  double m_z = 0.0;
  std::vector<bool> m_eligible;
  std::string m_levelText;
  bool m_hasFixedRow = false;
};

}  // namespace

void ShowParameterEstimates(const CCoxFit& fit, double confidenceLevel) {
  EstimateTable(fit, confidenceLevel).Show();
}

}  // namespace orv
